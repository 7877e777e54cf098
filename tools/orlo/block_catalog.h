// Defines BlockCatalog, what the factory registry tells the orlo tool about the blocks of a
// scene file: which types have a factory, their class names, and the names of their slots.
//
// The catalog asks factories for short-lived blocks of each class it meets; each such block
// lives in a ScopedBlock, which releases it through the graph's release path when it goes.
// Class names are kept per type for the catalog's life. The registry must not change while a
// catalog is in use.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_factory.h>
#include <orlo/base/block/block_type.h>

#include "tools/orlo/scene_file.h"

namespace Orlo::cli {

// Holds a block that nothing else links, and releases it (with everything only it holds) on
// destruction.
class ScopedBlock {
 public:
  explicit ScopedBlock(Block* block = nullptr) : m_block(block) {}
  ScopedBlock(const ScopedBlock&) = delete;
  ScopedBlock& operator=(const ScopedBlock&) = delete;
  ScopedBlock(ScopedBlock&& other) noexcept : m_block(other.m_block) { other.m_block = nullptr; }
  ~ScopedBlock() {
    if (m_block != nullptr) m_block->DeleteThisBlock(true);
  }
  Block* get() const { return m_block; }
  Block* operator->() const { return m_block; }
  explicit operator bool() const { return m_block != nullptr; }

 private:
  Block* m_block;
};

// "(115, 16, 32)": class id, super class id, sub id.
std::string TypeText(BlockType type);

class BlockCatalog {
 public:
  // The first registered factory whose type equals `type`, as a loader chooses it; null when
  // none is registered.
  static BlockFactory* FindFactory(BlockType type);

  // The class name of the blocks of `type` ("" when no factory is registered for it).
  std::string ClassName(BlockType type);
  // The class name, or "unknown (505, 9, 1)" when no factory is registered.
  std::string DisplayName(BlockType type);

  // A block of the record's class with its payload read, as a loader would make it before
  // linking; empty when the record has no type or no factory.
  ScopedBlock Instantiate(const SceneFile& file, const BlockRecord& record);

  // The name of each dependency slot of block `index` of `file`, as the block's class names
  // it. List blocks name each slot after the class of the block it holds ("slot_<i>" when
  // that block is not in the file). Without a factory the slots are named "slot_<i>".
  std::vector<std::string> SlotNames(const SceneFile& file, std::size_t index);

 private:
  std::map<std::tuple<unsigned, unsigned, unsigned>, std::string> m_class_names;
};

}  // namespace Orlo::cli
