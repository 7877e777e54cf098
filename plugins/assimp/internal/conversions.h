// Declares the conversions between the asset library's values and the engine's: matrices,
// the split of a local matrix into position, Euler rotation and scale, quaternions, Euler
// angles kept free of 2-pi jumps, and the scene's time unit.
// Plain functions over values: nothing is owned.
#pragma once

#include <cstdint>

#include <assimp/types.h>

#include <orlo/support/matrix3.h>
#include <orlo/support/point3.h>

namespace orlo_assimp::internal {

// The engine's time unit for imported and exported scenes: one tick is one millisecond.
inline constexpr double kTicksPerSecond = 1000.0;
// The rate assumed for an animation that gives none (0 ticks per second).
inline constexpr double kDefaultAssetTicksPerSecond = 25.0;

// An asset time in its animation's ticks as a scene time: round(time / rate * 1000); a rate
// of 0 or less reads as 25 ticks per second.
std::int32_t ToSceneTime(double asset_ticks, double asset_ticks_per_second);

// The engine's matrices act on row vectors with the translation in row 3; the library's act
// on column vectors with the translation in column 3: each is the other transposed.
Orlo::Matrix3<double> ToMatrix3(const aiMatrix4x4& m);
aiMatrix4x4 ToAiMatrix(const Orlo::Matrix3<double>& m);

// A local matrix as a node transform keeps it.
struct TransformParts {
  Orlo::Point3<double> position;
  Orlo::Point3<double> rotation;  // Euler angles in radians, about X, then Y, then Z
  Orlo::Point3<double> scale;
  // False when the matrix is not scale x rotation x translation (a shear, say): the parts
  // are then the closest such transform, rotation and scale of the polar decomposition.
  bool exact = true;
};
TransformParts SplitTransform(const Orlo::Matrix3<double>& m);
// scale x rotation x translation, as the node transform builds it.
Orlo::Matrix3<double> ComposeTransform(const Orlo::Point3<double>& position,
                                       const Orlo::Point3<double>& rotation,
                                       const Orlo::Point3<double>& scale);

// Euler angles (X, Y, Z) of a rotation quaternion, and back.
Orlo::Point3<double> ToEulerAngles(const aiQuaternion& q);
aiQuaternion ToAiQuaternion(const Orlo::Point3<double>& euler);

// Of the two Euler triples that give the rotation of `euler`, each angle shifted by whole
// turns, the one closest to `previous`: keyed rotations then never jump by 2 pi.
Orlo::Point3<double> ClosestEulerAngles(const Orlo::Point3<double>& euler,
                                        const Orlo::Point3<double>& previous);

inline Orlo::Point3<double> ToPoint3(const aiVector3D& v) { return {v.x, v.y, v.z}; }
inline aiVector3D ToAiVector(const Orlo::Point3<double>& p) {
  return aiVector3D(static_cast<ai_real>(p.x), static_cast<ai_real>(p.y),
                    static_cast<ai_real>(p.z));
}

}  // namespace orlo_assimp::internal
