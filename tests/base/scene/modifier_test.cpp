#include <orlo/base/scene/modifier.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include <orlo/support/math.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

#include "tests/base/data/payload_bytes.h"
#include "tests/base/scene/scene_test_blocks.h"
#include "tests/testing/scoped_block.h"
#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using testing::RecordingListener;
using testing::ScopedBlock;
using testing::TestModifier;
using testing::data::Bytes;
using testing::data::LoadPayload;
using testing::data::PayloadChunks;
using testing::data::PayloadFile;
using testing::data::SavePayload;
using testing::data::StringBytes;

// A chunk as SceneSave frames it: id, 64-bit length, content.
std::vector<std::uint8_t> Chunk(unsigned id, const std::vector<std::uint8_t>& content) {
  return Bytes().U32(id).U64(content.size()).Append(content).Get();
}

std::vector<std::uint8_t> BoxBytes(const Box3<double>& box) {
  return Bytes()
      .F64(box.min.x)
      .F64(box.min.y)
      .F64(box.min.z)
      .F64(box.max.x)
      .F64(box.max.y)
      .F64(box.max.z)
      .Get();
}

TEST(ModifierTest, StartsActiveWithNoNameAndTheEmptyBox) {
  ScopedBlock<TestModifier> modifier(new TestModifier());
  EXPECT_TRUE(modifier->IsActive());
  EXPECT_EQ(modifier->GetName(), "");
  const double max = Math<double>::MAX_REAL;
  EXPECT_EQ(modifier->GetBox().min, Point3<double>(max, max, max));
  EXPECT_EQ(modifier->GetBox().max, Point3<double>(-max, -max, -max));
}

TEST(ModifierTest, SetNameAndSetBoxPostNothing) {
  ScopedBlock<TestModifier> modifier(new TestModifier());
  RecordingListener listener;
  modifier->AddBlockListener(&listener);
  modifier->SetName("bend");
  modifier->SetBox(Box3<double>(Point3<double>(0, 0, 0), Point3<double>(1, 1, 1)));
  EXPECT_EQ(modifier->GetName(), "bend");
  EXPECT_EQ(modifier->GetBox().max, Point3<double>(1, 1, 1));
  EXPECT_TRUE(listener.events.empty());
  modifier->RemoveBlockListener(&listener);
}

TEST(ModifierTest, SetActivePostsCode3EvenWhenTheValueDoesNotChange) {
  ScopedBlock<TestModifier> modifier(new TestModifier());
  RecordingListener listener;
  modifier->AddBlockListener(&listener);
  modifier->SetActive(true);
  modifier->SetActive(false);
  EXPECT_FALSE(modifier->IsActive());
  ASSERT_EQ(listener.events.size(), 2u);
  for (const BlockEvent& event : listener.events) {
    EXPECT_EQ(event.block, modifier.get());
    EXPECT_EQ(event.code, 3);
    EXPECT_EQ(event.param, 0);
  }
  modifier->RemoveBlockListener(&listener);
}

TEST(ModifierTest, GivesAnObjectModifierAndNarrowsAnInterval) {
  ScopedBlock<TestModifier> modifier(new TestModifier());
  modifier->interval = TimeInterval(0, 10);
  TimeInterval interval(5, 20);
  modifier->GetTimeInterval(interval);
  EXPECT_EQ(interval, TimeInterval(5, 10));
  ScopedBlock<ObjectModifier> stack(modifier->GetNewObjectModifier());
  EXPECT_NE(stack.get(), nullptr);
}

TEST(ModifierTest, SavesTheFlagTheBoxAndTheNameInsideChunkZero) {
  ScopedBlock<TestModifier> modifier(new TestModifier());
  modifier->SetName("twist");
  const Box3<double> box(Point3<double>(-1, -2, -3), Point3<double>(4, 5, 6));
  modifier->SetBox(box);
  modifier->SetActive(false);
  const auto chunks = PayloadChunks(SavePayload(*modifier));
  ASSERT_EQ(chunks.size(), 1u);
  EXPECT_EQ(chunks[0].id, 0x0000u);
  const std::vector<std::uint8_t> expected = Bytes()
                                                 .Append(Chunk(0x0005, Bytes().I32(0).Get()))
                                                 .Append(Chunk(0x0010, BoxBytes(box)))
                                                 .Append(Chunk(0x0015, StringBytes("twist")))
                                                 .Get();
  EXPECT_EQ(chunks[0].bytes, expected);
}

TEST(ModifierTest, AnActiveModifierWritesOne) {
  ScopedBlock<TestModifier> modifier(new TestModifier());
  const auto chunks = PayloadChunks(SavePayload(*modifier));
  ASSERT_EQ(chunks.size(), 1u);
  const auto flag = Chunk(0x0005, Bytes().I32(1).Get());
  ASSERT_GE(chunks[0].bytes.size(), flag.size());
  EXPECT_EQ(std::vector<std::uint8_t>(chunks[0].bytes.begin(), chunks[0].bytes.begin() + 16), flag);
}

TEST(ModifierTest, ComesBackThroughTheChunkStreamAsItWasSaved) {
  for (bool active : {true, false}) {
    ScopedBlock<TestModifier> source(new TestModifier());
    source->SetName("taper");
    source->SetBox(Box3<double>(Point3<double>(1, 2, 3), Point3<double>(7, 8, 9)));
    source->SetActive(active);
    ScopedBlock<TestModifier> loaded(new TestModifier());
    const auto outcome = LoadPayload(*loaded, SavePayload(*source));
    EXPECT_EQ(outcome.result, 1);
    EXPECT_FALSE(outcome.reader_error) << outcome.message;
    EXPECT_EQ(loaded->IsActive(), active);
    EXPECT_EQ(loaded->GetName(), "taper");
    EXPECT_EQ(loaded->GetBox(), source->GetBox());
  }
}

TEST(ModifierTest, ReadsTheInnerChunksInAnyOrderAndSkipsUnknownOnes) {
  const auto inner = Bytes()
                         .Append(Chunk(0x0015, StringBytes("late")))
                         .Append(Chunk(0x0099, Bytes().I32(5).Get()))
                         .Append(Chunk(0x0005, Bytes().I32(3).Get()))
                         .Get();
  ScopedBlock<TestModifier> loaded(new TestModifier());
  const auto outcome = LoadPayload(*loaded, PayloadFile({{0x0000, inner}}));
  EXPECT_EQ(outcome.result, 1);
  EXPECT_EQ(loaded->GetName(), "late");
  EXPECT_TRUE(loaded->IsActive());  // bit 0 of 3
}

TEST(ModifierTest, TheActiveFlagIsBitZeroOfTheValueRead) {
  ScopedBlock<TestModifier> loaded(new TestModifier());
  const auto outcome =
      LoadPayload(*loaded, PayloadFile({{0x0000, Chunk(0x0005, Bytes().I32(2).Get())}}));
  EXPECT_EQ(outcome.result, 1);
  EXPECT_FALSE(loaded->IsActive());
}

TEST(ModifierTest, ARecordWithoutTheFlagChunkLoadsInactive) {
  ScopedBlock<TestModifier> loaded(new TestModifier());
  ASSERT_TRUE(loaded->IsActive());
  const auto outcome =
      LoadPayload(*loaded, PayloadFile({{0x0000, Chunk(0x0015, StringBytes("old"))}}));
  EXPECT_EQ(outcome.result, 1);
  EXPECT_EQ(loaded->GetName(), "old");
  EXPECT_FALSE(loaded->IsActive());
}

TEST(ModifierTest, AnEmptyPayloadOrAnotherFirstChunkLoadsInactiveAndSucceeds) {
  ScopedBlock<TestModifier> empty(new TestModifier());
  EXPECT_EQ(LoadPayload(*empty, PayloadFile({})).result, 1);
  EXPECT_FALSE(empty->IsActive());

  // Only the first chunk is looked at: a record chunk after another chunk is not read.
  ScopedBlock<TestModifier> other(new TestModifier());
  const auto outcome = LoadPayload(
      *other, PayloadFile({{0x0007, {}}, {0x0000, Chunk(0x0005, Bytes().I32(1).Get())}}));
  EXPECT_EQ(outcome.result, 1);
  EXPECT_FALSE(other->IsActive());
}

TEST(ModifierTest, APayloadCutShortAtAnyByteFailsTheLoad) {
  ScopedBlock<TestModifier> source(new TestModifier());
  source->SetName("cut");
  // The payload at the top of a file, so that a cut lands inside the modifier's own chunks.
  SceneSave save;
  ASSERT_EQ(source->Save(&save), 1);
  const std::vector<std::uint8_t> file = save.TakeBytes();
  for (std::size_t size = 0; size <= file.size(); ++size) {
    ScopedBlock<TestModifier> loaded(new TestModifier());
    SceneLoad load(std::vector<std::uint8_t>(file.begin(), file.begin() + size));
    const int expected = size == 0 || size == file.size() ? 1 : 0;
    EXPECT_EQ(loaded->Load(&load), expected) << size;
  }
}

}  // namespace
}  // namespace Orlo
