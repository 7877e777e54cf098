#include <orlo/base/block/internal/block_list.h>

#include <algorithm>
#include <cassert>
#include <memory>
#include <new>

namespace Orlo::internal {

BlockList::BlockList(std::size_t count) { resize(count); }

BlockList::BlockList(const BlockList& other) { *this = other; }

BlockList& BlockList::operator=(const BlockList& other) {
  if (this == &other) return *this;
  clear();
  for (Block* block : other) push_back(block);
  return *this;
}

BlockList::Heap* BlockList::NewHeap(std::size_t capacity) {
  void* memory = ::operator new(sizeof(Heap) + capacity * sizeof(Block*));
  auto* heap = new (memory) Heap{0, static_cast<std::uint32_t>(capacity), 0, 0};
  std::uninitialized_fill_n(heap->Storage(), capacity, nullptr);
  return heap;
}

void BlockList::Release() {
  if (!IsInline()) ::operator delete(HeapPart());
  m_word = reinterpret_cast<Block*>(kHeapTag);
}

void BlockList::push_back(Block* block) {
  assert((reinterpret_cast<std::uintptr_t>(block) & kHeapTag) == 0);
  if (IsInline()) {
    // One entry becomes two: the list moves to the heap.
    Heap* heap = NewHeap(2);
    heap->Entries()[0] = m_word;
    heap->Entries()[1] = block;
    heap->size = 2;
    SetHeap(heap);
    return;
  }
  Heap* heap = HeapPart();
  if (heap == nullptr) {
    m_word = block;  // empty: the entry fits the word
    return;
  }
  if (heap->start + heap->size == heap->capacity && heap->start >= heap->capacity / 2) {
    // At least half the storage lies before the first entry: move the entries down to it.
    std::copy(heap->Entries(), heap->Entries() + heap->size, heap->Storage());
    std::fill(heap->Storage() + heap->size, heap->Storage() + heap->capacity, nullptr);
    heap->start = 0;
  }
  if (heap->start + heap->size == heap->capacity) {
    Heap* grown = NewHeap(std::size_t{heap->capacity} * 2);
    std::copy(heap->Entries(), heap->Entries() + heap->size, grown->Entries());
    grown->size = heap->size;
    ::operator delete(heap);
    SetHeap(grown);
    heap = grown;
  }
  heap->Entries()[heap->size++] = block;
}

void BlockList::erase(std::size_t index) {
  assert(index < size());
  if (IsInline()) {
    Release();
    return;
  }
  Heap* heap = HeapPart();
  Block** entries = heap->Entries();
  if (index < heap->size / 2) {
    // The nearer end moves: the entries before this one move up by one.
    std::copy_backward(entries, entries + index, entries + index + 1);
    entries[0] = nullptr;
    ++heap->start;
  } else {
    std::copy(entries + index + 1, entries + heap->size, entries + index);
    entries[heap->size - 1] = nullptr;
  }
  --heap->size;
}

std::size_t BlockList::erase_all(const Block* block) {
  if (IsInline()) {
    if (m_word != block) return 0;
    Release();
    return 1;
  }
  Heap* heap = HeapPart();
  if (heap == nullptr) return 0;
  Block** entries = heap->Entries();
  Block** kept_end = std::remove(entries, entries + heap->size, block);
  const auto removed = static_cast<std::size_t>(entries + heap->size - kept_end);
  heap->size -= static_cast<std::uint32_t>(removed);
  return removed;
}

void BlockList::resize(std::size_t count) {
  const std::size_t old_size = size();
  if (count == old_size) return;
  if (count == 0) {
    Release();
    return;
  }
  if (count == 1) {
    Block* first = old_size > 0 ? front() : nullptr;
    Release();
    m_word = first;
    return;
  }
  Heap* heap = IsInline() ? nullptr : HeapPart();
  if (heap != nullptr && heap->start + count <= heap->capacity) {
    Block** entries = heap->Entries();
    if (count > old_size) std::fill(entries + old_size, entries + count, nullptr);
    heap->size = static_cast<std::uint32_t>(count);
    return;
  }
  Heap* grown = NewHeap(count);
  std::copy(begin(), begin() + std::min(old_size, count), grown->Entries());
  grown->size = static_cast<std::uint32_t>(count);
  Release();
  SetHeap(grown);
}

}  // namespace Orlo::internal
