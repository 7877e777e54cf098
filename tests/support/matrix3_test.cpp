#include <gtest/gtest.h>
#include <orlo/support/math.h>
#include <orlo/support/matrix3.h>

#include <cmath>
#include <random>

namespace Orlo {
namespace {

constexpr double kPi = Math<double>::PI;
constexpr double kHalfPi = Math<double>::HALF_PI;

Matrix3<double> Rows(Point3<double> r0, Point3<double> r1, Point3<double> r2, Point3<double> r3) {
  return Matrix3<double>(r0, r1, r2, r3);
}

Matrix3<double> Translation(double x, double y, double z) {
  Matrix3<double> t;
  t.SetRow(3, Point3<double>(x, y, z));
  return t;
}

Matrix3<double> Scale(double x, double y, double z) {
  Matrix3<double> s;
  s.m[0][0] = x;
  s.m[1][1] = y;
  s.m[2][2] = z;
  return s;
}

Matrix3<double> Euler(double x, double y, double z) {
  Matrix3<double> r;
  r.FromEulerAnglesXYZ(x, y, z);
  return r;
}

void ExpectNear(const Matrix3<double>& actual, const Matrix3<double>& expected, double tolerance) {
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 3; ++c) {
      EXPECT_NEAR(actual.m[r][c], expected.m[r][c], tolerance) << "row " << r << " col " << c;
    }
  }
}

// The angle difference folded into (-pi, pi].
double AngleDifference(double a, double b) { return std::remainder(a - b, 2.0 * kPi); }

TEST(Matrix3Test, DefaultMatrixIsTheIdentity) {
  const Matrix3<double> m;
  const double expected[4][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}};
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 3; ++c) EXPECT_EQ(m.m[r][c], expected[r][c]) << r << "," << c;
  }
  EXPECT_EQ(m, Matrix3<double>::Identity());
}

TEST(Matrix3Test, ZeroMatrixHasEveryEntryZero) {
  const Matrix3<double> m = Matrix3<double>::Zero();
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 3; ++c) EXPECT_EQ(m.m[r][c], 0.0);
  }
}

TEST(Matrix3Test, RowsAreReadAndWrittenAsPoints) {
  Matrix3<double> m;
  m.SetRow(0, Point3<double>(1, 2, 3));
  m.SetRow(3, Point3<double>(7, 8, 9));
  EXPECT_EQ(m.m[0][0], 1.0);
  EXPECT_EQ(m.m[0][1], 2.0);
  EXPECT_EQ(m.m[0][2], 3.0);
  EXPECT_EQ(m.GetRow(0), Point3<double>(1, 2, 3));
  EXPECT_EQ(m.GetRow(1), Point3<double>(0, 1, 0));
  EXPECT_EQ(m.GetRow(3), Point3<double>(7, 8, 9));
  EXPECT_EQ(m.GetTranslation(), Point3<double>(7, 8, 9));
  m.SetTranslation(Point3<double>(-1, -2, -3));
  EXPECT_EQ(m.GetRow(3), Point3<double>(-1, -2, -3));
  m.IdentityMatrix();
  EXPECT_EQ(m, Matrix3<double>());
}

TEST(Matrix3Test, ProductFollowsTheRowVectorFormula) {
  const Matrix3<double> a = Rows({1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12});
  const Matrix3<double> b = Rows({1, 0, 2}, {0, 1, 0}, {3, 0, 1}, {5, 6, 7});
  // Worked by hand: the translation row adds b's translation, the linear rows do not.
  const Matrix3<double> expected = Rows({10, 2, 5}, {22, 5, 14}, {34, 8, 23}, {51, 17, 39});
  EXPECT_EQ(a * b, expected);
  Matrix3<double> in_place = a;
  in_place *= b;
  EXPECT_EQ(in_place, expected);
}

TEST(Matrix3Test, ProductWithTheIdentityInEitherOrderIsTheMatrix) {
  const Matrix3<double> a = Rows({1.5, -2, 3}, {4, 0.25, -6}, {7, 8, 9.5}, {-10, 11, 12});
  EXPECT_EQ(a * Matrix3<double>::Identity(), a);
  EXPECT_EQ(Matrix3<double>::Identity() * a, a);
}

TEST(Matrix3Test, RotationThenTranslationKeepsTheRotationAndAddsTheTranslation) {
  const Matrix3<double> r = Euler(0.3, -0.7, 1.1);
  const Matrix3<double> t = Translation(4, -5, 6);
  const Matrix3<double> rt = r * t;
  for (int row = 0; row < 3; ++row) EXPECT_EQ(rt.GetRow(row), r.GetRow(row)) << row;
  EXPECT_EQ(rt.GetRow(3), Point3<double>(4, -5, 6));
}

TEST(Matrix3Test, TranslationThenRotationTurnsTheTranslation) {
  // Row vectors: T × R moves first, then rotates the moved point.
  const Matrix3<double> tr = Translation(1, 0, 0) * Euler(0, 0, kHalfPi);
  EXPECT_NEAR(tr.m[3][0], 0.0, 1e-15);
  EXPECT_NEAR(tr.m[3][1], 1.0, 1e-15);
  EXPECT_NEAR(tr.m[3][2], 0.0, 1e-15);
}

TEST(Matrix3Test, ScaleRotationTranslationScalesFirst) {
  const Matrix3<double> m = Scale(2, 2, 2) * Euler(0, 0, 0) * Translation(1, 2, 3);
  EXPECT_EQ(m, Rows({2, 0, 0}, {0, 2, 0}, {0, 0, 2}, {1, 2, 3}));
}

TEST(Matrix3Test, ProductIsAssociative) {
  std::mt19937 random(20240611);
  std::uniform_real_distribution<double> value(-3.0, 3.0);
  for (int trial = 0; trial < 100; ++trial) {
    Matrix3<double> a, b, c;
    for (int r = 0; r < 4; ++r) {
      for (int col = 0; col < 3; ++col) {
        a.m[r][col] = value(random);
        b.m[r][col] = value(random);
        c.m[r][col] = value(random);
      }
    }
    ExpectNear((a * b) * c, a * (b * c), 1e-12);
  }
}

TEST(Matrix3Test, DeterminantIsThatOfTheLinearPart) {
  EXPECT_EQ(Scale(2, 4, 8).Determinant(), 64.0);
  EXPECT_EQ((Scale(2, 4, 8) * Translation(100, 100, 100)).Determinant(), 64.0);
  EXPECT_EQ(Scale(-1, 1, 1).Determinant(), -1.0);
  EXPECT_NEAR(Euler(0.4, 1.2, -2.0).Determinant(), 1.0, 1e-15);
}

TEST(Matrix3Test, EulerAboutXTurnsTheYAxisTowardZ) {
  const Matrix3<double> r = Euler(kHalfPi, 0, 0);
  ExpectNear(r, Rows({1, 0, 0}, {0, 0, 1}, {0, -1, 0}, {0, 0, 0}), 1e-15);
}

TEST(Matrix3Test, EulerAboutYTurnsTheZAxisTowardX) {
  const Matrix3<double> r = Euler(0, kHalfPi, 0);
  ExpectNear(r, Rows({0, 0, -1}, {0, 1, 0}, {1, 0, 0}, {0, 0, 0}), 1e-15);
}

TEST(Matrix3Test, EulerAboutZTurnsTheXAxisTowardY) {
  const Matrix3<double> r = Euler(0, 0, kHalfPi);
  ExpectNear(r, Rows({0, 1, 0}, {-1, 0, 0}, {0, 0, 1}, {0, 0, 0}), 1e-15);
}

TEST(Matrix3Test, EulerAnglesApplyXThenYThenZ) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> angle(-kPi, kPi);
  for (int trial = 0; trial < 100; ++trial) {
    const double x = angle(random), y = angle(random), z = angle(random);
    ExpectNear(Euler(x, y, z), Euler(x, 0, 0) * Euler(0, y, 0) * Euler(0, 0, z), 1e-14);
  }
  // Quarter turns, followed axis by axis: x is left by X, sent to -z by Y, left by Z; y is
  // sent to z by X, to x by Y, to y by Z; z is sent to -y by X, left by Y, sent to x by Z.
  ExpectNear(Euler(kHalfPi, kHalfPi, kHalfPi), Rows({0, 0, -1}, {0, 1, 0}, {1, 0, 0}, {0, 0, 0}),
             1e-15);
}

TEST(Matrix3Test, FromEulerAnglesLeavesTheTranslationRowAsItWas) {
  Matrix3<double> m = Translation(3, -4, 5);
  m.FromEulerAnglesXYZ(0.5, 0.6, 0.7);
  EXPECT_EQ(m.GetRow(3), Point3<double>(3, -4, 5));
  Matrix3<double> expected = Euler(0.5, 0.6, 0.7);
  expected.SetRow(3, Point3<double>(3, -4, 5));
  EXPECT_EQ(m, expected);
}

TEST(Matrix3Test, FromEulerAnglesGivesAProperRotation) {
  const Matrix3<double> r = Euler(1.0, -0.4, 2.5);
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      EXPECT_NEAR(Dot(r.GetRow(i), r.GetRow(j)), i == j ? 1.0 : 0.0, 1e-15);
    }
  }
  EXPECT_NEAR(r.Determinant(), 1.0, 1e-15);
}

TEST(Matrix3Test, ToEulerAnglesOfTheIdentityIsZero) {
  double x = 9, y = 9, z = 9;
  EXPECT_TRUE(Matrix3<double>().ToEulerAnglesXYZ(x, y, z));
  EXPECT_EQ(x, 0.0);
  EXPECT_EQ(y, 0.0);
  EXPECT_EQ(z, 0.0);
}

TEST(Matrix3Test, EulerAnglesRoundTripAwayFromGimbalLock) {
  std::mt19937 random(12345);
  std::uniform_real_distribution<double> outer(-kPi + 1e-6, kPi);
  std::uniform_real_distribution<double> middle(-kHalfPi + 1e-3, kHalfPi - 1e-3);
  for (int trial = 0; trial < 1000; ++trial) {
    const double x = outer(random), y = middle(random), z = outer(random);
    double rx = 0, ry = 0, rz = 0;
    ASSERT_TRUE(Euler(x, y, z).ToEulerAnglesXYZ(rx, ry, rz)) << x << " " << y << " " << z;
    EXPECT_NEAR(AngleDifference(rx, x), 0.0, 1e-9);
    EXPECT_NEAR(ry, y, 1e-9);
    EXPECT_NEAR(AngleDifference(rz, z), 0.0, 1e-9);
  }
}

TEST(Matrix3Test, ToEulerAnglesGivesAnglesThatRebuildTheRotation) {
  // Outside the principal ranges the angles differ but describe the same rotation.
  std::mt19937 random(99);
  std::uniform_real_distribution<double> angle(-10.0, 10.0);
  for (int trial = 0; trial < 500; ++trial) {
    const Matrix3<double> r = Euler(angle(random), angle(random), angle(random));
    double x = 0, y = 0, z = 0;
    r.ToEulerAnglesXYZ(x, y, z);
    EXPECT_LE(std::fabs(y), kHalfPi);
    EXPECT_LE(std::fabs(x), kPi);
    EXPECT_LE(std::fabs(z), kPi);
    ExpectNear(Euler(x, y, z), r, 1e-12);
  }
}

TEST(Matrix3Test, ToEulerAnglesAtGimbalLockReturnsFalseAndPutsTheTurnInX) {
  for (double y : {kHalfPi, -kHalfPi}) {
    const Matrix3<double> r = Euler(0.3, y, 0.5);
    double rx = 0, ry = 0, rz = 1;
    EXPECT_FALSE(r.ToEulerAnglesXYZ(rx, ry, rz)) << y;
    EXPECT_EQ(ry, y);
    EXPECT_EQ(rz, 0.0);
    // Only x - z (y = pi/2) or x + z (y = -pi/2) is fixed at gimbal lock.
    EXPECT_NEAR(rx, y > 0 ? 0.3 - 0.5 : 0.3 + 0.5, 1e-12);
    ExpectNear(Euler(rx, ry, rz), r, 1e-12);
  }
}

TEST(Matrix3Test, ToEulerAnglesOfAScaledMatrixReadsItsUnnormalisedRows) {
  double x = 1, y = 1, z = 1;
  EXPECT_TRUE(Scale(2, 3, 4).ToEulerAnglesXYZ(x, y, z));
  EXPECT_EQ(x, 0.0);
  EXPECT_EQ(y, 0.0);
  EXPECT_EQ(z, 0.0);

  // A uniform positive scale gives the angles of the rotation.
  EXPECT_TRUE((Scale(5, 5, 5) * Euler(0.2, 0.9, -1.3)).ToEulerAnglesXYZ(x, y, z));
  EXPECT_NEAR(x, 0.2, 1e-12);
  EXPECT_NEAR(y, 0.9, 1e-12);
  EXPECT_NEAR(z, -1.3, 1e-12);
}

TEST(Matrix3Test, ToEulerAnglesNeverGivesNaNForScaledOrDegenerateInput) {
  std::mt19937 random(4242);
  std::uniform_real_distribution<double> angle(-kPi, kPi);
  std::uniform_real_distribution<double> scale(-50.0, 50.0);
  for (int trial = 0; trial < 1000; ++trial) {
    const Matrix3<double> m = Scale(scale(random), scale(random), scale(random)) *
                              Euler(angle(random), angle(random), angle(random));
    double x = 0, y = 0, z = 0;
    m.ToEulerAnglesXYZ(x, y, z);
    EXPECT_TRUE(std::isfinite(x) && std::isfinite(y) && std::isfinite(z));
    EXPECT_LE(std::fabs(y), kHalfPi);
  }
  // Entries beyond ±1 that an arcsine could not take.
  double x = 0, y = 0, z = 0;
  Matrix3<double> steep = Scale(3, 3, 3) * Euler(0, 1.2, 0);
  ASSERT_GT(std::fabs(steep.m[0][2]), 1.0);
  EXPECT_TRUE(steep.ToEulerAnglesXYZ(x, y, z));
  EXPECT_NEAR(y, 1.2, 1e-12);
}

TEST(Matrix3Test, ToEulerAnglesOfAZeroLinearPartIsZeroAndNotUnique) {
  double x = 1, y = 1, z = 1;
  EXPECT_FALSE(Matrix3<double>::Zero().ToEulerAnglesXYZ(x, y, z));
  EXPECT_EQ(x, 0.0);
  EXPECT_EQ(y, 0.0);
  EXPECT_EQ(z, 0.0);
}

TEST(Matrix3Test, ToEulerAnglesIgnoresTheTranslationRow) {
  Matrix3<double> m = Euler(0.1, 0.2, 0.3);
  m.SetRow(3, Point3<double>(100, -200, 300));
  double x = 0, y = 0, z = 0;
  EXPECT_TRUE(m.ToEulerAnglesXYZ(x, y, z));
  EXPECT_NEAR(x, 0.1, 1e-14);
  EXPECT_NEAR(y, 0.2, 1e-14);
  EXPECT_NEAR(z, 0.3, 1e-14);
}

}  // namespace
}  // namespace Orlo
