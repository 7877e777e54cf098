// Defines Box3<T>, an axis-aligned box given by its minimum and maximum corners.
// A plain value type. The default box is empty: its minimum sits at +MAX_REAL and its
// maximum at -MAX_REAL on every axis, so that adding the first point makes it that point.
#pragma once

#include <orlo/support/math.h>
#include <orlo/support/point3.h>

namespace Orlo {

template <typename T>
struct Box3 {
  Point3<T> min{Math<T>::MAX_REAL, Math<T>::MAX_REAL, Math<T>::MAX_REAL};
  Point3<T> max{-Math<T>::MAX_REAL, -Math<T>::MAX_REAL, -Math<T>::MAX_REAL};

  constexpr Box3() = default;
  constexpr Box3(const Point3<T>& minimum, const Point3<T>& maximum) : min(minimum), max(maximum) {}

  // Makes the box empty again.
  constexpr void Init() { *this = Box3(); }

  // A box is empty when on some axis its minimum lies above its maximum; a single point
  // (minimum equal to maximum) is not empty.
  constexpr bool IsEmpty() const { return min.x > max.x || min.y > max.y || min.z > max.z; }

  // Whether p lies in the box, faces included; an empty box contains nothing.
  constexpr bool Contains(const Point3<T>& p) const {
    return min.x <= p.x && p.x <= max.x && min.y <= p.y && p.y <= max.y && min.z <= p.z &&
           p.z <= max.z;
  }

  // Requires: the box is not empty.
  constexpr Point3<T> Center() const {
    return Point3<T>((min.x + max.x) / 2, (min.y + max.y) / 2, (min.z + max.z) / 2);
  }
  // The extent on each axis. Requires: the box is not empty.
  constexpr Point3<T> Width() const { return max - min; }

  // Grows the box to hold p.
  constexpr Box3& operator+=(const Point3<T>& p) {
    if (p.x < min.x) min.x = p.x;
    if (p.y < min.y) min.y = p.y;
    if (p.z < min.z) min.z = p.z;
    if (p.x > max.x) max.x = p.x;
    if (p.y > max.y) max.y = p.y;
    if (p.z > max.z) max.z = p.z;
    return *this;
  }

  // Grows the box to hold the other box; adding an empty box changes nothing.
  constexpr Box3& operator+=(const Box3& other) {
    if (other.IsEmpty()) return *this;
    *this += other.min;
    *this += other.max;
    return *this;
  }

  constexpr bool operator==(const Box3& other) const {
    return min == other.min && max == other.max;
  }
  constexpr bool operator!=(const Box3& other) const { return !(*this == other); }
};

using Box3D = Box3<double>;

}  // namespace Orlo
