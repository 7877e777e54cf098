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
    if (m_indexed && m_path.size() > kShallowDepth) ++m_deep[block];
  }

  void Pop() {
    if (m_indexed && m_path.size() > kShallowDepth) {
      auto found = m_deep.find(m_path.back());
      if (--found->second == 0) m_deep.erase(found);
    }
    m_path.pop_back();
    if (m_path.size() <= kShallowDepth) m_indexed = false;  // m_deep is empty again
  }

  std::size_t Size() const { return m_path.size(); }

  bool Contains(const Block* block) {
    const std::size_t shallow = m_path.size() < kShallowDepth ? m_path.size() : kShallowDepth;
    for (std::size_t i = 0; i < shallow; ++i) {
      if (m_path[i] == block) return true;
    }
    if (m_path.size() <= kShallowDepth) return false;
    if (!m_indexed) Index();
    return m_deep.count(block) != 0;
  }

 private:
  // Short paths, the common case, are scanned; only deeper entries go into the hash set, and
  // only once a deep path is first asked: walks that rarely ask pay for the path alone.
  static constexpr std::size_t kShallowDepth = 16;

  void Index() {
    for (std::size_t i = kShallowDepth; i < m_path.size(); ++i) ++m_deep[m_path[i]];
    m_indexed = true;
  }

  std::vector<const Block*> m_path;
  // While m_indexed, m_deep counts exactly the entries of m_path beyond the first
  // kShallowDepth (a block may stand on the path more than once); otherwise it is empty.
  std::unordered_map<const Block*, int> m_deep;
  bool m_indexed = false;
};

}  // namespace Orlo::internal
