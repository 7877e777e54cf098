// The walk index numbers blocks in the order they are first inserted and finds them again
// through its growth.
#include <orlo/base/block/internal/block_index.h>

#include <vector>

#include <gtest/gtest.h>

namespace Orlo::internal {
namespace {

// Distinct addresses to stand for blocks; never dereferenced.
const Block* Fake(std::vector<char>& storage, std::size_t i) {
  return reinterpret_cast<const Block*>(&storage[i * 8]);
}

TEST(BlockIndexTest, NumbersBlocksInInsertionOrderAndFindsThemThroughGrowth) {
  constexpr std::size_t kCount = 5000;
  std::vector<char> storage(kCount * 8);
  BlockIndex index;
  EXPECT_EQ(index.Find(Fake(storage, 0)), BlockIndex::kNone);
  bool added = false;
  for (std::size_t i = 0; i < kCount; ++i) {
    EXPECT_EQ(index.Insert(Fake(storage, i), added), i);
    EXPECT_TRUE(added);
    // Inserting again gives the same number and adds nothing.
    EXPECT_EQ(index.Insert(Fake(storage, i / 2), added), i / 2);
    EXPECT_FALSE(added);
  }
  EXPECT_EQ(index.Size(), kCount);
  for (std::size_t i = 0; i < kCount; ++i) EXPECT_EQ(index.Find(Fake(storage, i)), i);
  EXPECT_EQ(index.Find(nullptr), BlockIndex::kNone);
}

}  // namespace
}  // namespace Orlo::internal
