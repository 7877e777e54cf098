// Defines DependantList, the ordered back references of a block.
// Nearly every block has exactly one dependant, so one entry lives inside the list itself and
// only a block with several dependants allocates. Entries keep the order they were added in;
// the list does not own the blocks it names.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Orlo {
class Block;
}

namespace Orlo::internal {

class DependantList {
 public:
  DependantList() : m_one(nullptr) {}
  DependantList(const DependantList& other);
  DependantList& operator=(const DependantList& other);
  ~DependantList();

  std::size_t size() const { return m_size; }
  bool empty() const { return m_size == 0; }
  Block* operator[](std::size_t index) const { return Data()[index]; }
  Block* front() const { return Data()[0]; }
  Block* const* begin() const { return Data(); }
  Block* const* end() const { return Data() + m_size; }

  void push_back(Block* block);
  // Removes entry `index`; later entries move down by one.
  void erase(std::size_t index);
  // Removes every entry equal to `block`, keeping the order of the others; returns how many.
  std::size_t erase_all(const Block* block);
  void clear();

 private:
  bool IsInline() const { return m_capacity <= 1; }
  Block* const* Data() const { return IsInline() ? &m_one : m_many; }
  Block** Data() { return IsInline() ? &m_one : m_many; }
  void Release();

  union {
    Block* m_one;    // the entry, while the capacity is 1
    Block** m_many;  // the entries, once it grew
  };
  std::uint32_t m_size = 0;
  std::uint32_t m_capacity = 1;
};

}  // namespace Orlo::internal
