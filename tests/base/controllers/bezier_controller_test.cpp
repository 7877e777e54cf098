#include <orlo/base/controllers/bezier_controller.h>

#include <cstdint>
#include <ostream>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include <orlo/base/controllers/point3_controller.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

#include "event_recorder.h"
#include "scoped_block.h"

namespace Orlo {

void PrintTo(const BezierKey& key, std::ostream* out) {
  *out << "(" << key.time << ", " << key.value << ")";
}

namespace {

using testing::EventRecorder;
using testing::ScopedBlock;
using Keys = std::vector<BezierKey>;

// ---- Identity and slots ----

TEST(BezierControllerTest, ReportsTheBaseClassNameAndItsOwnType) {
  ScopedBlock<BezierController> controller(new BezierController(0.0, true));
  EXPECT_EQ(controller->GetClassName(), "FloatController");
  const BlockType type = controller->GetBlockType();
  EXPECT_EQ(type.class_id, 300u);
  EXPECT_EQ(type.super_class_id, 48u);
  EXPECT_EQ(type.sub_id, 16u);
  EXPECT_EQ(controller->GetControllerType(), 0);
}

TEST(BezierControllerTest, FactoryIsNamedBezierKeysControllerAndMakesAnEmptyController) {
  BezierControllerFactory factory;
  EXPECT_EQ(factory.GetName(), "BezierKeysController");
  const BlockType type = factory.GetBlockType();
  EXPECT_EQ(type.class_id, 300u);
  EXPECT_EQ(type.super_class_id, 48u);
  EXPECT_EQ(type.sub_id, 16u);
  for (bool flag : {true, false}) {
    auto* block = factory.GetBlock(flag);
    ScopedBlock<Block> owned(block);
    auto* controller = dynamic_cast<BezierController*>(block);
    ASSERT_NE(controller, nullptr);
    EXPECT_EQ(controller->GetClassName(), "FloatController");
    EXPECT_EQ(controller->GetDefaultValue(), 0.0);
    EXPECT_TRUE(controller->GetKeys().empty());
  }
}

TEST(BezierControllerTest, HasNoDependencySlots) {
  ScopedBlock<BezierController> controller(new BezierController(0.0, true));
  ScopedBlock<BezierController> other(new BezierController(0.0, true));
  EXPECT_EQ(controller->NumDependencies(), 0);
  controller->SetDependency(0, other.get());
  for (int index : {-1, 0, 1, 7}) {
    EXPECT_EQ(controller->GetDependency(index), nullptr) << index;
    EXPECT_EQ(controller->GetDependencyName(index), "no_dependency") << index;
    EXPECT_EQ(controller->GetDependencyType(index), 0u) << index;
  }
  EXPECT_EQ(controller->GetDataTable(), nullptr);
}

TEST(BezierControllerTest, SetDataTableIsRefusedAsForAnyBlockWithoutTable) {
  ScopedBlock<BezierController> controller(new BezierController(0.0, true));
  const Status status = controller->SetDataTable(nullptr);
  EXPECT_EQ(status.GetCode(), 1);
  EXPECT_EQ(status.GetMessage(), "This Block has no DataTables.");
  EXPECT_EQ(controller->PostLoad(), 0);
}

// ---- GetFloat ----

TEST(BezierControllerTest, EmptyControllerGivesItsDefaultAtTimeZeroOnly) {
  ScopedBlock<BezierController> controller(new BezierController(5.0, true));
  EXPECT_EQ(controller->GetFloat(0), 5.0);
  EXPECT_EQ(controller->GetFloat(7), 0.0);
  EXPECT_EQ(controller->GetFloat(-7), 0.0);
}

TEST(BezierControllerTest, SetFloatOnAnEmptyControllerKeysTheDefaultAtTimeZero) {
  ScopedBlock<BezierController> controller(new BezierController(1.0, true));
  controller->SetFloat(10, 2.0);
  EXPECT_EQ(controller->GetKeys(), (Keys{{0, 1.0}, {10, 2.0}}));
  EXPECT_EQ(controller->GetDefaultValue(), 1.0);
  EXPECT_EQ(controller->GetFloat(5), 1.5);
  EXPECT_EQ(controller->GetFloat(20), 0.0);
}

TEST(BezierControllerTest, KeyTimeGivesTheKeyValue) {
  ScopedBlock<BezierController> controller(new BezierController(1.0, true));
  controller->SetFloat(10, 2.0);
  EXPECT_EQ(controller->GetFloat(0), 1.0);
  EXPECT_EQ(controller->GetFloat(10), 2.0);
}

TEST(BezierControllerTest, PreviousValueIsUsedOnlyWhenTheTimeExceedsIt) {
  ScopedBlock<BezierController> controller(new BezierController(0.0, true));
  controller->SetKey({0, 10.0});
  controller->SetKey({10, 20.0});
  // 5 is not greater than the previous key's value 10.0: prev stays 0.0.
  EXPECT_EQ(controller->GetFloat(5), 10.0);
}

TEST(BezierControllerTest, MidpointBetweenKeysIsNotWeightedByTime) {
  ScopedBlock<BezierController> controller(new BezierController(0.0, true));
  controller->SetKey({0, 1.0});
  controller->SetKey({100, 3.0});
  EXPECT_EQ(controller->GetFloat(1), 2.0);
  EXPECT_EQ(controller->GetFloat(99), 2.0);
}

TEST(BezierControllerTest, TimeBeforeTheFirstKeyTakesNextFromTheLastKey) {
  ScopedBlock<BezierController> controller(new BezierController(0.0, true));
  controller->SetKey({10, 20.0});
  controller->SetKey({20, 60.0});
  // next comes from the last key; 5 is not greater than 20.0, so prev stays 0.0.
  EXPECT_EQ(controller->GetFloat(5), 30.0);
}

TEST(BezierControllerTest, EveryLaterKeyIsVisitedWithoutStoppingEarly) {
  ScopedBlock<BezierController> controller(new BezierController(0.0, true));
  controller->SetKey({10, 2.0});
  controller->SetKey({20, 4.0});
  controller->SetKey({30, 6.0});
  // Key 30 sets next = 6.0 and, 15 > 4.0, prev = 4.0.
  EXPECT_EQ(controller->GetFloat(15), 5.0);
  // At time 3 the last visit sets next = 6.0 and, 3 > 4.0 being false, prev stays from key
  // 20's visit: 3 > 2.0, prev = 2.0.
  EXPECT_EQ(controller->GetFloat(3), 4.0);
}

TEST(BezierControllerTest, TimeAfterTheLastKeyGivesZero) {
  ScopedBlock<BezierController> controller(new BezierController(3.0, true));
  controller->SetFloat(10, 2.0);
  EXPECT_EQ(controller->GetFloat(11), 0.0);
  EXPECT_EQ(controller->GetFloat(1000000), 0.0);
}

// ---- SetFloat ----

TEST(BezierControllerTest, SetFloatAtTimeZeroOnAnEmptyControllerSetsTheDefault) {
  ScopedBlock<BezierController> controller(new BezierController(1.0, true));
  EventRecorder recorder;
  controller->AddBlockListener(&recorder);
  controller->SetFloat(0, 4.0);
  EXPECT_EQ(controller->GetDefaultValue(), 4.0);
  EXPECT_TRUE(controller->GetKeys().empty());
  EXPECT_EQ(controller->GetFloat(0), 4.0);
  ASSERT_EQ(recorder.events.size(), 1u);
  EXPECT_EQ(recorder.events[0].block, controller.get());
  EXPECT_EQ(recorder.events[0].code, 3);
  EXPECT_EQ(recorder.events[0].param, 0);
  controller->RemoveBlockListener(&recorder);
}

TEST(BezierControllerTest, SetFloatAtAnExistingTimeReplacesTheValue) {
  ScopedBlock<BezierController> controller(new BezierController(1.0, true));
  controller->SetFloat(10, 2.0);
  controller->SetFloat(10, 7.0);
  controller->SetFloat(0, 8.0);
  EXPECT_EQ(controller->GetKeys(), (Keys{{0, 8.0}, {10, 7.0}}));
  // With keys, time 0 is an ordinary key: the default value is left alone.
  EXPECT_EQ(controller->GetDefaultValue(), 1.0);
}

TEST(BezierControllerTest, SetFloatInsertsInTimeOrder) {
  ScopedBlock<BezierController> controller(new BezierController(1.0, true));
  controller->SetFloat(10, 2.0);
  controller->SetFloat(5, 3.0);
  controller->SetFloat(20, 4.0);
  controller->SetFloat(-5, 5.0);
  controller->SetFloat(15, 6.0);
  EXPECT_EQ(controller->GetKeys(),
            (Keys{{-5, 5.0}, {0, 1.0}, {5, 3.0}, {10, 2.0}, {15, 6.0}, {20, 4.0}}));
}

TEST(BezierControllerTest, SetFloatAtANegativeTimeOnAnEmptyControllerKeepsTimeZeroFirst) {
  // The first key always goes after the key made from the default value, whatever its time.
  ScopedBlock<BezierController> controller(new BezierController(1.0, true));
  controller->SetFloat(-5, 2.0);
  EXPECT_EQ(controller->GetKeys(), (Keys{{0, 1.0}, {-5, 2.0}}));
}

TEST(BezierControllerTest, EverySetFloatPostsOneValueChangedEvent) {
  ScopedBlock<BezierController> controller(new BezierController(1.0, true));
  EventRecorder recorder;
  controller->AddBlockListener(&recorder);
  controller->SetFloat(10, 2.0);  // makes two keys
  controller->SetFloat(10, 3.0);  // replaces
  controller->SetFloat(5, 4.0);   // inserts
  controller->SetFloat(50, 4.0);  // appends
  ASSERT_EQ(recorder.events.size(), 4u);
  for (const BlockEvent& event : recorder.events) {
    EXPECT_EQ(event.block, controller.get());
    EXPECT_EQ(event.code, 3);
    EXPECT_EQ(event.param, 0);
  }
  controller->RemoveBlockListener(&recorder);
}

TEST(BezierControllerTest, ChangeEventIsForwardedByTheDependantWithItselfAsSender) {
  ScopedBlock<Point3Controller> owner(new Point3Controller(true));
  auto* x = dynamic_cast<BezierController*>(owner->GetDependency(0));
  ASSERT_NE(x, nullptr);
  EventRecorder recorder;
  owner->AddBlockListener(&recorder);
  x->SetFloat(4, 1.0);
  ASSERT_EQ(recorder.events.size(), 1u);
  EXPECT_EQ(recorder.events[0].block, owner.get());
  EXPECT_EQ(recorder.events[0].code, 3);
  EXPECT_EQ(recorder.events[0].param, 0);
  owner->RemoveBlockListener(&recorder);
}

TEST(BezierControllerTest, MutedControllerPostsNothing) {
  ScopedBlock<BezierController> controller(new BezierController(1.0, true));
  EventRecorder recorder;
  controller->AddBlockListener(&recorder);
  controller->SetSendEvents(false);
  controller->SetFloat(10, 2.0);
  EXPECT_TRUE(recorder.events.empty());
  EXPECT_EQ(controller->GetKeys().size(), 2u);
  controller->RemoveBlockListener(&recorder);
}

// ---- SetKey ----

TEST(BezierControllerTest, SetKeyAtTimeZeroOnAnEmptyControllerLeavesTheDefault) {
  ScopedBlock<BezierController> controller(new BezierController(1.0, true));
  controller->SetKey({0, 4.0});
  EXPECT_EQ(controller->GetKeys(), (Keys{{0, 4.0}}));
  EXPECT_EQ(controller->GetFloat(0), 4.0);
  EXPECT_EQ(controller->GetDefaultValue(), 1.0);
}

TEST(BezierControllerTest, SetKeyOnAnEmptyControllerMakesTheTwoKeysAndStops) {
  ScopedBlock<BezierController> controller(new BezierController(1.0, true));
  controller->SetKey({10, 2.0});
  EXPECT_EQ(controller->GetKeys(), (Keys{{0, 1.0}, {10, 2.0}}));
}

TEST(BezierControllerTest, SetKeyReplacesInsertsAndAppendsInTimeOrder) {
  ScopedBlock<BezierController> controller(new BezierController(0.0, true));
  controller->SetKey({0, 1.0});
  controller->SetKey({20, 2.0});
  controller->SetKey({10, 3.0});
  controller->SetKey({30, 4.0});
  controller->SetKey({20, 5.0});
  EXPECT_EQ(controller->GetKeys(), (Keys{{0, 1.0}, {10, 3.0}, {20, 5.0}, {30, 4.0}}));
}

TEST(BezierControllerTest, SetKeyPostsNoEvent) {
  ScopedBlock<BezierController> controller(new BezierController(1.0, true));
  EventRecorder recorder;
  controller->AddBlockListener(&recorder);
  controller->SetKey({10, 2.0});
  controller->SetKey({10, 3.0});
  controller->SetKey({5, 3.0});
  controller->SetKey({0, 3.0});
  EXPECT_TRUE(recorder.events.empty());
  controller->RemoveBlockListener(&recorder);
}

// ---- GetKey ----

TEST(BezierControllerTest, GetKeyOfAnEmptyControllerIsZeroEvenAtTimeZero) {
  ScopedBlock<BezierController> controller(new BezierController(5.0, true));
  EXPECT_EQ(controller->GetKey(0u), 0.0);
  EXPECT_EQ(controller->GetKey(7u), 0.0);
}

TEST(BezierControllerTest, GetKeyMatchesGetFloatForNonNegativeTimes) {
  ScopedBlock<BezierController> controller(new BezierController(1.0, true));
  controller->SetFloat(10, 2.0);
  controller->SetFloat(20, 30.0);
  for (int time : {0, 3, 10, 15, 20, 25}) {
    EXPECT_EQ(controller->GetKey(static_cast<unsigned>(time)), controller->GetFloat(time))
        << time;
  }
}

TEST(BezierControllerTest, GetKeyComparesTimesAsUnsignedNumbers) {
  ScopedBlock<BezierController> controller(new BezierController(1.0, true));
  controller->SetFloat(-5, 2.0);  // keys (0, 1.0), (-5, 2.0)
  // Key -5 is 0xFFFFFFFB unsigned: later than 3, and 3 > 1.0 brings prev = 1.0.
  EXPECT_EQ(controller->GetKey(3u), 1.5);
  EXPECT_EQ(controller->GetFloat(3), 0.0);
  EXPECT_EQ(controller->GetKey(0xFFFFFFFBu), 2.0);
  // -1 is after every key unsigned, before both signed.
  EXPECT_EQ(controller->GetKey(0xFFFFFFFFu), 0.0);
  EXPECT_EQ(controller->GetFloat(-1), 1.0);
}

TEST(BezierControllerTest, GetKeyConvertsTheTimeToDoubleFromItsUnsignedValue) {
  ScopedBlock<BezierController> controller(new BezierController(3.5e9, true));
  controller->SetKey({-1, 10.0});  // keys (0, 3.5e9), (-1 = 0xFFFFFFFF, 10.0)
  // 4e9 as unsigned exceeds 3.5e9, so prev is taken; read as signed it would not be.
  EXPECT_EQ(controller->GetKey(4000000000u), (3.5e9 + 10.0) * 0.5);
}

// ---- Clone ----

TEST(BezierControllerTest, CloneCopiesTheDefaultAndTheKeysInOrder) {
  // The source has a dependant; the clone starts with none.
  ScopedBlock<Point3Controller> owner(new Point3Controller(false));
  auto* controller = new BezierController(1.0, true);
  ASSERT_TRUE(owner->MakeDependencyByID(0, controller).IsOk());
  controller->SetFloat(-5, 2.0);  // an unsorted list stays as it is
  controller->SetKey({7, 3.0});
  Block* clone_block = controller->Clone();
  ScopedBlock<Block> clone_owned(clone_block);
  auto* clone = dynamic_cast<BezierController*>(clone_block);
  ASSERT_NE(clone, nullptr);
  EXPECT_NE(clone, controller);
  EXPECT_EQ(clone->GetDefaultValue(), 1.0);
  EXPECT_EQ(clone->GetKeys(), (Keys{{0, 1.0}, {-5, 2.0}, {7, 3.0}}));
  std::vector<Block*> dependants;
  clone->GetDependants(dependants);
  EXPECT_TRUE(dependants.empty());
  clone->SetFloat(7, 9.0);
  EXPECT_EQ(controller->GetFloat(7), 3.0);
}

}  // namespace
}  // namespace Orlo
