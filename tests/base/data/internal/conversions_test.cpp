#include <orlo/base/data/internal/conversions.h>

#include <limits>

#include <gtest/gtest.h>

namespace Orlo::internal {
namespace {

constexpr int kIntMin = std::numeric_limits<int>::min();
constexpr int kIntMax = std::numeric_limits<int>::max();

TEST(TruncateToIntTest, TruncatesTowardZero) {
  EXPECT_EQ(TruncateToInt(2.9), 2);
  EXPECT_EQ(TruncateToInt(-2.9), -2);
  EXPECT_EQ(TruncateToInt(0.999), 0);
  EXPECT_EQ(TruncateToInt(-0.999), 0);
  EXPECT_EQ(TruncateToInt(-0.0), 0);
}

TEST(TruncateToIntTest, KeepsEveryValueWhoseTruncationFits) {
  EXPECT_EQ(TruncateToInt(2147483647.0), kIntMax);
  EXPECT_EQ(TruncateToInt(2147483647.9), kIntMax);
  EXPECT_EQ(TruncateToInt(-2147483648.0), kIntMin);
  EXPECT_EQ(TruncateToInt(-2147483648.9), kIntMin);
}

TEST(TruncateToIntTest, GivesTheSmallestIntegerForValuesThatDoNotFitAndForNaN) {
  EXPECT_EQ(TruncateToInt(2147483648.0), kIntMin);
  EXPECT_EQ(TruncateToInt(3.0e10), kIntMin);
  EXPECT_EQ(TruncateToInt(-2147483649.0), kIntMin);
  EXPECT_EQ(TruncateToInt(-3.0e10), kIntMin);
  EXPECT_EQ(TruncateToInt(std::numeric_limits<double>::infinity()), kIntMin);
  EXPECT_EQ(TruncateToInt(-std::numeric_limits<double>::infinity()), kIntMin);
  EXPECT_EQ(TruncateToInt(std::numeric_limits<double>::quiet_NaN()), kIntMin);
}

TEST(IntThroughFloatTest, IsExactUpToTwoToThe24AndRoundsAbove) {
  EXPECT_EQ(IntThroughFloat(16777216), 16777216.0);
  EXPECT_EQ(IntThroughFloat(16777217), 16777216.0);
  EXPECT_EQ(IntThroughFloat(-16777217), -16777216.0);
  EXPECT_EQ(IntThroughFloat(16777219), 16777220.0);
  EXPECT_EQ(IntThroughFloat(kIntMax), 2147483648.0);
  EXPECT_EQ(IntThroughFloat(-7), -7.0);
}

}  // namespace
}  // namespace Orlo::internal
