// Defines TypedSlot, the storage of one dependency slot of a scene block, and CloneAs, which
// copies a block into a given class.
// A slot keeps the block exactly as the graph linked it, and the same block seen as the class
// the slot is meant for (null when it is not of that class): the scene reader links whatever
// a file names, so the typed view is the only one the block's own operations use, while the
// graph keeps seeing, saving and releasing the raw block.
#pragma once

#include <orlo/base/block/block.h>

namespace Orlo::internal {

template <typename T>
class TypedSlot {
 public:
  void Set(Block* block) {
    m_block = block;
    m_typed = dynamic_cast<T*>(block);
  }
  Block* Raw() const { return m_block; }
  T* Get() const { return m_typed; }

 private:
  Block* m_block = nullptr;
  T* m_typed = nullptr;
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
