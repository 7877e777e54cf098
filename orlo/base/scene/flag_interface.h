// Defines FlagInterface, a word of host flags that a scene block carries besides its state.
// The flags are for host code that marks blocks while it works on them (visited, dirty, and
// the like): the library neither reads, saves nor copies them.
#pragma once

#include <cstdint>

namespace Orlo {

class FlagInterface {
 public:
  std::uint32_t GetFlags() const { return m_flags; }
  void SetFlags(std::uint32_t flags) { m_flags = flags; }
  // Sets (or, with `on` false, clears) every bit of `mask`.
  void SetFlag(std::uint32_t mask, bool on = true) {
    m_flags = on ? m_flags | mask : m_flags & ~mask;
  }
  void ClearFlag(std::uint32_t mask) { m_flags &= ~mask; }
  // Whether any bit of `mask` is set.
  bool TestFlag(std::uint32_t mask) const { return (m_flags & mask) != 0; }

 protected:
  FlagInterface() = default;
  FlagInterface(const FlagInterface&) = default;
  FlagInterface& operator=(const FlagInterface&) = default;
  ~FlagInterface() = default;

 private:
  std::uint32_t m_flags = 0;
};

}  // namespace Orlo
