#include <orlo/base/scene/main_scene.h>

#include <gtest/gtest.h>

#include <vector>

#include <orlo/base/block/block_table.h>
#include <orlo/base/data/data.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/base_library.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/node_transform.h>

#include "tests/base/scene/scene_test_blocks.h"
#include "tests/testing/block_record_stream.h"
#include "tests/testing/scoped_block.h"
#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using testing::RecordingListener;
using testing::ScopedBlock;
using testing::TestBlock;
using testing::TestMaterial;
using testing::TestObject;
using testing::TestTool;

// Detaches a listener from a block when the test ends.
class Listening {
 public:
  Listening(Block* block, RecordingListener* listener) : m_block(block), m_listener(listener) {
    m_block->AddBlockListener(m_listener);
  }
  Listening(const Listening&) = delete;
  Listening& operator=(const Listening&) = delete;
  ~Listening() { m_block->RemoveBlockListener(m_listener); }

 private:
  Block* m_block;
  RecordingListener* m_listener;
};

TEST(MainSceneTest, ReportsItsIdentityAndSlots) {
  ScopedBlock<MainScene> scene(new MainScene(false));
  EXPECT_EQ(scene->GetClassName(), "MainScene");
  EXPECT_EQ(scene->GetBlockType().class_id, 100u);
  EXPECT_EQ(scene->GetBlockType().super_class_id, 16u);
  EXPECT_EQ(scene->GetBlockType().sub_id, 16u);
  EXPECT_EQ(scene->NumDependencies(), 4);
  const char* names[] = {"data_table", "main_node", "scene_tools", "materials"};
  const unsigned types[] = {205, 115, 100000, 405};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(scene->GetDependencyName(i), names[i]);
    EXPECT_EQ(scene->GetDependencyType(i), types[i]);
  }
  for (int i : {-1, 4}) {
    EXPECT_EQ(scene->GetDependencyName(i), "nil");
    EXPECT_EQ(scene->GetDependencyType(i), 0u);
    EXPECT_EQ(scene->GetDependency(i), nullptr);
  }
  TestBlock other("other");
  scene->SetDependency(4, &other);
  scene->SetDependency(-1, &other);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(scene->GetDependency(i), nullptr);
}

TEST(MainSceneTest, ASceneMadeWithoutCreateHasNoMaterialsNoToolsAndEmptySlots) {
  ScopedBlock<MainScene> scene(new MainScene(false));
  EXPECT_EQ(scene->GetNumMaterials(), 0);
  EXPECT_EQ(scene->GetNumSceneTools(), 0);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(scene->GetDependency(i), nullptr);
  EXPECT_EQ(scene->GetMainNode(), nullptr);
  EXPECT_EQ(scene->GetDataTable(), nullptr);
  EXPECT_EQ(scene->GetMaterial(0), nullptr);
  EXPECT_EQ(scene->GetSceneTool(0), nullptr);
  EXPECT_EQ(scene->GetAmbientLightColor(), Color(0, 0, 0));
  scene->SetBackgroundColor(Color(1, 1, 1));  // nothing to write into
  EXPECT_EQ(scene->GetBackgroundColor(), Color(0, 0, 0));
  scene->DeleteMaterial(0);
  scene->DeleteSceneTool(0);
  scene->DeleteSceneTool(static_cast<ToolBlock*>(nullptr));
  EXPECT_EQ(scene->GetDependency(3), nullptr);
}

TEST(MainSceneTest, ASceneMadeWithCreateHasAMainNodeATableAndTwoEmptyLists) {
  ScopedBlock<MainScene> scene(new MainScene(true));
  Node* main_node = scene->GetMainNode();
  ASSERT_NE(main_node, nullptr);
  EXPECT_NE(main_node->GetDataTable(), nullptr);  // a node made with its defaults
  EXPECT_NE(main_node->GetNodeTransform(), nullptr);
  EXPECT_EQ(main_node->GetParentBlock(), scene.get());
  ASSERT_NE(scene->GetDataTable(), nullptr);
  EXPECT_EQ(scene->GetDependency(0), scene->GetDataTable());
  auto* tools = dynamic_cast<BlockTable*>(scene->GetDependency(2));
  auto* materials = dynamic_cast<BlockTable*>(scene->GetDependency(3));
  ASSERT_NE(tools, nullptr);
  ASSERT_NE(materials, nullptr);
  EXPECT_NE(tools, materials);
  EXPECT_EQ(tools->GetNumBlocks(), 0u);
  EXPECT_EQ(materials->GetNumBlocks(), 0u);
}

TEST(MainSceneTest, TheParametersHaveTheirIdsNamesTypesAndDefaults) {
  ScopedBlock<MainScene> scene(new MainScene(true));
  DataTable* table = scene->GetDataTable();
  ASSERT_EQ(table->GetNumDatas(), 3);
  EXPECT_EQ(table->GetDataName(0), "ambient_light_color");
  EXPECT_EQ(table->GetDataName(1), "background_color");
  EXPECT_EQ(table->GetDataName(2), "ambient_occlusion_samples");
  EXPECT_EQ(table->GetDataType(0), Data::kTypeColor);
  EXPECT_EQ(table->GetDataType(1), Data::kTypeColor);
  EXPECT_EQ(table->GetDataType(2), Data::kTypeInt);
  for (int id = 0; id < 3; ++id) EXPECT_EQ(table->GetDataSize(id), 1);
  EXPECT_EQ(scene->GetAmbientLightColor(), Color(0, 0, 0));
  EXPECT_EQ(scene->GetBackgroundColor(), Color(0, 0, 0));
  EXPECT_EQ(table->GetInt(2, 0, 0), 0);
}

TEST(MainSceneTest, TheColourAccessorsReadAndWriteTheTable) {
  ScopedBlock<MainScene> scene(new MainScene(true));
  scene->SetAmbientLightColor(Color(0.1f, 0.2f, 0.3f));
  scene->SetBackgroundColor(Color(0.4f, 0.5f, 0.6f));
  EXPECT_EQ(scene->GetAmbientLightColor(), Color(0.1f, 0.2f, 0.3f));
  EXPECT_EQ(scene->GetBackgroundColor(), Color(0.4f, 0.5f, 0.6f));
  EXPECT_EQ(scene->GetDataTable()->GetColor(0, 0, 0), Color(0.1f, 0.2f, 0.3f));
  EXPECT_EQ(scene->GetDataTable()->GetColor(1, 0, 0), Color(0.4f, 0.5f, 0.6f));
}

TEST(MainSceneTest, UpdateDataTableRepairsATableAndKeepsExistingValues) {
  for (bool flag : {false, true}) {
    ScopedBlock<MainScene> scene(new MainScene(false));
    auto* table = new DataTable(true);
    ASSERT_TRUE(table->AddDataColor(1, Color(1, 0, 0), 1));
    ASSERT_TRUE(scene->SetDataTable(table).IsOk());
    scene->UpdateDataTable(flag);
    EXPECT_EQ(table->GetNumDatas(), 3);
    EXPECT_EQ(scene->GetBackgroundColor(), Color(1, 0, 0));
    EXPECT_EQ(table->GetDataName(1), "background_color");
    EXPECT_EQ(table->GetDataName(2), "ambient_occlusion_samples");
  }
  ScopedBlock<MainScene> bare(new MainScene(false));
  bare->UpdateDataTable(true);
  EXPECT_EQ(bare->GetDataTable(), nullptr);
}

TEST(MainSceneTest, SetDataTableWithANodeFailsAndKeepsTheOldTable) {
  ScopedBlock<MainScene> scene(new MainScene(true));
  DataTable* kept = scene->GetDataTable();
  // A table class that reports the class id of a node.
  class NodeLikeTable : public DataTable {
   public:
    BlockType GetBlockType() const override { return BlockType(115, 16, 32); }
  };
  ScopedBlock<NodeLikeTable> impostor(new NodeLikeTable());
  const Status status = scene->SetDataTable(impostor.get());
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(), "MainScene::SetDataTable : The block is not a valid data_table.");
  EXPECT_EQ(scene->GetDataTable(), kept);
  EXPECT_TRUE(scene->SetDataTable(nullptr).IsOk());
  EXPECT_EQ(scene->GetDataTable(), nullptr);
}

TEST(MainSceneTest, AddMaterialOnASceneWithoutAListCreatesTheListFirst) {
  ScopedBlock<MainScene> scene(new MainScene(false));
  auto* material = new TestMaterial();
  scene->AddMaterial(material);
  auto* list = dynamic_cast<BlockTable*>(scene->GetDependency(3));
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->GetParentBlock(), scene.get());
  EXPECT_EQ(scene->GetNumMaterials(), 1);
  EXPECT_EQ(scene->GetMaterial(0), material);
  EXPECT_EQ(material->GetParentBlock(), list);
  auto* tool = new TestTool();
  scene->AddSceneTool(tool);
  EXPECT_NE(scene->GetDependency(2), nullptr);
  EXPECT_EQ(scene->GetNumSceneTools(), 1);
  EXPECT_EQ(scene->GetSceneTool(0), tool);
}

TEST(MainSceneTest, AddingAMaterialLeavesTheSceneAsCode18FromTheScene) {
  ScopedBlock<MainScene> scene(new MainScene(true));
  auto* list = dynamic_cast<BlockTable*>(scene->GetDependency(3));
  RecordingListener list_listener;
  RecordingListener scene_listener;
  Listening listening_list(list, &list_listener);
  Listening listening_scene(scene.get(), &scene_listener);
  scene->AddMaterial(new TestMaterial());
  ASSERT_EQ(list_listener.events.size(), 1u);
  EXPECT_EQ(list_listener.events[0].block, list);
  EXPECT_EQ(list_listener.events[0].code, 2);
  ASSERT_EQ(scene_listener.events.size(), 1u);
  EXPECT_EQ(scene_listener.events[0].block, scene.get());
  EXPECT_EQ(scene_listener.events[0].code, 18);
  EXPECT_EQ(scene_listener.events[0].param, 0);
}

TEST(MainSceneTest, Code18KeepsTheParameterOfTheListsEvent) {
  ScopedBlock<MainScene> scene(new MainScene(true));
  scene->AddMaterial(new TestMaterial("a"));
  scene->AddMaterial(new TestMaterial("b"));
  RecordingListener listener;
  Listening listening(scene.get(), &listener);
  scene->DeleteMaterial(1);
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].code, 18);
  EXPECT_EQ(listener.events[0].param, 1);
}

TEST(MainSceneTest, EventsFromTheToolsListLeaveTheSceneWithTheListAsSender) {
  ScopedBlock<MainScene> scene(new MainScene(true));
  RecordingListener listener;
  Listening listening(scene.get(), &listener);
  scene->AddSceneTool(new TestTool());
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].block, scene->GetDependency(2));
  EXPECT_EQ(listener.events[0].code, 2);
}

TEST(MainSceneTest, OtherEventsOfTheMaterialsListPassUnchanged) {
  ScopedBlock<MainScene> scene(new MainScene(true));
  Block* list = scene->GetDependency(3);
  RecordingListener listener;
  Listening listening(scene.get(), &listener);
  list->PostEvent(3, 4);
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].block, list);
  EXPECT_EQ(listener.events[0].code, 3);
  EXPECT_EQ(listener.events[0].param, 4);
}

TEST(MainSceneTest, NodeEventsReachASceneListenerWithTheMainNodeAsSender) {
  ScopedBlock<MainScene> scene(new MainScene(true));
  Node* main_node = scene->GetMainNode();
  RecordingListener listener;
  Listening listening(scene.get(), &listener);
  main_node->SetName("MainNode");                                  // 3
  main_node->SetFreeze(true);                                      // 3 from the table
  main_node->GetNodeTransform()->PostEvent(12, 0);                 // 12 from the transform
  ASSERT_TRUE(main_node->SetObject(new TestObject()).IsOk());      // 8
  ASSERT_TRUE(main_node->SetMaterial(new TestMaterial()).IsOk());  // 18
  main_node->GetObject()->PostEvent(9, 0);                         // 9
  for (int code : {3, 19, 20, 16}) main_node->GetMaterial()->PostEvent(code, 0);  // 19 19 20 16
  for (int code : {4, 5, 6, 7, 13}) main_node->GetNodeTransform()->PostEvent(code, 0);
  auto* child = new Node(true);
  ASSERT_TRUE(main_node->AddChild(child).IsOk());  // 2
  std::vector<int> codes;
  for (const BlockEvent& event : listener.events) {
    codes.push_back(event.code);
    EXPECT_EQ(event.block, main_node);
    EXPECT_EQ(event.param, 0);
  }
  EXPECT_EQ(codes, std::vector<int>({3, 3, 12, 8, 18, 9, 19, 19, 20, 16, 4, 5, 6, 7, 13, 2}));
  // A change of a child node stops at its parent node.
  listener.events.clear();
  child->SetName("child");
  child->SetHide(true);
  EXPECT_TRUE(listener.events.empty());
}

TEST(MainSceneTest, TableChangesLeaveTheSceneWithTheTableAsSender) {
  ScopedBlock<MainScene> scene(new MainScene(true));
  RecordingListener listener;
  Listening listening(scene.get(), &listener);
  scene->SetAmbientLightColor(Color(1, 1, 1));
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].block, scene->GetDataTable());
  EXPECT_EQ(listener.events[0].code, 3);
  EXPECT_EQ(listener.events[0].param, 0);
}

TEST(MainSceneTest, MaterialsAreReadByPositionWithinTheList) {
  ScopedBlock<MainScene> scene(new MainScene(true));
  auto* a = new TestMaterial("a");
  auto* b = new TestMaterial("b");
  scene->AddMaterial(a);
  scene->AddMaterial(b);
  EXPECT_EQ(scene->GetNumMaterials(), 2);
  EXPECT_EQ(scene->GetMaterial(0), a);
  EXPECT_EQ(scene->GetMaterial(1), b);
  EXPECT_EQ(scene->GetMaterial(2), nullptr);
  EXPECT_EQ(scene->GetMaterial(-1), nullptr);
}

TEST(MainSceneTest, DeleteMaterialByIndexOutsideTheListDoesNothing) {
  ScopedBlock<MainScene> scene(new MainScene(true));
  for (const char* name : {"a", "b", "c"}) scene->AddMaterial(new TestMaterial(name));
  RecordingListener listener;
  Listening listening(scene.get(), &listener);
  scene->DeleteMaterial(5);
  scene->DeleteMaterial(-1);
  EXPECT_EQ(scene->GetNumMaterials(), 3);
  EXPECT_TRUE(listener.events.empty());
  scene->DeleteMaterial(0);
  EXPECT_EQ(scene->GetNumMaterials(), 2);
}

TEST(MainSceneTest, DeleteMaterialByPointerErasesOnlyTheFirstEntry) {
  ScopedBlock<MainScene> scene(new MainScene(true));
  auto* a = new TestMaterial("a");
  auto* b = new TestMaterial("b");
  scene->AddMaterial(a);
  scene->AddMaterial(b);
  scene->AddMaterial(a);
  scene->DeleteMaterial(a);
  ASSERT_EQ(scene->GetNumMaterials(), 2);
  EXPECT_EQ(scene->GetMaterial(0), b);
  EXPECT_EQ(scene->GetMaterial(1), a);
  ScopedBlock<TestMaterial> absent(new TestMaterial("absent"));
  scene->DeleteMaterial(absent.get());
  EXPECT_EQ(scene->GetNumMaterials(), 2);
}

TEST(MainSceneTest, DeleteSceneToolByPointerErasesEveryEntryAndByIndexOne) {
  ScopedBlock<MainScene> scene(new MainScene(true));
  auto* a = new TestTool();
  auto* b = new TestTool();
  scene->AddSceneTool(a);
  scene->AddSceneTool(b);
  scene->AddSceneTool(a);
  scene->DeleteSceneTool(a);
  ASSERT_EQ(scene->GetNumSceneTools(), 1);
  EXPECT_EQ(scene->GetSceneTool(0), b);
  scene->DeleteSceneTool(3);
  EXPECT_EQ(scene->GetNumSceneTools(), 1);
  scene->DeleteSceneTool(0);
  EXPECT_EQ(scene->GetNumSceneTools(), 0);
  EXPECT_EQ(scene->GetSceneTool(0), nullptr);
}

TEST(MainSceneTest, WritesAndReadsNoPayload) {
  ScopedBlock<MainScene> scene(new MainScene(true));
  SceneSave save;
  EXPECT_EQ(scene->Save(&save), 1);
  EXPECT_TRUE(save.TakeBytes().empty());
  SceneLoad load(std::vector<std::uint8_t>{1, 2, 3});
  EXPECT_EQ(scene->Load(&load), 1);
  EXPECT_FALSE(load.HasError());
  scene->ActionBegin(1, 2);
  scene->ActionEnd(1, 2);
}

TEST(MainSceneTest, CloneCopiesEveryPart) {
  ScopedBlock<MainScene> scene(new MainScene(true));
  scene->GetMainNode()->SetName("MainNode");
  scene->SetBackgroundColor(Color(0, 1, 0));
  scene->AddMaterial(new TestMaterial("m"));
  ScopedBlock<Block> clone(scene->Clone());
  auto* copy = dynamic_cast<MainScene*>(clone.get());
  ASSERT_NE(copy, nullptr);
  ASSERT_NE(copy->GetMainNode(), nullptr);
  EXPECT_NE(copy->GetMainNode(), scene->GetMainNode());
  EXPECT_EQ(copy->GetMainNode()->GetName(), "MainNode");
  EXPECT_EQ(copy->GetBackgroundColor(), Color(0, 1, 0));
  ASSERT_EQ(copy->GetNumMaterials(), 1);
  EXPECT_NE(copy->GetMaterial(0), scene->GetMaterial(0));
  EXPECT_EQ(copy->GetMaterial(0)->GetName(), "m_clone");
  EXPECT_EQ(copy->GetNumSceneTools(), 0);
}

class MainSceneFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SceneEngine::DestroyFactories();
    RegisterBaseLibrary();
  }
  void TearDown() override { SceneEngine::DestroyFactories(); }
};

TEST_F(MainSceneFileTest, FactoryPassesItsFlagToTheConstructor) {
  MainSceneFactory factory;
  EXPECT_EQ(factory.GetName(), "MainScene");
  EXPECT_EQ(factory.GetBlockType().class_id, 100u);
  ScopedBlock<Block> empty(factory.GetBlock(false));
  ScopedBlock<Block> full(factory.GetBlock(true));
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(empty->GetDependency(i), nullptr);
    EXPECT_NE(full->GetDependency(i), nullptr);
  }
}

TEST_F(MainSceneFileTest, ASceneComesBackThroughTheChunkStream) {
  ScopedBlock<MainScene> scene(new MainScene(true));
  scene->GetMainNode()->SetName("MainNode");
  scene->SetAmbientLightColor(Color(0.25f, 0.5f, 0.75f));
  auto* child = new Node(true);
  child->SetName("Box");
  ASSERT_TRUE(scene->GetMainNode()->AddChild(child).IsOk());
  ScopedBlock<Block> loaded(testing::LoadBlockGraph(testing::SaveBlockGraph(scene.get())));
  auto* copy = dynamic_cast<MainScene*>(loaded.get());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->GetAmbientLightColor(), Color(0.25f, 0.5f, 0.75f));
  ASSERT_NE(copy->GetMainNode(), nullptr);
  EXPECT_EQ(copy->GetMainNode()->GetName(), "MainNode");
  ASSERT_EQ(copy->GetMainNode()->GetNumChildren(), 1);
  EXPECT_EQ(copy->GetMainNode()->GetChild(0)->GetName(), "Box");
  EXPECT_NE(copy->GetDependency(2), nullptr);
  EXPECT_NE(copy->GetDependency(3), nullptr);
}

}  // namespace
}  // namespace Orlo
