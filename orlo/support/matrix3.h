// Defines Matrix3<T>, an affine transform of row vectors: four rows of three values, rows 0
// to 2 the linear part (the images of the x, y and z axes), row 3 the translation.
// A plain value type: copied by value, owns nothing.
//
// A point p is transformed as p × M, so a product A × B applies A first and B second:
//   Matrix3D m = scale * rotation * translation;  // scales, then rotates, then moves
#pragma once

#include <orlo/support/point3.h>

#include <cmath>

namespace Orlo {

template <typename T>
class Matrix3 {
 public:
  // Row r, column c is m[r][c].
  T m[4][3];

  // The identity.
  constexpr Matrix3() : m{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}} {}
  constexpr Matrix3(const Point3<T>& row0, const Point3<T>& row1, const Point3<T>& row2,
                    const Point3<T>& row3)
      : m{{row0.x, row0.y, row0.z},
          {row1.x, row1.y, row1.z},
          {row2.x, row2.y, row2.z},
          {row3.x, row3.y, row3.z}} {}

  static constexpr Matrix3 Identity() { return Matrix3(); }
  // Every entry zero, the translation included.
  static constexpr Matrix3 Zero() {
    return Matrix3(Point3<T>(), Point3<T>(), Point3<T>(), Point3<T>());
  }

  // Requires: 0 <= row <= 3.
  constexpr Point3<T> GetRow(int row) const { return Point3<T>(m[row][0], m[row][1], m[row][2]); }
  // Requires: 0 <= row <= 3.
  constexpr void SetRow(int row, const Point3<T>& value) {
    m[row][0] = value.x;
    m[row][1] = value.y;
    m[row][2] = value.z;
  }

  constexpr Point3<T> GetTranslation() const { return GetRow(3); }
  constexpr void SetTranslation(const Point3<T>& value) { SetRow(3, value); }

  constexpr void IdentityMatrix() { *this = Matrix3(); }

  // The determinant of the linear part (rows 0 to 2).
  constexpr T Determinant() const {
    return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
           m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
           m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
  }

  // The composition "this, then b": row r, column c of the result is
  // a[r][0]·b[0][c] + a[r][1]·b[1][c] + a[r][2]·b[2][c], plus b[3][c] on the translation row.
  constexpr Matrix3 operator*(const Matrix3& b) const {
    Matrix3 result = Zero();
    for (int r = 0; r < 4; ++r) {
      for (int c = 0; c < 3; ++c) {
        result.m[r][c] = m[r][0] * b.m[0][c] + m[r][1] * b.m[1][c] + m[r][2] * b.m[2][c];
        if (r == 3) result.m[r][c] += b.m[3][c];
      }
    }
    return result;
  }
  constexpr Matrix3& operator*=(const Matrix3& b) { return *this = *this * b; }

  constexpr bool operator==(const Matrix3& other) const {
    for (int r = 0; r < 4; ++r) {
      for (int c = 0; c < 3; ++c) {
        if (m[r][c] != other.m[r][c]) return false;
      }
    }
    return true;
  }
  constexpr bool operator!=(const Matrix3& other) const { return !(*this == other); }

  // Sets the linear part to the rotation about the x axis by x, then about the y axis by y,
  // then about the z axis by z (radians, right-handed, applied in that order to row vectors:
  // Rx × Ry × Rz). The translation row is left as it was.
  void FromEulerAnglesXYZ(T x, T y, T z) {
    const T cx = std::cos(x), sx = std::sin(x);
    const T cy = std::cos(y), sy = std::sin(y);
    const T cz = std::cos(z), sz = std::sin(z);
    m[0][0] = cy * cz;
    m[0][1] = cy * sz;
    m[0][2] = -sy;
    m[1][0] = sx * sy * cz - cx * sz;
    m[1][1] = sx * sy * sz + cx * cz;
    m[1][2] = sx * cy;
    m[2][0] = cx * sy * cz + sx * sz;
    m[2][1] = cx * sy * sz - sx * cz;
    m[2][2] = cx * cy;
  }

  // The angles that FromEulerAnglesXYZ turns into this linear part, for a pure rotation:
  // x and z in (-pi, pi], y in [-pi/2, pi/2]. Returns false at gimbal lock (y = ±pi/2),
  // where only x - z (y = pi/2) or x + z (y = -pi/2) is fixed: z is then reported as 0 and
  // x carries the whole turn.
  //
  // A linear part that still carries scale is accepted: the angles are read from its
  // unnormalised rows with atan2 only, so no finite input gives NaN or a crash. For a
  // uniform positive scale they are the angles of the rotation. A zero row 0 (x axis
  // scaled to nothing) gives y = z = 0 and returns false.
  bool ToEulerAnglesXYZ(T& x, T& y, T& z) const {
    const T cos_y = std::hypot(m[0][0], m[0][1]);
    const T row0_length = std::hypot(cos_y, m[0][2]);
    // Relative test so that a scaled rotation locks exactly where its rotation would.
    constexpr T kLockTolerance = static_cast<T>(1e-12);
    if (cos_y > kLockTolerance * row0_length) {
      x = std::atan2(m[1][2], m[2][2]);
      y = std::atan2(-m[0][2], cos_y);
      z = std::atan2(m[0][1], m[0][0]);
      return true;
    }
    const T half_pi = static_cast<T>(1.57079632679489661923132169163975144L);
    if (row0_length == 0) {
      // The x axis collapsed to a point (a zero scale): y and z cannot be read, report 0.
      x = std::atan2(m[1][2], m[2][2]);
      y = 0;
      z = 0;
      return false;
    }
    if (m[0][2] <= 0) {
      // sin y = 1: row 1 is (sin(x - z), cos(x - z), 0).
      y = half_pi;
      x = std::atan2(m[1][0], m[1][1]);
    } else {
      // sin y = -1: row 1 is (-sin(x + z), cos(x + z), 0).
      y = -half_pi;
      x = std::atan2(-m[1][0], m[1][1]);
    }
    z = 0;
    return false;
  }
};

using Matrix3D = Matrix3<double>;

}  // namespace Orlo
