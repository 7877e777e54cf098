// Defines SaturatingAdd, the sum of two path counts that stops at the largest count instead of
// wrapping around: a graph with much sharing has more paths than any integer holds.
#pragma once

#include <cstdint>
#include <limits>

namespace Orlo::internal {

inline std::uint64_t SaturatingAdd(std::uint64_t a, std::uint64_t b) {
  return b > std::numeric_limits<std::uint64_t>::max() - a
             ? std::numeric_limits<std::uint64_t>::max()
             : a + b;
}

}  // namespace Orlo::internal
