// Defines Point3<T>, a three-component vector value (x, y, z).
#pragma once

namespace Orlo {

template <typename T>
struct Point3 {
  T x = T();
  T y = T();
  T z = T();

  constexpr Point3() = default;
  constexpr Point3(T x_value, T y_value, T z_value) : x(x_value), y(y_value), z(z_value) {}

  constexpr Point3 operator+(const Point3& other) const {
    return Point3(x + other.x, y + other.y, z + other.z);
  }
  constexpr Point3 operator-(const Point3& other) const {
    return Point3(x - other.x, y - other.y, z - other.z);
  }
  constexpr Point3 operator-() const { return Point3(-x, -y, -z); }
  constexpr Point3 operator*(T factor) const { return Point3(x * factor, y * factor, z * factor); }
  constexpr bool operator==(const Point3& other) const {
    return x == other.x && y == other.y && z == other.z;
  }
  constexpr bool operator!=(const Point3& other) const { return !(*this == other); }
};

using Point3D = Point3<double>;
using Point3I = Point3<int>;

}  // namespace Orlo
