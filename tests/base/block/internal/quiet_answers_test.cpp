// The event walk's kept answers: found again through growth, all dropped at once by Forget,
// and the slots of dropped answers taken again.
#include <orlo/base/block/internal/quiet_answers.h>

#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

namespace Orlo::internal {
namespace {

using Answer = QuietAnswers::Answer;

// Distinct aligned addresses to stand for blocks; never dereferenced.
const Block* Fake(std::vector<std::uint64_t>& storage, std::size_t i) {
  return reinterpret_cast<const Block*>(&storage[i]);
}

TEST(QuietAnswersTest, KnowsNothingAtFirst) {
  std::vector<std::uint64_t> storage(1);
  const QuietAnswers answers;
  EXPECT_EQ(answers.Find(Fake(storage, 0)), Answer::kUnknown);
}

TEST(QuietAnswersTest, KeepsEachAnswerThroughGrowthAndTakesTheLastOne) {
  constexpr std::size_t kCount = 3000;
  std::vector<std::uint64_t> storage(kCount);
  QuietAnswers answers;
  for (std::size_t i = 0; i < kCount; ++i) answers.Record(Fake(storage, i), i % 3 == 0);
  answers.Record(Fake(storage, 0), false);
  EXPECT_EQ(answers.Find(Fake(storage, 0)), Answer::kObserved);
  for (std::size_t i = 1; i < kCount; ++i) {
    EXPECT_EQ(answers.Find(Fake(storage, i)), i % 3 == 0 ? Answer::kQuiet : Answer::kObserved);
  }
}

TEST(QuietAnswersTest, ForgetDropsEveryAnswerAndLaterAnswersReuseTheSlots) {
  constexpr std::size_t kCount = 500;
  std::vector<std::uint64_t> storage(2 * kCount);
  QuietAnswers answers;
  for (std::size_t i = 0; i < kCount; ++i) answers.Record(Fake(storage, i), true);
  answers.Forget();
  for (std::size_t i = 0; i < kCount; ++i) {
    EXPECT_EQ(answers.Find(Fake(storage, i)), Answer::kUnknown);
  }
  // New answers, for other blocks and some of the old ones, land among the dropped entries.
  for (std::size_t i = kCount / 2; i < 2 * kCount; ++i) answers.Record(Fake(storage, i), false);
  for (std::size_t i = 0; i < 2 * kCount; ++i) {
    EXPECT_EQ(answers.Find(Fake(storage, i)), i < kCount / 2 ? Answer::kUnknown : Answer::kObserved);
  }
}

}  // namespace
}  // namespace Orlo::internal
