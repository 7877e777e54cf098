// A watched reference becomes null when its block is destroyed, by whichever path, and stays
// as it is once it is no longer watched.
#include <orlo/base/block/internal/block_watch.h>

#include <gtest/gtest.h>

#include <orlo/base/block/block_table.h>

#include "tests/testing/test_blocks.h"

namespace Orlo::internal {
namespace {

using testing::Holder;
using testing::TestBlock;

TEST(BlockWatchTest, AReferenceBecomesNullWhenItsBlockIsReleased) {
  Holder holder(new TestBlock("held", 1));
  Block* reference = holder.Root()->GetDependency(0);
  BlockWatch::Watch(&reference);
  holder.Root()->DeleteDependency(0);
  EXPECT_EQ(reference, nullptr);
  BlockWatch::Unwatch(&reference);  // nothing left to stop watching
}

TEST(BlockWatchTest, EveryReferenceToABlockBecomesNullWhenItIsDeletedOutright) {
  Block* block = new BlockTable(true);
  Block* first = block;
  Block* second = block;
  BlockWatch::Watch(&first);
  BlockWatch::Watch(&second);
  block->DeleteThisBlock(true);
  EXPECT_EQ(first, nullptr);
  EXPECT_EQ(second, nullptr);
}

TEST(BlockWatchTest, AReferenceNoLongerWatchedKeepsItsValue) {
  Block* block = new BlockTable(true);
  Block* watched = block;
  Block* unwatched = block;
  BlockWatch::Watch(&watched);
  BlockWatch::Watch(&unwatched);
  BlockWatch::Unwatch(&unwatched);
  block->DeleteThisBlock(true);
  EXPECT_EQ(watched, nullptr);
  EXPECT_EQ(unwatched, block);  // compared, never read through
}

TEST(BlockWatchTest, ABlockNoLongerWatchedIsDestroyedWithoutNotice) {
  Block* block = new BlockTable(true);
  Block* reference = block;
  BlockWatch::Watch(&reference);
  BlockWatch::Unwatch(&reference);
  Block* other = new BlockTable(true);
  Block* other_reference = other;
  BlockWatch::Watch(&other_reference);
  block->DeleteThisBlock(true);
  EXPECT_EQ(other_reference, other);  // another block's watch is untouched
  other->DeleteThisBlock(true);
  EXPECT_EQ(other_reference, nullptr);
}

TEST(BlockWatchTest, WatchingNullWatchesNothing) {
  Block* reference = nullptr;
  BlockWatch::Watch(&reference);
  BlockWatch::Unwatch(&reference);
  EXPECT_EQ(reference, nullptr);
}

}  // namespace
}  // namespace Orlo::internal
