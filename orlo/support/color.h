// Defines Color, three 32-bit floating-point components red, green and blue.
#pragma once

namespace Orlo {

struct Color {
  float r = 0.0f;
  float g = 0.0f;
  float b = 0.0f;

  constexpr Color() = default;
  constexpr Color(float red, float green, float blue) : r(red), g(green), b(blue) {}

  constexpr bool operator==(const Color& other) const {
    return r == other.r && g == other.g && b == other.b;
  }
  constexpr bool operator!=(const Color& other) const { return !(*this == other); }
};

}  // namespace Orlo
