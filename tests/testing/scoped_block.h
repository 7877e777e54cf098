// Defines ScopedBlock, which holds a block that nothing depends on for the length of a test
// and releases it through the graph (DeleteThisBlock(true)) at the end of the scope.
#pragma once

#include <orlo/base/block/block.h>

namespace Orlo::testing {

template <typename T>
class ScopedBlock {
 public:
  explicit ScopedBlock(T* block) : m_block(block) {}
  ScopedBlock(const ScopedBlock&) = delete;
  ScopedBlock& operator=(const ScopedBlock&) = delete;
  ~ScopedBlock() {
    if (m_block != nullptr) m_block->DeleteThisBlock(true);
  }

  T* get() const { return m_block; }
  T* operator->() const { return m_block; }
  T& operator*() const { return *m_block; }

 private:
  T* m_block;
};

}  // namespace Orlo::testing
