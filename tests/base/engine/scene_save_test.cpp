#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include <boost/filesystem.hpp>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_factory.h>
#include <orlo/base/engine/base_library.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/node.h>
#include <orlo/support/bitmap_manager.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

#include "tests/base/scene/scene_test_blocks.h"
#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using Bytes = std::vector<std::uint8_t>;
using testing::TestBlock;
using testing::TestMaterial;

// A material whose Save fails after writing a few bytes.
class FailingMaterial : public TestMaterial {
 public:
  FailingMaterial() : TestMaterial("failing") {}
  int Save(SceneSave* save) override {
    save->WriteUInt32(0xBADu);
    return 0;
  }
};

// A block of the file as the reader finds it.
struct Record {
  std::uint32_t class_id = 0;
  std::uint32_t super_class_id = 0;
  std::uint32_t sub_id = 0;
  std::uint32_t id = 0;
  Bytes payload;
  std::int32_t num_slots = -1;
  std::vector<std::uint32_t> dependencies;
};

// The whole content of the chunk the reader stands in.
Bytes ReadRest(SceneLoad& load) {
  Bytes bytes(static_cast<std::size_t>(load.BytesLeftInChunk()));
  unsigned read = 0;
  if (!bytes.empty()) {
    EXPECT_TRUE(load.Read(bytes.data(), static_cast<unsigned>(bytes.size()), read));
  }
  return bytes;
}

// Reads one block chunk (already opened) whose three sub-chunks must be there, in order.
Record DecodeRecord(SceneLoad& load) {
  Record record;
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x05u);
  EXPECT_EQ(load.BytesLeftInChunk(), 16u);
  load.ReadUInt32(record.class_id);
  load.ReadUInt32(record.super_class_id);
  load.ReadUInt32(record.sub_id);
  load.ReadUInt32(record.id);
  load.CloseChunk();
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x20u);
  record.payload = ReadRest(load);
  load.CloseChunk();
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x10u);
  load.ReadInt32(record.num_slots);
  for (std::int32_t i = 0; i < record.num_slots; ++i) {
    std::uint32_t number = 0;
    load.ReadUInt32(number);
    record.dependencies.push_back(number);
  }
  EXPECT_EQ(load.BytesLeftInChunk(), 0u);
  load.CloseChunk();
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
  return record;
}

// Decodes a whole scene file, checking its frame: one scene chunk holding the header and
// then exactly as many block chunks as the header counts, and nothing after it.
std::vector<Record> DecodeScene(const std::string& path, std::uint32_t* header_count) {
  Status status;
  SceneLoad load(path.c_str(), &status);
  EXPECT_TRUE(status.IsOk()) << status.GetMessage();
  std::vector<Record> records;
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x05u);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x10u);
  EXPECT_EQ(load.BytesLeftInChunk(), 4u);
  load.ReadUInt32(*header_count);
  load.CloseChunk();
  for (std::uint32_t k = 0; k < *header_count; ++k) {
    if (load.OpenChunk() != SceneLoad::kChunkOpened) {
      ADD_FAILURE() << "block chunk " << k << " is missing";
      break;
    }
    EXPECT_EQ(load.CurChunkID(), 0x15u);
    records.push_back(DecodeRecord(load));
    load.CloseChunk();
  }
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
  load.CloseChunk();
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
  EXPECT_FALSE(load.HasError()) << load.GetStatus().GetMessage();
  return records;
}

// What a block's own Save writes, alone.
Bytes PayloadOf(Block* block) {
  SceneSave save;
  EXPECT_EQ(block->Save(&save), 1);
  return save.TakeBytes();
}

// Every block reachable from `root` in first-visit pre-order, written recursively as the
// reference order of the records. Small scenes only.
void PreOrder(Block* block, std::set<Block*>& seen, std::vector<Block*>& out) {
  if (!seen.insert(block).second) return;
  out.push_back(block);
  for (int i = 0; i < block->NumDependencies(); ++i) {
    if (Block* dependency = block->GetDependency(i)) PreOrder(dependency, seen, out);
  }
}

Bytes ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

class EngineSaveTest : public ::testing::Test {
 protected:
  void SetUp() override {
    m_dir = boost::filesystem::temp_directory_path() /
            boost::filesystem::unique_path("orlo-engine-save-%%%%-%%%%-%%%%");
    boost::filesystem::create_directories(m_dir);
    engine.InitScene();
  }
  void TearDown() override {
    SceneEngine::SetBitmapManager(nullptr);
    SceneEngine::SetScene(nullptr);
    SceneEngine::DestroyFactories();
    boost::filesystem::remove_all(m_dir);
  }

  std::string PathOf(const std::string& name) const { return (m_dir / name).string(); }

  // Checks every record against the block the numbering gave its position.
  void ExpectRecordsMatchTheScene(const std::vector<Record>& records) {
    std::set<Block*> seen;
    std::vector<Block*> order;
    PreOrder(engine.GetMainScene(), seen, order);
    ASSERT_EQ(records.size(), order.size());
    for (std::size_t k = 0; k < order.size(); ++k) {
      Block* block = order[k];
      const Record& record = records[k];
      SCOPED_TRACE("record " + std::to_string(k) + ", " + block->GetClassName());
      EXPECT_EQ(record.class_id, block->GetBlockType().class_id);
      EXPECT_EQ(record.super_class_id, block->GetBlockType().super_class_id);
      EXPECT_EQ(record.sub_id, block->GetBlockType().sub_id);
      EXPECT_EQ(record.id, k);
      EXPECT_EQ(record.payload, PayloadOf(block));
      ASSERT_EQ(record.num_slots, block->NumDependencies());
      for (int i = 0; i < block->NumDependencies(); ++i) {
        Block* dependency = block->GetDependency(i);
        EXPECT_EQ(record.dependencies[static_cast<std::size_t>(i)],
                  dependency != nullptr ? dependency->GetID() : Block::kNoID);
      }
    }
  }

  SceneEngine engine;
  boost::filesystem::path m_dir;
};

TEST_F(EngineSaveTest, ASavedDefaultSceneDecodesChunkByChunk) {
  const std::string path = PathOf("default.scene");
  const Status status = engine.SaveScene(path);
  ASSERT_TRUE(status.IsOk()) << status.GetMessage();

  std::uint32_t count = 0;
  const std::vector<Record> records = DecodeScene(path, &count);

  EXPECT_EQ(count, static_cast<std::uint32_t>(engine.GetNumBlocks()));
  ASSERT_EQ(records.size(), count);
  // Record 0 is the main scene, which writes nothing of its own; its four slots hold the
  // table, the main node, the tools list and the materials list.
  EXPECT_EQ(records[0].class_id, 100u);
  EXPECT_EQ(records[0].id, 0u);
  EXPECT_TRUE(records[0].payload.empty());
  ASSERT_EQ(records[0].num_slots, 4);
  EXPECT_EQ(records[0].dependencies[0], 1u);  // the table comes first in slot order
  const std::uint32_t main_node = records[0].dependencies[1];
  ASSERT_LT(main_node, count);
  EXPECT_EQ(records[main_node].class_id, 115u);
  ExpectRecordsMatchTheScene(records);
}

TEST_F(EngineSaveTest, ASceneWithNodesAndASharedMaterialDecodesChunkByChunk) {
  Node* a = new Node(true);
  Node* b = new Node(true);
  a->SetName("a");
  b->SetName("b");
  ASSERT_TRUE(engine.GetMainNode()->AddChild(a).IsOk());
  ASSERT_TRUE(a->AddChild(b).IsOk());
  auto* shared = new TestMaterial("shared");
  ASSERT_TRUE(a->SetMaterial(shared).IsOk());
  ASSERT_TRUE(b->SetMaterial(shared).IsOk());
  const std::string path = PathOf("nodes.scene");
  ASSERT_TRUE(engine.SaveScene(path).IsOk());

  std::uint32_t count = 0;
  const std::vector<Record> records = DecodeScene(path, &count);
  ExpectRecordsMatchTheScene(records);

  // The shared material has one record, and both nodes' material slots name it.
  int material_records = 0;
  for (const Record& record : records) material_records += record.class_id == 405 ? 1 : 0;
  EXPECT_EQ(material_records, 1);
  EXPECT_EQ(records[a->GetID()].dependencies[2], shared->GetID());
  EXPECT_EQ(records[b->GetID()].dependencies[2], shared->GetID());
  // Written at its first visit, below the first node, so before the second node's record.
  EXPECT_LT(a->GetID(), shared->GetID());
  EXPECT_LT(shared->GetID(), b->GetID());
}

TEST_F(EngineSaveTest, SavingTwiceGivesIdenticalBytes) {
  Node* a = new Node(true);
  ASSERT_TRUE(engine.GetMainNode()->AddChild(a).IsOk());
  ASSERT_TRUE(a->AddChild(new Node(true)).IsOk());
  ASSERT_TRUE(a->SetMaterial(new TestMaterial("m")).IsOk());
  ASSERT_TRUE(engine.SaveScene(PathOf("first.scene")).IsOk());
  ASSERT_TRUE(engine.SaveScene(PathOf("second.scene")).IsOk());
  const Bytes first = ReadFile(PathOf("first.scene"));
  const Bytes second = ReadFile(PathOf("second.scene"));
  EXPECT_FALSE(first.empty());
  EXPECT_EQ(first, second);
}

TEST_F(EngineSaveTest, SavingRenumbersAfterTheSceneChanged) {
  ASSERT_TRUE(engine.SaveScene(PathOf("before.scene")).IsOk());
  const int before = engine.GetNumBlocks();
  Node* added = new Node(true);
  ASSERT_TRUE(engine.GetMainNode()->AddChild(added).IsOk());
  ASSERT_TRUE(engine.SaveScene(PathOf("after.scene")).IsOk());
  EXPECT_GT(engine.GetNumBlocks(), before);
  std::uint32_t count = 0;
  ExpectRecordsMatchTheScene(DecodeScene(PathOf("after.scene"), &count));
  EXPECT_EQ(count, static_cast<std::uint32_t>(engine.GetNumBlocks()));
}

TEST_F(EngineSaveTest, SavingNumbersAsInitBlocksThenSetBlockIDsDo) {
  Node* a = new Node(true);
  Node* b = new Node(true);
  ASSERT_TRUE(engine.GetMainNode()->AddChild(a).IsOk());
  ASSERT_TRUE(a->AddChild(b).IsOk());
  auto* shared = new TestMaterial("shared");
  ASSERT_TRUE(a->SetMaterial(shared).IsOk());
  ASSERT_TRUE(b->SetMaterial(shared).IsOk());
  std::set<Block*> seen;
  std::vector<Block*> order;
  PreOrder(engine.GetMainScene(), seen, order);
  // Numbers and marks left from before, some equal to the positions the walk gives.
  for (std::size_t k = 0; k < order.size(); ++k) {
    order[k]->SetID(static_cast<std::uint32_t>((k * 7) % order.size()));
    order[k]->SetSaved(static_cast<int>(k % 3) - 1);
  }

  ASSERT_TRUE(engine.SaveScene(PathOf("renumbered.scene")).IsOk());
  std::vector<std::uint32_t> saved_ids;
  for (Block* block : order) saved_ids.push_back(block->GetID());
  const int saved_count = engine.GetNumBlocks();

  engine.InitBlocks(engine.GetMainScene());
  for (Block* block : order) EXPECT_EQ(block->GetSaved(), 0);
  engine.SetBlockIDs();
  EXPECT_EQ(engine.GetNumBlocks(), saved_count);
  for (std::size_t k = 0; k < order.size(); ++k) {
    EXPECT_EQ(order[k]->GetID(), saved_ids[k]);
    EXPECT_EQ(order[k]->GetID(), k);
  }
  ASSERT_TRUE(engine.SaveScene(PathOf("clean.scene")).IsOk());
  EXPECT_EQ(ReadFile(PathOf("renumbered.scene")), ReadFile(PathOf("clean.scene")));
}

TEST_F(EngineSaveTest, SavingMarksEveryBlockSavedAndRecordsThePath) {
  const std::string path = PathOf("marks.scene");
  ASSERT_TRUE(engine.SaveScene(path).IsOk());
  EXPECT_EQ(engine.GetScenePath(), path);
  std::set<Block*> seen;
  std::vector<Block*> order;
  PreOrder(engine.GetMainScene(), seen, order);
  for (Block* block : order) EXPECT_EQ(block->GetSaved(), 1) << block->GetClassName();
}

TEST_F(EngineSaveTest, PathsAreAcceptedAsCharPointersAndAsStrings) {
  const std::string as_string = PathOf("string.scene");
  const std::string as_chars = PathOf("chars.scene");
  ASSERT_TRUE(engine.SaveScene(as_string).IsOk());
  EXPECT_EQ(engine.GetScenePath(), as_string);
  ASSERT_TRUE(engine.SaveScene(as_chars.c_str()).IsOk());
  EXPECT_EQ(engine.GetScenePath(), as_chars);
  EXPECT_EQ(ReadFile(as_string), ReadFile(as_chars));
}

TEST_F(EngineSaveTest, SavingAddsTheFilesDirectoryToTheBitmapSearchDirectories) {
  BitmapManager manager;
  SceneEngine::SetBitmapManager(&manager);
  ASSERT_TRUE(engine.SaveScene(PathOf("a.scene")).IsOk());
  ASSERT_EQ(manager.GetNumDirectories(), 1);
  EXPECT_EQ(manager.GetDirectory(0), m_dir.string());
  // Saving again there adds nothing new.
  ASSERT_TRUE(engine.SaveScene(PathOf("b.scene")).IsOk());
  EXPECT_EQ(manager.GetNumDirectories(), 1);
}

TEST_F(EngineSaveTest, SavingInTheCurrentDirectoryAddsDot) {
  BitmapManager manager;
  SceneEngine::SetBitmapManager(&manager);
  const boost::filesystem::path previous = boost::filesystem::current_path();
  boost::filesystem::current_path(m_dir);
  const Status status = engine.SaveScene("here.scene");
  boost::filesystem::current_path(previous);
  ASSERT_TRUE(status.IsOk()) << status.GetMessage();
  EXPECT_TRUE(boost::filesystem::exists(m_dir / "here.scene"));
  EXPECT_EQ(engine.GetScenePath(), "here.scene");
  ASSERT_EQ(manager.GetNumDirectories(), 1);
  EXPECT_EQ(manager.GetDirectory(0), ".");
}

TEST_F(EngineSaveTest, SavingWithoutABitmapManagerStillSaves) {
  ASSERT_EQ(SceneEngine::GetBitmapManager(), nullptr);
  EXPECT_TRUE(engine.SaveScene(PathOf("plain.scene")).IsOk());
}

TEST_F(EngineSaveTest, AFileThatCannotBeOpenedChangesNothing) {
  BitmapManager manager;
  SceneEngine::SetBitmapManager(&manager);
  engine.SetScenePath("earlier.scene");
  const std::string path = PathOf("missing-directory/x.scene");

  const Status status = engine.SaveScene(path);

  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage().rfind("SceneSave : Cannot open '" + path + "' for writing: ", 0),
            0u)
      << status.GetMessage();
  EXPECT_EQ(engine.GetScenePath(), "earlier.scene");
  EXPECT_EQ(manager.GetNumDirectories(), 0);
  EXPECT_EQ(engine.GetNumBlocks(), -1);
  EXPECT_EQ(engine.GetMainScene()->GetID(), Block::kNoID);
}

TEST_F(EngineSaveTest, AFailingBlockIsNotReportedAndLeavesItsChunksOpen) {
  // The failing material sits in the first node's material slot; the second node comes
  // after it in the walk.
  Node* first = new Node(true);
  Node* second = new Node(true);
  ASSERT_TRUE(engine.GetMainNode()->AddChild(first).IsOk());
  ASSERT_TRUE(engine.GetMainNode()->AddChild(second).IsOk());
  auto* failing = new FailingMaterial();
  ASSERT_TRUE(first->SetMaterial(failing).IsOk());
  const std::string path = PathOf("failing.scene");

  const Status status = engine.SaveScene(path);

  // Only the main scene's own failure would be reported.
  EXPECT_TRUE(status.IsOk()) << status.GetMessage();
  const std::uint32_t failing_id = failing->GetID();
  ASSERT_NE(failing_id, Block::kNoID);
  EXPECT_GT(second->GetID(), failing_id);
  // The walk went on past the failing block: every block was written.
  std::set<Block*> seen;
  std::vector<Block*> order;
  PreOrder(engine.GetMainScene(), seen, order);
  for (Block* block : order) EXPECT_EQ(block->GetSaved(), 1) << block->GetClassName();

  // The records before the failing one are whole; the failing one has its info, and its
  // data chunk was never closed by the engine, so the records written after it lie inside
  // that data chunk (the writer closed the open chunks when it finished the file).
  Status open_status;
  SceneLoad load(path.c_str(), &open_status);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);  // scene
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);  // header
  std::uint32_t count = 0;
  load.ReadUInt32(count);
  load.CloseChunk();
  EXPECT_EQ(count, static_cast<std::uint32_t>(order.size()));
  for (std::uint32_t k = 0; k < failing_id; ++k) {
    ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
    ASSERT_EQ(load.CurChunkID(), 0x15u);
    const Record record = DecodeRecord(load);
    EXPECT_EQ(record.id, k);
    load.CloseChunk();
  }
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  ASSERT_EQ(load.CurChunkID(), 0x15u);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  ASSERT_EQ(load.CurChunkID(), 0x05u);
  load.CloseChunk();
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  ASSERT_EQ(load.CurChunkID(), 0x20u);
  std::uint32_t marker = 0;
  load.ReadUInt32(marker);
  EXPECT_EQ(marker, 0xBADu);
  // Next inside the open data chunk: the record of the block numbered after the failing one.
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  ASSERT_EQ(load.CurChunkID(), 0x15u);
  const Record next = DecodeRecord(load);
  EXPECT_EQ(next.id, failing_id + 1);
  load.CloseChunk();
  // No dependency chunk follows the failing block's data: its record ends with it.
  load.CloseChunk();  // data
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
  EXPECT_FALSE(load.HasError()) << load.GetStatus().GetMessage();
}

// A scene whose own Save fails after writing a few bytes, made by the factory of the scene's
// class when a file is loaded.
class FailingScene : public MainScene {
 public:
  FailingScene() : MainScene(false) {}
  int Save(SceneSave* save) override {
    save->WriteUInt32(0xBADu);
    return 0;
  }
};

class FailingSceneFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override { return MainScene::m_block_type; }
  Block* GetBlock(bool) const override { return new FailingScene(); }
  std::string GetName() const override { return "FailingScene"; }
};

TEST_F(EngineSaveTest, AMainSceneWhoseSaveFailsIsReportedAndNothingIsRolledBack) {
  const std::string first = PathOf("first.scene");
  ASSERT_TRUE(engine.SaveScene(first).IsOk());
  // The failing scene's factory comes first, so the base library's own is refused.
  SceneEngine::DestroyFactories();
  SceneEngine::AddBlockFactory(new FailingSceneFactory());
  RegisterBaseLibrary();
  SceneEngine::SetScene(&engine);
  const Status loaded = engine.LoadScene(first);
  ASSERT_TRUE(loaded.IsOk()) << loaded.GetMessage();
  ASSERT_NE(dynamic_cast<FailingScene*>(engine.GetMainScene()), nullptr);

  const std::string second = PathOf("second.scene");
  const Status status = engine.SaveScene(second);
  EXPECT_EQ(status.GetCode(), Status::kFailed);
  EXPECT_EQ(status.GetMessage(), "SceneEngine::SaveScene : Failed saving the m_main_scene block.");
  // The path, the numbers and the saved marks stay as the failed save set them.
  EXPECT_EQ(engine.GetScenePath(), second);
  EXPECT_EQ(engine.GetMainScene()->GetSaved(), 1);
  EXPECT_EQ(engine.GetMainScene()->GetID(), 0u);
  EXPECT_EQ(engine.GetMainNode()->GetSaved(), 0);
  // The open chunks were closed by the writer: the file reads as the scene chunk holding the
  // header and the scene's record, its data chunk still holding the bytes written.
  Status open_status;
  SceneLoad load(second.c_str(), &open_status);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);  // scene
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);  // header
  load.CloseChunk();
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x15u);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);  // info
  load.CloseChunk();
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x20u);
  std::uint32_t marker = 0;
  load.ReadUInt32(marker);
  EXPECT_EQ(marker, 0xBADu);
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
  EXPECT_FALSE(load.HasError()) << load.GetStatus().GetMessage();
}

TEST_F(EngineSaveTest, SaveBlockReportsOnlyItsOwnBlocksFailure) {
  // A failing root: false, its record left open, nothing below it written.
  auto* failing_root = new FailingMaterial();
  {
    SceneSave save;
    EXPECT_FALSE(engine.SaveBlock(failing_root, &save));
    EXPECT_EQ(failing_root->GetSaved(), 1);
    SceneLoad load(save.TakeBytes());
    ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
    EXPECT_EQ(load.CurChunkID(), 0x15u);
    ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);  // info
    load.CloseChunk();
    ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
    EXPECT_EQ(load.CurChunkID(), 0x20u);
    EXPECT_EQ(load.BytesLeftInChunk(), 4u);
    load.CloseChunk();
    EXPECT_EQ(load.OpenChunk(), SceneLoad::kEndOfChunk);
  }
  failing_root->DeleteThisBlock(true);

  // A failing dependency: true, and the walk goes on with the next slot.
  auto* root = new TestBlock("root", 2);
  auto* failing = new FailingMaterial();
  auto* after = new TestBlock("after", 0);
  ASSERT_TRUE(root->MakeDependencyByID(0, failing).IsOk());
  ASSERT_TRUE(root->MakeDependencyByID(1, after).IsOk());
  engine.InitBlocks(root);
  int next_id = 0;
  engine.SetIDToBlock(root, next_id);
  SceneSave save;
  EXPECT_TRUE(engine.SaveBlock(root, &save));
  EXPECT_EQ(after->GetSaved(), 1);
  // A block saved already is not written again.
  const Bytes written = save.TakeBytes();
  SceneSave again;
  EXPECT_TRUE(engine.SaveBlock(root, &again));
  EXPECT_TRUE(again.TakeBytes().empty());
  EXPECT_FALSE(written.empty());
  SceneSave none;
  EXPECT_TRUE(engine.SaveBlock(nullptr, &none));
  root->DeleteThisBlock(true);
}

}  // namespace
}  // namespace Orlo
