// Defines the one pair of helpers through which the chunk files store and load numbers.
// They work on caller-owned byte arrays and keep no state.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

namespace Orlo::internal {

// Stores the unsigned integer `value` at `out` as little-endian bytes, whatever the host's
// byte order. Compilers turn the shifts into one store on little-endian hosts.
template <typename T>
inline void StoreLittleEndian(T value, std::uint8_t* out) {
  static_assert(std::is_unsigned<T>::value, "store the bit pattern as an unsigned integer");
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    out[i] = static_cast<std::uint8_t>(value >> (8 * i));
  }
}

// Loads an unsigned integer stored by StoreLittleEndian.
template <typename T>
inline T LoadLittleEndian(const std::uint8_t* in) {
  static_assert(std::is_unsigned<T>::value, "load the bit pattern as an unsigned integer");
  T value = 0;
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    value = static_cast<T>(value | (static_cast<T>(in[i]) << (8 * i)));
  }
  return value;
}

// The bit patterns of signed and floating-point numbers, which travel as unsigned integers
// of the same width.
inline std::uint32_t BitsOf(float value) {
  std::uint32_t bits;
  std::memcpy(&bits, &value, sizeof(bits));
  return bits;
}
inline std::uint64_t BitsOf(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof(bits));
  return bits;
}
inline float FloatFromBits(std::uint32_t bits) {
  float value;
  std::memcpy(&value, &bits, sizeof(value));
  return value;
}
inline double DoubleFromBits(std::uint64_t bits) {
  double value;
  std::memcpy(&value, &bits, sizeof(value));
  return value;
}

}  // namespace Orlo::internal
