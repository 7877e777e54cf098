#include <orlo/base/controllers/bezier_controller.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <ostream>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include <orlo/base/controllers/point3_controller.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

#include "tests/testing/scoped_block.h"
#include "tests/testing/test_blocks.h"

namespace Orlo {

// Internal linkage: the suite is one program, and argument-dependent lookup still finds it.
static void PrintTo(const BezierKey& key, std::ostream* out) {
  *out << "(" << key.time << ", " << key.value << ")";
}

namespace {

using testing::RecordingListener;
using testing::ScopedBlock;
using Bytes = std::vector<std::uint8_t>;
using Keys = std::vector<BezierKey>;

// Builds expected file bytes: chunk headers (id uint32, content length uint64) and
// little-endian numbers.
class ByteWriter {
 public:
  ByteWriter& Header(std::uint32_t id, std::uint64_t length) {
    Little(id, 4);
    Little(length, 8);
    return *this;
  }
  ByteWriter& Int32(std::int32_t value) {
    Little(static_cast<std::uint32_t>(value), 4);
    return *this;
  }
  ByteWriter& Double(double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    Little(bits, 8);
    return *this;
  }
  // A whole key chunk: 48 bytes.
  ByteWriter& Key(std::int32_t time, double value) {
    Header(0x0005, 36);
    Header(0x0010, 4).Int32(time);
    Header(0x0015, 8).Double(value);
    return *this;
  }
  ByteWriter& Zeros(std::size_t count) {
    m_bytes.insert(m_bytes.end(), count, 0);
    return *this;
  }
  ByteWriter& Append(const ByteWriter& other) {
    m_bytes.insert(m_bytes.end(), other.m_bytes.begin(), other.m_bytes.end());
    return *this;
  }
  const Bytes& bytes() const { return m_bytes; }

 private:
  void Little(std::uint64_t value, int count) {
    for (int i = 0; i < count; ++i) m_bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
  }

  Bytes m_bytes;
};

Bytes SavedBytes(BezierController* controller) {
  SceneSave save;
  EXPECT_EQ(controller->Save(&save), 1);
  return save.TakeBytes();
}

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
  EXPECT_EQ(controller->GetFloat(2), 2.0);
  EXPECT_EQ(controller->GetFloat(99), 2.0);
  // At time 1 the previous value 1.0 is not exceeded: half of the next value only.
  EXPECT_EQ(controller->GetFloat(1), 1.5);
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
  RecordingListener recorder;
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
  RecordingListener recorder;
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
  RecordingListener recorder;
  owner->AddBlockListener(&recorder);
  x->SetFloat(4, 1.0);
  ASSERT_EQ(recorder.events.size(), 1u);
  EXPECT_EQ(recorder.events[0].block, owner.get());
  EXPECT_EQ(recorder.events[0].code, 3);
  EXPECT_EQ(recorder.events[0].param, 0);
  owner->RemoveBlockListener(&recorder);
}

TEST(BezierControllerTest, ProcessEventPostsTheEventOnWithTheControllerAsSender) {
  ScopedBlock<Point3Controller> owner(new Point3Controller(true));
  auto* x = dynamic_cast<BezierController*>(owner->GetDependency(0));
  ASSERT_NE(x, nullptr);
  RecordingListener own;
  RecordingListener above;
  x->AddBlockListener(&own);
  owner->AddBlockListener(&above);
  x->ProcessEvent(BlockEvent(nullptr, 42, 7));
  ASSERT_EQ(own.events.size(), 1u);
  EXPECT_EQ(own.events[0].block, x);
  EXPECT_EQ(own.events[0].code, 42);
  EXPECT_EQ(own.events[0].param, 7);
  ASSERT_EQ(above.events.size(), 1u);
  EXPECT_EQ(above.events[0].block, owner.get());
  EXPECT_EQ(above.events[0].code, 42);
  EXPECT_EQ(above.events[0].param, 7);
  x->RemoveBlockListener(&own);
  owner->RemoveBlockListener(&above);
}

TEST(BezierControllerTest, MutedControllerPostsNothing) {
  ScopedBlock<BezierController> controller(new BezierController(1.0, true));
  RecordingListener recorder;
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

TEST(BezierControllerTest, SetKeyAtANegativeTimeOnAnEmptyControllerMakesOnlyTheTwoKeys) {
  // Visiting the new list once more would insert (-5, 2.0) again before the key at time 0.
  ScopedBlock<BezierController> controller(new BezierController(1.0, true));
  controller->SetKey({-5, 2.0});
  EXPECT_EQ(controller->GetKeys(), (Keys{{0, 1.0}, {-5, 2.0}}));
}

TEST(BezierControllerTest, SettersStopAtTheFirstKeyThatIsEqualOrLater) {
  // Keys (0, 1.0), (-5, 2.0) are out of order: at time -5 the key at time 0 is met first and
  // is later, so the new key goes in before it and the equal key further on is left alone.
  ScopedBlock<BezierController> by_float(new BezierController(1.0, true));
  by_float->SetFloat(-5, 2.0);
  by_float->SetFloat(-5, 9.0);
  EXPECT_EQ(by_float->GetKeys(), (Keys{{-5, 9.0}, {0, 1.0}, {-5, 2.0}}));
  EXPECT_EQ(by_float->GetFloat(-5), 9.0);

  ScopedBlock<BezierController> by_key(new BezierController(1.0, true));
  by_key->SetKey({-5, 2.0});
  by_key->SetKey({-5, 9.0});
  EXPECT_EQ(by_key->GetKeys(), (Keys{{-5, 9.0}, {0, 1.0}, {-5, 2.0}}));
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
  RecordingListener recorder;
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
    EXPECT_EQ(controller->GetKey(static_cast<unsigned>(time)), controller->GetFloat(time)) << time;
  }
}

TEST(BezierControllerTest, GetKeyComparesTimesAsUnsignedNumbers) {
  ScopedBlock<BezierController> controller(new BezierController(1.0, true));
  controller->SetFloat(-5, 2.0);  // keys (0, 1.0), (-5, 2.0)
  // Key -5 is 0xFFFFFFFB unsigned: later than 3, and 3 > 1.0 brings prev = 1.0.
  EXPECT_EQ(controller->GetKey(3u), 1.5);
  EXPECT_EQ(controller->GetFloat(3), 0.0);
  EXPECT_EQ(controller->GetKey(0xFFFFFFFBu), 2.0);
  // -1 is after every key unsigned; signed, it is before key 0 only.
  EXPECT_EQ(controller->GetKey(0xFFFFFFFFu), 0.0);
  EXPECT_EQ(controller->GetFloat(-1), 0.5);
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

// ---- The chunk payload ----

TEST(BezierControllerTest, SaveWritesTheKeysChunkWithNestedKeysThenTheDefault) {
  ScopedBlock<BezierController> controller(new BezierController(1.5, true));
  controller->SetFloat(10, 2.0);
  // | 0x0010 len 100 | count 2 | key (0, 1.5) | key (10, 2.0) | 0x0015 len 8 | 1.5 |
  // each key: | 0x0005 len 36 | 0x0010 len 4 | time | 0x0015 len 8 | value |
  ByteWriter expected;
  expected.Header(0x0010, 4 + 2 * 48).Int32(2).Key(0, 1.5).Key(10, 2.0);
  expected.Header(0x0015, 8).Double(1.5);
  EXPECT_EQ(SavedBytes(controller.get()), expected.bytes());
}

TEST(BezierControllerTest, EmptyControllerSavesACountOfZero) {
  ScopedBlock<BezierController> controller(new BezierController(-2.0, true));
  ByteWriter expected;
  expected.Header(0x0010, 4).Int32(0).Header(0x0015, 8).Double(-2.0);
  EXPECT_EQ(SavedBytes(controller.get()), expected.bytes());
}

TEST(BezierControllerTest, KeySavesItsOwnChunk) {
  SceneSave save;
  EXPECT_EQ(BezierKey(-7, 0.25).Save(&save), 1);
  ByteWriter expected;
  expected.Key(-7, 0.25);
  EXPECT_EQ(save.TakeBytes(), expected.bytes());
}

TEST(BezierControllerTest, SavedAndReloadedControllerHasTheSameKeysAndDefault) {
  ScopedBlock<BezierController> controller(new BezierController(1.25, true));
  controller->SetFloat(10, 2.0);
  controller->SetFloat(-5, 3.0);
  controller->SetKey({30, -4.5});
  SceneSave save;
  save.BeginChunk(0x0020);
  ASSERT_EQ(controller->Save(&save), 1);
  save.EndChunk();
  SceneLoad load(save.TakeBytes());
  ASSERT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  BezierControllerFactory factory;
  ScopedBlock<Block> loaded_block(factory.GetBlock(false));
  auto* loaded = dynamic_cast<BezierController*>(loaded_block.get());
  ASSERT_NE(loaded, nullptr);
  EXPECT_EQ(loaded->Load(&load), 1);
  load.CloseChunk();
  EXPECT_FALSE(load.HasError());
  EXPECT_EQ(loaded->GetKeys(), controller->GetKeys());
  EXPECT_EQ(loaded->GetDefaultValue(), 1.25);
  for (int time : {-10, -5, 0, 5, 10, 20, 30, 40}) {
    EXPECT_EQ(loaded->GetFloat(time), controller->GetFloat(time)) << time;
  }
}

TEST(BezierControllerTest, LoadKeepsKeysInFileOrderAndSkipsUnknownChunks) {
  // | 0x0099 len 4 | 0x0010 len 4+3*48 | count 3 | keys (20, 1), (5, 2), (5, 3) |
  // | 0x0015 len 8 | 6.5 |
  ByteWriter file;
  file.Header(0x0099, 4).Int32(77);
  file.Header(0x0010, 4 + 3 * 48).Int32(3).Key(20, 1.0).Key(5, 2.0).Key(5, 3.0);
  file.Header(0x0015, 8).Double(6.5);
  SceneLoad load(file.bytes());
  ScopedBlock<BezierController> controller(new BezierController(0.0, true));
  EXPECT_EQ(controller->Load(&load), 1);
  EXPECT_FALSE(load.HasError());
  EXPECT_EQ(controller->GetKeys(), (Keys{{20, 1.0}, {5, 2.0}, {5, 3.0}}));
  EXPECT_EQ(controller->GetDefaultValue(), 6.5);
  // Of two keys at one time the first in the list gives the value.
  EXPECT_EQ(controller->GetFloat(5), 2.0);
  EXPECT_EQ(controller->GetKey(5u), 2.0);
}

TEST(BezierControllerTest, LoadedCountTruncatesOrExtendsTheKeysWithZeroKeys) {
  ScopedBlock<BezierController> controller(new BezierController(0.0, true));
  controller->SetKey({0, 1.0});
  controller->SetKey({10, 2.0});
  controller->SetKey({20, 3.0});
  {
    // A shorter count keeps the head of the list; the key chunk overwrites it.
    ByteWriter file;
    file.Header(0x0010, 4 + 48).Int32(1).Key(7, 7.0);
    SceneLoad load(file.bytes());
    EXPECT_EQ(controller->Load(&load), 1);
    EXPECT_EQ(controller->GetKeys(), (Keys{{7, 7.0}}));
  }
  {
    // A count with fewer key chunks than keys (but within what the chunk can hold): the
    // missing key chunks leave (0, 0.0) keys.
    ByteWriter file;
    file.Header(0x0010, 4 + 2 * 48).Int32(2).Key(3, 3.0).Header(0x0077, 36).Zeros(36);
    SceneLoad load(file.bytes());
    EXPECT_EQ(controller->Load(&load), 1);
    EXPECT_FALSE(load.HasError());
    EXPECT_EQ(controller->GetKeys(), (Keys{{3, 3.0}, {0, 0.0}}));
  }
}

TEST(BezierControllerTest, LoadedCountOfZeroEmptiesTheKeys) {
  ScopedBlock<BezierController> controller(new BezierController(0.0, true));
  controller->SetKey({0, 1.0});
  controller->SetKey({10, 2.0});
  ByteWriter file;
  file.Header(0x0010, 4).Int32(0);
  SceneLoad load(file.bytes());
  EXPECT_EQ(controller->Load(&load), 1);
  EXPECT_TRUE(controller->GetKeys().empty());
  EXPECT_EQ(controller->GetDefaultValue(), 0.0);
}

TEST(BezierControllerTest, NonKeyChunkAmongTheKeysIsClosedAndTheReaderStaysInStep) {
  // | 0x0010 len 4+48+48 | count 2 | 0x0099 len 36 (zeros) | key (7, 3.5) |
  // | 0x0015 len 8 | 2.25 |
  ByteWriter file;
  file.Header(0x0010, 4 + 48 + 48).Int32(2).Header(0x0099, 36).Zeros(36);
  file.Key(7, 3.5).Header(0x0015, 8).Double(2.25);
  SceneLoad load(file.bytes());
  ScopedBlock<BezierController> controller(new BezierController(0.0, true));
  EXPECT_EQ(controller->Load(&load), 1);
  EXPECT_FALSE(load.HasError());
  // The first key stays zeroed; the second and the default value are read in step.
  EXPECT_EQ(controller->GetKeys(), (Keys{{0, 0.0}, {7, 3.5}}));
  EXPECT_EQ(controller->GetDefaultValue(), 2.25);
}

TEST(BezierControllerTest, KeyLoadReadsItsChunkAndSkipsUnknownSubChunks) {
  // | 0x0005 len 12+8+12+4+12+2 | 0x0015 len 8 | 1.5 | 0x0010 len 4 | 9 | 0x0042 len 2 | 0 0 |
  ByteWriter file;
  file.Header(0x0005, 12 + 8 + 12 + 4 + 12 + 2);
  file.Header(0x0015, 8).Double(1.5).Header(0x0010, 4).Int32(9).Header(0x0042, 2).Zeros(2);
  SceneLoad load(file.bytes());
  BezierKey key;
  EXPECT_EQ(key.Load(&load), 1);
  EXPECT_EQ(key, BezierKey(9, 1.5));
  EXPECT_EQ(load.Depth(), 0);
  EXPECT_FALSE(load.HasError());
}

TEST(BezierControllerTest, KeyLoadWithoutAChunkReadsNothing) {
  SceneLoad load(Bytes{});
  BezierKey key(4, 4.0);
  EXPECT_EQ(key.Load(&load), 0);
  EXPECT_EQ(key, BezierKey(4, 4.0));
  EXPECT_EQ(load.Depth(), 0);
}

TEST(BezierControllerTest, KeyLoadClosesAChunkThatIsNotAKey) {
  ByteWriter file;
  file.Header(0x0010, 4).Int32(5).Key(1, 1.0);
  SceneLoad load(file.bytes());
  BezierKey key(4, 4.0);
  EXPECT_EQ(key.Load(&load), 0);
  EXPECT_EQ(key, BezierKey(4, 4.0));
  EXPECT_EQ(load.Depth(), 0);
  // The next key chunk is found where it should be.
  EXPECT_EQ(key.Load(&load), 1);
  EXPECT_EQ(key, BezierKey(1, 1.0));
}

TEST(BezierControllerTest, KeyLoadReportsACorruptKeyChunk) {
  // | 0x0005 len 20 | 0x0010 len 100 (past its parent) | ... |
  ByteWriter file;
  file.Header(0x0005, 20).Header(0x0010, 100).Int32(1).Int32(2);
  SceneLoad load(file.bytes());
  BezierKey key;
  EXPECT_EQ(key.Load(&load), 0);
  EXPECT_TRUE(load.HasError());
}

TEST(BezierControllerTest, KeyCountLargerThanItsChunkCanHoldIsCorruption) {
  // | 0x0010 len 4+11 | count 1 | 11 zero bytes |: even a bare key chunk needs 12 bytes.
  ByteWriter file;
  file.Header(0x0010, 4 + 11).Int32(1).Zeros(11);
  SceneLoad load(file.bytes());
  ScopedBlock<BezierController> controller(new BezierController(0.0, true));
  controller->SetKey({0, 1.0});
  EXPECT_EQ(controller->Load(&load), 0);
  EXPECT_TRUE(load.HasError());
  EXPECT_EQ(load.GetStatus().GetCode(), 2);
  EXPECT_EQ(load.GetStatus().GetMessage(),
            "chunk 0x0010 at offset 0: BezierController::Load : key count 1 exceeds what its "
            "chunk can hold (reported at offset 16)");
  // Nothing was resized.
  EXPECT_EQ(controller->GetKeys(), (Keys{{0, 1.0}}));
}

TEST(BezierControllerTest, HugeKeyCountAllocatesNothing) {
  ByteWriter file;
  file.Header(0x0010, 4).Int32(0x7FFFFFFF);
  SceneLoad load(file.bytes());
  ScopedBlock<BezierController> controller(new BezierController(0.0, true));
  EXPECT_EQ(controller->Load(&load), 0);
  EXPECT_TRUE(load.HasError());
  EXPECT_TRUE(controller->GetKeys().empty());
}

TEST(BezierControllerTest, BareKeyChunksLoadAsZeroedKeys) {
  // | 0x0010 len 4+24 | count 2 | 0x0005 len 0 | 0x0005 len 0 |
  ByteWriter file;
  file.Header(0x0010, 4 + 24).Int32(2).Header(0x0005, 0).Header(0x0005, 0);
  SceneLoad load(file.bytes());
  ScopedBlock<BezierController> controller(new BezierController(0.0, true));
  EXPECT_EQ(controller->Load(&load), 1);
  EXPECT_FALSE(load.HasError());
  EXPECT_EQ(controller->GetKeys(), (Keys{{0, 0.0}, {0, 0.0}}));
}

TEST(BezierControllerTest, ExactlyFittingKeyCountIsAccepted) {
  ByteWriter file;
  file.Header(0x0010, 4 + 2 * 48).Int32(2).Key(1, 1.0).Key(2, 2.0);
  SceneLoad load(file.bytes());
  ScopedBlock<BezierController> controller(new BezierController(0.0, true));
  EXPECT_EQ(controller->Load(&load), 1);
  EXPECT_EQ(controller->GetKeys(), (Keys{{1, 1.0}, {2, 2.0}}));
}

TEST(BezierControllerTest, NegativeKeyCountThrowsTheLengthError) {
  // Kept as is: the count is widened with its sign and the resize refuses the size.
  for (std::int32_t count : {-1, -2, std::numeric_limits<std::int32_t>::min()}) {
    SCOPED_TRACE(count);
    ByteWriter file;
    file.Header(0x0010, 4).Int32(count);
    SceneLoad load(file.bytes());
    ScopedBlock<BezierController> controller(new BezierController(0.0, true));
    EXPECT_THROW(controller->Load(&load), std::length_error);
  }
}

TEST(BezierControllerTest, LoadReportsFailureWhenTheFramingIsCorrupt) {
  // | 0x0015 len 8 | 3.0 | 0x0010 len 50 (past the end of the file) |
  ByteWriter file;
  file.Header(0x0015, 8).Double(3.0).Header(0x0010, 50);
  SceneLoad load(file.bytes());
  ScopedBlock<BezierController> controller(new BezierController(0.0, true));
  EXPECT_EQ(controller->Load(&load), 0);
  EXPECT_EQ(controller->GetDefaultValue(), 3.0);
}

TEST(BezierControllerTest, TruncatedSaveNeverCrashesTheLoad) {
  ScopedBlock<BezierController> controller(new BezierController(1.5, true));
  controller->SetFloat(10, 2.0);
  controller->SetFloat(20, 4.0);
  const Bytes bytes = SavedBytes(controller.get());
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    SCOPED_TRACE(size);
    SceneLoad load(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)));
    ScopedBlock<BezierController> loaded(new BezierController(0.0, true));
    const int result = loaded->Load(&load);
    EXPECT_EQ(result == 0, load.HasError());
    EXPECT_LE(loaded->GetKeys().size(), 3u);
  }
}

}  // namespace
}  // namespace Orlo
