// The arena of load records hands out fresh objects that keep their address until Clear.
#include <cstddef>
#include <set>
#include <vector>

#include <gtest/gtest.h>

#include <orlo/base/engine/internal/chunk_arena.h>

namespace Orlo::internal {
namespace {

struct Record {
  int value = -1;
  std::vector<int> list;
};

TEST(ChunkArenaTest, ObjectsAreFreshDistinctAndKeepTheirAddressAsTheArenaGrows) {
  ChunkArena<Record> arena;
  std::vector<Record*> made;
  for (int i = 0; i < 20000; ++i) {
    Record* record = arena.New();
    EXPECT_EQ(record->value, -1);
    EXPECT_TRUE(record->list.empty());
    record->value = i;
    record->list.assign(static_cast<std::size_t>(i % 5), i);
    made.push_back(record);
  }
  EXPECT_EQ(std::set<Record*>(made.begin(), made.end()).size(), made.size());
  for (int i = 0; i < 20000; ++i) {
    ASSERT_EQ(made[static_cast<std::size_t>(i)]->value, i);
    ASSERT_EQ(made[static_cast<std::size_t>(i)]->list.size(), static_cast<std::size_t>(i % 5));
  }
}

TEST(ChunkArenaTest, ClearDestroysEveryObjectAndTheArenaServesAgain) {
  ChunkArena<Record> arena;
  for (int i = 0; i < 100; ++i) arena.New()->list.assign(10, i);  // freed by Clear
  arena.Clear();
  Record* record = arena.New();
  EXPECT_EQ(record->value, -1);
  EXPECT_TRUE(record->list.empty());
}

}  // namespace
}  // namespace Orlo::internal
