// Defines Quat and AffinePartsD, the pieces into which DecomposeAffine splits an affine
// matrix, and declares DecomposeAffine with the conversions that give the pieces back as
// matrices. Plain values: nothing is owned.
//
// For a linear part L (rows 0 to 2) and row vectors, the pieces satisfy
//   p × L = sign · p × Uᵀ × diag(stretch) × U × R
// with R = ToMatrix3(rotation) and U = ToMatrix3(stretch_rotation): the stretch acts along
// the rows of U (the stretch axes), then the essential rotation R turns the result, and
// the translation row is kept as is. So for a matrix built as scale × rotation ×
// translation, stretch is the scale (per axis, in order), R the rotation and U the identity.
#pragma once

#include <orlo/support/matrix3.h>
#include <orlo/support/point3.h>

namespace Orlo {

// A rotation quaternion (x, y, z) · sin(angle / 2), w = cos(angle / 2). The default is the
// identity rotation.
struct Quat {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
  double w = 1.0;

  constexpr Quat() = default;
  constexpr Quat(double x_value, double y_value, double z_value, double w_value)
      : x(x_value), y(y_value), z(z_value), w(w_value) {}
};

// The result of DecomposeAffine, fields in this order.
struct AffinePartsD {
  // The translation row.
  Point3<double> translation;
  // The essential rotation, a proper rotation (never a reflection).
  Quat rotation;
  // The rotation whose matrix rows are the stretch axes.
  Quat stretch_rotation;
  // The stretch factor along each stretch axis; never negative.
  Point3<double> stretch;
  // 1 when the linear part's determinant is positive or zero, -1 when it is negative; a
  // negative determinant is carried here so that stretch stays the plain magnitudes.
  double determinant_sign = 1.0;
};

// Polar decomposition of m into parts (see the formula at the top of this file).
// A singular linear part is accepted: the stretch factors of the collapsed axes are 0 and
// the rotation is completed to a proper one; no finite input gives NaN.
// Requires: parts is not null.
void DecomposeAffine(Matrix3<double> m, AffinePartsD* parts);

// The matrix that DecomposeAffine splits into parts (the inverse of the decomposition, up
// to rounding).
Matrix3<double> ComposeAffine(const AffinePartsD& parts);

// The rotation matrix (row vectors, zero translation) of a unit quaternion.
Matrix3<double> ToMatrix3(const Quat& q);

// The unit quaternion of the rotation in m's linear part, with w >= 0.
// Requires: m's linear part is a proper rotation.
Quat ToQuat(const Matrix3<double>& m);

}  // namespace Orlo
