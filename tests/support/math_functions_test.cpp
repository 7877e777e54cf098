#include <gtest/gtest.h>
#include <orlo/support/math.h>
#include <orlo/support/math_functions.h>

#include <cmath>
#include <random>

namespace Orlo {
namespace {

Matrix3<double> Rows(Point3<double> r0, Point3<double> r1, Point3<double> r2, Point3<double> r3) {
  return Matrix3<double>(r0, r1, r2, r3);
}

void ExpectNear(const Matrix3<double>& actual, const Matrix3<double>& expected, double tolerance) {
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 3; ++c) {
      EXPECT_NEAR(actual.m[r][c], expected.m[r][c], tolerance) << "row " << r << " col " << c;
    }
  }
}

TEST(TransformPointTest, AddsTheRowsWeightedByThePointAndTheTranslation) {
  const Matrix3<double> m = Rows({1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 20, 30});
  const Point3<double> p(1, -1, 2);
  // 1·(1,2,3) − 1·(4,5,6) + 2·(7,8,9) + (10,20,30)
  const Point3<double> expected(21, 33, 45);
  EXPECT_EQ(TransformPoint(p, m), expected);
  EXPECT_EQ(TransformPoint(m, p), expected);
}

TEST(TransformPointTest, IdentityLeavesThePointAndTranslationMovesIt) {
  const Point3<double> p(3.5, -2, 8);
  EXPECT_EQ(TransformPoint(p, Matrix3<double>()), p);
  Matrix3<double> t;
  t.SetRow(3, Point3<double>(1, 1, 1));
  EXPECT_EQ(TransformPoint(t, p), Point3<double>(4.5, -1, 9));
}

TEST(TransformPointTest, AppliesTheLeftFactorOfAProductFirst) {
  Matrix3<double> a;
  a.FromEulerAnglesXYZ(0.3, 0.2, 0.1);
  a.SetRow(3, Point3<double>(1, 2, 3));
  Matrix3<double> b;
  b.FromEulerAnglesXYZ(-1, 0.5, 2);
  b.SetRow(3, Point3<double>(-4, 0, 4));
  const Point3<double> p(0.7, -0.2, 5);
  const Point3<double> direct = TransformPoint(p, a * b);
  const Point3<double> stepwise = TransformPoint(TransformPoint(p, a), b);
  EXPECT_NEAR(direct.x, stepwise.x, 1e-13);
  EXPECT_NEAR(direct.y, stepwise.y, 1e-13);
  EXPECT_NEAR(direct.z, stepwise.z, 1e-13);
}

TEST(InverseTest, InverseOfDiagonalScaleAndTranslation) {
  const Matrix3<double> m = Rows({2, 0, 0}, {0, 4, 0}, {0, 0, 8}, {2, 4, 8});
  EXPECT_EQ(Inverse(m), Rows({0.5, 0, 0}, {0, 0.25, 0}, {0, 0, 0.125}, {-1, -1, -1}));
}

TEST(InverseTest, InverseOfAZeroLinearPartIsAllZero) {
  // A zero linear part has a zero adjugate, so even r = 1e7 leaves it zero.
  const Matrix3<double> m = Rows({0, 0, 0}, {0, 0, 0}, {0, 0, 0}, {5, -6, 7});
  const Matrix3<double> inverse = Inverse(m);
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 3; ++c) EXPECT_EQ(inverse.m[r][c], 0.0) << r << "," << c;
  }
}

TEST(InverseTest, SingularMatrixUsesTenMillionForTheReciprocalDeterminant) {
  // Rank two: the adjugate is not zero, and is scaled by 1e7 instead of failing.
  const Matrix3<double> m = Rows({1, 0, 0}, {0, 1, 0}, {0, 0, 0}, {1, 2, 3});
  ASSERT_EQ(m.Determinant(), 0.0);
  const Matrix3<double> inverse = Inverse(m);
  EXPECT_EQ(inverse, Rows({0, 0, 0}, {0, 0, 0}, {0, 0, 1e7}, {0, 0, -3e7}));
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 3; ++c) EXPECT_TRUE(std::isfinite(inverse.m[r][c]));
  }
}

TEST(InverseTest, ProductWithTheInverseIsTheIdentityForWellConditionedMatrices) {
  std::mt19937 random(31337);
  std::uniform_real_distribution<double> angle(-Math<double>::PI, Math<double>::PI);
  std::uniform_real_distribution<double> scale(0.25, 4.0);
  std::uniform_real_distribution<double> sign(-1.0, 1.0);
  std::uniform_real_distribution<double> offset(-100.0, 100.0);
  for (int trial = 0; trial < 500; ++trial) {
    Matrix3<double> s;
    s.m[0][0] = scale(random) * (sign(random) < 0 ? -1.0 : 1.0);
    s.m[1][1] = scale(random);
    s.m[2][2] = scale(random);
    Matrix3<double> r;
    r.FromEulerAnglesXYZ(angle(random), angle(random), angle(random));
    Matrix3<double> m = s * r;
    m.SetRow(3, Point3<double>(offset(random), offset(random), offset(random)));
    ExpectNear(m * Inverse(m), Matrix3<double>(), 1e-12);
    ExpectNear(Inverse(m) * m, Matrix3<double>(), 1e-12);
  }
}

TEST(InverseTest, InverseOfAGeneralMatrixUndoesItsPointTransform) {
  const Matrix3<double> m = Rows({2, 1, 0}, {0, 3, 1}, {1, 0, 4}, {-5, 6, 2});
  const Point3<double> p(1.25, -3, 0.5);
  const Point3<double> back = TransformPoint(TransformPoint(p, m), Inverse(m));
  EXPECT_NEAR(back.x, p.x, 1e-14);
  EXPECT_NEAR(back.y, p.y, 1e-14);
  EXPECT_NEAR(back.z, p.z, 1e-14);
}

TEST(NormalizeTest, ZeroVectorGivesTheXAxisAndLengthZero) {
  double length = -1.0;
  EXPECT_EQ(Normalize(Point3<double>(0, 0, 0), &length), Point3<double>(1, 0, 0));
  EXPECT_EQ(length, 0.0);
  EXPECT_EQ(Normalize(Point3<double>(0, 0, 0)), Point3<double>(1, 0, 0));
}

TEST(NormalizeTest, ReportsTheLengthAndScalesByItsReciprocal) {
  double length = 0.0;
  const Point3<double> v(3, 4, 12);
  const Point3<double> unit = Normalize(v, &length);
  EXPECT_EQ(length, 13.0);
  // One division, then three products: bit for bit v · (1 / 13).
  const double inverse = 1.0 / 13.0;
  EXPECT_EQ(unit, Point3<double>(3 * inverse, 4 * inverse, 12 * inverse));
}

TEST(NormalizeTest, LengthPointerIsOptional) {
  const Point3<double> unit = Normalize(Point3<double>(0, -5, 0));
  EXPECT_EQ(unit, Point3<double>(0, -1, 0));
}

TEST(NormalizeTest, ResultHasUnitLength) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> value(-1e3, 1e3);
  for (int trial = 0; trial < 200; ++trial) {
    const Point3<double> v(value(random), value(random), value(random));
    double length = 0.0;
    const Point3<double> unit = Normalize(v, &length);
    EXPECT_NEAR(Length(unit), 1.0, 1e-15);
    EXPECT_NEAR(length, Length(v), 1e-12);
  }
}

TEST(TransformBoxTest, EmptyBoxStaysEmpty) {
  Matrix3<double> m;
  m.SetRow(3, Point3<double>(1, 2, 3));
  EXPECT_TRUE(TransformBox(Box3<double>(), m).IsEmpty());
}

TEST(TransformBoxTest, BoundsTheEightTransformedCorners) {
  const Box3<double> box(Point3<double>(-1, -1, -1), Point3<double>(1, 1, 1));
  Matrix3<double> m;
  m.FromEulerAnglesXYZ(0, 0, Math<double>::PI / 4);
  m.SetRow(3, Point3<double>(10, 0, 0));
  const Box3<double> moved = TransformBox(box, m);
  const double r = std::sqrt(2.0);
  EXPECT_NEAR(moved.min.x, 10 - r, 1e-14);
  EXPECT_NEAR(moved.max.x, 10 + r, 1e-14);
  EXPECT_NEAR(moved.min.y, -r, 1e-14);
  EXPECT_NEAR(moved.max.y, r, 1e-14);
  EXPECT_NEAR(moved.min.z, -1, 1e-14);
  EXPECT_NEAR(moved.max.z, 1, 1e-14);
}

}  // namespace
}  // namespace Orlo
