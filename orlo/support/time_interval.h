// Defines TimeInterval, the span of time (in signed 32-bit ticks) over which an evaluated
// value stays valid. Both ends are inclusive; an interval whose start lies after its end is
// empty and contains no time.
#pragma once

#include <limits>

namespace Orlo {

class TimeInterval {
 public:
  // The empty interval.
  constexpr TimeInterval() = default;
  // The times from start to end, both included; empty when start > end.
  constexpr TimeInterval(int start, int end) : m_start(start), m_end(end) {}

  // The interval that contains every time.
  static constexpr TimeInterval Forever() {
    return TimeInterval(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
  }

  constexpr int GetStart() const { return m_start; }
  constexpr int GetEnd() const { return m_end; }
  constexpr bool IsEmpty() const { return m_start > m_end; }

  // Whether `time` lies in the interval.
  constexpr bool Valid(int time) const { return m_start <= time && time <= m_end; }

  // The intersection of the two intervals (empty when they do not overlap).
  constexpr TimeInterval operator&(TimeInterval other) const {
    return TimeInterval(m_start > other.m_start ? m_start : other.m_start,
                        m_end < other.m_end ? m_end : other.m_end);
  }

  constexpr TimeInterval& operator&=(TimeInterval other) { return *this = *this & other; }

  // Every empty interval equals every other, whatever its ends.
  constexpr bool operator==(const TimeInterval& other) const {
    return (IsEmpty() && other.IsEmpty()) || (m_start == other.m_start && m_end == other.m_end);
  }
  constexpr bool operator!=(const TimeInterval& other) const { return !(*this == other); }

 private:
  int m_start = 0;
  int m_end = -1;
};

}  // namespace Orlo
