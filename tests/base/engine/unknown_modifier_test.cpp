#include <orlo/base/engine/unknown_modifier.h>

#include <gtest/gtest.h>

#include <orlo/base/engine/unknown_object_modifier.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>
#include <orlo/support/time_interval.h>

#include "tests/testing/scoped_block.h"
#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using testing::RecordingListener;
using testing::ScopedBlock;

TEST(UnknownModifierTest, IsAModifierOfItsOwnTypeWithoutSlots) {
  ScopedBlock<UnknownModifier> modifier(new UnknownModifier(false));
  EXPECT_EQ(modifier->GetClassName(), "UnknownModifier");
  EXPECT_EQ(modifier->GetBlockType().class_id, 800u);
  EXPECT_EQ(modifier->GetBlockType().super_class_id, 160u);
  EXPECT_EQ(modifier->GetBlockType().sub_id, 0u);
  EXPECT_EQ(modifier->NumDependencies(), 0);
  ScopedBlock<UnknownModifier> other(new UnknownModifier(false));
  modifier->SetDependency(0, other.get());
  EXPECT_EQ(modifier->GetDependency(0), nullptr);
  EXPECT_EQ(modifier->GetDependencyName(0), "nil");
  EXPECT_EQ(modifier->GetDependencyType(0), 0u);
}

TEST(UnknownModifierTest, SavesNothingNotEvenTheNameEveryModifierSaves) {
  ScopedBlock<UnknownModifier> modifier(new UnknownModifier(false));
  modifier->SetName("bend");
  SceneSave save;
  EXPECT_EQ(modifier->Save(&save), 0);
  EXPECT_TRUE(save.TakeBytes().empty());
}

TEST(UnknownModifierTest, LoadsNothingAndKeepsItsName) {
  ScopedBlock<UnknownModifier> modifier(new UnknownModifier(false));
  modifier->SetName("kept");
  SceneSave payload;
  payload.BeginChunk(0x0000);
  payload.BeginChunk(0x0015);
  payload.WriteString("read");
  payload.EndChunk();
  payload.EndChunk();
  SceneLoad load(payload.TakeBytes());
  EXPECT_EQ(modifier->Load(&load), 0);
  EXPECT_EQ(modifier->GetName(), "kept");
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
}

TEST(UnknownModifierTest, GivesAnUnknownObjectModifierAndLeavesTheIntervalAlone) {
  ScopedBlock<UnknownModifier> modifier(new UnknownModifier(false));
  ScopedBlock<ObjectModifier> stack(modifier->GetNewObjectModifier());
  EXPECT_NE(dynamic_cast<UnknownObjectModifier*>(stack.get()), nullptr);
  TimeInterval interval(3, 9);
  modifier->GetTimeInterval(interval);
  EXPECT_EQ(interval.GetStart(), 3);
  EXPECT_EQ(interval.GetEnd(), 9);
}

TEST(UnknownModifierTest, ClonesToANewPlaceholderAndPassesEventsOnAsItsOwn) {
  ScopedBlock<UnknownModifier> modifier(new UnknownModifier(false));
  ScopedBlock<Block> copy(modifier->Clone());
  EXPECT_NE(dynamic_cast<UnknownModifier*>(copy.get()), nullptr);
  EXPECT_NE(copy.get(), modifier.get());

  RecordingListener listener;
  modifier->AddBlockListener(&listener);
  modifier->ProcessEvent(BlockEvent(copy.get(), 2, 1));
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].block, modifier.get());
  EXPECT_EQ(listener.events[0].code, 2);
  EXPECT_EQ(listener.events[0].param, 1);
  modifier->RemoveBlockListener(&listener);
}

}  // namespace
}  // namespace Orlo
