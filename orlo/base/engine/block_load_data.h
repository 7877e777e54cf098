// Defines BlockLoadData, the scene reader's record of one block chunk while a file loads.
#pragma once

#include <cstdint>
#include <vector>

#include <orlo/base/block/block_type.h>

namespace Orlo {

class Block;

struct BlockLoadData {
  // Read from the block-info chunk; a default type when that chunk is missing.
  BlockType block_type;
  // The block's saved number; -1 when the block-info chunk is missing.
  std::int32_t id = -1;
  // The block created for the chunk, or null; owned by the graph, not by the record.
  Block* block = nullptr;
  // The saved numbers of the blocks in the block's slots, slot by slot; -1 for an empty slot.
  std::vector<std::int32_t> dependency_ids;
};

}  // namespace Orlo
