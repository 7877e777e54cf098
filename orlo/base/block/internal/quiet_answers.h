// Defines QuietAnswers, the answers the event walk keeps of whether anything above a block can
// observe an event, until the graph may have gained an observer.
// The answers live beside the blocks, in one open-addressing table, so that a block does not
// carry a stamp for them. Each entry carries the generation it was given in; forgetting every
// answer moves to the next generation in constant time, and an entry of an older generation
// counts as a free slot. Entries are never removed within a generation, so a lookup may stop at
// the first slot that is not of the current one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Orlo {
class Block;
}

namespace Orlo::internal {

class QuietAnswers {
 public:
  enum class Answer { kUnknown, kQuiet, kObserved };

  Answer Find(const Block* block) const {
    if (m_slots.empty()) return Answer::kUnknown;
    for (std::size_t i = Home(block);; i = Next(i)) {
      const Slot& slot = m_slots[i];
      if (!IsCurrent(slot)) return Answer::kUnknown;
      if (slot.block == block) return (slot.stamp & 1) != 0 ? Answer::kQuiet : Answer::kObserved;
    }
  }

  void Record(const Block* block, bool quiet) {
    if ((m_live + 1) * 2 > m_slots.size()) Grow();
    const std::uint64_t stamp = (m_generation << 1) | (quiet ? 1 : 0);
    for (std::size_t i = Home(block);; i = Next(i)) {
      Slot& slot = m_slots[i];
      if (!IsCurrent(slot)) {
        slot = {block, stamp};
        ++m_live;
        return;
      }
      if (slot.block == block) {
        slot.stamp = stamp;
        return;
      }
    }
  }

  // Drops every answer.
  void Forget() {
    ++m_generation;
    m_live = 0;
  }

 private:
  struct Slot {
    const Block* block;
    std::uint64_t stamp;  // the generation, shifted left, and the answer (1: quiet) below it
  };

  bool IsCurrent(const Slot& slot) const { return (slot.stamp >> 1) == m_generation; }
  std::size_t Next(std::size_t i) const { return (i + 1) & (m_slots.size() - 1); }
  std::size_t Home(const Block* block) const {
    // Fibonacci hashing of the address: blocks are aligned, so the low bits say little.
    const auto bits = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(block));
    return static_cast<std::size_t>((bits * 0x9E3779B97F4A7C15ull) >> m_shift);
  }

  // Doubles the table (or makes the first one), keeping the current answers.
  void Grow() {
    std::vector<Slot> old;
    old.swap(m_slots);
    const std::size_t capacity = old.empty() ? 64 : old.size() * 2;
    m_slots.assign(capacity, Slot{nullptr, 0});
    m_shift = 64;
    for (std::size_t c = capacity; c > 1; c >>= 1) --m_shift;
    for (const Slot& slot : old) {
      if (!IsCurrent(slot)) continue;
      std::size_t i = Home(slot.block);
      while (IsCurrent(m_slots[i])) i = Next(i);
      m_slots[i] = slot;
    }
  }

  std::vector<Slot> m_slots;
  std::size_t m_live = 0;
  // Starts at 1: the zeroed slots of a new table are of generation 0, so they are free.
  std::uint64_t m_generation = 1;
  int m_shift = 64;
};

}  // namespace Orlo::internal
