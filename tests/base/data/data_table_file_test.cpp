// A parameter table holding every kind of value, written and read back through the real
// chunk stream the way the scene file does it: one record chunk per block with its identity,
// its payload and its dependency numbers, then the links made again by number.
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <orlo/base/block/block_factory.h>
#include <orlo/base/data/data.h>
#include <orlo/base/data/data_bool.h>
#include <orlo/base/data/data_color.h>
#include <orlo/base/data/data_float.h>
#include <orlo/base/data/data_int.h>
#include <orlo/base/data/data_point3.h>
#include <orlo/base/data/data_string.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/block_load_data.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

#include "tests/base/data/data_test_blocks.h"

namespace Orlo {
namespace {

using testing::data::Release;
using testing::data::TableOwner;
using testing::data::TestController;

class TestControllerFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override { return TestController(0.0).GetBlockType(); }
  Block* GetBlock(bool) const override { return new TestController(0.0); }
  std::string GetName() const override { return "TestController"; }
};

// The blocks below `root` in pre-order, each once.
std::vector<Block*> Enumerate(Block* root) {
  std::vector<Block*> order;
  std::vector<Block*> stack = {root};
  while (!stack.empty()) {
    Block* block = stack.back();
    stack.pop_back();
    bool seen = false;
    for (Block* b : order) seen = seen || b == block;
    if (seen) continue;
    order.push_back(block);
    for (int i = block->NumDependencies() - 1; i >= 0; --i) {
      if (block->GetDependency(i) != nullptr) stack.push_back(block->GetDependency(i));
    }
  }
  return order;
}

std::vector<std::uint8_t> WriteBlocks(Block* root) {
  std::vector<Block*> blocks = Enumerate(root);
  for (std::size_t n = 0; n < blocks.size(); ++n) blocks[n]->SetID(static_cast<std::uint32_t>(n));
  SceneSave save;
  save.BeginChunk(0x05);
  save.BeginChunk(0x10);
  save.WriteInt32(static_cast<std::int32_t>(blocks.size()));
  save.EndChunk();
  for (Block* block : blocks) {
    save.BeginChunk(0x15);
    block->SaveBlockInfo(&save);
    save.BeginChunk(0x20);
    EXPECT_EQ(block->Save(&save), 1) << block->GetClassName();
    save.EndChunk();
    block->SaveBlockDependencies(&save);
    save.EndChunk();
  }
  save.EndChunk();
  return save.TakeBytes();
}

// Reads the blocks back, links them by number and returns block 0 (null on failure). Blocks
// that were read but could not be linked are released.
Block* ReadBlocks(std::vector<std::uint8_t> bytes) {
  SceneLoad load(std::move(bytes));
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  std::int32_t count = 0;
  load.ReadInt32(count);
  load.CloseChunk();
  std::vector<BlockLoadData> records(static_cast<std::size_t>(count));
  for (BlockLoadData& record : records) {
    EXPECT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
    EXPECT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
    load.ReadUInt32(record.block_type.class_id);
    load.ReadUInt32(record.block_type.super_class_id);
    load.ReadUInt32(record.block_type.sub_id);
    load.ReadInt32(record.id);
    load.CloseChunk();
    for (unsigned f = 0; f < SceneEngine::GetNumBlockFactories(); ++f) {
      BlockFactory* factory = SceneEngine::GetBlockFactory(f);
      if (factory->GetBlockType() == record.block_type) {
        record.block = factory->GetBlock(false);
        break;
      }
    }
    EXPECT_NE(record.block, nullptr);
    EXPECT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
    EXPECT_EQ(load.CurChunkID(), 0x20u);
    if (record.block != nullptr) {
      EXPECT_EQ(record.block->Load(&load), 1) << record.block->GetClassName();
    }
    load.CloseChunk();
    if (record.block != nullptr) record.block->LoadBlockDependencies(&load, &record);
    load.CloseChunk();
  }
  load.CloseChunk();
  EXPECT_FALSE(load.HasError()) << load.GetStatus().GetMessage();
  for (BlockLoadData& record : records) {
    for (std::size_t slot = 0; slot < record.dependency_ids.size(); ++slot) {
      const std::int32_t number = record.dependency_ids[slot];
      if (number < 0 || number >= count) continue;
      EXPECT_TRUE(record.block
                      ->MakeDependencyByID(static_cast<int>(slot),
                                           records[static_cast<std::size_t>(number)].block)
                      .IsOk());
    }
  }
  return records.empty() ? nullptr : records[0].block;
}

class DataTableFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SceneEngine::DestroyFactories();
    SceneEngine::SetScene(nullptr);
    TestController::live = 0;
    SceneEngine::AddBlockFactory(new DataFloatFactory);
    SceneEngine::AddBlockFactory(new DataIntFactory);
    SceneEngine::AddBlockFactory(new DataBoolFactory);
    SceneEngine::AddBlockFactory(new DataPoint3Factory);
    SceneEngine::AddBlockFactory(new DataColorFactory);
    SceneEngine::AddBlockFactory(new DataStringFactory);
    SceneEngine::AddBlockFactory(new DataTableFactory);
    SceneEngine::AddBlockFactory(new TestControllerFactory);
  }
  void TearDown() override {
    SceneEngine::DestroyFactories();
    EXPECT_EQ(TestController::live, 0);
  }
};

TEST_F(DataTableFileTest, ATableOfEveryKindComesBackWithItsValuesAndLinks) {
  auto* table = new DataTable(true);
  table->AddDataBool(0, true, 3);
  table->AddDataInt(1, -4, 2);
  table->AddDataFloat(2, 0.5, 2);
  table->AddDataPoint3(3, {1.0, 2.0, 3.0}, 1);
  table->AddDataColor(4, {0.25f, 0.5f, 0.75f}, 2);
  table->AddDataString(5, "dflt", 2);
  table->SetValue(0, false, 0, 1);
  table->SetValue(1, 123456, 0, 1);
  table->SetValue(2, -1.0e-3, 0, 0);
  table->SetValue(3, Point3<double>(-7.0, 8.5, 1.0e9), 0, 0);
  table->SetValue(4, Color(1.0f, 0.0f, 0.5f), 0, 1);
  table->SetValue(5, "a string longer than its default record", 0, 1);
  table->SetController(2, new TestController(3.0), 1);

  Block* read = ReadBlocks(WriteBlocks(table));
  auto* loaded = dynamic_cast<DataTable*>(read);
  ASSERT_NE(loaded, nullptr);
  // The owner of a table rebuilds the map once the slots are linked.
  loaded->UpdateIDToIndex();

  ASSERT_EQ(loaded->GetNumDatas(), 6);
  EXPECT_EQ(loaded->GetIDToIndex(), (std::vector<int>{0, 1, 2, 3, 4, 5}));
  for (int id = 0; id < 6; ++id) {
    SCOPED_TRACE(id);
    EXPECT_EQ(loaded->GetDependencyName(id), table->GetDependencyName(id));
    EXPECT_EQ(loaded->GetDataType(id), table->GetDataType(id));
    ASSERT_EQ(loaded->GetDataSize(id), table->GetDataSize(id));
    EXPECT_EQ(loaded->GetData(id)->GetParentBlock(), loaded);
    for (int e = 0; e < table->GetDataSize(id); ++e) {
      EXPECT_EQ(loaded->GetBool(id, 0, e), table->GetBool(id, 0, e));
      EXPECT_EQ(loaded->GetInt(id, 0, e), table->GetInt(id, 0, e));
      EXPECT_EQ(loaded->GetFloat(id, 0, e), table->GetFloat(id, 0, e));
      EXPECT_EQ(loaded->GetPoint3F(id, 0, e), table->GetPoint3F(id, 0, e));
      EXPECT_EQ(loaded->GetPoint3I(id, 0, e), table->GetPoint3I(id, 0, e));
      EXPECT_EQ(loaded->GetColor(id, 0, e), table->GetColor(id, 0, e));
      EXPECT_EQ(loaded->GetString(id, 0, e), table->GetString(id, 0, e));
    }
  }
  EXPECT_EQ(loaded->GetString(5, 0, 1), "a string longer than its default record");
  // The controller came back as a link in the value's slot.
  EXPECT_EQ(loaded->GetData(2)->NumDependencies(), 2);
  EXPECT_EQ(loaded->GetAnimationContoller(2, 0), nullptr);
  ASSERT_NE(loaded->GetAnimationContoller(2, 1), nullptr);
  EXPECT_EQ(loaded->GetAnimationContoller(2, 1)->GetParentBlock(), loaded->GetData(2));
  // Defaults came back: grown values fill alike.
  for (int id = 0; id < 6; ++id) {
    table->SetDataSize(id, 4);
    loaded->SetDataSize(id, 4);
    EXPECT_EQ(loaded->GetString(id, 0, 3), table->GetString(id, 0, 3));
    EXPECT_EQ(loaded->GetFloat(id, 0, 3), table->GetFloat(id, 0, 3));
    EXPECT_EQ(loaded->GetColor(id, 0, 3), table->GetColor(id, 0, 3));
    EXPECT_EQ(loaded->GetPoint3F(id, 0, 3), table->GetPoint3F(id, 0, 3));
    EXPECT_EQ(loaded->GetBool(id, 0, 3), table->GetBool(id, 0, 3));
  }
  Release(loaded);
  Release(table);
}

TEST_F(DataTableFileTest, ALoadedTableUnderItsOwnerPassesChangesUpAgain) {
  auto* owner = new TableOwner;
  auto* table = new DataTable(true);
  ASSERT_TRUE(owner->MakeDependencyByID(0, table).IsOk());
  table->AddDataFloat(0, 1.0, 1);
  table->AddDataInt(1, 2, 1);
  auto* loaded = dynamic_cast<DataTable*>(ReadBlocks(WriteBlocks(table)));
  ASSERT_NE(loaded, nullptr);
  loaded->UpdateIDToIndex();
  auto* loaded_owner = new TableOwner;
  ASSERT_TRUE(loaded_owner->MakeDependencyByID(0, loaded).IsOk());
  testing::RecordingListener listener;
  loaded_owner->AddBlockListener(&listener);
  EXPECT_TRUE(loaded_owner->SetAttribute(1, 9, 0, 0).IsOk());
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].code, 3);
  EXPECT_EQ(listener.events[0].param, 1);
  loaded_owner->RemoveBlockListener(&listener);
  Release(loaded_owner);
  Release(owner);
}

}  // namespace
}  // namespace Orlo
