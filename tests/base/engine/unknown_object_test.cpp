#include <orlo/base/engine/unknown_object.h>

#include <gtest/gtest.h>

#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

#include "tests/testing/scoped_block.h"
#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using testing::RecordingListener;
using testing::ScopedBlock;

TEST(UnknownObjectTest, IsAnObjectOfItsOwnTypeWithTheFixedFlags) {
  ScopedBlock<UnknownObject> object(new UnknownObject(false));
  EXPECT_EQ(object->GetClassName(), "UnknownObject");
  EXPECT_EQ(object->GetBlockType().class_id, 500u);
  EXPECT_EQ(object->GetBlockType().super_class_id, 128u);
  EXPECT_EQ(object->GetBlockType().sub_id, 0u);
  EXPECT_EQ(object->Flags(), 0x640043);
}

TEST(UnknownObjectTest, HasNoSlotsAndIgnoresWhatIsSetInThem) {
  ScopedBlock<UnknownObject> object(new UnknownObject(false));
  ScopedBlock<UnknownObject> other(new UnknownObject(false));
  EXPECT_EQ(object->NumDependencies(), 0);
  object->SetDependency(0, other.get());
  EXPECT_EQ(object->GetDependency(0), nullptr);
  EXPECT_EQ(object->GetDependencyName(0), "nil");
  EXPECT_EQ(object->GetDependencyName(-1), "nil");
  EXPECT_EQ(object->GetDependencyType(0), 0u);
  // Linking through the graph finds no slot either.
  EXPECT_EQ(object->MakeDependencyByID(0, other.get()).GetCode(), 0);
  EXPECT_EQ(object->GetDependency(0), nullptr);
}

TEST(UnknownObjectTest, NeitherSavesNorLoadsAnything) {
  ScopedBlock<UnknownObject> object(new UnknownObject(false));
  SceneSave save;
  EXPECT_EQ(object->Save(&save), 0);
  EXPECT_TRUE(save.TakeBytes().empty());

  SceneSave payload;
  payload.BeginChunk(0x0000);
  payload.WriteUInt32(7);
  payload.EndChunk();
  SceneLoad load(payload.TakeBytes());
  EXPECT_EQ(object->Load(&load), 0);
  // Nothing was read: the chunk is still there for the caller.
  EXPECT_EQ(load.OpenChunk(), SceneLoad::kChunkOpened);
  EXPECT_EQ(load.CurChunkID(), 0x0000u);
}

TEST(UnknownObjectTest, ClonesToANewPlaceholder) {
  ScopedBlock<UnknownObject> object(new UnknownObject(false));
  ScopedBlock<Block> copy(object->Clone());
  ASSERT_NE(copy.get(), nullptr);
  EXPECT_NE(copy.get(), object.get());
  EXPECT_NE(dynamic_cast<UnknownObject*>(copy.get()), nullptr);
}

TEST(UnknownObjectTest, PassesEventsOnAsItsOwn) {
  ScopedBlock<UnknownObject> object(new UnknownObject(false));
  ScopedBlock<UnknownObject> other(new UnknownObject(false));
  RecordingListener listener;
  object->AddBlockListener(&listener);
  object->ProcessEvent(BlockEvent(other.get(), 3, 5));
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].block, object.get());
  EXPECT_EQ(listener.events[0].code, 3);
  EXPECT_EQ(listener.events[0].param, 5);
  object->RemoveBlockListener(&listener);
}

}  // namespace
}  // namespace Orlo
