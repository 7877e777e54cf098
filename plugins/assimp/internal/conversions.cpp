#include "plugins/assimp/internal/conversions.h"

#include <algorithm>
#include <cmath>

#include <orlo/support/affine_parts.h>

namespace orlo_assimp::internal {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kTwoPi = 2 * kPi;
// The library keeps its matrices in single precision: rows are orthonormal, and parts give a
// matrix back, only to a few units of float rounding. A shear is far larger than this.
constexpr double kFloatTolerance = 1e-5;

// `angle` shifted by whole turns to lie within half a turn of `reference`.
double NearestTurn(double angle, double reference) {
  return angle + kTwoPi * std::round((reference - angle) / kTwoPi);
}

double Distance(const Orlo::Point3<double>& a, const Orlo::Point3<double>& b) {
  return std::abs(a.x - b.x) + std::abs(a.y - b.y) + std::abs(a.z - b.z);
}

}  // namespace

std::int32_t ToSceneTime(double asset_ticks, double asset_ticks_per_second) {
  const double rate =
      asset_ticks_per_second > 0 ? asset_ticks_per_second : kDefaultAssetTicksPerSecond;
  const double ticks = std::round(asset_ticks / rate * kTicksPerSecond);
  constexpr double kLimit = 2147483647.0;
  return static_cast<std::int32_t>(std::clamp(ticks, -kLimit, kLimit));
}

Orlo::Matrix3<double> ToMatrix3(const aiMatrix4x4& m) {
  Orlo::Matrix3<double> out;
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 3; ++c) out.m[r][c] = m[c][r];
  }
  for (int c = 0; c < 3; ++c) out.m[3][c] = m[c][3];
  return out;
}

aiMatrix4x4 ToAiMatrix(const Orlo::Matrix3<double>& m) {
  aiMatrix4x4 out;  // the identity: the bottom row stays (0, 0, 0, 1)
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 3; ++c) out[c][r] = static_cast<ai_real>(m.m[r][c]);
  }
  for (int c = 0; c < 3; ++c) out[c][3] = static_cast<ai_real>(m.m[3][c]);
  return out;
}

Orlo::Matrix3<double> ComposeTransform(const Orlo::Point3<double>& position,
                                       const Orlo::Point3<double>& rotation,
                                       const Orlo::Point3<double>& scale) {
  Orlo::Matrix3<double> rotate;
  rotate.FromEulerAnglesXYZ(rotation.x, rotation.y, rotation.z);
  Orlo::Matrix3<double> out;
  const double factors[3] = {scale.x, scale.y, scale.z};
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 3; ++c) out.m[r][c] = factors[r] * rotate.m[r][c];
  }
  out.m[3][0] = position.x;
  out.m[3][1] = position.y;
  out.m[3][2] = position.z;
  return out;
}

TransformParts SplitTransform(const Orlo::Matrix3<double>& m) {
  TransformParts parts;
  parts.position = {m.m[3][0], m.m[3][1], m.m[3][2]};
  // Each of rows 0 to 2 is an axis scaled by its factor: the factor is the row's length
  // and the rotation the normalised rows, a reflection carried by a negative x factor.
  double factors[3];
  Orlo::Matrix3<double> rotate;
  for (int r = 0; r < 3; ++r) {
    factors[r] = std::sqrt(m.m[r][0] * m.m[r][0] + m.m[r][1] * m.m[r][1] + m.m[r][2] * m.m[r][2]);
    for (int c = 0; c < 3; ++c) rotate.m[r][c] = factors[r] > 0 ? m.m[r][c] / factors[r] : 0.0;
  }
  const double determinant =
      rotate.m[0][0] * (rotate.m[1][1] * rotate.m[2][2] - rotate.m[1][2] * rotate.m[2][1]) -
      rotate.m[0][1] * (rotate.m[1][0] * rotate.m[2][2] - rotate.m[1][2] * rotate.m[2][0]) +
      rotate.m[0][2] * (rotate.m[1][0] * rotate.m[2][1] - rotate.m[1][1] * rotate.m[2][0]);
  if (determinant < 0) {
    factors[0] = -factors[0];
    for (int c = 0; c < 3; ++c) rotate.m[0][c] = -rotate.m[0][c];
  }
  // Rows that are not orthonormal carry a shear (or a collapsed axis): take the rotation and
  // the stretch of the polar decomposition instead, the closest transform without shear.
  double off = 0;
  for (int a = 0; a < 3; ++a) {
    for (int b = 0; b < 3; ++b) {
      double dot = 0;
      for (int c = 0; c < 3; ++c) dot += rotate.m[a][c] * rotate.m[b][c];
      off = std::max(off, std::abs(dot - (a == b ? 1.0 : 0.0)));
    }
  }
  if (off > kFloatTolerance) {
    Orlo::AffinePartsD affine;
    Orlo::DecomposeAffine(m, &affine);
    rotate = Orlo::ToMatrix3(affine.rotation);
    factors[0] = affine.stretch.x * affine.determinant_sign;
    factors[1] = affine.stretch.y;
    factors[2] = affine.stretch.z;
  }
  rotate.ToEulerAnglesXYZ(parts.rotation.x, parts.rotation.y, parts.rotation.z);
  parts.scale = {factors[0], factors[1], factors[2]};
  // Exact when the parts give the matrix back, to a tolerance relative to its size.
  const Orlo::Matrix3<double> back = ComposeTransform(parts.position, parts.rotation, parts.scale);
  double size = 1, error = 0;
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 3; ++c) {
      size = std::max(size, std::abs(m.m[r][c]));
      error = std::max(error, std::abs(back.m[r][c] - m.m[r][c]));
    }
  }
  parts.exact = error <= kFloatTolerance * size;
  return parts;
}

Orlo::Point3<double> ToEulerAngles(const aiQuaternion& q) {
  // Through the library's own rotation matrix, so that both share one convention.
  const Orlo::Matrix3<double> m = ToMatrix3(aiMatrix4x4(q.GetMatrix()));
  Orlo::Point3<double> euler;
  m.ToEulerAnglesXYZ(euler.x, euler.y, euler.z);
  return euler;
}

aiQuaternion ToAiQuaternion(const Orlo::Point3<double>& euler) {
  Orlo::Matrix3<double> m;
  m.FromEulerAnglesXYZ(euler.x, euler.y, euler.z);
  const aiMatrix4x4 full = ToAiMatrix(m);
  return aiQuaternion(aiMatrix3x3(full)).Normalize();
}

Orlo::Point3<double> ClosestEulerAngles(const Orlo::Point3<double>& euler,
                                        const Orlo::Point3<double>& previous) {
  // (x + pi, pi - y, z + pi) gives the same rotation as (x, y, z).
  const Orlo::Point3<double> other(euler.x + kPi, kPi - euler.y, euler.z + kPi);
  Orlo::Point3<double> best;
  double best_distance = 0;
  bool first = true;
  for (const Orlo::Point3<double>& candidate : {euler, other}) {
    const Orlo::Point3<double> shifted(NearestTurn(candidate.x, previous.x),
                                       NearestTurn(candidate.y, previous.y),
                                       NearestTurn(candidate.z, previous.z));
    const double distance = Distance(shifted, previous);
    if (first || distance < best_distance - 1e-12) {
      best = shifted;
      best_distance = distance;
      first = false;
    }
  }
  return best;
}

}  // namespace orlo_assimp::internal
