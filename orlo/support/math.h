// Defines Math<T>, the numeric constants of the math values for the real type T.
// Holds constants only; nothing to own.
#pragma once

#include <limits>

namespace Orlo {

template <typename T>
struct Math {
  // The largest finite value of T; the corners of an empty box sit at ±MAX_REAL.
  static constexpr T MAX_REAL = std::numeric_limits<T>::max();
  static constexpr T PI = static_cast<T>(3.14159265358979323846264338327950288L);
  static constexpr T HALF_PI = static_cast<T>(1.57079632679489661923132169163975144L);
  static constexpr T TWO_PI = static_cast<T>(6.28318530717958647692528676655900577L);
};

using MathD = Math<double>;

}  // namespace Orlo
