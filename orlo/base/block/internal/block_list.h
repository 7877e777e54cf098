// Defines BlockList, an ordered list of block pointers that takes one word.
// Nearly every block has exactly one dependant, and nearly every scalar parameter has one
// controller slot, so a list of one entry keeps it in the word itself; a longer list keeps its
// entries in a heap array whose header holds their count and capacity, and the word points
// to that array with its lowest bit set (blocks are aligned, so an entry never has it set).
// The array may start past the beginning of its storage: the first entry is erased in
// constant time, since a block's dependants usually let go of it in the order they linked.
// The list does not own the blocks it names; entries may be null.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Orlo {
class Block;
}

namespace Orlo::internal {

class BlockList {
 public:
  BlockList() = default;
  // `count` null entries.
  explicit BlockList(std::size_t count);
  BlockList(const BlockList& other);
  BlockList& operator=(const BlockList& other);
  ~BlockList() { Release(); }

  std::size_t size() const {
    if (IsInline()) return 1;
    const Heap* heap = HeapPart();
    return heap != nullptr ? heap->size : 0;
  }
  bool empty() const { return size() == 0; }
  // The inline entry is read as itself, never as an array: index 0 is the only one it has.
  Block* operator[](std::size_t index) const {
    return IsInline() ? m_word : HeapPart()->Entries()[index];
  }
  Block* front() const { return (*this)[0]; }
  Block* const* begin() const { return Entries(); }
  Block* const* end() const { return Entries() + size(); }

  void Set(std::size_t index, Block* block) {
    if (IsInline()) {
      m_word = block;
    } else {
      HeapPart()->Entries()[index] = block;
    }
  }
  void push_back(Block* block);
  // Removes entry `index`; later entries move down by one.
  void erase(std::size_t index);
  // Removes every entry equal to `block`, keeping the order of the others; returns how many.
  std::size_t erase_all(const Block* block);
  // Keeps the first `count` entries, adding null entries up to `count`.
  void resize(std::size_t count);
  void clear() { Release(); }

 private:
  struct Heap {
    std::uint32_t size;
    std::uint32_t capacity;  // entries the storage holds, counted from its beginning
    std::uint32_t start;     // where the first entry is
    std::uint32_t unused;
    Block** Storage() { return reinterpret_cast<Block**>(this + 1); }
    Block** Entries() { return Storage() + start; }
  };
  static constexpr std::uintptr_t kHeapTag = 1;

  bool IsInline() const { return (Word() & kHeapTag) == 0; }
  std::uintptr_t Word() const { return reinterpret_cast<std::uintptr_t>(m_word); }
  Heap* HeapPart() const { return reinterpret_cast<Heap*>(Word() & ~kHeapTag); }
  Block* const* Entries() const {
    if (IsInline()) return &m_word;
    Heap* heap = HeapPart();
    return heap != nullptr ? heap->Entries() : nullptr;
  }
  Block** Entries() {
    if (IsInline()) return &m_word;
    Heap* heap = HeapPart();
    return heap != nullptr ? heap->Entries() : nullptr;
  }
  static Heap* NewHeap(std::size_t capacity);
  void SetHeap(Heap* heap) {
    m_word = reinterpret_cast<Block*>(reinterpret_cast<std::uintptr_t>(heap) | kHeapTag);
  }
  void Release();

  // The one entry, or the tagged heap pointer; the tag with no heap means empty.
  Block* m_word = reinterpret_cast<Block*>(kHeapTag);
};

}  // namespace Orlo::internal
