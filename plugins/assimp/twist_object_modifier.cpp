#include "plugins/assimp/twist_object_modifier.h"

#include <orlo/base/scene/modifier.h>

#include "plugins/assimp/mesh_object.h"
#include "plugins/assimp/twist_modifier.h"

namespace orlo_assimp {

TwistObjectModifier::~TwistObjectModifier() {
  // The copy never joined the graph: nothing links to it, so it goes with the stack.
  if (m_result != nullptr) m_result->DeleteThis();
}

Orlo::Block* TwistObjectModifier::Clone() {
  auto* copy = new TwistObjectModifier;
  copy->GetRecord() = GetRecord();
  copy->SetEnabled(IsEnabled());
  if (Orlo::Modifier* modifier = GetModifier()) (void)copy->SetModifier(modifier);
  if (Orlo::Object* object = GetObjectToModify()) {
    Orlo::Block* object_copy = object->Clone();
    auto* typed = dynamic_cast<Orlo::Object*>(object_copy);
    if (typed == nullptr || !copy->SetObjectToModify(typed).IsOk()) {
      if (object_copy != nullptr) object_copy->DeleteThisBlock(true);
    }
  }
  return copy;
}

void TwistObjectModifier::GetTimeInterval(Orlo::TimeInterval& interval) {
  // Down the stack with a loop, each level's modifier, then the plain object at the bottom:
  // a stack of any height is asked without deep recursion.
  Orlo::Object* level = this;
  while (auto* stack = dynamic_cast<Orlo::ObjectModifier*>(level)) {
    if (Orlo::Modifier* modifier = stack->GetModifier()) modifier->GetTimeInterval(interval);
    level = stack->GetObjectToModify();
  }
  if (level != nullptr) level->GetTimeInterval(interval);
}

void TwistObjectModifier::ProcessEvent(Orlo::BlockEvent event) {
  if (event.code == 3 && event.block != nullptr && event.block == GetDependency(0) &&
      IsCacheValid() && GetObjectToModify() != nullptr) {
    (void)UnbuildObject(0, nullptr);
  }
  Orlo::ObjectModifier::ProcessEvent(event);
}

Orlo::Object* TwistObjectModifier::UnapplyModifier(int, Orlo::Object* object, Orlo::Node*) {
  return object == m_result && m_source != nullptr ? m_source : object;
}

Orlo::Object* TwistObjectModifier::ApplyModifier(int time, Orlo::Object* object, Orlo::Node*) {
  auto* mesh = dynamic_cast<MeshObject*>(object);
  auto* twist = dynamic_cast<TwistModifier*>(GetModifier());
  if (mesh == nullptr || twist == nullptr) return object;
  if (m_result == nullptr) m_result = new MeshObject;
  if (m_source != mesh || m_result->GetFaces().size() != mesh->GetFaces().size()) {
    // A new source: take over its faces, normals and coordinates once.
    m_result->SetNormals(mesh->GetNormals());
    m_result->SetTextureCoordinates(mesh->GetTextureCoordinates());
    m_result->SetPositions(mesh->GetPositions());
    m_result->SetFaces(mesh->GetFaces());
  }
  m_source = mesh;
  const Orlo::Box3<double> box = mesh->GetObjectBoundingBox(time);
  const int axis = twist->GetAxis() == 0 || twist->GetAxis() == 1 ? twist->GetAxis() : 2;
  const double low = axis == 0 ? box.min.x : axis == 1 ? box.min.y : box.min.z;
  const double high = axis == 0 ? box.max.x : axis == 1 ? box.max.y : box.max.z;
  const double angle = twist->GetAngle(time);
  const std::vector<Orlo::Point3<double>>& points = mesh->GetPositions();
  std::vector<Orlo::Point3<double>> twisted(points.size());
  for (std::size_t i = 0; i < points.size(); ++i) {
    twisted[i] = TwistModifier::Twist(points[i], angle, axis, low, high);
  }
  m_result->SetPositions(std::move(twisted));
  return m_result;
}

}  // namespace orlo_assimp
