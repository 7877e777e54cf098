#include <orlo/base/controllers/look_at_controller.h>

#include <orlo/base/controllers/point3_controller.h>
#include <orlo/base/controllers/transform3_controller.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node.h>
#include <orlo/support/math_functions.h>

#include <cassert>

namespace Orlo {

namespace {

constexpr const char* kSlotNames[] = {"data_table", "transform", "aim_node", "up_node"};
constexpr char kNoDependency[] = "no_dependency";
constexpr unsigned kSlotTypes[] = {205, 110, 115, 115};

constexpr int kAxisAimId = 0;
constexpr int kAxisUpId = 1;
// Every parameter holds one element.
constexpr int kParameterSize = 1;

bool IsSlot(int index) { return index >= 0 && index < 4; }

}  // namespace

LookAtController::LookAtController(bool create) {
  if (!create) return;
  // Fresh blocks linked into a fresh controller: no link can be refused.
  (void)MakeDependencyByID(kTransformSlot, new Transform3Controller(true));
  (void)MakeDependencyByID(kDataTableSlot, new DataTable(true));
  UpdateDataTable(true);
}

LookAtController::LookAtController(Controller* transform, Node* aim, Node* up) {
  (void)MakeDependencyByID(kAimNodeSlot, aim);
  (void)MakeDependencyByID(kUpNodeSlot, up);
  (void)MakeDependencyByID(kTransformSlot, transform);
  (void)MakeDependencyByID(kDataTableSlot, new DataTable(true));
  UpdateDataTable(true);
}

LookAtController* LookAtController::Create(SceneEngine*, Point3<double> position, Node* aim,
                                           Node* up) {
  auto* controller = new LookAtController(true);
  controller->SetPosition(position, 0);
  controller->SetAimNode(aim);
  controller->SetUpNode(up);
  return controller;
}

LookAtController* LookAtController::Create(SceneEngine* engine, Point3<double> position,
                                           Point3<double> target) {
  assert(engine != nullptr);
  Node* aim = engine->CreateEmptyNode(target, "Aim");
  return Create(engine, position, aim, nullptr);
}

LookAtController* LookAtController::Create(SceneEngine* engine, Point3<double> position,
                                           Point3<double> target, Point3<double> up) {
  assert(engine != nullptr);
  Node* aim = engine->CreateEmptyNode(target, "Aim");
  Node* up_node = engine->CreateEmptyNode(up, "Up");
  return Create(engine, position, aim, up_node);
}

std::string LookAtController::GetClassName() const { return "LookAtController"; }

BlockType LookAtController::GetBlockType() const { return m_block_type; }

int LookAtController::NumDependencies() const { return kNumSlots; }

void LookAtController::SetDependency(int index, Block* block) {
  switch (index) {
    case kDataTableSlot:
      m_data_table_block = block;
      m_data_table = SceneEngine::IsDataTable(block) ? dynamic_cast<DataTable*>(block) : nullptr;
      break;
    case kTransformSlot:
      m_transform_block = block;
      m_transform = dynamic_cast<Controller*>(block);
      break;
    case kAimNodeSlot:
      m_aim_block = block;
      m_aim_node = SceneEngine::IsNode(block) ? dynamic_cast<Node*>(block) : nullptr;
      break;
    case kUpNodeSlot:
      m_up_block = block;
      m_up_node = SceneEngine::IsNode(block) ? dynamic_cast<Node*>(block) : nullptr;
      break;
    default:
      break;
  }
}

Block* LookAtController::GetDependency(int index) const {
  switch (index) {
    case kDataTableSlot:
      return m_data_table_block;
    case kTransformSlot:
      return m_transform_block;
    case kAimNodeSlot:
      return m_aim_block;
    case kUpNodeSlot:
      return m_up_block;
    default:
      return nullptr;
  }
}

std::string LookAtController::GetDependencyName(int index) const {
  return IsSlot(index) ? kSlotNames[index] : kNoDependency;
}

unsigned LookAtController::GetDependencyType(int index) const {
  return IsSlot(index) ? kSlotTypes[index] : 0;
}

DataTable* LookAtController::GetDataTable() const { return m_data_table; }

Status LookAtController::SetDataTable(DataTable* table) {
  Status result;
  if (table != nullptr && !SceneEngine::IsDataTable(table)) {
    result.Set(Status::kInvalidArgument,
               "LookAtController::SetDataTable : The block is not a valid data_table.");
    return result;
  }
  (void)MakeDependencyByID(kDataTableSlot, table);
  return result;
}

void LookAtController::UpdateDataTable(bool) {
  DataTable* table = m_data_table;
  if (table == nullptr) return;
  // An id the table holds already is refused by the table and keeps its value.
  (void)table->AddDataInt(kAxisAimId, 5, kParameterSize);
  (void)table->AddDataInt(kAxisUpId, 0, kParameterSize);
  table->UpdateIDToIndex();
  (void)table->SetDataName(kAxisAimId, "axis_aim");
  (void)table->SetDataName(kAxisUpId, "axis_up");
}

Block* LookAtController::Clone() {
  auto* clone = new LookAtController(false);
  clone->SetAimNode(m_aim_node);
  clone->SetUpNode(m_up_node);
  if (m_data_table != nullptr) {
    UpdateDataTable(false);
    Block* table_copy = m_data_table->Clone();
    if (auto* table = dynamic_cast<DataTable*>(table_copy)) (void)clone->SetDataTable(table);
    // A host table whose copy is not a parameter table: nothing else would release it.
    if (table_copy != nullptr && clone->GetDependency(kDataTableSlot) != table_copy) {
      table_copy->DeleteThisBlock(true);
    }
    clone->UpdateDataTable(false);
  }
  return clone;
}

int LookAtController::Save(SceneSave*) { return 1; }

int LookAtController::Load(SceneLoad*) { return 1; }

void LookAtController::DeleteThis() { delete this; }

void LookAtController::SetAimNode(Node* node) { (void)MakeDependencyByID(kAimNodeSlot, node); }

void LookAtController::SetUpNode(Node* node) { (void)MakeDependencyByID(kUpNodeSlot, node); }

void LookAtController::SetTransformController(Controller* controller) {
  (void)MakeDependencyByID(kTransformSlot, controller);
}

void LookAtController::SetMatrix3(Matrix3<double> matrix, int time) {
  auto* transform = dynamic_cast<Matrix3Controller*>(m_transform);
  assert(transform != nullptr);
  if (transform != nullptr) transform->SetMatrix3(matrix, time);
}

void LookAtController::SetPosition(Point3<double> position, int time) {
  auto* transform = dynamic_cast<Matrix3Controller*>(m_transform);
  assert(transform != nullptr);
  if (transform != nullptr) transform->SetPosition(position, time);
}

void LookAtController::SetRotation(Point3<double>, int) {}

void LookAtController::SetScale(Point3<double>, int) {}

Matrix3<double> LookAtController::GetMatrix3(int time) {
  Point3<double> eye(0.0, 0.0, 0.0);
  if (m_transform != nullptr) {
    const int type = m_transform->GetControllerType();
    if (type == Matrix3Controller::kControllerType) {
      if (auto* matrix = dynamic_cast<Matrix3Controller*>(m_transform)) {
        eye = matrix->GetMatrix3(time).GetRow(3);
      }
    } else if (type == Point3Controller::kControllerType) {
      if (auto* point = dynamic_cast<Point3Controller*>(m_transform)) eye = point->GetPoint3(time);
    }
  }
  Point3<double> target(100.0, 0.0, 0.0);
  if (m_aim_node != nullptr) target = m_aim_node->GetAbsoluteTM(time).GetRow(3);
  Point3<double> up(0.0, 0.0, 1.0);
  if (m_up_node != nullptr) up = Normalize(m_up_node->GetAbsoluteTM(time).GetRow(3) - eye);

  const Point3<double> z = Normalize(eye - target);
  const Point3<double> x = Normalize(Cross(up, z));
  const Point3<double> y = Normalize(Cross(z, x));
  Matrix3<double> matrix;
  matrix.SetRow(0, x);
  matrix.SetRow(1, y);
  matrix.SetRow(2, z);
  matrix.SetRow(3, eye);
  m_matrix = matrix;
  return matrix;
}

Point3<double> LookAtController::GetPosition(int) { return m_matrix.GetRow(3); }

Point3<double> LookAtController::GetRotation(int) { return Point3<double>(0.0, 0.0, 0.0); }

Point3<double> LookAtController::GetScale(int) { return Point3<double>(0.0, 0.0, 0.0); }

BlockType LookAtControllerFactory::GetBlockType() const { return LookAtController::m_block_type; }

Block* LookAtControllerFactory::GetBlock(bool create_defaults) const {
  return new LookAtController(create_defaults);
}

std::string LookAtControllerFactory::GetName() const { return "LookAtController"; }

}  // namespace Orlo
