// Defines TypedSlot, the storage of one dependency slot of a scene block, and CloneAs, which
// copies a block into a given class.
// A slot keeps the block exactly as the graph linked it, and the same block seen as the class
// the slot is meant for (null when it is not of that class): the scene reader links whatever
// a file names, so the typed view is the only one the block's own operations use, while the
// graph keeps seeing, saving and releasing the raw block.
#pragma once

#include <cstdint>

#include <orlo/base/block/block.h>

namespace Orlo::internal {

template <typename T>
class TypedSlot {
 public:
  void Set(Block* block) { Set(block, dynamic_cast<T*>(block)); }
  // `typed` is `block` seen as a T, or null where the slot's owner will not use it as one.
  void Set(Block* block, T* typed) {
    m_word = typed != nullptr ? reinterpret_cast<std::uintptr_t>(typed) | kTyped
                              : reinterpret_cast<std::uintptr_t>(block);
  }
  // Needs T complete: Block is a non-virtual base of every block class, and the cast finds
  // the block inside the T.
  Block* Raw() const {
    if (T* typed = Get()) return static_cast<Block*>(typed);
    return reinterpret_cast<Block*>(m_word);
  }
  T* Get() const {
    return (m_word & kTyped) != 0 ? reinterpret_cast<T*>(m_word & ~kTyped) : nullptr;
  }

 private:
  // One word: the block seen as a T with the lowest bit set (always clear in an aligned
  // object's address), or the block as linked when it is not a usable T.
  static constexpr std::uintptr_t kTyped = 1;
  std::uintptr_t m_word = 0;
};

// A clone of `source` as a T, or null when `source` is null. A clone that is not a T (a host
// class whose Clone returns another class) is released at once instead of leaking.
template <typename T>
T* CloneAs(Block* source) {
  if (source == nullptr) return nullptr;
  Block* copy = source->Clone();
  T* typed = dynamic_cast<T*>(copy);
  if (typed == nullptr && copy != nullptr) copy->DeleteThisBlock(true);
  return typed;
}

}  // namespace Orlo::internal
