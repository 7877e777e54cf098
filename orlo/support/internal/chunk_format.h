// Defines the constants of the chunk file layout shared by SceneSave and SceneLoad.
// docs/scene-file-format.md describes the layout for writers of other readers.
#pragma once

#include <cstdint>

namespace Orlo::internal {

// Format history, newest first, one line per change:
//   1. Chunk header = id (uint32) + content length (uint64); strings = uint32 length + bytes;
//      all numbers little-endian.

// A chunk header: the id, then the length of the content that follows the header.
constexpr std::uint64_t kChunkIdBytes = 4;
constexpr std::uint64_t kChunkLengthBytes = 8;
constexpr std::uint64_t kChunkHeaderBytes = kChunkIdBytes + kChunkLengthBytes;

// A string: its byte count, then the bytes, with no terminator.
constexpr std::uint64_t kStringLengthBytes = 4;
constexpr std::uint64_t kMaxStringBytes = 0xFFFFFFFFu;

}  // namespace Orlo::internal
