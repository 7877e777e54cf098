#include <gtest/gtest.h>
#include <orlo/support/time_interval.h>

#include <limits>

namespace Orlo {
namespace {

constexpr int kMinTime = std::numeric_limits<int>::min();
constexpr int kMaxTime = std::numeric_limits<int>::max();

TEST(TimeIntervalTest, ConstructorKeepsBothEndsAndIncludesThem) {
  const TimeInterval interval(-10, 20);
  EXPECT_EQ(interval.GetStart(), -10);
  EXPECT_EQ(interval.GetEnd(), 20);
  EXPECT_FALSE(interval.IsEmpty());
  EXPECT_FALSE(interval.Valid(-11));
  EXPECT_TRUE(interval.Valid(-10));
  EXPECT_TRUE(interval.Valid(0));
  EXPECT_TRUE(interval.Valid(20));
  EXPECT_FALSE(interval.Valid(21));
}

TEST(TimeIntervalTest, SingleTimeIntervalHoldsExactlyThatTime) {
  const TimeInterval interval(7, 7);
  EXPECT_FALSE(interval.IsEmpty());
  EXPECT_FALSE(interval.Valid(6));
  EXPECT_TRUE(interval.Valid(7));
  EXPECT_FALSE(interval.Valid(8));
}

TEST(TimeIntervalTest, ForeverContainsEveryTimeIncludingTheExtremes) {
  const TimeInterval forever = TimeInterval::Forever();
  EXPECT_EQ(forever.GetStart(), kMinTime);
  EXPECT_EQ(forever.GetEnd(), kMaxTime);
  EXPECT_TRUE(forever.Valid(kMinTime));
  EXPECT_TRUE(forever.Valid(-1));
  EXPECT_TRUE(forever.Valid(0));
  EXPECT_TRUE(forever.Valid(160));
  EXPECT_TRUE(forever.Valid(kMaxTime));
}

TEST(TimeIntervalTest, DefaultIntervalIsEmptyAndContainsNoTime) {
  const TimeInterval interval;
  EXPECT_TRUE(interval.IsEmpty());
  EXPECT_GT(interval.GetStart(), interval.GetEnd());
  EXPECT_FALSE(interval.Valid(0));
  EXPECT_FALSE(interval.Valid(-1));
  EXPECT_FALSE(interval.Valid(kMinTime));
  EXPECT_FALSE(interval.Valid(kMaxTime));
}

TEST(TimeIntervalTest, StartAfterEndIsEmptyAndContainsNeitherEnd) {
  const TimeInterval interval(5, 3);
  EXPECT_TRUE(interval.IsEmpty());
  EXPECT_FALSE(interval.Valid(3));
  EXPECT_FALSE(interval.Valid(4));
  EXPECT_FALSE(interval.Valid(5));
}

TEST(TimeIntervalTest, IntersectionOfOverlappingIntervalsIsTheirCommonPart) {
  const TimeInterval result = TimeInterval(0, 100) & TimeInterval(50, 200);
  EXPECT_EQ(result.GetStart(), 50);
  EXPECT_EQ(result.GetEnd(), 100);
  const TimeInterval swapped = TimeInterval(50, 200) & TimeInterval(0, 100);
  EXPECT_EQ(swapped.GetStart(), 50);
  EXPECT_EQ(swapped.GetEnd(), 100);
}

TEST(TimeIntervalTest, IntersectionWithANestedIntervalIsTheNestedOne) {
  const TimeInterval result = TimeInterval(-100, 100) & TimeInterval(-5, 5);
  EXPECT_EQ(result.GetStart(), -5);
  EXPECT_EQ(result.GetEnd(), 5);
}

TEST(TimeIntervalTest, IntervalsThatTouchShareTheirCommonEnd) {
  const TimeInterval result = TimeInterval(0, 10) & TimeInterval(10, 20);
  EXPECT_EQ(result.GetStart(), 10);
  EXPECT_EQ(result.GetEnd(), 10);
  EXPECT_TRUE(result.Valid(10));
}

TEST(TimeIntervalTest, IntersectionOfDisjointIntervalsIsEmpty) {
  const TimeInterval result = TimeInterval(0, 10) & TimeInterval(11, 20);
  EXPECT_TRUE(result.IsEmpty());
  for (int time = -1; time <= 21; ++time) EXPECT_FALSE(result.Valid(time)) << time;
}

TEST(TimeIntervalTest, IntersectionWithForeverChangesNothing) {
  const TimeInterval interval(-3, 9);
  const TimeInterval left = TimeInterval::Forever() & interval;
  const TimeInterval right = interval & TimeInterval::Forever();
  EXPECT_EQ(left.GetStart(), -3);
  EXPECT_EQ(left.GetEnd(), 9);
  EXPECT_EQ(right.GetStart(), -3);
  EXPECT_EQ(right.GetEnd(), 9);
  const TimeInterval both = TimeInterval::Forever() & TimeInterval::Forever();
  EXPECT_EQ(both.GetStart(), kMinTime);
  EXPECT_EQ(both.GetEnd(), kMaxTime);
}

TEST(TimeIntervalTest, IntersectionWithAnEmptyIntervalIsEmpty) {
  EXPECT_TRUE((TimeInterval::Forever() & TimeInterval()).IsEmpty());
  EXPECT_TRUE((TimeInterval(0, 10) & TimeInterval(5, 3)).IsEmpty());
  EXPECT_FALSE((TimeInterval(0, 10) & TimeInterval(5, 3)).Valid(4));
}

TEST(TimeIntervalTest, NarrowingInPlaceIntersects) {
  // Callers narrow one interval repeatedly, starting from forever.
  TimeInterval interval = TimeInterval::Forever();
  interval &= TimeInterval(0, 100);
  interval &= TimeInterval(-20, 40);
  EXPECT_EQ(interval.GetStart(), 0);
  EXPECT_EQ(interval.GetEnd(), 40);
}

TEST(TimeIntervalTest, AssignmentCopiesBothEnds) {
  TimeInterval interval(1, 2);
  const TimeInterval other(-8, 30);
  interval = other;
  EXPECT_EQ(interval.GetStart(), -8);
  EXPECT_EQ(interval.GetEnd(), 30);
  interval = TimeInterval::Forever();
  EXPECT_EQ(interval.GetStart(), kMinTime);
  EXPECT_EQ(interval.GetEnd(), kMaxTime);
}

TEST(TimeIntervalTest, EqualityComparesEndsAndTreatsAllEmptyIntervalsAsEqual) {
  EXPECT_EQ(TimeInterval(1, 5), TimeInterval(1, 5));
  EXPECT_NE(TimeInterval(1, 5), TimeInterval(1, 6));
  EXPECT_NE(TimeInterval(0, 5), TimeInterval(1, 5));
  EXPECT_EQ(TimeInterval(5, 3), TimeInterval());
  EXPECT_EQ(TimeInterval(100, -100), TimeInterval(2, 1));
  EXPECT_NE(TimeInterval(), TimeInterval(0, 0));
}

TEST(TimeIntervalTest, OperationsAreUsableInConstantExpressions) {
  constexpr TimeInterval narrowed = TimeInterval::Forever() & TimeInterval(2, 4);
  static_assert(narrowed.GetStart() == 2 && narrowed.GetEnd() == 4, "constexpr intersection");
  static_assert(narrowed.Valid(3) && !narrowed.Valid(5), "constexpr validity");
  EXPECT_TRUE(narrowed.Valid(2));
}

}  // namespace
}  // namespace Orlo
