#include <orlo/support/math_functions.h>

#include <cmath>

namespace Orlo {

Point3<double> TransformPoint(const Point3<double>& p, const Matrix3<double>& m) {
  return Point3<double>(p.x * m.m[0][0] + p.y * m.m[1][0] + p.z * m.m[2][0] + m.m[3][0],
                        p.x * m.m[0][1] + p.y * m.m[1][1] + p.z * m.m[2][1] + m.m[3][1],
                        p.x * m.m[0][2] + p.y * m.m[1][2] + p.z * m.m[2][2] + m.m[3][2]);
}

Point3<double> TransformPoint(const Matrix3<double>& m, const Point3<double>& p) {
  return TransformPoint(p, m);
}

Matrix3<double> Inverse(const Matrix3<double>& m) {
  const double(&a)[4][3] = m.m;
  const double det = m.Determinant();
  // Kept as is: a singular matrix must still give a (huge but finite) inverse rather than a
  // failure, because the modifier code that inverts node matrices never checks for one.
  const double r = det == 0.0 ? 10000000.0 : 1.0 / det;

  Matrix3<double> result;
  // Adjugate (transposed cofactors) of the linear part, scaled by r.
  result.m[0][0] = (a[1][1] * a[2][2] - a[1][2] * a[2][1]) * r;
  result.m[0][1] = (a[0][2] * a[2][1] - a[0][1] * a[2][2]) * r;
  result.m[0][2] = (a[0][1] * a[1][2] - a[0][2] * a[1][1]) * r;
  result.m[1][0] = (a[1][2] * a[2][0] - a[1][0] * a[2][2]) * r;
  result.m[1][1] = (a[0][0] * a[2][2] - a[0][2] * a[2][0]) * r;
  result.m[1][2] = (a[0][2] * a[1][0] - a[0][0] * a[1][2]) * r;
  result.m[2][0] = (a[1][0] * a[2][1] - a[1][1] * a[2][0]) * r;
  result.m[2][1] = (a[0][1] * a[2][0] - a[0][0] * a[2][1]) * r;
  result.m[2][2] = (a[0][0] * a[1][1] - a[0][1] * a[1][0]) * r;

  const Point3<double> t = m.GetRow(3);
  const Point3<double> moved =
      result.GetRow(0) * t.x + result.GetRow(1) * t.y + result.GetRow(2) * t.z;
  result.SetRow(3, -moved);
  return result;
}

Point3<double> Normalize(const Point3<double>& v, double* length) {
  const double len = std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
  if (length != nullptr) *length = len;
  if (len == 0.0) return Point3<double>(1.0, 0.0, 0.0);
  // One division and three products, so results match the callers' expectations bit for bit.
  const double inverse_length = 1.0 / len;
  return Point3<double>(v.x * inverse_length, v.y * inverse_length, v.z * inverse_length);
}

Box3<double> TransformBox(const Box3<double>& box, const Matrix3<double>& m) {
  Box3<double> result;
  if (box.IsEmpty()) return result;
  for (int corner = 0; corner < 8; ++corner) {
    const Point3<double> p((corner & 1) ? box.max.x : box.min.x,
                           (corner & 2) ? box.max.y : box.min.y,
                           (corner & 4) ? box.max.z : box.min.z);
    result += TransformPoint(p, m);
  }
  return result;
}

}  // namespace Orlo
