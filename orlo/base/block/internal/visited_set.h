// Defines VisitedSet, the blocks a graph walk has already reached.
// Most walks reach a handful of blocks: those are kept in a short vector and scanned; a walk
// that grows past it moves to an open-addressing hash set in one flat array, so a walk over a
// large graph stays linear and costs no allocation per block.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Orlo {
class Block;
}

namespace Orlo::internal {

class VisitedSet {
 public:
  // Adds `block` (never null); false when it was there already.
  bool Insert(const Block* block) {
    if (!m_table.empty()) return InsertLarge(block);
    if (std::find(m_small.begin(), m_small.end(), block) != m_small.end()) return false;
    if (m_small.size() < kSmallSize) {
      m_small.push_back(block);
      return true;
    }
    Grow(kSmallSize * 4);
    for (const Block* small : m_small) InsertLarge(small);
    m_small.clear();
    return InsertLarge(block);
  }

  bool Contains(const Block* block) const {
    if (m_table.empty()) return std::find(m_small.begin(), m_small.end(), block) != m_small.end();
    if (block == nullptr) return false;
    for (std::size_t i = Home(block);; i = (i + 1) & (m_table.size() - 1)) {
      if (m_table[i] == block) return true;
      if (m_table[i] == nullptr) return false;
    }
  }

 private:
  static constexpr std::size_t kSmallSize = 32;

  std::size_t Home(const Block* block) const {
    // Fibonacci hashing of the address: blocks are aligned, so the low bits say little.
    const auto bits = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(block));
    return static_cast<std::size_t>((bits * 0x9E3779B97F4A7C15ull) >> m_shift);
  }

  bool InsertLarge(const Block* block) {
    if ((m_count + 1) * 2 > m_table.size()) Grow(m_table.size() * 2);
    for (std::size_t i = Home(block);; i = (i + 1) & (m_table.size() - 1)) {
      if (m_table[i] == block) return false;
      if (m_table[i] == nullptr) {
        m_table[i] = block;
        ++m_count;
        return true;
      }
    }
  }

  // Rehashes into a table of `capacity` slots, a power of two.
  void Grow(std::size_t capacity) {
    std::vector<const Block*> old;
    old.swap(m_table);
    m_table.assign(capacity, nullptr);
    m_shift = 64;
    for (std::size_t c = capacity; c > 1; c >>= 1) --m_shift;
    m_count = 0;
    for (const Block* block : old) {
      if (block != nullptr) InsertLarge(block);
    }
  }

  std::vector<const Block*> m_small;
  std::vector<const Block*> m_table;  // empty while the walk is small; null marks a free slot
  std::size_t m_count = 0;
  int m_shift = 64;
};

}  // namespace Orlo::internal
