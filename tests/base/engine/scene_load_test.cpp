#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <boost/filesystem.hpp>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_factory.h>
#include <orlo/base/block/block_table.h>
#include <orlo/base/controllers/matrix3_controller.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/base_library.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/engine/unknown_modifier.h>
#include <orlo/base/engine/unknown_object.h>
#include <orlo/base/engine/unknown_object_modifier.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/tool_block.h>
#include <orlo/support/bitmap_manager.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>
#include <orlo/support/state_container.h>
#include <orlo/support/state_recorder.h>

#include "tests/base/scene/scene_test_blocks.h"
#include "tests/testing/test_blocks.h"

namespace Orlo {

// Drives LoadBlocks the way LoadScene does, on records it sizes itself, and shows what the
// load left in the engine's tables.
class SceneLoadTestPeer {
 public:
  // Opens the scene and header chunks of `bytes`, sizes the records and the number table to
  // the header's count and reads the block chunks.
  static Status LoadBlocks(SceneEngine& engine, std::vector<std::uint8_t> bytes) {
    SceneLoad load(std::move(bytes));
    EXPECT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
    EXPECT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
    std::int32_t count = 0;
    EXPECT_TRUE(load.ReadInt32(count));
    load.CloseChunk();
    engine.m_num_file_blocks = count;
    engine.m_blocks_by_id.assign(static_cast<std::size_t>(count), nullptr);
    engine.m_block_load_data.resize(static_cast<std::size_t>(count));
    return engine.LoadBlocks(&load);
  }
  static const std::vector<BlockLoadData*>& Records(const SceneEngine& engine) {
    return engine.m_block_load_data;
  }
  static const std::vector<Block*>& BlocksByID(const SceneEngine& engine) {
    return engine.m_blocks_by_id;
  }
  static std::int32_t NumFileBlocks(const SceneEngine& engine) { return engine.m_num_file_blocks; }
  static void FreeLoadedBlocks(SceneEngine& engine) { engine.FreeLoadedBlocks(); }
};

namespace {

using Bytes = std::vector<std::uint8_t>;

// One block record of a hand-made file.
struct FileBlock {
  std::uint32_t class_id = 0;
  std::uint32_t super_class_id = 0;
  std::uint32_t sub_id = 0;
  std::int32_t id = 0;
  // Written as chunk 0x05 (a table's slot count) inside the payload when not negative.
  std::int32_t table_count = -1;
  std::vector<std::int32_t> dependencies;
  bool has_info = true;
};

FileBlock SceneBlock(std::int32_t id, std::vector<std::int32_t> dependencies) {
  FileBlock block{100, 16, 16, id, -1, std::move(dependencies), true};
  return block;
}

// A block of a class nobody registers.
FileBlock UnknownBlock(std::uint32_t class_id, std::int32_t id,
                       std::vector<std::int32_t> dependencies = {}) {
  FileBlock block{class_id, 99, 98, id, -1, std::move(dependencies), true};
  return block;
}

FileBlock TableBlock(std::int32_t id, std::vector<std::int32_t> dependencies) {
  FileBlock block{
      105, 32, 16, id, static_cast<std::int32_t>(dependencies.size()), std::move(dependencies),
      true};
  return block;
}

// A scene file whose header declares `count` blocks and holds `blocks`.
Bytes MakeFile(std::uint32_t count, const std::vector<FileBlock>& blocks) {
  SceneSave save;
  save.BeginChunk(0x05);
  save.BeginChunk(0x10);
  save.WriteUInt32(count);
  save.EndChunk();
  for (const FileBlock& block : blocks) {
    save.BeginChunk(0x15);
    if (block.has_info) {
      save.BeginChunk(0x05);
      save.WriteUInt32(block.class_id);
      save.WriteUInt32(block.super_class_id);
      save.WriteUInt32(block.sub_id);
      save.WriteInt32(block.id);
      save.EndChunk();
    }
    save.BeginChunk(0x20);
    if (block.table_count >= 0) {
      save.BeginChunk(0x05);
      save.WriteUInt32(static_cast<std::uint32_t>(block.table_count));
      save.EndChunk();
    }
    save.EndChunk();
    save.BeginChunk(0x10);
    save.WriteInt32(static_cast<std::int32_t>(block.dependencies.size()));
    for (std::int32_t id : block.dependencies) save.WriteInt32(id);
    save.EndChunk();
    save.EndChunk();
  }
  save.EndChunk();
  return save.TakeBytes();
}

// A block whose own Load puts a fresh block of its making in slot 0, as a plug-in block
// may; its other slots are linked from the file.
class SelfFillingBlock : public testing::TestBlock {
 public:
  static constexpr BlockType kType{901, 7, 7};
  SelfFillingBlock() : TestBlock("self-filling") { SetType(kType); }
  int Load(SceneLoad*) override {
    (void)MakeDependencyByID(0, new testing::TestBlock("inner", 0));
    return 1;
  }
};

class SelfFillingBlockFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override { return SelfFillingBlock::kType; }
  Block* GetBlock(bool) const override { return new SelfFillingBlock(); }
  std::string GetName() const override { return "SelfFillingBlockFactory"; }
};

// A scene whose second block, a controller, asks for a key list no container can hold.
Bytes FileWithAnImpossibleKeyCount() {
  // | 0x05 scene | 0x10 count 2 | 0x15 scene block | 0x15 controller block |
  // where the controller's payload is | 0x20 | 0x10 keys: count -1 |.
  SceneSave save;
  save.BeginChunk(0x05);
  save.BeginChunk(0x10);
  save.WriteUInt32(2);
  save.EndChunk();
  const Bytes scene_only = MakeFile(1, {SceneBlock(0, {-1, -1, 1, -1})});
  const std::size_t skip = 12 + 12 + 4;
  unsigned written = 0;
  save.Write(scene_only.data() + skip, static_cast<unsigned>(scene_only.size() - skip), written);
  save.BeginChunk(0x15);
  save.BeginChunk(0x05);
  save.WriteUInt32(300);
  save.WriteUInt32(48);
  save.WriteUInt32(16);
  save.WriteInt32(1);
  save.EndChunk();
  save.BeginChunk(0x20);
  save.BeginChunk(0x10);
  save.WriteInt32(-1);
  save.EndChunk();
  save.EndChunk();
  save.BeginChunk(0x10);
  save.WriteInt32(0);
  save.EndChunk();
  save.EndChunk();
  save.EndChunk();
  return save.TakeBytes();
}

class SceneEngineLoadTest : public ::testing::Test {
 protected:
  void SetUp() override {
    RegisterBaseLibrary();
    SceneEngine::SetScene(&engine);
    engine.InitScene();
    directory = boost::filesystem::temp_directory_path() /
                boost::filesystem::unique_path("orlo-load-%%%%-%%%%");
    boost::filesystem::create_directories(directory);
  }
  void TearDown() override {
    engine.DeleteScene();
    SceneEngine::SetScene(nullptr);
    SceneEngine::DestroyFactories();
    boost::system::error_code ignored;
    boost::filesystem::remove_all(directory, ignored);
  }

  std::string PathOf(const std::string& name) const { return (directory / name).string(); }

  std::string WriteFile(const std::string& name, const Bytes& bytes) {
    const std::string path = PathOf(name);
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
    return path;
  }

  static Bytes ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

  // The bytes of the engine's scene as saved now.
  Bytes SavedBytes(const std::string& name) {
    const std::string path = PathOf(name);
    EXPECT_TRUE(engine.SaveScene(path).IsOk());
    return ReadFile(path);
  }

  Node* AddNode(const char* name, Node* parent) {
    Node* node = engine.CreateEmptyNode(Point3<double>(0, 0, 0), name);
    if (parent != nullptr) {
      EXPECT_TRUE(engine.SetParent(parent, node).IsOk());
    }
    return node;
  }

  SceneEngine engine;
  boost::filesystem::path directory;
};

TEST_F(SceneEngineLoadTest, AMissingFileIsReportedAndTheSceneIsKept) {
  MainScene* before = engine.GetMainScene();
  const Status status = engine.LoadScene(PathOf("absent.scene"));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(), "SceneEngine::LoadScene : File doesn't exist.");
  EXPECT_EQ(engine.GetMainScene(), before);
}

TEST_F(SceneEngineLoadTest, ADefaultSceneLoadsBackWithItsMainNodeAndSavesToTheSameBytes) {
  const Bytes first = SavedBytes("first.scene");
  const Status status = engine.LoadScene(PathOf("first.scene"));
  ASSERT_TRUE(status.IsOk()) << status.GetMessage();
  ASSERT_NE(engine.GetMainNode(), nullptr);
  EXPECT_EQ(engine.GetMainNode()->GetName(), "MainNode");
  EXPECT_EQ(engine.GetMainScene()->GetID(), 0u);
  EXPECT_EQ(engine.GetScenePath(), PathOf("first.scene"));
  EXPECT_EQ(SavedBytes("second.scene"), first);
}

TEST_F(SceneEngineLoadTest, AHierarchyLoadsBackWithItsParentPointersAndNames) {
  Node* a = AddNode("a", nullptr);
  Node* b = AddNode("b", a);
  AddNode("c", b);
  AddNode("d", nullptr);
  const Bytes first = SavedBytes("first.scene");
  ASSERT_TRUE(engine.LoadScene(PathOf("first.scene")).IsOk());
  Node* c = engine.GetNodeByName("c");
  ASSERT_NE(c, nullptr);
  ASSERT_NE(c->GetParent(), nullptr);
  EXPECT_EQ(c->GetParent()->GetName(), "b");
  EXPECT_EQ(c->GetParent()->GetParent()->GetName(), "a");
  EXPECT_EQ(c->GetParent()->GetParent()->GetParent(), engine.GetMainNode());
  EXPECT_EQ(SavedBytes("second.scene"), first);
}

// A material of a host library that saves its name and one number of its own.
class NamedMaterial : public testing::TestMaterial {
 public:
  static constexpr BlockType kType{405, 77, 1};
  NamedMaterial() : TestMaterial("material", kType) {}
  Block* Clone() override {
    auto* copy = new NamedMaterial();
    copy->SetName(GetName());
    copy->shine = shine;
    return copy;
  }
  int Save(SceneSave* save) override {
    save->BeginChunk(0x01);
    save->WriteString(GetName());
    save->EndChunk();
    save->BeginChunk(0x02);
    save->WriteDouble(shine);
    save->EndChunk();
    return 1;
  }
  int Load(SceneLoad* load) override {
    while (load->OpenChunk() == SceneLoad::kChunkOpened) {
      if (load->CurChunkID() == 0x01) {
        std::string name;
        load->ReadString(name);
        SetName(name);
      } else if (load->CurChunkID() == 0x02) {
        load->ReadDouble(shine);
      }
      load->CloseChunk();
    }
    return load->HasError() ? 0 : 1;
  }
  double shine = 0.0;
};

// A scene tool of a host library that saves one number.
class CountingTool : public testing::ToolDouble<ToolBlock> {
 public:
  static constexpr BlockType kType{ToolBlock::kClassID, 78, 1};
  CountingTool() : ToolDouble(ToolBlock::kClassID) {}
  BlockType GetBlockType() const override { return kType; }
  Block* Clone() override { return new CountingTool(); }
  int Save(SceneSave* save) override {
    save->BeginChunk(0x01);
    save->WriteInt32(count);
    save->EndChunk();
    return 1;
  }
  int Load(SceneLoad* load) override {
    while (load->OpenChunk() == SceneLoad::kChunkOpened) {
      if (load->CurChunkID() == 0x01) load->ReadInt32(count);
      load->CloseChunk();
    }
    return load->HasError() ? 0 : 1;
  }
  std::int32_t count = 0;
};

template <typename T>
class SimpleFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override { return T::kType; }
  Block* GetBlock(bool) const override { return new T(); }
  std::string GetName() const override { return "SimpleFactory"; }
};

TEST_F(SceneEngineLoadTest, RandomHierarchiesSaveLoadAndSaveToTheSameBytes) {
  SceneEngine::AddBlockFactory(new SimpleFactory<NamedMaterial>());
  SceneEngine::AddBlockFactory(new SimpleFactory<CountingTool>());
  std::mt19937 random(17);
  auto uniform = [&random](double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  };
  for (int round = 0; round < 8; ++round) {
    engine.InitScene();
    MainScene* scene = engine.GetMainScene();
    scene->SetAmbientLightColor(Color{static_cast<float>(uniform(0, 1)), 0.25f, 0.5f});
    scene->SetBackgroundColor(Color{0.1f, static_cast<float>(uniform(0, 1)), 0.9f});

    // Materials, some of them shared by several nodes and listed by the scene too.
    std::vector<NamedMaterial*> materials;
    for (int i = 0; i < 1 + round % 3; ++i) {
      auto* material = new NamedMaterial();
      material->SetName("m" + std::to_string(i));
      material->shine = uniform(0, 100);
      scene->AddMaterial(material);
      materials.push_back(material);
    }
    for (int i = 0; i < round % 3; ++i) {
      auto* tool = new CountingTool();
      tool->count = static_cast<std::int32_t>(random() % 1000);
      scene->AddSceneTool(tool);
    }

    std::vector<Node*> nodes{engine.GetMainNode()};
    const int count = 1 + static_cast<int>(random() % 30);
    for (int i = 0; i < count; ++i) {
      Node* parent = nodes[random() % nodes.size()];
      const std::string name = "n" + std::to_string(i);
      Node* node = AddNode(name.c_str(), parent == engine.GetMainNode() ? nullptr : parent);
      nodes.push_back(node);
      // Keys at random times on the node's transform.
      Matrix3Controller* prs = node->GetNodeTransformController();
      ASSERT_NE(prs, nullptr);
      for (int key = 0; key < static_cast<int>(random() % 4); ++key) {
        const int time = static_cast<int>(random() % 200);
        prs->SetPosition(Point3<double>(uniform(-9, 9), uniform(-9, 9), uniform(-9, 9)), time);
        prs->SetRotation(Point3<double>(uniform(-3, 3), 0.0, uniform(-3, 3)), time);
        if (key == 2) prs->SetScale(Point3<double>(uniform(0.5, 2), 1.0, 1.0), time);
      }
      if (random() % 2 == 0) {
        ASSERT_TRUE(node->SetMaterial(materials[random() % materials.size()]).IsOk());
      }
    }
    const Bytes first = SavedBytes("first.scene");
    const Status status = engine.LoadScene(PathOf("first.scene"));
    ASSERT_TRUE(status.IsOk()) << status.GetMessage();
    EXPECT_EQ(SavedBytes("second.scene"), first) << "round " << round;
    // Shared materials come back shared.
    std::vector<Node*> loaded;
    engine.GetAllSceneNodes(loaded);
    for (Node* node : loaded) {
      if (node->GetMaterial() == nullptr) continue;
      bool listed = false;
      for (int i = 0; i < engine.GetMainScene()->GetNumMaterials(); ++i) {
        listed = listed || engine.GetMainScene()->GetMaterial(i) == node->GetMaterial();
      }
      EXPECT_TRUE(listed) << node->GetName();
    }
  }
}

// A change that reads a block of the scene it was recorded in when it is destroyed, as a
// record that keeps its blocks would release them.
class NodeNameRecord : public StateContainer {
 public:
  NodeNameRecord(Node* node, std::vector<std::string>* log) : m_node(node), m_log(log) {}
  ~NodeNameRecord() override { m_log->push_back(m_node->GetName()); }
  void Revert() override {}
  void Apply() override {}

 private:
  Node* m_node;
  std::vector<std::string>* m_log;
};

TEST_F(SceneEngineLoadTest, LoadingClearsTheUndoHistoryBeforeTheOldSceneGoes) {
  SceneEngine::StateRecorderInit();
  StateRecorder* recorder = SceneEngine::GetStateRecorder();
  ASSERT_NE(recorder, nullptr);
  Node* old_node = AddNode("old", nullptr);
  std::vector<std::string> log;
  recorder->Begin();
  recorder->Put(new NodeNameRecord(old_node, &log));
  recorder->Accept("step");
  ASSERT_TRUE(recorder->CanUndo());
  (void)SavedBytes("first.scene");
  ASSERT_TRUE(engine.LoadScene(PathOf("first.scene")).IsOk());
  EXPECT_FALSE(recorder->CanUndo());
  // The record was destroyed while its node still existed (the sanitizers see otherwise).
  EXPECT_EQ(log, std::vector<std::string>{"old"});
  // The loaded scene has a node of that name of its own.
  EXPECT_NE(engine.GetNodeByName("old"), nullptr);
}

TEST_F(SceneEngineLoadTest, AFileThatDoesNotStartWithASceneChunkIsNotASceneFile) {
  SceneSave save;
  save.BeginChunk(0x07);
  save.WriteUInt32(1);
  save.EndChunk();
  const Status status = engine.LoadScene(WriteFile("other.scene", save.TakeBytes()));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(),
            "SceneEngine::LoadScene : The file is not a SceneEngine file. Couldn't load any "
            "blocks.");
  EXPECT_EQ(engine.GetMainScene(), nullptr);
}

TEST_F(SceneEngineLoadTest, AHeaderCountOfZeroIsNotASceneFile) {
  const Status status = engine.LoadScene(WriteFile("zero.scene", MakeFile(0, {})));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_NE(status.GetMessage().find("not a SceneEngine file"), std::string::npos);
  EXPECT_EQ(engine.GetMainScene(), nullptr);
}

TEST_F(SceneEngineLoadTest, ABlockWithoutAFactoryFailsTheLoadAndFreesEveryBlock) {
  // An object of a class nobody registered, held by the scene's table.
  const Bytes file = MakeFile(3, {SceneBlock(0, {-1, -1, 1, -1}), TableBlock(1, {2}),
                                  FileBlock{505, 99, 98, 2, -1, {}, true}});
  const Status status = engine.LoadScene(WriteFile("unknown.scene", file));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(),
            "SceneEngine::LoadBlocks : Couldn't find a factory for one or more blocks.");
  EXPECT_EQ(engine.GetMainScene(), nullptr);
}

TEST_F(SceneEngineLoadTest, AClassWithoutPlaceholderGivesNoBlockAndItsDataIsSkipped) {
  // A camera (600) whose factory is missing, with data and links of its own.
  const Bytes file = MakeFile(3, {SceneBlock(0, {-1, -1, 1, -1}), TableBlock(1, {2}),
                                  FileBlock{600, 77, 77, 2, 5, {0, 1, 2}, true}});
  const Status status = engine.LoadScene(WriteFile("camera.scene", file));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(),
            "SceneEngine::LoadBlocks : Couldn't find a factory for one or more blocks.");
  EXPECT_EQ(engine.GetMainScene(), nullptr);
}

TEST_F(SceneEngineLoadTest, ASavedNumberOutsideTheCountIsRejectedNamingTheChunk) {
  const Bytes file = MakeFile(2, {SceneBlock(0, {-1, -1, 1, -1}), TableBlock(7, {})});
  const Status status = engine.LoadScene(WriteFile("number.scene", file));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(),
            "SceneEngine::LoadBlocks : Block chunk 1 has the number 7, outside 0 to 1.");
  EXPECT_EQ(engine.GetMainScene(), nullptr);
}

TEST_F(SceneEngineLoadTest, AMissingInfoChunkIsRejectedAsTheNumberMinusOne) {
  FileBlock table = TableBlock(1, {});
  table.has_info = false;
  const Bytes file = MakeFile(2, {SceneBlock(0, {-1, -1, 1, -1}), table});
  const Status status = engine.LoadScene(WriteFile("info.scene", file));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(),
            "SceneEngine::LoadBlocks : Block chunk 1 has the number -1, outside 0 to 1.");
  EXPECT_EQ(engine.GetMainScene(), nullptr);
}

TEST_F(SceneEngineLoadTest, ALinkToANumberOutsideTheCountIsRejected) {
  const Bytes file = MakeFile(2, {SceneBlock(0, {-1, -1, 1, -1}), TableBlock(1, {9})});
  const Status status = engine.LoadScene(WriteFile("link.scene", file));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(),
            "SceneEngine::LoadBlocks : Block 1 links slot 0 to the number 9, outside 0 to 1.");
  EXPECT_EQ(engine.GetMainScene(), nullptr);
}

TEST_F(SceneEngineLoadTest, AFileCutShortFailsSayingWhere) {
  Bytes file = SavedBytes("whole.scene");
  file.resize(file.size() / 2);
  const Status status = engine.LoadScene(WriteFile("cut.scene", file));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_NE(status.GetMessage().find("SceneEngine::LoadScene : "), std::string::npos);
  EXPECT_NE(status.GetMessage().find("offset"), std::string::npos) << status.GetMessage();
  EXPECT_EQ(engine.GetMainScene(), nullptr);
}

TEST_F(SceneEngineLoadTest, AFileDeclaringFourBillionBlocksIsRefusedBeforeAnyAllocation) {
  const Bytes file = MakeFile(4000000000u, {SceneBlock(0, {-1, -1, -1, -1})});
  const Status status = engine.LoadScene(WriteFile("huge.scene", file));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_NE(status.GetMessage().find("declares 4000000000 blocks"), std::string::npos)
      << status.GetMessage();
  EXPECT_EQ(engine.GetMainScene(), nullptr);
}

TEST_F(SceneEngineLoadTest, ABlockLinkedToItselfIsRefused) {
  const Bytes file = MakeFile(2, {SceneBlock(0, {-1, -1, 1, -1}), TableBlock(1, {1})});
  const Status status = engine.LoadScene(WriteFile("self.scene", file));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_NE(status.GetMessage().find("cycle"), std::string::npos) << status.GetMessage();
  EXPECT_EQ(engine.GetMainScene(), nullptr);
}

TEST_F(SceneEngineLoadTest, BlocksLinkedInACycleAreRefusedAndFreed) {
  const Bytes file =
      MakeFile(3, {SceneBlock(0, {-1, -1, 1, -1}), TableBlock(1, {2}), TableBlock(2, {1})});
  const Status status = engine.LoadScene(WriteFile("cycle.scene", file));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_NE(status.GetMessage().find("cycle"), std::string::npos) << status.GetMessage();
  EXPECT_EQ(engine.GetMainScene(), nullptr);
}

TEST_F(SceneEngineLoadTest, OneBlockInManySlotsOfAnotherLoadsAsOneSharedBlock) {
  const std::vector<std::int32_t> slots(500, 2);
  const Bytes file =
      MakeFile(3, {SceneBlock(0, {-1, -1, 1, -1}), TableBlock(1, slots), TableBlock(2, {})});
  const Status status = engine.LoadScene(WriteFile("many.scene", file));
  ASSERT_TRUE(status.IsOk()) << status.GetMessage();
  Block* table = engine.GetMainScene()->GetDependency(2);
  ASSERT_NE(table, nullptr);
  ASSERT_EQ(table->NumDependencies(), 500);
  for (int i = 0; i < 500; ++i) EXPECT_EQ(table->GetDependency(i), table->GetDependency(0));
  EXPECT_NE(table->GetDependency(0), nullptr);
}

TEST_F(SceneEngineLoadTest, ALadderOfSixtyFourSharedLevelsIsRefusedWithoutWalkingItsPaths) {
  // Each table holds the next one twice: 2^64 paths reach the last.
  std::vector<FileBlock> blocks{SceneBlock(0, {-1, -1, 1, -1})};
  const int levels = 64;
  for (int level = 1; level <= levels; ++level) {
    const std::int32_t next = level + 1;
    blocks.push_back(TableBlock(level, {next, next}));
  }
  blocks.push_back(TableBlock(levels + 1, {}));
  const Bytes file = MakeFile(static_cast<std::uint32_t>(blocks.size()), blocks);
  const auto start = std::chrono::steady_clock::now();
  const Status status = engine.LoadScene(WriteFile("ladder.scene", file));
  const auto elapsed = std::chrono::steady_clock::now() - start;
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_NE(status.GetMessage().find("paths"), std::string::npos) << status.GetMessage();
  EXPECT_EQ(engine.GetMainScene(), nullptr);
  EXPECT_LT(elapsed, std::chrono::seconds(10));
}

TEST_F(SceneEngineLoadTest, ANodeHierarchyThatListsNodesUnderSeveralParentsIsRefused) {
  // Node k's children table lists node k + 1 twice, 40 levels deep: 2^40 paths reach the last
  // node, below the bound on the whole graph but far past what the parent pointer walk may do.
  const int levels = 40;
  std::vector<FileBlock> blocks{SceneBlock(0, {-1, 1, -1, -1})};
  for (int level = 0; level < levels; ++level) {
    const std::int32_t node = 1 + 2 * level;
    const std::int32_t next = node + 2;
    blocks.push_back(FileBlock{115, 16, 32, node, -1, {-1, -1, -1, node + 1, -1}, true});
    blocks.push_back(TableBlock(node + 1, {next, next}));
  }
  blocks.push_back(FileBlock{115, 16, 32, 1 + 2 * levels, -1, {}, true});
  const Bytes file = MakeFile(static_cast<std::uint32_t>(blocks.size()), blocks);
  const auto start = std::chrono::steady_clock::now();
  const Status status = engine.LoadScene(WriteFile("nodes.scene", file));
  const auto elapsed = std::chrono::steady_clock::now() - start;
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(),
            "SceneEngine::LoadScene : The node hierarchy reaches its nodes along 2199023255550 "
            "paths, more than 16 per block of the file; the file is refused.");
  EXPECT_EQ(engine.GetMainScene(), nullptr);
  EXPECT_LT(elapsed, std::chrono::seconds(10));
}

// Nothing may hold the scene block: the engine owns it. Here a table that nothing links to
// holds it, and releasing that table would take the scene with it.
TEST_F(SceneEngineLoadTest, ASceneBlockHeldByAnotherBlockIsRefusedAndFreed) {
  const Bytes file = MakeFile(2, {SceneBlock(0, {-1, -1, -1, -1}), TableBlock(1, {0})});
  const Status status = engine.LoadScene(WriteFile("held.scene", file));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(),
            "SceneEngine::LoadScene : The first block of the file is held by another block; "
            "the file is refused.");
  EXPECT_EQ(engine.GetMainScene(), nullptr);
  EXPECT_EQ(engine.GetMainNode(), nullptr);
}

TEST_F(SceneEngineLoadTest, AFileWhoseFirstBlockIsNotASceneIsRefused) {
  const Bytes file = MakeFile(2, {TableBlock(0, {1}), TableBlock(1, {})});
  const Status status = engine.LoadScene(WriteFile("table.scene", file));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(engine.GetMainScene(), nullptr);
}

// The two tests below load a default scene (its main node, transform, controllers and tables:
// every kind of block the library saves) once per byte.
TEST_F(SceneEngineLoadTest, ASavedSceneCutAtEveryByteAlwaysReturnsAStatus) {
  const Bytes whole = SavedBytes("whole.scene");
  for (std::size_t size = 0; size < whole.size(); ++size) {
    const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    const Status status = engine.LoadScene(WriteFile("cut.scene", cut));
    // Only the complete file may load.
    EXPECT_EQ(status.GetCode(), 2) << "cut at " << size;
    EXPECT_EQ(engine.GetMainScene(), nullptr);
  }
}

TEST_F(SceneEngineLoadTest, ASavedSceneWithAnyOneByteChangedAlwaysReturnsAStatus) {
  const Bytes whole = SavedBytes("whole.scene");
  int loaded = 0;
  for (std::size_t i = 0; i < whole.size(); ++i) {
    // Alternately the lowest bit (a length or number one off) and every bit (a huge one).
    {
      const std::uint8_t flip = i % 2 == 0 ? 0x01 : 0xFF;
      Bytes changed = whole;
      changed[i] = static_cast<std::uint8_t>(changed[i] ^ flip);
      const Status status = engine.LoadScene(WriteFile("changed.scene", changed));
      if (status.IsOk()) {
        ++loaded;
        ASSERT_NE(engine.GetMainScene(), nullptr);
        // What loaded can be saved again and walked.
        EXPECT_TRUE(engine.SaveScene(PathOf("again.scene")).IsOk());
      } else {
        EXPECT_EQ(status.GetCode(), 2);
        EXPECT_FALSE(status.GetMessage().empty());
      }
    }
  }
  // Changed payload bytes (names, numbers) still load: the loop did exercise both outcomes.
  EXPECT_GT(loaded, 0);
}

TEST_F(SceneEngineLoadTest, AKeyCountNoContainerCanHoldFailsTheLoadInsteadOfThrowing) {
  Status status;
  EXPECT_NO_THROW(status =
                      engine.LoadScene(WriteFile("keys.scene", FileWithAnImpossibleKeyCount())));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage().rfind("SceneEngine::LoadScene : A block's data asks for an "
                                      "impossible size (",
                                      0),
            0u)
      << status.GetMessage();
  EXPECT_EQ(engine.GetMainScene(), nullptr);
  EXPECT_TRUE(SceneLoadTestPeer::Records(engine).empty());
}

// ---- LoadBlocks, step by step ----

TEST_F(SceneEngineLoadTest, ABlockReaderThatThrowsLeavesTheBlocksReadSoFarPosting) {
  // LoadBlocks silences each block it reads; called on its own, it lets the exception of a
  // block's reader through and gives the blocks read before it their events back.
  EXPECT_THROW((void)SceneLoadTestPeer::LoadBlocks(engine, FileWithAnImpossibleKeyCount()),
               std::length_error);
  const auto& records = SceneLoadTestPeer::Records(engine);
  ASSERT_NE(records[0], nullptr);
  ASSERT_NE(records[0]->block, nullptr);
  EXPECT_TRUE(records[0]->block->GetSendEvents());
  SceneLoadTestPeer::FreeLoadedBlocks(engine);
}

TEST_F(SceneEngineLoadTest, EachMissingClassGetsThePlaceholderOfItsFamilyOrNone) {
  const std::vector<std::uint32_t> class_ids{500, 505, 510, 515, 520, 800, 600, 700, 100};
  std::vector<FileBlock> blocks;
  for (std::size_t i = 0; i < class_ids.size(); ++i) {
    blocks.push_back(UnknownBlock(class_ids[i], static_cast<std::int32_t>(i)));
  }
  const Status status = SceneLoadTestPeer::LoadBlocks(
      engine, MakeFile(static_cast<std::uint32_t>(blocks.size()), blocks));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(),
            "SceneEngine::LoadBlocks : Couldn't find a factory for one or more blocks.");
  const auto& records = SceneLoadTestPeer::Records(engine);
  ASSERT_EQ(records.size(), class_ids.size());
  std::vector<std::string> classes;
  for (const auto& record : records) {
    ASSERT_NE(record, nullptr);
    classes.push_back(record->block != nullptr ? record->block->GetClassName() : "none");
  }
  EXPECT_EQ(classes, (std::vector<std::string>{"UnknownObject", "UnknownObject", "UnknownObject",
                                               "UnknownObject", "UnknownObjectModifier",
                                               "UnknownModifier", "none", "none", "none"}));
  // The records keep the type read from the file, not the placeholder's.
  EXPECT_EQ(records[1]->block_type, BlockType(505, 99, 98));
  EXPECT_EQ(records[1]->block_type.class_id, 505u);
  EXPECT_EQ(SceneLoadTestPeer::BlocksByID(engine)[4], records[4]->block);
  SceneLoadTestPeer::FreeLoadedBlocks(engine);
  EXPECT_TRUE(SceneLoadTestPeer::Records(engine).empty());
}

TEST_F(SceneEngineLoadTest, APlaceholderObjectModifierIsLinkedLikeAnyOtherBlock) {
  const Bytes file =
      MakeFile(3, {UnknownBlock(520, 0, {1, 2}), UnknownBlock(800, 1), UnknownBlock(505, 2)});
  const Status status = SceneLoadTestPeer::LoadBlocks(engine, file);
  EXPECT_EQ(status.GetCode(), 2);
  const auto& records = SceneLoadTestPeer::Records(engine);
  ASSERT_EQ(records.size(), 3u);
  auto* stack = dynamic_cast<UnknownObjectModifier*>(records[0]->block);
  ASSERT_NE(stack, nullptr);
  EXPECT_EQ(records[0]->dependency_ids, (std::vector<std::int32_t>{1, 2}));
  EXPECT_EQ(stack->GetModifier(), records[1]->block);
  EXPECT_EQ(stack->GetObjectToModify(), records[2]->block);
  EXPECT_NE(dynamic_cast<UnknownModifier*>(stack->GetModifier()), nullptr);
  EXPECT_NE(dynamic_cast<UnknownObject*>(stack->GetObjectToModify()), nullptr);
  SceneLoadTestPeer::FreeLoadedBlocks(engine);
}

TEST_F(SceneEngineLoadTest, AChunkThatIsNotABlockIsSkippedAndLeavesItsRecordEmpty) {
  // | 0x05 scene | 0x10 count 3 | 0x15 block 0 | 0x30 junk | 0x15 block 1 |
  SceneSave save;
  save.BeginChunk(0x05);
  save.BeginChunk(0x10);
  save.WriteUInt32(3);
  save.EndChunk();
  const Bytes table0 = MakeFile(1, {TableBlock(0, {1})});
  const Bytes table1 = MakeFile(1, {TableBlock(1, {})});
  // The block chunks of the two one-block files: everything after their scene and header
  // chunk headers and the 4-byte count.
  const std::size_t skip = 12 + 12 + 4;
  unsigned written = 0;
  save.Write(table0.data() + skip, static_cast<unsigned>(table0.size() - skip), written);
  save.BeginChunk(0x30);
  save.WriteUInt32(0xDEADBEEF);
  save.EndChunk();
  save.Write(table1.data() + skip, static_cast<unsigned>(table1.size() - skip), written);
  save.EndChunk();
  const Status status = SceneLoadTestPeer::LoadBlocks(engine, save.TakeBytes());
  ASSERT_TRUE(status.IsOk()) << status.GetMessage();
  const auto& records = SceneLoadTestPeer::Records(engine);
  ASSERT_EQ(records.size(), 3u);
  ASSERT_NE(records[0], nullptr);
  EXPECT_EQ(records[1], nullptr);
  ASSERT_NE(records[2], nullptr);
  EXPECT_EQ(records[2]->id, 1);
  EXPECT_EQ(records[0]->block->GetDependency(0), records[2]->block);
  SceneLoadTestPeer::FreeLoadedBlocks(engine);
}

// A block whose Load always reports a failure and reads nothing.
class FailingBlock : public testing::TestBlock {
 public:
  FailingBlock() : TestBlock("failing", 1) { SetType(BlockType(900, 5, 5)); }
  int Load(SceneLoad*) override { return 0; }
};

class FailingBlockFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override { return BlockType(900, 5, 5); }
  Block* GetBlock(bool) const override { return new FailingBlock(); }
  std::string GetName() const override { return "FailingBlockFactory"; }
};

TEST_F(SceneEngineLoadTest, ABlocksOwnLoadResultIsNotExamined) {
  SceneEngine::AddBlockFactory(new FailingBlockFactory());
  FileBlock failing{900, 5, 5, 1, 3, {}, true};
  const Bytes file = MakeFile(2, {SceneBlock(0, {-1, -1, 1, -1}), failing});
  const Status status = engine.LoadScene(WriteFile("failing.scene", file));
  ASSERT_TRUE(status.IsOk()) << status.GetMessage();
  EXPECT_NE(dynamic_cast<FailingBlock*>(engine.GetMainScene()->GetDependency(2)), nullptr);
}

TEST_F(SceneEngineLoadTest, DestroyingTheRecordsLeavesTheBlocksAlone) {
  const Status status =
      SceneLoadTestPeer::LoadBlocks(engine, MakeFile(2, {TableBlock(0, {1}), TableBlock(1, {})}));
  ASSERT_TRUE(status.IsOk()) << status.GetMessage();
  Block* top = SceneLoadTestPeer::Records(engine)[0]->block;
  Block* below = SceneLoadTestPeer::Records(engine)[1]->block;
  engine.DestroyBlockLoadData();
  EXPECT_TRUE(SceneLoadTestPeer::Records(engine).empty());
  // The number table is left as it is, and the blocks live on (the sanitizers would see
  // otherwise).
  EXPECT_EQ(SceneLoadTestPeer::BlocksByID(engine).size(), 2u);
  EXPECT_EQ(top->GetDependency(0), below);
  EXPECT_EQ(below->GetClassName(), top->GetClassName());
  top->DeleteThisBlock(true);
}

TEST_F(SceneEngineLoadTest, RecordsLeftFromAnEarlierReadFailTheNextLoadThatReadsNone) {
  const Status read =
      SceneLoadTestPeer::LoadBlocks(engine, MakeFile(2, {TableBlock(0, {1}), TableBlock(1, {})}));
  ASSERT_TRUE(read.IsOk()) << read.GetMessage();
  Block* top = SceneLoadTestPeer::Records(engine)[0]->block;
  const Status status = engine.LoadScene(WriteFile("zero.scene", MakeFile(0, {})));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(), "SceneEngine::LoadScene : Failed loading the blocks\n");
  EXPECT_TRUE(SceneLoadTestPeer::Records(engine).empty());
  EXPECT_EQ(engine.GetMainScene(), nullptr);
  // The blocks were not made by that load: they are still the reader's caller's.
  top->DeleteThisBlock(true);
}

TEST_F(SceneEngineLoadTest, AFailedLoadLeavesNoRecordNumberTableOrCount) {
  const Bytes file =
      MakeFile(3, {SceneBlock(0, {-1, -1, 1, -1}), TableBlock(1, {2}), UnknownBlock(800, 2)});
  const Status status = engine.LoadScene(WriteFile("unknown.scene", file));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_TRUE(SceneLoadTestPeer::Records(engine).empty());
  EXPECT_TRUE(SceneLoadTestPeer::BlocksByID(engine).empty());
  EXPECT_EQ(SceneLoadTestPeer::NumFileBlocks(engine), -1);
  EXPECT_EQ(engine.GetMainScene(), nullptr);
  // The engine works again after it.
  engine.InitScene();
  EXPECT_NE(engine.GetMainNode(), nullptr);
}

TEST_F(SceneEngineLoadTest, ASuccessfulLoadLeavesNoRecordNumberTableOrCount) {
  (void)SavedBytes("first.scene");
  ASSERT_TRUE(engine.LoadScene(PathOf("first.scene")).IsOk());
  EXPECT_TRUE(SceneLoadTestPeer::Records(engine).empty());
  EXPECT_TRUE(SceneLoadTestPeer::BlocksByID(engine).empty());
  EXPECT_EQ(SceneLoadTestPeer::NumFileBlocks(engine), -1);
}

TEST_F(SceneEngineLoadTest, ABlockHeldByTwoBlocksIsCreatedOnceAndSharedAfterTheLoad) {
  const Bytes file = MakeFile(4, {SceneBlock(0, {-1, -1, 1, 2}), TableBlock(1, {3}),
                                  TableBlock(2, {3}), TableBlock(3, {})});
  ASSERT_TRUE(engine.LoadScene(WriteFile("shared.scene", file)).IsOk());
  Block* tools = engine.GetMainScene()->GetDependency(2);
  Block* materials = engine.GetMainScene()->GetDependency(3);
  ASSERT_NE(tools, nullptr);
  ASSERT_NE(materials, nullptr);
  ASSERT_NE(tools->GetDependency(0), nullptr);
  EXPECT_EQ(tools->GetDependency(0), materials->GetDependency(0));
}

TEST_F(SceneEngineLoadTest, TwoChunksWithOneNumberAreRejected) {
  const Bytes file =
      MakeFile(3, {SceneBlock(0, {-1, -1, 1, -1}), TableBlock(1, {}), TableBlock(1, {})});
  const Status status = engine.LoadScene(WriteFile("twice.scene", file));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(), "SceneEngine::LoadBlocks : Block chunk 2 repeats the number 1.");
  EXPECT_EQ(engine.GetMainScene(), nullptr);
}

TEST_F(SceneEngineLoadTest, ALinkToASlotTheBlockDoesNotHaveIsRejected) {
  // The scene has four slots; the file links a fifth.
  const Bytes file = MakeFile(2, {SceneBlock(0, {-1, -1, -1, -1, 1}), TableBlock(1, {})});
  const Status status = engine.LoadScene(WriteFile("slot.scene", file));
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(),
            "SceneEngine::LoadBlocks : Block 0 links slot 4 of a block with 4 slots.");
  EXPECT_EQ(engine.GetMainScene(), nullptr);
}

TEST_F(SceneEngineLoadTest, LoadingAddsTheFilesDirectoryToTheBitmapSearch) {
  (void)SavedBytes("first.scene");
  BitmapManager manager;
  SceneEngine::SetBitmapManager(&manager);
  const Status status = engine.LoadScene(PathOf("first.scene"));
  SceneEngine::SetBitmapManager(nullptr);
  ASSERT_TRUE(status.IsOk()) << status.GetMessage();
  const std::vector<std::string> directories = manager.GetDirectories();
  EXPECT_NE(std::find(directories.begin(), directories.end(), directory.string()),
            directories.end());
}

TEST_F(SceneEngineLoadTest, MergingMovesOnlyTheNodesAtEvenPositions) {
  SceneEngine other;
  other.InitScene();
  for (const char* name : {"n0", "n1", "n2", "n3"}) {
    Node* node = other.CreateEmptyNode(Point3<double>(0, 0, 0), name);
    ASSERT_NE(node, nullptr);
  }
  EXPECT_EQ(engine.MergeScene(&other, false), 0);
  ASSERT_EQ(engine.GetMainNode()->GetNumChildren(), 2);
  EXPECT_EQ(engine.GetMainNode()->GetChild(0)->GetName(), "n0");
  EXPECT_EQ(engine.GetMainNode()->GetChild(1)->GetName(), "n2");
  ASSERT_EQ(other.GetMainNode()->GetNumChildren(), 2);
  EXPECT_EQ(other.GetMainNode()->GetChild(0)->GetName(), "n1");
  EXPECT_EQ(other.GetMainNode()->GetChild(1)->GetName(), "n3");
}

TEST_F(SceneEngineLoadTest, MergingNamesOnlyMovesNothing) {
  SceneEngine other;
  other.InitScene();
  (void)other.CreateEmptyNode(Point3<double>(0, 0, 0), "n0");
  EXPECT_EQ(engine.MergeScene(&other, true), 0);
  EXPECT_EQ(engine.GetMainNode()->GetNumChildren(), 0);
  EXPECT_EQ(other.GetMainNode()->GetNumChildren(), 1);
}

TEST_F(SceneEngineLoadTest, MergingFromAPathDoesNothing) {
  (void)SavedBytes("first.scene");
  EXPECT_EQ(engine.MergeScene(PathOf("first.scene").c_str()), 0);
  EXPECT_EQ(engine.GetMainNode()->GetNumChildren(), 0);
}

TEST_F(SceneEngineLoadTest, EveryLoadedBlockPostsEventsAgainOnceTheSceneIsInstalled) {
  // The blocks are silenced while they are read, linked and post-loaded.
  Node* parent = AddNode("parent", nullptr);
  AddNode("child", parent);
  const std::string path = PathOf("events.scene");
  ASSERT_TRUE(engine.SaveScene(path).IsOk());
  const Status status = engine.LoadScene(path);
  ASSERT_TRUE(status.IsOk()) << status.GetMessage();
  std::vector<Block*> blocks;
  engine.EnumBlocks(blocks);
  EXPECT_GT(blocks.size(), 100u);
  for (Block* block : blocks) EXPECT_TRUE(block->GetSendEvents()) << block->GetClassName();

  Node* loaded = engine.GetNodeByName("child");
  ASSERT_NE(loaded, nullptr);
  testing::RecordingListener listener;
  loaded->AddBlockListener(&listener);
  loaded->SetVisibility(0.5, 0);
  EXPECT_FALSE(listener.events.empty());
  loaded->RemoveBlockListener(&listener);
}

TEST_F(SceneEngineLoadTest, ABlockThatFillsASlotInItsOwnLoadKeepsItAndGetsTheFilesLinks) {
  SceneEngine::AddBlockFactory(new SelfFillingBlockFactory());
  FileBlock filling{901, 7, 7, 2, -1, {-1, 3}, true};
  const Bytes file =
      MakeFile(4, {SceneBlock(0, {-1, -1, 1, -1}), TableBlock(1, {2}), filling, TableBlock(3, {})});
  const Status status = engine.LoadScene(WriteFile("filling.scene", file));
  ASSERT_TRUE(status.IsOk()) << status.GetMessage();
  Block* table = engine.GetMainScene()->GetDependency(2);
  ASSERT_NE(table, nullptr);
  auto* block = dynamic_cast<SelfFillingBlock*>(table->GetDependency(0));
  ASSERT_NE(block, nullptr);
  auto* inner = dynamic_cast<testing::TestBlock*>(block->GetDependency(0));
  ASSERT_NE(inner, nullptr);
  EXPECT_EQ(inner->Name(), "inner");
  EXPECT_NE(dynamic_cast<BlockTable*>(block->GetDependency(1)), nullptr);
  EXPECT_EQ(block->GetDependency(2), nullptr);
  std::vector<Block*> holders;
  block->GetDependency(1)->GetDependants(holders);
  EXPECT_EQ(holders, std::vector<Block*>{block});
}

// A material of a host library that counts, across its instances, the post-load and table
// refresh calls a load makes.
class PassCountingMaterial : public testing::TestMaterial {
 public:
  static constexpr BlockType kType{405, 79, 1};
  static inline int post_loads = 0;
  static inline int refreshes = 0;
  PassCountingMaterial() : TestMaterial("counting", kType) {}
  int PostLoad() override {
    ++post_loads;
    return 0;
  }
  void UpdateDataTable(bool) override { ++refreshes; }
};

TEST_F(SceneEngineLoadTest, AHostBlockSharedByTwoNodesGetsPostLoadAndARefreshPerPath) {
  auto* material = new PassCountingMaterial();
  ASSERT_TRUE(AddNode("a", nullptr)->SetMaterial(material).IsOk());
  ASSERT_TRUE(AddNode("b", nullptr)->SetMaterial(material).IsOk());
  const std::string path = PathOf("counting.scene");
  ASSERT_TRUE(engine.SaveScene(path).IsOk());
  SceneEngine::AddBlockFactory(new SimpleFactory<PassCountingMaterial>());
  PassCountingMaterial::post_loads = 0;
  PassCountingMaterial::refreshes = 0;

  const Status status = engine.LoadScene(path);
  ASSERT_TRUE(status.IsOk()) << status.GetMessage();
  EXPECT_EQ(PassCountingMaterial::post_loads, 2);
  EXPECT_EQ(PassCountingMaterial::refreshes, 2);
  // The host's class sends the load down the per-path walks, after which the blocks are
  // found for their events by a walk from the scene.
  std::vector<Block*> blocks;
  engine.EnumBlocks(blocks);
  for (Block* block : blocks) EXPECT_TRUE(block->GetSendEvents()) << block->GetClassName();
}

TEST_F(SceneEngineLoadTest, TheTablesOfASceneOfLibraryBlocksAreRefreshedOnLoad) {
  Node* node = AddNode("a", nullptr);
  ASSERT_TRUE(node->GetDataTable()->SetDataName(Node::kHideID, "renamed"));
  const std::string path = PathOf("renamed.scene");
  ASSERT_TRUE(engine.SaveScene(path).IsOk());
  const Status status = engine.LoadScene(path);
  ASSERT_TRUE(status.IsOk()) << status.GetMessage();
  Node* loaded = engine.GetNodeByName("a");
  ASSERT_NE(loaded, nullptr);
  EXPECT_EQ(loaded->GetDataTable()->GetDataName(Node::kHideID), "hide");
}

}  // namespace
}  // namespace Orlo
