// Defines the one pair of helpers through which the chunk files store and load numbers.
// They work on caller-owned byte arrays and keep no state.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

namespace Orlo::internal {

#if defined(__BYTE_ORDER__) && defined(__ORDER_LITTLE_ENDIAN__) && \
    __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
constexpr bool kHostIsLittleEndian = true;
#else
constexpr bool kHostIsLittleEndian = false;
#endif

// Stores the unsigned integer `value` at `out` as little-endian bytes, whatever the host's
// byte order. On a little-endian host this is one plain copy: compilers do not always merge
// the byte shifts, and byte-wise access to a number just stored stalls the CPU.
template <typename T>
inline void StoreLittleEndian(T value, std::uint8_t* out) {
  static_assert(std::is_unsigned<T>::value, "store the bit pattern as an unsigned integer");
  if constexpr (kHostIsLittleEndian) {
    std::memcpy(out, &value, sizeof(T));
  } else {
    for (std::size_t i = 0; i < sizeof(T); ++i) {
      out[i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
  }
}

// Loads an unsigned integer stored by StoreLittleEndian.
template <typename T>
inline T LoadLittleEndian(const std::uint8_t* in) {
  static_assert(std::is_unsigned<T>::value, "load the bit pattern as an unsigned integer");
  T value = 0;
  if constexpr (kHostIsLittleEndian) {
    std::memcpy(&value, in, sizeof(T));
  } else {
    for (std::size_t i = 0; i < sizeof(T); ++i) {
      value = static_cast<T>(value | (static_cast<T>(in[i]) << (8 * i)));
    }
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
