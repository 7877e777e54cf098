// Declares the helpers that read slot counts from a block's scene-file record.
// A block's slots travel as 4-byte block numbers in its dependency chunk, so every count of
// slots read from a file is bounded by the bytes that could hold those numbers, before
// anything is allocated.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Orlo {
class SceneLoad;
}

namespace Orlo::internal {

// The size of one slot's block number in a dependency chunk.
inline constexpr std::uint64_t kSavedSlotBytes = 4;

// Reads the slot count that a list block (a BlockTable, a DataTable) writes in its payload.
// Its slots come back later, through the dependency chunk that follows in the file, so a
// count the rest of the file cannot hold is corrupt. Returns false, with the error recorded
// in the reader, for a count that could not be read, is negative or does not fit; `what`
// names the count in the message.
bool ReadListSlotCount(SceneLoad* load, const char* what, std::size_t& count);

}  // namespace Orlo::internal
