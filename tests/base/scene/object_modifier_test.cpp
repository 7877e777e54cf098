#include <orlo/base/scene/object_modifier.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <numeric>
#include <vector>

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
using testing::TestBlock;
using testing::TestModifier;
using testing::TestObject;
using testing::TestObjectModifier;
using testing::data::Bytes;
using testing::data::LoadPayload;
using testing::data::PayloadChunks;
using testing::data::PayloadFile;
using testing::data::SavePayload;

// A stack: `stack` applies a new modifier to a new base object. The base object builds itself.
struct Stack {
  Stack() : stack(new TestObjectModifier()) {
    modifier = new TestModifier();
    base = new TestObject("base");
    base->built = base;
    EXPECT_TRUE(stack->SetModifier(modifier).IsOk());
    EXPECT_TRUE(stack->SetObjectToModify(base).IsOk());
  }
  ScopedBlock<TestObjectModifier> stack;
  TestModifier* modifier;
  TestObject* base;
};

TEST(ObjectModifierTest, ReportsItsSlotsFlagsAndDefaults) {
  ScopedBlock<TestObjectModifier> stack(new TestObjectModifier());
  EXPECT_EQ(stack->NumDependencies(), 2);
  EXPECT_EQ(stack->GetDependencyName(0), "modifier");
  EXPECT_EQ(stack->GetDependencyName(1), "base_object");
  EXPECT_EQ(stack->GetDependencyName(2), "no_dependency");
  EXPECT_EQ(stack->GetDependencyName(-1), "no_dependency");
  EXPECT_EQ(stack->GetDependencyType(0), 800u);
  EXPECT_EQ(stack->GetDependencyType(1), 500u);
  EXPECT_EQ(stack->GetDependencyType(2), 0u);
  EXPECT_EQ(stack->GetDependency(2), nullptr);
  EXPECT_EQ(stack->Flags(), 0x80040);
  EXPECT_EQ(stack->GetDataTable(), nullptr);
  stack->UpdateDataTable(true);
  EXPECT_EQ(stack->GetDataTable(), nullptr);
  EXPECT_TRUE(stack->IsEnabled());
  EXPECT_FALSE(stack->IsCacheValid());
  EXPECT_EQ(stack->GetCachedResult(), nullptr);
  EXPECT_EQ(stack->GetModifier(), nullptr);
  EXPECT_EQ(stack->GetObjectToModify(), nullptr);
  EXPECT_EQ(stack->GetNumPoints(), 0);
  EXPECT_EQ(stack->GetPoint(0), Point3<double>(0, 0, 0));
}

TEST(ObjectModifierTest, CarriesATransformThatStartsAsTheIdentityAndIsNotSaved) {
  ScopedBlock<TestObjectModifier> stack(new TestObjectModifier());
  testing::ExpectMatrixEq(stack->GetTransform(), Matrix3<double>::Identity());
  const Matrix3<double> moved = testing::Translation(1, 2, 3);
  stack->SetTransform(moved);
  testing::ExpectMatrixEq(stack->GetTransform(), moved);
  ScopedBlock<TestObjectModifier> loaded(new TestObjectModifier());
  EXPECT_EQ(LoadPayload(*loaded, SavePayload(*stack)).result, 1);
  testing::ExpectMatrixEq(loaded->GetTransform(), Matrix3<double>::Identity());
}

TEST(ObjectModifierTest, TheRecordStartsAsNinetySixZeroBytes) {
  ScopedBlock<TestObjectModifier> stack(new TestObjectModifier());
  ASSERT_EQ(stack->GetRecord().size(), 96u);
  for (std::uint8_t byte : stack->GetRecord()) EXPECT_EQ(byte, 0);
}

TEST(ObjectModifierTest, IgnoresRawStoresOutsideItsSlots) {
  ScopedBlock<TestObjectModifier> stack(new TestObjectModifier());
  TestBlock other("other");
  stack->SetDependency(2, &other);
  stack->SetDependency(-1, &other);
  EXPECT_EQ(stack->GetDependency(0), nullptr);
  EXPECT_EQ(stack->GetDependency(1), nullptr);
}

TEST(ObjectModifierTest, SetModifierLinksAndNullEmptiesTheSlot) {
  ScopedBlock<TestObjectModifier> stack(new TestObjectModifier());
  auto* modifier = new TestModifier();
  EXPECT_TRUE(stack->SetModifier(modifier).IsOk());
  EXPECT_EQ(stack->GetModifier(), modifier);
  EXPECT_EQ(stack->GetDependency(0), modifier);
  EXPECT_EQ(modifier->GetParentBlock(), stack.get());
  RecordingListener listener;
  modifier->AddBlockListener(&listener);
  EXPECT_TRUE(stack->SetModifier(nullptr).IsOk());
  EXPECT_EQ(stack->GetModifier(), nullptr);
  EXPECT_EQ(stack->GetDependency(0), nullptr);
  ASSERT_EQ(listener.events.size(), 1u);  // released: code 1
  EXPECT_EQ(listener.events[0].code, 1);
}

TEST(ObjectModifierTest, SetModifierOfABlockThatIsNotAModifierFails) {
  ScopedBlock<TestObjectModifier> stack(new TestObjectModifier());
  auto* kept = new TestModifier();
  ASSERT_TRUE(stack->SetModifier(kept).IsOk());
  // A modifier class that reports the class id of a node.
  ScopedBlock<TestModifier> node_like(new TestModifier(BlockType(115, 16, 32)));
  const Status status = stack->SetModifier(node_like.get());
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(),
            "ObjectModifier::SetModifier : The block is not a valid Modifier.");
  EXPECT_EQ(stack->GetModifier(), kept);
  EXPECT_EQ(node_like->GetParentBlock(), nullptr);
}

TEST(ObjectModifierTest, SetObjectToModifyTakesAnyObjectClassAndRefusesOthers) {
  ScopedBlock<TestObjectModifier> stack(new TestObjectModifier());
  for (unsigned class_id : {500u, 520u, 600u, 700u, 799u}) {
    auto* object = new TestObject("o", BlockType(class_id, 1, 1));
    EXPECT_TRUE(stack->SetObjectToModify(object).IsOk()) << class_id;
    EXPECT_EQ(stack->GetObjectToModify(), object);
  }
  Object* kept = stack->GetObjectToModify();
  for (unsigned class_id : {499u, 800u, 405u}) {
    ScopedBlock<TestObject> other(new TestObject("x", BlockType(class_id, 1, 1)));
    const Status status = stack->SetObjectToModify(other.get());
    EXPECT_EQ(status.GetCode(), 3) << class_id;
    EXPECT_EQ(status.GetMessage(),
              "ObjectModifier::SetObjectToModify : The block is not a valid Object.");
    EXPECT_EQ(stack->GetObjectToModify(), kept);
  }
  EXPECT_TRUE(stack->SetObjectToModify(nullptr).IsOk());
  EXPECT_EQ(stack->GetObjectToModify(), nullptr);
}

TEST(ObjectModifierTest, ACyclicStackIsRefused) {
  ScopedBlock<TestObjectModifier> top(new TestObjectModifier());
  auto* below = new TestObjectModifier();
  ASSERT_TRUE(top->SetObjectToModify(below).IsOk());
  const Status status = below->SetObjectToModify(top.get());
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(), "Block::MakeDependencyByID : Cyclic Dependency.");
  EXPECT_EQ(below->GetObjectToModify(), nullptr);
}

TEST(ObjectModifierTest, BuildAppliesTheActiveModifierToTheBaseResultAndCachesIt) {
  Stack s;
  Node* node = reinterpret_cast<Node*>(0x10);  // passed through, never used
  ScopedBlock<TestObject> modified(new TestObject("modified"));
  s.stack->applied = modified.get();
  EXPECT_EQ(s.stack->BuildObject(4, node), modified.get());
  EXPECT_EQ(s.base->builds, 1);
  EXPECT_EQ(s.base->last_time, 4);
  EXPECT_EQ(s.base->last_node, node);
  EXPECT_EQ(s.stack->log, std::vector<std::string>({"apply 4"}));
  EXPECT_TRUE(s.stack->IsCacheValid());
  EXPECT_EQ(s.stack->GetCachedResult(), modified.get());
}

TEST(ObjectModifierTest, TwoBuildsInsideTheIntervalReturnTheCachedObjectWithoutApplyingAgain) {
  Stack s;
  s.stack->interval = TimeInterval(0, 10);
  Object* first = s.stack->BuildObject(2, nullptr);
  Object* second = s.stack->BuildObject(8, nullptr);
  EXPECT_EQ(first, s.base);
  EXPECT_EQ(second, first);
  EXPECT_EQ(s.stack->log, std::vector<std::string>({"apply 2"}));
  EXPECT_EQ(s.base->builds, 1);
}

TEST(ObjectModifierTest, ABuildOutsideTheIntervalUnappliesTheCacheThenRebuilds) {
  Stack s;
  s.stack->interval = TimeInterval(0, 10);
  ScopedBlock<TestObject> restored(new TestObject("restored"));
  s.stack->unapplied = restored.get();
  EXPECT_EQ(s.stack->BuildObject(2, nullptr), s.base);
  EXPECT_EQ(s.stack->BuildObject(20, nullptr), s.base);
  EXPECT_EQ(s.stack->log, std::vector<std::string>({"apply 2", "unapply 20", "apply 20"}));
  EXPECT_EQ(s.stack->unapplied_from, s.base);
  EXPECT_EQ(s.base->builds, 2);
  EXPECT_TRUE(s.stack->IsCacheValid());
}

TEST(ObjectModifierTest,
     WithTheModifierInactiveTheBuildReturnsTheBaseResultAndLeavesTheCacheInvalid) {
  Stack s;
  s.modifier->SetActive(false);
  EXPECT_EQ(s.stack->BuildObject(1, nullptr), s.base);
  EXPECT_TRUE(s.stack->log.empty());
  EXPECT_FALSE(s.stack->IsCacheValid());
  EXPECT_EQ(s.stack->GetCachedResult(), s.base);
  // An invalid cache is never returned as it is: the next build asks the base again.
  EXPECT_EQ(s.stack->BuildObject(1, nullptr), s.base);
  EXPECT_EQ(s.base->builds, 2);
}

TEST(ObjectModifierTest, ADisabledStackReturnsTheBaseResultAndLeavesTheCacheAsItStands) {
  Stack s;
  ScopedBlock<TestObject> modified(new TestObject("modified"));
  s.stack->applied = modified.get();
  s.stack->interval = TimeInterval(0, 0);
  ASSERT_EQ(s.stack->BuildObject(0, nullptr), modified.get());
  s.stack->SetEnabled(false);
  EXPECT_FALSE(s.stack->IsEnabled());
  // Outside the interval: the valid cache is unapplied first, then the base result returned.
  EXPECT_EQ(s.stack->BuildObject(5, nullptr), s.base);
  EXPECT_EQ(s.stack->log, std::vector<std::string>({"apply 0", "unapply 5"}));
  EXPECT_FALSE(s.stack->IsCacheValid());
  EXPECT_EQ(s.stack->GetCachedResult(), nullptr);  // what UnapplyModifier returned
}

TEST(ObjectModifierTest, ADisabledStackBuildsWithoutAModifier) {
  ScopedBlock<TestObjectModifier> stack(new TestObjectModifier());
  auto* base = new TestObject("base");
  base->built = base;
  ASSERT_TRUE(stack->SetObjectToModify(base).IsOk());
  stack->SetEnabled(false);
  EXPECT_EQ(stack->BuildObject(0, nullptr), base);
  EXPECT_TRUE(stack->log.empty());
}

TEST(ObjectModifierTest, UnbuildUnappliesAValidCacheThenUnbuildsTheBase) {
  Stack s;
  ScopedBlock<TestObject> restored(new TestObject("restored"));
  s.stack->unapplied = restored.get();
  ASSERT_EQ(s.stack->BuildObject(3, nullptr), s.base);
  EXPECT_EQ(s.stack->UnbuildObject(7, nullptr), restored.get());
  EXPECT_EQ(s.stack->log, std::vector<std::string>({"apply 3", "unapply 7"}));
  EXPECT_FALSE(s.stack->IsCacheValid());
  EXPECT_EQ(s.base->unbuilds, 1);
  EXPECT_EQ(s.base->last_time, 7);
  // With the cache invalid only the base is unbuilt.
  EXPECT_EQ(s.stack->UnbuildObject(8, nullptr), restored.get());
  EXPECT_EQ(s.stack->log.size(), 2u);
  EXPECT_EQ(s.base->unbuilds, 2);
}

TEST(ObjectModifierTest, BuildingATwoLevelStackAppliesTheLowerModifierFirst) {
  ScopedBlock<TestObjectModifier> top(new TestObjectModifier());
  auto* lower = new TestObjectModifier();
  auto* base = new TestObject("base");
  base->built = base;
  ASSERT_TRUE(top->SetModifier(new TestModifier()).IsOk());
  ASSERT_TRUE(top->SetObjectToModify(lower).IsOk());
  ASSERT_TRUE(lower->SetModifier(new TestModifier()).IsOk());
  ASSERT_TRUE(lower->SetObjectToModify(base).IsOk());
  ScopedBlock<TestObject> lower_result(new TestObject("lower"));
  ScopedBlock<TestObject> top_result(new TestObject("top"));
  lower->applied = lower_result.get();
  top->applied = top_result.get();
  EXPECT_EQ(top->BuildObject(1, nullptr), top_result.get());
  EXPECT_EQ(lower->GetCachedResult(), lower_result.get());
  EXPECT_EQ(lower->log, std::vector<std::string>({"apply 1"}));
  EXPECT_EQ(top->log, std::vector<std::string>({"apply 1"}));
}

TEST(ObjectModifierTest, GetDependantObjectsListsTheStackTopFirstAndStopsAtThePlainObject) {
  ScopedBlock<TestObjectModifier> top(new TestObjectModifier());
  auto* lower = new TestObjectModifier();
  auto* base = new TestObject("base");
  ASSERT_TRUE(top->SetObjectToModify(lower).IsOk());
  ASSERT_TRUE(lower->SetObjectToModify(base).IsOk());
  std::vector<Object*> out;
  top->GetDependantObjects(out);
  EXPECT_EQ(out, std::vector<Object*>({top.get(), lower}));
  // Appended, not cleared.
  lower->GetDependantObjects(out);
  EXPECT_EQ(out, std::vector<Object*>({top.get(), lower, lower}));
}

TEST(ObjectModifierTest, SavesTheRecordAsNinetySixRawBytesInsideChunkZero) {
  ScopedBlock<TestObjectModifier> stack(new TestObjectModifier());
  std::iota(stack->GetRecord().begin(), stack->GetRecord().end(), std::uint8_t{1});
  const auto chunks = PayloadChunks(SavePayload(*stack));
  ASSERT_EQ(chunks.size(), 1u);
  EXPECT_EQ(chunks[0].id, 0x0000u);
  Bytes expected;
  expected.U32(0x0010).U64(96);
  for (std::uint8_t byte : stack->GetRecord()) expected.U8(byte);
  EXPECT_EQ(chunks[0].bytes, expected.Get());
}

TEST(ObjectModifierTest, TheRecordComesBackThroughTheChunkStream) {
  ScopedBlock<TestObjectModifier> source(new TestObjectModifier());
  std::iota(source->GetRecord().begin(), source->GetRecord().end(), std::uint8_t{100});
  ScopedBlock<TestObjectModifier> loaded(new TestObjectModifier());
  const auto outcome = LoadPayload(*loaded, SavePayload(*source));
  EXPECT_EQ(outcome.result, 1);
  EXPECT_FALSE(outcome.reader_error) << outcome.message;
  EXPECT_EQ(loaded->GetRecord(), source->GetRecord());
}

TEST(ObjectModifierTest, LoadSkipsOtherChunksAndSucceedsOnAnEmptyPayload) {
  ScopedBlock<TestObjectModifier> loaded(new TestObjectModifier());
  EXPECT_EQ(LoadPayload(*loaded, PayloadFile({})).result, 1);
  const auto inner = Bytes().U32(0x0044).U64(2).U8(9).U8(9).Get();
  EXPECT_EQ(LoadPayload(*loaded, PayloadFile({{0x0000, inner}})).result, 1);
  EXPECT_EQ(LoadPayload(*loaded, PayloadFile({{0x0003, {1, 2, 3}}})).result, 1);
  for (std::uint8_t byte : loaded->GetRecord()) EXPECT_EQ(byte, 0);
}

TEST(ObjectModifierTest, APayloadCutShortAtAnyByteFailsTheLoad) {
  ScopedBlock<TestObjectModifier> source(new TestObjectModifier());
  SceneSave save;
  ASSERT_EQ(source->Save(&save), 1);
  const std::vector<std::uint8_t> file = save.TakeBytes();
  for (std::size_t size = 0; size <= file.size(); ++size) {
    ScopedBlock<TestObjectModifier> loaded(new TestObjectModifier());
    SceneLoad load(std::vector<std::uint8_t>(file.begin(), file.begin() + size));
    const int expected = size == 0 || size == file.size() ? 1 : 0;
    EXPECT_EQ(loaded->Load(&load), expected) << size;
  }
}

TEST(ObjectModifierTest, AShortRecordChunkFailsTheLoad) {
  ScopedBlock<TestObjectModifier> loaded(new TestObjectModifier());
  const auto inner = Bytes().U32(0x0010).U64(4).U32(0xFFFFFFFF).Get();
  const auto outcome = LoadPayload(*loaded, PayloadFile({{0x0000, inner}}));
  EXPECT_EQ(outcome.result, 0);
  EXPECT_TRUE(outcome.reader_error);
}

}  // namespace
}  // namespace Orlo
