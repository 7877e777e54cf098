#include "tools/orlo/block_catalog.h"

#include <vector>

#include <orlo/base/engine/scene_engine.h>
#include <orlo/support/scene_load.h>

namespace Orlo::cli {

namespace {

constexpr std::uint32_t kBlockDataChunk = 0x20;
constexpr unsigned kBlockTableClass = 105;
constexpr unsigned kDataTableClass = 205;

}  // namespace

std::string TypeText(BlockType type) {
  return "(" + std::to_string(type.class_id) + ", " + std::to_string(type.super_class_id) + ", " +
         std::to_string(type.sub_id) + ")";
}

BlockFactory* BlockCatalog::FindFactory(BlockType type) {
  for (unsigned i = 0; i < SceneEngine::GetNumBlockFactories(); ++i) {
    BlockFactory* factory = SceneEngine::GetBlockFactory(i);
    if (factory->GetBlockType() == type) return factory;
  }
  return nullptr;
}

std::string BlockCatalog::ClassName(BlockType type) {
  const auto key = std::make_tuple(type.class_id, type.super_class_id, type.sub_id);
  auto found = m_class_names.find(key);
  if (found != m_class_names.end()) return found->second;
  std::string name;
  if (BlockFactory* factory = FindFactory(type)) {
    ScopedBlock block(factory->GetBlock(false));
    if (block) name = block->GetClassName();
  }
  m_class_names.emplace(key, name);
  return name;
}

std::string BlockCatalog::DisplayName(BlockType type) {
  std::string name = ClassName(type);
  return name.empty() ? "unknown " + TypeText(type) : name;
}

ScopedBlock BlockCatalog::Instantiate(const SceneFile& file, const BlockRecord& record) {
  if (!record.has_info) return ScopedBlock();
  BlockFactory* factory = FindFactory(record.type);
  if (factory == nullptr) return ScopedBlock();
  ScopedBlock block(factory->GetBlock(false));
  if (!block || !record.has_data) return block;
  // The block reads from a copy of its whole block chunk, so that what follows its payload
  // (the dependency chunk, which list blocks bound their counts with) is there as in the file.
  SceneLoad load(std::vector<std::uint8_t>(file.bytes.begin() + record.content_begin,
                                           file.bytes.begin() + record.content_end));
  while (load.OpenChunk() == SceneLoad::kChunkOpened) {
    if (load.CurChunkID() == kBlockDataChunk) {
      // Kept as a loader does it: a block's Load result is not examined.
      (void)block->Load(&load);
      break;
    }
    load.CloseChunk();
  }
  return block;
}

std::vector<std::string> BlockCatalog::SlotNames(const SceneFile& file, std::size_t index) {
  const BlockRecord& record = file.blocks[index];
  std::vector<std::string> names(record.dependencies.size());
  ScopedBlock block = Instantiate(file, record);
  const bool is_list = record.has_info && (record.type.class_id == kBlockTableClass ||
                                           record.type.class_id == kDataTableClass);
  for (std::size_t slot = 0; slot < names.size(); ++slot) {
    const std::int32_t target = record.dependencies[slot];
    if (!block) {
      names[slot] = "slot_" + std::to_string(slot);
    } else if (is_list) {
      // The list classes name a slot after the class of the block it holds.
      const bool known = target >= 0 && static_cast<std::size_t>(target) < file.blocks.size() &&
                         file.blocks[static_cast<std::size_t>(target)].has_info;
      if (known) {
        names[slot] = DisplayName(file.blocks[static_cast<std::size_t>(target)].type);
      } else {
        names[slot] = target == -1 ? "no_dependency" : "slot_" + std::to_string(slot);
      }
    } else {
      names[slot] = block->GetDependencyName(static_cast<int>(slot));
    }
  }
  return names;
}

}  // namespace Orlo::cli
