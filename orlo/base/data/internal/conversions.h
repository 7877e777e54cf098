// Defines the numeric conversions that several data values share.
#pragma once

#include <limits>

namespace Orlo::internal {

// Truncates toward zero. A value whose truncation does not fit a signed 32-bit integer, and
// NaN, give -2147483648: kept as is, scene values written by earlier versions were converted
// this way.
inline int TruncateToInt(double value) {
  // Written so that NaN fails both comparisons.
  if (value > -2147483649.0 && value < 2147483648.0) return static_cast<int>(value);
  return std::numeric_limits<int>::min();
}

// An integer read as a double goes through a 32-bit float, so magnitudes above 2^24 lose
// precision: kept as is, evaluated scenes depend on the rounded values.
inline double IntThroughFloat(int value) { return static_cast<double>(static_cast<float>(value)); }

}  // namespace Orlo::internal
