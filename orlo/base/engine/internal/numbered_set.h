// Defines NumberedSet, a set of blocks that tells the blocks of a numbered scene apart by
// their numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/block/internal/visited_set.h>

namespace Orlo::internal {

// A walk over a scene that was just numbered (each block's id its place in `numbered`, as the
// numbering walk leaves them) marks the blocks it reaches here. A numbered block is one bit
// found by its id, with no hashing of its address; a block made or renumbered since goes to
// a hash set. Only the id of an inserted block is read.
class NumberedSet {
 public:
  static constexpr std::size_t kUnnumbered = static_cast<std::size_t>(-1);

  // `numbered` must outlive the set and stay unchanged.
  explicit NumberedSet(const std::vector<Block*>& numbered)
      : m_numbered(numbered), m_bits(numbered.size(), false) {}

  const std::vector<Block*>& Numbered() const { return m_numbered; }

  // The block's place in the numbering, or kUnnumbered.
  std::size_t NumberOf(const Block* block) const {
    const std::uint32_t id = block->GetID();
    if (id >= m_numbered.size() || m_numbered[id] != block) return kUnnumbered;
    return id;
  }

  // Adds `block` (never null); false when it was there already.
  bool Insert(const Block* block) {
    const std::size_t number = NumberOf(block);
    if (number == kUnnumbered) return m_others.Insert(block);
    if (m_bits[number]) return false;
    m_bits[number] = true;
    return true;
  }

  bool Contains(const Block* block) const {
    const std::size_t number = NumberOf(block);
    return number == kUnnumbered ? m_others.Contains(block) : m_bits[number];
  }

 private:
  const std::vector<Block*>& m_numbered;
  std::vector<bool> m_bits;
  VisitedSet m_others;
};

}  // namespace Orlo::internal
