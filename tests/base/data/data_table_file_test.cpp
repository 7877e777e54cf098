// A parameter table holding every kind of value, written and read back through the real
// chunk stream the way the scene file does it (see tests/testing/block_record_stream.h).
#include <cstdint>
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
#include <orlo/base/engine/scene_engine.h>

#include "tests/base/data/data_test_blocks.h"
#include "tests/testing/block_record_stream.h"

namespace Orlo {
namespace {

using testing::LoadBlockGraph;
using testing::SaveBlockGraph;
using testing::data::Release;
using testing::data::TableOwner;
using testing::data::TestController;

class TestControllerFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override { return TestController(0.0).GetBlockType(); }
  Block* GetBlock(bool) const override { return new TestController(0.0); }
  std::string GetName() const override { return "TestController"; }
};

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

  Block* read = LoadBlockGraph(SaveBlockGraph(table));
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
  auto* loaded = dynamic_cast<DataTable*>(LoadBlockGraph(SaveBlockGraph(table)));
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
