// Defines SaveBlockGraph and LoadBlockGraph, which write every block reachable from a root
// through the chunk stream, as a scene file stores its blocks, and read them back through the
// registered factories. The tests use them to round-trip a block together
// with the sub-blocks its state lives in.
//
// Layout: chunk 0x0005 holding chunk 0x0010 (the block count, int32) and one chunk 0x0015 per
// block in number order; each 0x0015 holds the block-info chunk 0x0005, the payload chunk
// 0x0020 (the block's Save) and the dependency chunk 0x0010.
#pragma once

#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_factory.h>
#include <orlo/base/engine/block_load_data.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

namespace Orlo::testing {

// Numbers the blocks reachable from `root` in pre-order (slots in order, each block once),
// writes them, and resets their numbers.
inline std::vector<std::uint8_t> SaveBlockGraph(Block* root) {
  std::vector<Block*> order;
  std::vector<Block*> stack{root};
  while (!stack.empty()) {
    Block* block = stack.back();
    stack.pop_back();
    if (block->GetID() != Block::kNoID) continue;
    block->SetID(static_cast<std::uint32_t>(order.size()));
    order.push_back(block);
    for (int i = block->NumDependencies() - 1; i >= 0; --i) {
      if (Block* dependency = block->GetDependency(i)) stack.push_back(dependency);
    }
  }
  SceneSave save;
  save.BeginChunk(0x0005);
  save.BeginChunk(0x0010);
  save.WriteInt32(static_cast<std::int32_t>(order.size()));
  save.EndChunk();
  for (Block* block : order) {
    save.BeginChunk(0x0015);
    block->SaveBlockInfo(&save);
    save.BeginChunk(0x0020);
    EXPECT_EQ(block->Save(&save), 1) << block->GetClassName();
    save.EndChunk();
    block->SaveBlockDependencies(&save);
    save.EndChunk();
  }
  save.EndChunk();
  for (Block* block : order) block->SetID(Block::kNoID);
  return save.TakeBytes();
}

// Reads what SaveBlockGraph wrote, relinks every dependency by number, refreshes the
// parameter tables and returns the first block (owned by the caller), or null on failure.
inline Block* LoadBlockGraph(const std::vector<std::uint8_t>& bytes) {
  SceneLoad load(bytes);
  std::vector<BlockLoadData> records;
  if (load.OpenChunk() != SceneLoad::kChunkOpened || load.CurChunkID() != 0x0005) return nullptr;
  std::int32_t count = 0;
  if (load.OpenChunk() != SceneLoad::kChunkOpened) return nullptr;
  load.ReadInt32(count);
  load.CloseChunk();
  bool ok = true;
  for (std::int32_t n = 0; n < count && ok; ++n) {
    if (load.OpenChunk() != SceneLoad::kChunkOpened || load.CurChunkID() != 0x0015) break;
    BlockLoadData record;
    if (load.OpenChunk() == SceneLoad::kChunkOpened && load.CurChunkID() == 0x0005) {
      load.ReadUInt32(record.block_type.class_id);
      load.ReadUInt32(record.block_type.super_class_id);
      load.ReadUInt32(record.block_type.sub_id);
      load.ReadInt32(record.id);
    }
    load.CloseChunk();
    for (unsigned f = 0; f < SceneEngine::GetNumBlockFactories(); ++f) {
      BlockFactory* factory = SceneEngine::GetBlockFactory(f);
      if (factory->GetBlockType() == record.block_type) {
        record.block = factory->GetBlock(false);
        break;
      }
    }
    if (record.block == nullptr) ok = false;
    if (load.OpenChunk() == SceneLoad::kChunkOpened && record.block != nullptr) {
      if (record.block->Load(&load) == 0) ok = false;
    }
    load.CloseChunk();
    if (record.block != nullptr) record.block->LoadBlockDependencies(&load, &record);
    load.CloseChunk();
    records.push_back(record);
  }
  ok = ok && !load.HasError() && records.size() == static_cast<std::size_t>(count);
  for (BlockLoadData& record : records) {
    if (record.block == nullptr) continue;
    for (std::size_t i = 0; i < record.dependency_ids.size(); ++i) {
      const std::int32_t id = record.dependency_ids[i];
      if (id < 0 || static_cast<std::size_t>(id) >= records.size()) continue;
      (void)record.block->MakeDependencyByID(static_cast<int>(i), records[id].block);
    }
  }
  for (BlockLoadData& record : records) {
    if (record.block != nullptr) record.block->UpdateDataTable(false);
  }
  if (!ok) {
    for (BlockLoadData& record : records) {
      if (record.block != nullptr && record.block->GetParentBlock() == nullptr) {
        record.block->DeleteThisBlock(true);
      }
    }
    return nullptr;
  }
  return records.empty() ? nullptr : records[0].block;
}

}  // namespace Orlo::testing
