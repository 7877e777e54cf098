#include <orlo/base/controllers/point3_controller.h>

#include <vector>

#include <gtest/gtest.h>

#include <orlo/base/controllers/bezier_controller.h>
#include <orlo/base/engine/base_library.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

#include "tests/testing/scoped_block.h"
#include "tests/testing/block_record_stream.h"
#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using testing::RecordingListener;
using testing::ScopedBlock;
using Keys = std::vector<BezierKey>;

BezierController* SubController(Point3Controller* controller, int index) {
  return dynamic_cast<BezierController*>(controller->GetDependency(index));
}

// ---- Identity and slots ----

TEST(Point3ControllerTest, ReportsItsNameTypeAndControllerType) {
  ScopedBlock<Point3Controller> controller(new Point3Controller(false));
  EXPECT_EQ(controller->GetClassName(), "Point3Controller");
  const BlockType type = controller->GetBlockType();
  EXPECT_EQ(type.class_id, 300u);
  EXPECT_EQ(type.super_class_id, 48u);
  EXPECT_EQ(type.sub_id, 32u);
  EXPECT_EQ(controller->GetControllerType(), 4);
  EXPECT_EQ(controller->GetDataTable(), nullptr);
  EXPECT_EQ(controller->PostLoad(), 0);
}

TEST(Point3ControllerTest, SetDataTableIsRefusedAsForAnyBlockWithoutTable) {
  ScopedBlock<Point3Controller> controller(new Point3Controller(true));
  const Status status = controller->SetDataTable(nullptr);
  EXPECT_EQ(status.GetCode(), 1);
  EXPECT_EQ(status.GetMessage(), "This Block has no DataTables.");
  for (int i = 0; i < 3; ++i) EXPECT_NE(controller->GetDependency(i), nullptr) << i;
}

TEST(Point3ControllerTest, HasThreeNamedControllerSlots) {
  ScopedBlock<Point3Controller> controller(new Point3Controller(true));
  EXPECT_EQ(controller->NumDependencies(), 3);
  EXPECT_EQ(controller->GetDependencyName(0), "x_animation_controller");
  EXPECT_EQ(controller->GetDependencyName(1), "y_animation_controller");
  EXPECT_EQ(controller->GetDependencyName(2), "z_animation_controller");
  for (int index : {0, 1, 2}) EXPECT_EQ(controller->GetDependencyType(index), 300u);
  for (int index : {-1, 3, 100}) {
    EXPECT_EQ(controller->GetDependency(index), nullptr) << index;
    EXPECT_EQ(controller->GetDependencyName(index), "no_dependency") << index;
    EXPECT_EQ(controller->GetDependencyType(index), 0u) << index;
  }
}

TEST(Point3ControllerTest, SetDependencyOutsideTheSlotsIsIgnored) {
  ScopedBlock<Point3Controller> controller(new Point3Controller(false));
  ScopedBlock<BezierController> other(new BezierController(0.0, true));
  controller->SetDependency(-1, other.get());
  controller->SetDependency(3, other.get());
  for (int index : {-1, 0, 1, 2, 3}) EXPECT_EQ(controller->GetDependency(index), nullptr);
}

TEST(Point3ControllerTest, CreatingSubcontrollersLinksThreeBezierControllers) {
  ScopedBlock<Point3Controller> controller(new Point3Controller(true));
  BezierController* subs[3];
  for (int i = 0; i < 3; ++i) {
    subs[i] = SubController(controller.get(), i);
    ASSERT_NE(subs[i], nullptr) << i;
    EXPECT_EQ(subs[i]->GetDefaultValue(), 0.0);
    EXPECT_TRUE(subs[i]->GetKeys().empty());
    EXPECT_EQ(subs[i]->GetParentBlock(), controller.get());
  }
  EXPECT_NE(subs[0], subs[1]);
  EXPECT_NE(subs[1], subs[2]);
  EXPECT_NE(subs[0], subs[2]);
}

TEST(Point3ControllerTest, FactoryPassesItsFlagToTheConstructor) {
  Point3ControllerFactory factory;
  EXPECT_EQ(factory.GetName(), "Point3Controller");
  const BlockType type = factory.GetBlockType();
  EXPECT_EQ(type.class_id, 300u);
  EXPECT_EQ(type.super_class_id, 48u);
  EXPECT_EQ(type.sub_id, 32u);
  ScopedBlock<Block> with(factory.GetBlock(true));
  ScopedBlock<Block> without(factory.GetBlock(false));
  ASSERT_NE(dynamic_cast<Point3Controller*>(with.get()), nullptr);
  ASSERT_NE(dynamic_cast<Point3Controller*>(without.get()), nullptr);
  for (int i = 0; i < 3; ++i) {
    EXPECT_NE(dynamic_cast<BezierController*>(with->GetDependency(i)), nullptr) << i;
    EXPECT_EQ(without->GetDependency(i), nullptr) << i;
  }
}

// ---- Values ----

TEST(Point3ControllerTest, NewControllerWithSubcontrollersGivesZeroAtAnyTime) {
  ScopedBlock<Point3Controller> controller(new Point3Controller(true));
  for (int time : {0, 1, 10, -10}) {
    EXPECT_EQ(controller->GetPoint3(time), Point3<double>(0, 0, 0)) << time;
  }
}

TEST(Point3ControllerTest, SetPoint3KeysEachComponent) {
  ScopedBlock<Point3Controller> controller(new Point3Controller(true));
  controller->SetPoint3(10, Point3<double>(1, 2, 3));
  EXPECT_EQ(controller->GetPoint3(10), Point3<double>(1, 2, 3));
  EXPECT_EQ(controller->GetPoint3(0), Point3<double>(0, 0, 0));
  EXPECT_EQ(SubController(controller.get(), 0)->GetKeys(), (Keys{{0, 0.0}, {10, 1.0}}));
  EXPECT_EQ(SubController(controller.get(), 1)->GetKeys(), (Keys{{0, 0.0}, {10, 2.0}}));
  EXPECT_EQ(SubController(controller.get(), 2)->GetKeys(), (Keys{{0, 0.0}, {10, 3.0}}));
  EXPECT_EQ(controller->GetX(10), 1.0);
  EXPECT_EQ(controller->GetY(10), 2.0);
  EXPECT_EQ(controller->GetZ(10), 3.0);
}

TEST(Point3ControllerTest, ControllerWithoutSubcontrollersKeepsFallbackValues) {
  ScopedBlock<Point3Controller> controller(new Point3Controller(false));
  EXPECT_EQ(controller->GetPoint3(0), Point3<double>(0, 0, 0));
  controller->SetPoint3(10, Point3<double>(1, 2, 3));
  // A fallback value holds at every time.
  EXPECT_EQ(controller->GetPoint3(0), Point3<double>(1, 2, 3));
  EXPECT_EQ(controller->GetPoint3(-4), Point3<double>(1, 2, 3));
  controller->SetX(0, 4.0);
  controller->SetY(0, 5.0);
  controller->SetZ(0, 6.0);
  EXPECT_EQ(controller->GetX(7), 4.0);
  EXPECT_EQ(controller->GetY(7), 5.0);
  EXPECT_EQ(controller->GetZ(7), 6.0);
}

TEST(Point3ControllerTest, OneMissingSubcontrollerUsesItsFallbackValue) {
  ScopedBlock<Point3Controller> controller(new Point3Controller(true));
  controller->DeleteDependency(1);
  controller->SetPoint3(10, Point3<double>(1, 2, 3));
  EXPECT_EQ(controller->GetPoint3(10), Point3<double>(1, 2, 3));
  EXPECT_EQ(controller->GetPoint3(0), Point3<double>(0, 2, 0));
}

TEST(Point3ControllerTest, SlotHoldingAnotherKindOfBlockEvaluatesAsEmpty) {
  // A corrupt file may link any block into a slot: it is kept (the graph stays whole) but not
  // evaluated.
  ScopedBlock<Point3Controller> controller(new Point3Controller(false));
  ASSERT_TRUE(controller->MakeDependencyByID(0, new Point3Controller(true)).IsOk());
  controller->SetPoint3(10, Point3<double>(1, 2, 3));
  EXPECT_EQ(controller->GetPoint3(0), Point3<double>(1, 2, 3));
  EXPECT_NE(controller->GetDependency(0), nullptr);
}

// ---- Events ----

TEST(Point3ControllerTest, SetComponentWithoutSubcontrollerPostsCodeZero) {
  ScopedBlock<Point3Controller> controller(new Point3Controller(false));
  RecordingListener recorder;
  controller->AddBlockListener(&recorder);
  controller->SetX(0, 1.0);
  controller->SetY(0, 2.0);
  controller->SetZ(0, 3.0);
  ASSERT_EQ(recorder.events.size(), 3u);
  for (const BlockEvent& event : recorder.events) {
    EXPECT_EQ(event.block, controller.get());
    EXPECT_EQ(event.code, 0);
    EXPECT_EQ(event.param, 0);
  }
  controller->RemoveBlockListener(&recorder);
}

TEST(Point3ControllerTest, SetPoint3WithoutSubcontrollersPostsNothing) {
  ScopedBlock<Point3Controller> controller(new Point3Controller(false));
  RecordingListener recorder;
  controller->AddBlockListener(&recorder);
  controller->SetPoint3(0, Point3<double>(1, 2, 3));
  EXPECT_TRUE(recorder.events.empty());
  controller->RemoveBlockListener(&recorder);
}

TEST(Point3ControllerTest, SetComponentWithSubcontrollerOnlyForwardsItsEvent) {
  ScopedBlock<Point3Controller> controller(new Point3Controller(true));
  RecordingListener recorder;
  controller->AddBlockListener(&recorder);
  controller->SetY(5, 1.0);
  ASSERT_EQ(recorder.events.size(), 1u);
  EXPECT_EQ(recorder.events[0].block, controller.get());
  EXPECT_EQ(recorder.events[0].code, 3);
  EXPECT_EQ(recorder.events[0].param, 0);
  EXPECT_EQ(controller->GetY(5), 1.0);
  controller->RemoveBlockListener(&recorder);
}

TEST(Point3ControllerTest, SetPoint3WithSubcontrollersForwardsOneEventPerComponent) {
  ScopedBlock<Point3Controller> controller(new Point3Controller(true));
  RecordingListener recorder;
  controller->AddBlockListener(&recorder);
  controller->SetPoint3(5, Point3<double>(1, 2, 3));
  ASSERT_EQ(recorder.events.size(), 3u);
  for (const BlockEvent& event : recorder.events) {
    EXPECT_EQ(event.block, controller.get());
    EXPECT_EQ(event.code, 3);
    EXPECT_EQ(event.param, 0);
  }
  controller->RemoveBlockListener(&recorder);
}

TEST(Point3ControllerTest, SetPoint3SetsXThenYThenZ) {
  ScopedBlock<Point3Controller> controller(new Point3Controller(true));
  RecordingListener recorder;
  for (int i = 0; i < 3; ++i) SubController(controller.get(), i)->AddBlockListener(&recorder);
  controller->SetPoint3(5, Point3<double>(1, 2, 3));
  ASSERT_EQ(recorder.events.size(), 3u);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(recorder.events[static_cast<std::size_t>(i)].block,
              SubController(controller.get(), i))
        << i;
  }
  for (int i = 0; i < 3; ++i) SubController(controller.get(), i)->RemoveBlockListener(&recorder);
}

// ---- Clone ----

TEST(Point3ControllerTest, CloneCopiesFallbacksAndClonesEachSubcontroller) {
  ScopedBlock<Point3Controller> controller(new Point3Controller(true));
  controller->SetPoint3(10, Point3<double>(1, 2, 3));
  ScopedBlock<Block> clone_owned(controller->Clone());
  auto* clone = dynamic_cast<Point3Controller*>(clone_owned.get());
  ASSERT_NE(clone, nullptr);
  for (int i = 0; i < 3; ++i) {
    BezierController* source = SubController(controller.get(), i);
    BezierController* copy = SubController(clone, i);
    ASSERT_NE(copy, nullptr) << i;
    EXPECT_NE(copy, source) << i;
    EXPECT_EQ(copy->GetKeys(), source->GetKeys()) << i;
    std::vector<Block*> dependants;
    copy->GetDependants(dependants);
    EXPECT_EQ(dependants, std::vector<Block*>{clone}) << i;
  }
  EXPECT_EQ(clone->GetPoint3(10), Point3<double>(1, 2, 3));
  clone->SetPoint3(10, Point3<double>(7, 8, 9));
  EXPECT_EQ(controller->GetPoint3(10), Point3<double>(1, 2, 3));
}

TEST(Point3ControllerTest, CloneWithoutSubcontrollersCopiesTheFallbackValues) {
  ScopedBlock<Point3Controller> controller(new Point3Controller(false));
  controller->SetPoint3(0, Point3<double>(4, 5, 6));
  ScopedBlock<Block> clone_owned(controller->Clone());
  auto* clone = dynamic_cast<Point3Controller*>(clone_owned.get());
  ASSERT_NE(clone, nullptr);
  EXPECT_EQ(clone->GetPoint3(3), Point3<double>(4, 5, 6));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(clone->GetDependency(i), nullptr);
}

TEST(Point3ControllerTest, CloneSkipsAMissingSubcontroller) {
  ScopedBlock<Point3Controller> controller(new Point3Controller(true));
  controller->DeleteDependency(2);
  controller->SetZ(0, 6.0);
  ScopedBlock<Block> clone_owned(controller->Clone());
  auto* clone = dynamic_cast<Point3Controller*>(clone_owned.get());
  ASSERT_NE(clone, nullptr);
  EXPECT_NE(SubController(clone, 0), nullptr);
  EXPECT_NE(SubController(clone, 1), nullptr);
  EXPECT_EQ(clone->GetDependency(2), nullptr);
  EXPECT_EQ(clone->GetZ(0), 6.0);
}

// ---- Files ----

TEST(Point3ControllerTest, SaveAndLoadWriteAndReadNothing) {
  ScopedBlock<Point3Controller> controller(new Point3Controller(false));
  controller->SetPoint3(0, Point3<double>(1, 2, 3));
  SceneSave save;
  save.BeginChunk(0x0020);
  EXPECT_EQ(controller->Save(&save), 1);
  save.EndChunk();
  save.BeginChunk(0x0010);
  save.EndChunk();
  // | 0x0020 len 0 | 0x0010 len 0 |
  const std::vector<std::uint8_t> expected = {0x20, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                              0x10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  const std::vector<std::uint8_t> bytes = save.TakeBytes();
  EXPECT_EQ(bytes, expected);
  SceneLoad load(bytes);
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(controller->Load(&load), 1);
  load.CloseChunk();
  // The reader is where it was: the next chunk is the sibling.
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x0010u);
  EXPECT_FALSE(load.HasError());
}

class Point3ControllerFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SceneEngine::DestroyFactories();
    RegisterBaseLibrary();
  }
  void TearDown() override { SceneEngine::DestroyFactories(); }
};

TEST_F(Point3ControllerFileTest, FallbackValuesAreNotKeptInTheFile) {
  ScopedBlock<Point3Controller> controller(new Point3Controller(false));
  controller->SetPoint3(0, Point3<double>(1, 2, 3));
  ScopedBlock<Block> loaded_block(
      testing::LoadBlockGraph(testing::SaveBlockGraph(controller.get())));
  auto* loaded = dynamic_cast<Point3Controller*>(loaded_block.get());
  ASSERT_NE(loaded, nullptr);
  EXPECT_EQ(loaded->GetPoint3(0), Point3<double>(0, 0, 0));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(loaded->GetDependency(i), nullptr);
}

TEST_F(Point3ControllerFileTest, SubcontrollersComeBackAsDependencyBlocks) {
  ScopedBlock<Point3Controller> controller(new Point3Controller(true));
  controller->SetPoint3(10, Point3<double>(1, 2, 3));
  controller->SetPoint3(20, Point3<double>(4, 5, 6));
  ScopedBlock<Block> loaded_block(
      testing::LoadBlockGraph(testing::SaveBlockGraph(controller.get())));
  auto* loaded = dynamic_cast<Point3Controller*>(loaded_block.get());
  ASSERT_NE(loaded, nullptr);
  for (int i = 0; i < 3; ++i) {
    ASSERT_NE(SubController(loaded, i), nullptr) << i;
    EXPECT_EQ(SubController(loaded, i)->GetKeys(), SubController(controller.get(), i)->GetKeys());
    EXPECT_EQ(SubController(loaded, i)->GetParentBlock(), loaded);
  }
  for (int time : {0, 5, 10, 15, 20, 25}) {
    EXPECT_EQ(loaded->GetPoint3(time), controller->GetPoint3(time)) << time;
  }
}

}  // namespace
}  // namespace Orlo
