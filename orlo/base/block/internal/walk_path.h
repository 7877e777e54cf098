// Defines WalkPath, the set of blocks on the current path of a depth-first walk.
// Walks over the block graph keep an explicit stack; WalkPath answers "is this block already
// on the path?" in constant time however deep the path grows, so a walk never loops on a
// cycle that raw slot stores may have left.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Orlo {
class Block;
}

namespace Orlo::internal {

class WalkPath {
 public:
  void Push(const Block* block) {
    m_path.push_back(block);
    if (m_indexed && m_path.size() > kShallowDepth) IndexLast();
  }

  void Pop() {
    if (m_indexed && m_path.size() > kShallowDepth) UnindexLast();
    m_path.pop_back();
    if (m_path.size() <= kShallowDepth) Unindex();
  }

  std::size_t Size() const { return m_path.size(); }

  bool Contains(const Block* block) {
    const std::size_t shallow = m_path.size() < kShallowDepth ? m_path.size() : kShallowDepth;
    for (std::size_t i = 0; i < shallow; ++i) {
      if (m_path[i] == block) return true;
    }
    if (m_path.size() <= kShallowDepth || block == nullptr) return false;
    if (!m_indexed) Index();
    for (std::size_t i = Home(block);; i = Next(i)) {
      if (m_table[i] == block) return true;
      if (m_table[i] == nullptr) return false;
    }
  }

 private:
  // Short paths, the common case, are scanned; only deeper entries go into the hash table, and
  // only once a deep path is first asked: walks that rarely ask pay for the path alone.
  static constexpr std::size_t kShallowDepth = 16;

  // The deep entries live in one open-addressing table, a block once per time it stands on the
  // path. The path is a stack, so the entry a Pop takes out is always the newest one of its
  // probe run: emptying its slot never cuts the run of an entry that stays.
  std::size_t Home(const Block* block) const {
    const auto bits = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(block));
    return static_cast<std::size_t>((bits * 0x9E3779B97F4A7C15ull) >> m_shift);
  }
  std::size_t Next(std::size_t i) const { return (i + 1) & (m_table.size() - 1); }

  void IndexLast() {
    if (m_path.back() == nullptr) return;  // null marks a free slot; nobody asks for it
    if ((m_path.size() - kShallowDepth) * 2 > m_table.size()) {
      Rebuild(m_table.size() * 2);
      return;
    }
    std::size_t i = Home(m_path.back());
    while (m_table[i] != nullptr) i = Next(i);
    m_table[i] = m_path.back();
  }

  void UnindexLast() {
    const Block* block = m_path.back();
    if (block == nullptr) return;
    std::size_t newest = m_table.size();
    for (std::size_t i = Home(block); m_table[i] != nullptr; i = Next(i)) {
      if (m_table[i] == block) newest = i;
    }
    m_table[newest] = nullptr;
  }

  void Index() {
    m_indexed = true;
    Rebuild(64);
  }

  void Unindex() {
    m_indexed = false;
    m_table.clear();
  }

  // Refills a table of at least `capacity` slots (a power of two) from the path, oldest first.
  void Rebuild(std::size_t capacity) {
    const std::size_t deep = m_path.size() - kShallowDepth;
    while (deep * 2 > capacity) capacity *= 2;
    m_table.assign(capacity, nullptr);
    m_shift = 64;
    for (std::size_t c = capacity; c > 1; c >>= 1) --m_shift;
    for (std::size_t p = kShallowDepth; p < m_path.size(); ++p) {
      if (m_path[p] == nullptr) continue;
      std::size_t i = Home(m_path[p]);
      while (m_table[i] != nullptr) i = Next(i);
      m_table[i] = m_path[p];
    }
  }

  std::vector<const Block*> m_path;
  // While m_indexed, m_table holds exactly the entries of m_path beyond the first
  // kShallowDepth; otherwise it is empty.
  std::vector<const Block*> m_table;
  int m_shift = 64;
  bool m_indexed = false;
};

}  // namespace Orlo::internal
