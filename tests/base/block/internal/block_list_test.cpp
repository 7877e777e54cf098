// The one-word block list behaves as a vector of block pointers in every form it takes: empty,
// one entry in the word, and a heap array.
#include <orlo/base/block/internal/block_list.h>

#include <cstdint>
#include <random>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Orlo::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

// Distinct aligned addresses to stand for blocks; never dereferenced.
Block* Fake(std::size_t i) {
  alignas(8) static std::uint64_t storage[64];
  return reinterpret_cast<Block*>(&storage[i]);
}

std::vector<Block*> Entries(const BlockList& list) { return {list.begin(), list.end()}; }

TEST(BlockListTest, StartsEmpty) {
  BlockList list;
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(list.size(), 0u);
  EXPECT_EQ(list.begin(), list.end());
}

TEST(BlockListTest, KeepsEntriesInTheOrderTheyWereAddedThroughEveryForm) {
  BlockList list;
  for (std::size_t i = 0; i < 9; ++i) list.push_back(Fake(i));
  EXPECT_THAT(Entries(list), ElementsAre(Fake(0), Fake(1), Fake(2), Fake(3), Fake(4), Fake(5),
                                         Fake(6), Fake(7), Fake(8)));
  EXPECT_EQ(list.front(), Fake(0));
  EXPECT_EQ(list[4], Fake(4));
}

TEST(BlockListTest, HoldsNullEntries) {
  BlockList one;
  one.push_back(nullptr);
  EXPECT_EQ(one.size(), 1u);
  EXPECT_EQ(one[0], nullptr);
  one.push_back(Fake(1));
  one.push_back(nullptr);
  EXPECT_THAT(Entries(one), ElementsAre(nullptr, Fake(1), nullptr));
  EXPECT_EQ(BlockList(3).size(), 3u);
  EXPECT_THAT(Entries(BlockList(3)), ElementsAre(nullptr, nullptr, nullptr));
  EXPECT_THAT(Entries(BlockList(1)), ElementsAre(nullptr));
  EXPECT_THAT(Entries(BlockList(0)), IsEmpty());
}

TEST(BlockListTest, EraseMovesLaterEntriesDown) {
  BlockList list;
  list.push_back(Fake(0));
  list.erase(0);
  EXPECT_TRUE(list.empty());
  for (std::size_t i = 0; i < 4; ++i) list.push_back(Fake(i));
  list.erase(1);
  EXPECT_THAT(Entries(list), ElementsAre(Fake(0), Fake(2), Fake(3)));
  list.erase(2);
  EXPECT_THAT(Entries(list), ElementsAre(Fake(0), Fake(2)));
}

TEST(BlockListTest, EraseAllRemovesEveryCopyAndCountsThem) {
  BlockList list;
  EXPECT_EQ(list.erase_all(Fake(0)), 0u);
  list.push_back(Fake(0));
  EXPECT_EQ(list.erase_all(Fake(1)), 0u);
  EXPECT_EQ(list.erase_all(Fake(0)), 1u);
  EXPECT_TRUE(list.empty());
  for (std::size_t i : {1, 2, 1, 3, 1}) list.push_back(Fake(i));
  EXPECT_EQ(list.erase_all(Fake(1)), 3u);
  EXPECT_THAT(Entries(list), ElementsAre(Fake(2), Fake(3)));
}

TEST(BlockListTest, ResizeKeepsTheFirstEntriesAndAddsNullOnes) {
  BlockList list;
  for (std::size_t i = 0; i < 4; ++i) list.push_back(Fake(i));
  list.erase(3);  // leaves the erased entry's place behind the end
  list.resize(4);
  EXPECT_THAT(Entries(list), ElementsAre(Fake(0), Fake(1), Fake(2), nullptr));
  list.resize(2);
  list.resize(3);
  EXPECT_THAT(Entries(list), ElementsAre(Fake(0), Fake(1), nullptr));
  list.resize(1);
  EXPECT_THAT(Entries(list), ElementsAre(Fake(0)));
  list.resize(6);
  EXPECT_THAT(Entries(list), ElementsAre(Fake(0), nullptr, nullptr, nullptr, nullptr, nullptr));
  list.Set(5, Fake(5));
  EXPECT_EQ(list[5], Fake(5));
  list.resize(0);
  EXPECT_TRUE(list.empty());
}

TEST(BlockListTest, CopiesAreIndependent) {
  BlockList list;
  for (std::size_t i = 0; i < 3; ++i) list.push_back(Fake(i));
  BlockList copy(list);
  copy.erase(0);
  EXPECT_THAT(Entries(list), ElementsAre(Fake(0), Fake(1), Fake(2)));
  EXPECT_THAT(Entries(copy), ElementsAre(Fake(1), Fake(2)));
  BlockList single;
  single.push_back(Fake(7));
  copy = single;
  EXPECT_THAT(Entries(copy), ElementsAre(Fake(7)));
  const BlockList& same = copy;
  copy = same;
  EXPECT_THAT(Entries(copy), ElementsAre(Fake(7)));
}

TEST(BlockListTest, RandomOperationsMatchAVector) {
  std::mt19937 random(20261123);
  for (int round = 0; round < 200; ++round) {
    BlockList list;
    std::vector<Block*> model;
    for (int step = 0; step < 60; ++step) {
      Block* entry = random() % 5 == 0 ? nullptr : Fake(random() % 8);
      switch (random() % 5) {
        case 0:
        case 1:
          list.push_back(entry);
          model.push_back(entry);
          break;
        case 2:
          if (!model.empty()) {
            const std::size_t index = random() % model.size();
            list.erase(index);
            model.erase(model.begin() + static_cast<std::ptrdiff_t>(index));
          }
          break;
        case 3: {
          std::size_t removed = 0;
          for (std::size_t i = model.size(); i-- > 0;) {
            if (model[i] != entry) continue;
            model.erase(model.begin() + static_cast<std::ptrdiff_t>(i));
            ++removed;
          }
          EXPECT_EQ(list.erase_all(entry), removed);
          break;
        }
        default: {
          const std::size_t size = random() % 6;
          list.resize(size);
          model.resize(size, nullptr);
          break;
        }
      }
      ASSERT_THAT(Entries(list), ElementsAreArray(model)) << "round " << round << " step " << step;
    }
  }
}

}  // namespace
}  // namespace Orlo::internal
