#include <orlo/base/block/internal/dependant_list.h>

#include <algorithm>
#include <new>

namespace Orlo::internal {

DependantList::DependantList(const DependantList& other) : m_one(nullptr) { *this = other; }

DependantList& DependantList::operator=(const DependantList& other) {
  if (this == &other) return *this;
  clear();
  for (Block* block : other) push_back(block);
  return *this;
}

DependantList::~DependantList() { Release(); }

void DependantList::Release() {
  if (!IsInline()) delete[] m_many;
  m_one = nullptr;
  m_size = 0;
  m_capacity = 1;
}

void DependantList::push_back(Block* block) {
  if (m_size == m_capacity) {
    const std::uint32_t capacity = m_capacity * 2;
    auto* grown = new Block*[capacity];
    std::copy(begin(), end(), grown);
    if (!IsInline()) delete[] m_many;
    m_many = grown;
    m_capacity = capacity;
  }
  Data()[m_size++] = block;
}

void DependantList::erase(std::size_t index) {
  Block** data = Data();
  std::copy(data + index + 1, data + m_size, data + index);
  --m_size;
}

std::size_t DependantList::erase_all(const Block* block) {
  Block** data = Data();
  Block** kept_end = std::remove(data, data + m_size, block);
  const auto removed = static_cast<std::size_t>(data + m_size - kept_end);
  m_size -= static_cast<std::uint32_t>(removed);
  return removed;
}

void DependantList::clear() { Release(); }

}  // namespace Orlo::internal
