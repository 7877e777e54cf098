// Declares the helpers that read and write the keys of a node's transform: the times at which
// any of its scalar controllers holds a key, and keying a whole pose at a time.
// They work through the node's Transform3Controller; nothing is owned.
#pragma once

#include <cstdint>
#include <set>

#include <orlo/base/controllers/matrix3_controller.h>
#include <orlo/support/point3.h>

namespace orlo_assimp::internal {

// Adds the time of every key of the position, rotation and scale controllers of
// `controller` (a Transform3Controller) to `times`. Other controllers add nothing.
void CollectKeyTimes(Orlo::Matrix3Controller* controller, std::set<std::int32_t>& times);

// Sets position, rotation and scale at `time`.
// Requires: controller is not null.
void SetPose(Orlo::Matrix3Controller* controller, std::int32_t time,
             const Orlo::Point3<double>& position, const Orlo::Point3<double>& rotation,
             const Orlo::Point3<double>& scale);

}  // namespace orlo_assimp::internal
