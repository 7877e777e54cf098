#include <orlo/base/engine/unknown_object_modifier.h>

#include <gtest/gtest.h>

#include <orlo/base/engine/unknown_modifier.h>
#include <orlo/base/engine/unknown_object.h>
#include <orlo/support/scene_save.h>

#include "tests/base/scene/scene_test_blocks.h"
#include "tests/testing/scoped_block.h"
#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using testing::RecordingListener;
using testing::ScopedBlock;
using testing::TestModifier;
using testing::TestObject;

TEST(UnknownObjectModifierTest, KeepsTheTwoSlotsOfEveryObjectModifier) {
  ScopedBlock<UnknownObjectModifier> stack(new UnknownObjectModifier(false));
  EXPECT_EQ(stack->GetClassName(), "UnknownObjectModifier");
  EXPECT_EQ(stack->GetBlockType().class_id, 520u);
  EXPECT_EQ(stack->GetBlockType().super_class_id, 144u);
  EXPECT_EQ(stack->GetBlockType().sub_id, 0u);
  ASSERT_EQ(stack->NumDependencies(), 2);
  auto* modifier = new UnknownModifier(false);
  auto* object = new UnknownObject(false);
  ASSERT_TRUE(stack->MakeDependencyByID(0, modifier).IsOk());
  ASSERT_TRUE(stack->MakeDependencyByID(1, object).IsOk());
  EXPECT_EQ(stack->GetModifier(), modifier);
  EXPECT_EQ(stack->GetObjectToModify(), object);
}

TEST(UnknownObjectModifierTest, AppliesNothingAndSavesNothing) {
  ScopedBlock<UnknownObjectModifier> stack(new UnknownObjectModifier(false));
  ScopedBlock<TestObject> object(new TestObject());
  EXPECT_EQ(stack->ApplyModifier(0, object.get(), nullptr), nullptr);
  EXPECT_EQ(stack->UnapplyModifier(0, object.get(), nullptr), nullptr);
  stack->GetRecord()[0] = 42;
  SceneSave save;
  EXPECT_EQ(stack->Save(&save), 0);
  EXPECT_TRUE(save.TakeBytes().empty());
}

TEST(UnknownObjectModifierTest, ClonesWithACloneOfItsModifierButNotItsObject) {
  ScopedBlock<UnknownObjectModifier> stack(new UnknownObjectModifier(false));
  auto* modifier = new TestModifier();
  modifier->SetName("twist");
  ASSERT_TRUE(stack->SetModifier(modifier).IsOk());
  ASSERT_TRUE(stack->SetObjectToModify(new TestObject()).IsOk());

  ScopedBlock<Block> copy(stack->Clone());
  auto* typed = dynamic_cast<UnknownObjectModifier*>(copy.get());
  ASSERT_NE(typed, nullptr);
  ASSERT_NE(typed->GetModifier(), nullptr);
  EXPECT_NE(typed->GetModifier(), modifier);
  EXPECT_EQ(typed->GetModifier()->GetName(), "twist");
  EXPECT_EQ(typed->GetObjectToModify(), nullptr);
}

TEST(UnknownObjectModifierTest, ClonesWithoutAModifierWhenItHasNone) {
  ScopedBlock<UnknownObjectModifier> stack(new UnknownObjectModifier(false));
  ScopedBlock<Block> copy(stack->Clone());
  auto* typed = dynamic_cast<UnknownObjectModifier*>(copy.get());
  ASSERT_NE(typed, nullptr);
  EXPECT_EQ(typed->GetModifier(), nullptr);
}

TEST(UnknownObjectModifierTest, PassesEventsOnAsItsOwn) {
  ScopedBlock<UnknownObjectModifier> stack(new UnknownObjectModifier(false));
  auto* modifier = new TestModifier();
  ASSERT_TRUE(stack->SetModifier(modifier).IsOk());
  RecordingListener listener;
  stack->AddBlockListener(&listener);
  modifier->SetActive(false);  // posts code 3 with parameter 0
  ASSERT_FALSE(listener.events.empty());
  EXPECT_EQ(listener.events.back().block, stack.get());
  EXPECT_EQ(listener.events.back().code, 3);
  stack->RemoveBlockListener(&listener);
}

}  // namespace
}  // namespace Orlo
