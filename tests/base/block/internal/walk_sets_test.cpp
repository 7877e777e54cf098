// The path and visited sets of the graph walks answer as a plain list would, through growth,
// duplicates and (for the path) pops in stack order.
#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include <orlo/base/block/internal/visited_set.h>
#include <orlo/base/block/internal/walk_path.h>

namespace Orlo::internal {
namespace {

// Distinct addresses to stand for blocks; never dereferenced.
class FakeBlocks {
 public:
  explicit FakeBlocks(std::size_t count) : m_storage(count * 8) {}
  const Block* operator[](std::size_t i) const {
    return reinterpret_cast<const Block*>(&m_storage[i * 8]);
  }

 private:
  std::vector<char> m_storage;
};

TEST(WalkPathTest, AnswersAsTheListOfItsBlocksThroughPushesAndPops) {
  constexpr std::size_t kKinds = 150;
  FakeBlocks blocks(kKinds);
  std::mt19937 random(7);
  for (int round = 0; round < 50; ++round) {
    WalkPath path;
    std::vector<const Block*> expected;
    for (int step = 0; step < 4000; ++step) {
      if (random() % 3 != 0 || expected.empty()) {
        const Block* block = blocks[random() % kKinds];
        path.Push(block);
        expected.push_back(block);
      } else {
        path.Pop();
        expected.pop_back();
      }
      ASSERT_EQ(path.Size(), expected.size());
      const Block* asked = blocks[random() % kKinds];
      const bool on_path = std::find(expected.begin(), expected.end(), asked) != expected.end();
      ASSERT_EQ(path.Contains(asked), on_path) << "round " << round << ", step " << step;
    }
  }
}

TEST(VisitedSetTest, AnswersAsTheSetOfItsBlocksPastEveryGrowth) {
  constexpr std::size_t kCount = 5000;
  FakeBlocks blocks(kCount);
  VisitedSet visited;
  for (std::size_t i = 0; i < kCount; i += 2) {
    ASSERT_TRUE(visited.Insert(blocks[i]));
    ASSERT_FALSE(visited.Insert(blocks[i]));
  }
  for (std::size_t i = 0; i < kCount; ++i) EXPECT_EQ(visited.Contains(blocks[i]), i % 2 == 0);
}

}  // namespace
}  // namespace Orlo::internal
