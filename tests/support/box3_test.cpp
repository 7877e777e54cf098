#include <gtest/gtest.h>
#include <orlo/support/box3.h>
#include <orlo/support/math.h>

#include <limits>

namespace Orlo {
namespace {

constexpr double kMax = std::numeric_limits<double>::max();

TEST(MathTest, MaxRealIsTheLargestFiniteValue) {
  EXPECT_EQ(Math<double>::MAX_REAL, kMax);
  EXPECT_EQ(Math<float>::MAX_REAL, std::numeric_limits<float>::max());
  EXPECT_DOUBLE_EQ(Math<double>::PI, 3.14159265358979323846);
  EXPECT_DOUBLE_EQ(Math<double>::HALF_PI * 2.0, Math<double>::PI);
}

TEST(Box3Test, DefaultBoxIsEmptyWithCornersAtPlusAndMinusMaxReal) {
  const Box3<double> box;
  EXPECT_EQ(box.min, Point3<double>(kMax, kMax, kMax));
  EXPECT_EQ(box.max, Point3<double>(-kMax, -kMax, -kMax));
  EXPECT_TRUE(box.IsEmpty());
  EXPECT_FALSE(box.Contains(Point3<double>(0, 0, 0)));
}

TEST(Box3Test, ConstructorKeepsMinimumThenMaximum) {
  const Box3<double> box(Point3<double>(-1, -2, -3), Point3<double>(4, 5, 6));
  EXPECT_EQ(box.min, Point3<double>(-1, -2, -3));
  EXPECT_EQ(box.max, Point3<double>(4, 5, 6));
  EXPECT_FALSE(box.IsEmpty());
  EXPECT_EQ(box.Center(), Point3<double>(1.5, 1.5, 1.5));
  EXPECT_EQ(box.Width(), Point3<double>(5, 7, 9));
}

TEST(Box3Test, BoxInvertedOnAnyOneAxisIsEmpty) {
  EXPECT_TRUE(Box3<double>(Point3<double>(1, 0, 0), Point3<double>(0, 1, 1)).IsEmpty());
  EXPECT_TRUE(Box3<double>(Point3<double>(0, 1, 0), Point3<double>(1, 0, 1)).IsEmpty());
  EXPECT_TRUE(Box3<double>(Point3<double>(0, 0, 1), Point3<double>(1, 1, 0)).IsEmpty());
  // A single point is a box, not an empty one.
  EXPECT_FALSE(Box3<double>(Point3<double>(2, 2, 2), Point3<double>(2, 2, 2)).IsEmpty());
}

TEST(Box3Test, AddingTheFirstPointToAnEmptyBoxMakesThatPoint) {
  Box3<double> box;
  box += Point3<double>(1, -2, 3);
  EXPECT_EQ(box.min, Point3<double>(1, -2, 3));
  EXPECT_EQ(box.max, Point3<double>(1, -2, 3));
  EXPECT_FALSE(box.IsEmpty());
  EXPECT_TRUE(box.Contains(Point3<double>(1, -2, 3)));
}

TEST(Box3Test, AddingPointsGrowsEachAxisIndependently) {
  Box3<double> box;
  box += Point3<double>(0, 0, 0);
  box += Point3<double>(5, -1, 2);
  box += Point3<double>(-3, 4, 1);
  EXPECT_EQ(box.min, Point3<double>(-3, -1, 0));
  EXPECT_EQ(box.max, Point3<double>(5, 4, 2));
  EXPECT_TRUE(box.Contains(Point3<double>(5, 4, 2)));
  EXPECT_TRUE(box.Contains(Point3<double>(0, 0, 1)));
  EXPECT_FALSE(box.Contains(Point3<double>(5.5, 0, 1)));
  EXPECT_FALSE(box.Contains(Point3<double>(0, 0, -0.1)));
}

TEST(Box3Test, AddingBoxesMakesTheirUnionAndIgnoresEmptyOnes) {
  Box3<double> box(Point3<double>(0, 0, 0), Point3<double>(1, 1, 1));
  box += Box3<double>();
  EXPECT_EQ(box, Box3<double>(Point3<double>(0, 0, 0), Point3<double>(1, 1, 1)));
  box += Box3<double>(Point3<double>(-1, 0.5, 0.5), Point3<double>(0.5, 3, 0.5));
  EXPECT_EQ(box, Box3<double>(Point3<double>(-1, 0, 0), Point3<double>(1, 3, 1)));

  Box3<double> empty;
  empty += Box3<double>(Point3<double>(2, 2, 2), Point3<double>(3, 3, 3));
  EXPECT_EQ(empty, Box3<double>(Point3<double>(2, 2, 2), Point3<double>(3, 3, 3)));
}

TEST(Box3Test, InitMakesTheBoxEmptyAgain) {
  Box3<double> box(Point3<double>(0, 0, 0), Point3<double>(1, 1, 1));
  box.Init();
  EXPECT_TRUE(box.IsEmpty());
  EXPECT_EQ(box, Box3<double>());
}

}  // namespace
}  // namespace Orlo
