// Defines WalkPath, the set of blocks on the current path of a depth-first walk.
// Walks over the block graph keep an explicit stack; WalkPath answers "is this block already
// on the path?" in constant time however deep the path grows, so a walk never loops on a
// cycle that raw slot stores may have left.
#pragma once

#include <cstddef>
#include <unordered_map>
#include <vector>

namespace Orlo {
class Block;
}

namespace Orlo::internal {

class WalkPath {
 public:
  void Push(const Block* block) {
    m_path.push_back(block);
    if (m_path.size() > kShallowDepth) ++m_deep[block];
  }

  void Pop() {
    if (m_path.size() > kShallowDepth) {
      auto found = m_deep.find(m_path.back());
      if (--found->second == 0) m_deep.erase(found);
    }
    m_path.pop_back();
  }

  std::size_t Size() const { return m_path.size(); }

  bool Contains(const Block* block) const {
    const std::size_t shallow = m_path.size() < kShallowDepth ? m_path.size() : kShallowDepth;
    for (std::size_t i = 0; i < shallow; ++i) {
      if (m_path[i] == block) return true;
    }
    return !m_deep.empty() && m_deep.count(block) != 0;
  }

 private:
  // Short paths, the common case, are scanned; only deeper entries go into the hash set.
  static constexpr std::size_t kShallowDepth = 16;

  std::vector<const Block*> m_path;
  // m_deep counts exactly the entries of m_path beyond the first kShallowDepth; a block may
  // stand on the path more than once.
  std::unordered_map<const Block*, int> m_deep;
};

}  // namespace Orlo::internal
