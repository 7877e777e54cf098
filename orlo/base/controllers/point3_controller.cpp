#include <orlo/base/controllers/point3_controller.h>

#include <cassert>

#include <orlo/base/controllers/bezier_controller.h>
#include <orlo/base/controllers/float_controller.h>

namespace Orlo {

namespace {

constexpr const char* kSlotNames[] = {"x_animation_controller", "y_animation_controller",
                                      "z_animation_controller"};
constexpr char kNoDependency[] = "no_dependency";
// Class id of the controllers.
constexpr unsigned kControllerDependencyType = 300;

}  // namespace

Point3Controller::Point3Controller(bool create_subcontrollers) {
  if (!create_subcontrollers) return;
  for (int i = 0; i < kNumSlots; ++i) {
    // A fresh controller can take a fresh block: the link cannot be refused.
    (void)MakeDependencyByID(i, new BezierController(0.0, true));
  }
}

std::string Point3Controller::GetClassName() const { return "Point3Controller"; }

BlockType Point3Controller::GetBlockType() const { return m_block_type; }

int Point3Controller::NumDependencies() const { return kNumSlots; }

void Point3Controller::SetDependency(int index, Block* block) {
  if (!IsSlot(index)) return;
  m_components[index].link.Set(block);
}

Block* Point3Controller::GetDependency(int index) const {
  return IsSlot(index) ? m_components[index].link.Raw() : nullptr;
}

std::string Point3Controller::GetDependencyName(int index) const {
  return IsSlot(index) ? kSlotNames[index] : kNoDependency;
}

unsigned Point3Controller::GetDependencyType(int index) const {
  return IsSlot(index) ? kControllerDependencyType : 0;
}

Block* Point3Controller::Clone() {
  auto* clone = new Point3Controller(false);
  for (int i = 0; i < kNumSlots; ++i) clone->m_components[i].fallback = m_components[i].fallback;
  for (int i = 0; i < kNumSlots; ++i) {
    // A missing sub-controller stays missing in the clone.
    if (Block* block = m_components[i].link.Raw()) (void)clone->MakeDependencyByID(i, block->Clone());
  }
  return clone;
}

int Point3Controller::Save([[maybe_unused]] SceneSave* save) {
  assert(save != nullptr);
  return 1;
}

int Point3Controller::Load([[maybe_unused]] SceneLoad* load) {
  assert(load != nullptr);
  return 1;
}

void Point3Controller::DeleteThis() { delete this; }

double Point3Controller::GetComponent(const Component& component, int time) {
  FloatController* controller = component.link.Get();
  return controller != nullptr ? controller->GetFloat(time) : component.fallback;
}

bool Point3Controller::SetComponent(Component& component, int time, double value) {
  if (FloatController* controller = component.link.Get()) {
    controller->SetFloat(time, value);
    return false;
  }
  component.fallback = value;
  return true;
}

Point3<double> Point3Controller::GetPoint3(int time) {
  const double x = GetComponent(m_components[0], time);
  const double y = GetComponent(m_components[1], time);
  const double z = GetComponent(m_components[2], time);
  return Point3<double>(x, y, z);
}

double Point3Controller::GetX(int time) { return GetComponent(m_components[0], time); }

double Point3Controller::GetY(int time) { return GetComponent(m_components[1], time); }

double Point3Controller::GetZ(int time) { return GetComponent(m_components[2], time); }

void Point3Controller::SetPoint3(int time, Point3<double> value) {
  // Kept as is: fallback values stored here post nothing, unlike SetX, SetY and SetZ.
  (void)SetComponent(m_components[0], time, value.x);
  (void)SetComponent(m_components[1], time, value.y);
  (void)SetComponent(m_components[2], time, value.z);
}

void Point3Controller::SetX(int time, double value) {
  if (SetComponent(m_components[0], time, value)) PostEvent(0, 0);
}

void Point3Controller::SetY(int time, double value) {
  if (SetComponent(m_components[1], time, value)) PostEvent(0, 0);
}

void Point3Controller::SetZ(int time, double value) {
  if (SetComponent(m_components[2], time, value)) PostEvent(0, 0);
}

BlockType Point3ControllerFactory::GetBlockType() const { return Point3Controller::m_block_type; }

Block* Point3ControllerFactory::GetBlock(bool create_defaults) const {
  return new Point3Controller(create_defaults);
}

std::string Point3ControllerFactory::GetName() const { return "Point3Controller"; }

}  // namespace Orlo
