// Defines ChunkArena, objects made a chunk at a time and freed all together.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <vector>

namespace Orlo::internal {

// Hands out default-made objects that keep their address until Clear. A file of millions of
// blocks needs a record per block while it loads; they are made in chunks that grow to
// kMaxChunk objects, so a large load makes a few thousand allocations for them instead of
// millions, and a small one stays small.
template <typename T>
class ChunkArena {
 public:
  T* New() {
    if (m_chunks.empty() || m_used == m_chunk_size) {
      m_chunk_size = m_chunks.empty() ? kFirstChunk : std::min(m_chunk_size * 2, kMaxChunk);
      m_chunks.push_back(std::make_unique<T[]>(m_chunk_size));
      m_used = 0;
    }
    return &m_chunks.back()[m_used++];
  }

  // Destroys every object handed out.
  void Clear() {
    m_chunks.clear();
    m_used = 0;
    m_chunk_size = 0;
  }

 private:
  static constexpr std::size_t kFirstChunk = 16;
  static constexpr std::size_t kMaxChunk = 4096;

  std::vector<std::unique_ptr<T[]>> m_chunks;
  std::size_t m_chunk_size = 0;  // the size of the last chunk
  std::size_t m_used = 0;        // objects handed out from the last chunk
};

}  // namespace Orlo::internal
