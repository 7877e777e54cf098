// Defines Point3<T>, a three-component vector value (x, y, z), with the vector arithmetic
// the library computes with (sums, scaling, dot and cross products, length).
// A plain value type: copied by value, owns nothing.
#pragma once

#include <cmath>

namespace Orlo {

template <typename T>
struct Point3 {
  T x = T();
  T y = T();
  T z = T();

  constexpr Point3() = default;
  constexpr Point3(T x_value, T y_value, T z_value) : x(x_value), y(y_value), z(z_value) {}

  // Component i: 0 is x, 1 is y, 2 is z.
  // Requires: 0 <= i <= 2.
  constexpr T& operator[](int i) { return i == 0 ? x : (i == 1 ? y : z); }
  constexpr const T& operator[](int i) const { return i == 0 ? x : (i == 1 ? y : z); }

  constexpr Point3 operator+(const Point3& other) const {
    return Point3(x + other.x, y + other.y, z + other.z);
  }
  constexpr Point3 operator-(const Point3& other) const {
    return Point3(x - other.x, y - other.y, z - other.z);
  }
  constexpr Point3 operator-() const { return Point3(-x, -y, -z); }
  constexpr Point3 operator*(T factor) const { return Point3(x * factor, y * factor, z * factor); }
  constexpr Point3 operator/(T divisor) const {
    return Point3(x / divisor, y / divisor, z / divisor);
  }

  constexpr Point3& operator+=(const Point3& other) {
    x += other.x;
    y += other.y;
    z += other.z;
    return *this;
  }
  constexpr Point3& operator-=(const Point3& other) {
    x -= other.x;
    y -= other.y;
    z -= other.z;
    return *this;
  }
  constexpr Point3& operator*=(T factor) {
    x *= factor;
    y *= factor;
    z *= factor;
    return *this;
  }

  constexpr bool operator==(const Point3& other) const {
    return x == other.x && y == other.y && z == other.z;
  }
  constexpr bool operator!=(const Point3& other) const { return !(*this == other); }
};

template <typename T>
constexpr Point3<T> operator*(T factor, const Point3<T>& p) {
  return p * factor;
}

template <typename T>
constexpr T Dot(const Point3<T>& a, const Point3<T>& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

// a × b = (ay·bz − az·by, az·bx − ax·bz, ax·by − ay·bx), right-handed.
template <typename T>
constexpr Point3<T> Cross(const Point3<T>& a, const Point3<T>& b) {
  return Point3<T>(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}

// The Euclidean length sqrt(x² + y² + z²).
template <typename T>
T Length(const Point3<T>& p) {
  return std::sqrt(Dot(p, p));
}

using Point3D = Point3<double>;
using Point3I = Point3<int>;

}  // namespace Orlo
