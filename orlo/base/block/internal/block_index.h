// Defines BlockIndex, which numbers the blocks a walk reaches 0, 1, 2, ... in the order it
// first meets them, so that the walk can keep what it learns of each block in plain vectors.
// The numbers live in an open-addressing hash table in one flat array: no allocation per
// block, and a lookup is a multiply and a short probe.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Orlo {
class Block;
}

namespace Orlo::internal {

class BlockIndex {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFFu;

  // The number of `block` (never null), numbering it next when it has none yet; `added` says
  // which.
  std::uint32_t Insert(const Block* block, bool& added) {
    if ((m_count + 1) * 2 > m_slots.size()) Grow(m_slots.empty() ? 64 : m_slots.size() * 2);
    for (std::size_t i = Home(block);; i = (i + 1) & (m_slots.size() - 1)) {
      Slot& slot = m_slots[i];
      if (slot.block == block) {
        added = false;
        return slot.number;
      }
      if (slot.block == nullptr) {
        slot = {block, static_cast<std::uint32_t>(m_count++)};
        added = true;
        return slot.number;
      }
    }
  }

  // The number of `block`, or kNone when it has none.
  std::uint32_t Find(const Block* block) const {
    if (m_slots.empty() || block == nullptr) return kNone;
    for (std::size_t i = Home(block);; i = (i + 1) & (m_slots.size() - 1)) {
      if (m_slots[i].block == block) return m_slots[i].number;
      if (m_slots[i].block == nullptr) return kNone;
    }
  }

  std::size_t Size() const { return m_count; }

 private:
  struct Slot {
    const Block* block;  // null marks a free slot
    std::uint32_t number;
  };

  std::size_t Home(const Block* block) const {
    // Fibonacci hashing of the address: blocks are aligned, so the low bits say little.
    const auto bits = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(block));
    return static_cast<std::size_t>((bits * 0x9E3779B97F4A7C15ull) >> m_shift);
  }

  // Rehashes into a table of `capacity` slots, a power of two.
  void Grow(std::size_t capacity) {
    std::vector<Slot> old;
    old.swap(m_slots);
    m_slots.assign(capacity, Slot{nullptr, 0});
    m_shift = 64;
    for (std::size_t c = capacity; c > 1; c >>= 1) --m_shift;
    for (const Slot& slot : old) {
      if (slot.block == nullptr) continue;
      for (std::size_t i = Home(slot.block);; i = (i + 1) & (m_slots.size() - 1)) {
        if (m_slots[i].block == nullptr) {
          m_slots[i] = slot;
          break;
        }
      }
    }
  }

  std::vector<Slot> m_slots;
  std::size_t m_count = 0;
  int m_shift = 64;
};

}  // namespace Orlo::internal
