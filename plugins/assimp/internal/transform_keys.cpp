#include "plugins/assimp/internal/transform_keys.h"

#include <cassert>

#include <orlo/base/controllers/bezier_controller.h>
#include <orlo/base/controllers/transform3_controller.h>

namespace orlo_assimp::internal {

void CollectKeyTimes(Orlo::Matrix3Controller* controller, std::set<std::int32_t>& times) {
  auto* transform = dynamic_cast<Orlo::Transform3Controller*>(controller);
  if (transform == nullptr) return;
  // Slots 1 to 3 hold the position, rotation and scale controllers, each with three scalars.
  for (int slot = 1; slot <= 3; ++slot) {
    Orlo::Block* vector = transform->GetDependency(slot);
    if (vector == nullptr) continue;
    for (int axis = 0; axis < vector->NumDependencies(); ++axis) {
      auto* scalar = dynamic_cast<Orlo::BezierController*>(vector->GetDependency(axis));
      if (scalar == nullptr) continue;
      for (const Orlo::BezierKey& key : scalar->GetKeys()) times.insert(key.time);
    }
  }
}

void SetPose(Orlo::Matrix3Controller* controller, std::int32_t time,
             const Orlo::Point3<double>& position, const Orlo::Point3<double>& rotation,
             const Orlo::Point3<double>& scale) {
  assert(controller != nullptr && "SetPose needs a controller");
  controller->SetPosition(position, time);
  controller->SetRotation(rotation, time);
  controller->SetScale(scale, time);
}

}  // namespace orlo_assimp::internal
