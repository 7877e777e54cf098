// Defines VisitedSet, the blocks a graph walk has already reached.
// Most walks reach a handful of blocks: those are kept in a short vector and scanned; a walk
// that grows past it moves to a hash set, so a walk over a large graph stays linear.
#pragma once

#include <algorithm>
#include <cstddef>
#include <unordered_set>
#include <vector>

namespace Orlo {
class Block;
}

namespace Orlo::internal {

class VisitedSet {
 public:
  // Adds `block`; false when it was there already.
  bool Insert(const Block* block) {
    if (!m_large.empty()) return m_large.insert(block).second;
    if (std::find(m_small.begin(), m_small.end(), block) != m_small.end()) return false;
    if (m_small.size() < kSmallSize) {
      m_small.push_back(block);
      return true;
    }
    m_large.insert(m_small.begin(), m_small.end());
    m_small.clear();
    return m_large.insert(block).second;
  }

  bool Contains(const Block* block) const {
    if (!m_large.empty()) return m_large.count(block) != 0;
    return std::find(m_small.begin(), m_small.end(), block) != m_small.end();
  }

 private:
  static constexpr std::size_t kSmallSize = 32;

  std::vector<const Block*> m_small;
  std::unordered_set<const Block*> m_large;
};

}  // namespace Orlo::internal
