#include <gtest/gtest.h>
#include <orlo/support/affine_parts.h>
#include <orlo/support/math.h>

#include <cmath>
#include <random>

namespace Orlo {
namespace {

constexpr double kPi = Math<double>::PI;

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

Matrix3<double> Translation(double x, double y, double z) {
  Matrix3<double> t;
  t.SetRow(3, Point3<double>(x, y, z));
  return t;
}

void ExpectNear(const Matrix3<double>& actual, const Matrix3<double>& expected, double tolerance) {
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 3; ++c) {
      EXPECT_NEAR(actual.m[r][c], expected.m[r][c], tolerance) << "row " << r << " col " << c;
    }
  }
}

void ExpectFinite(const AffinePartsD& parts) {
  const double values[] = {
      parts.translation.x,      parts.translation.y,      parts.translation.z,
      parts.rotation.x,         parts.rotation.y,         parts.rotation.z,
      parts.rotation.w,         parts.stretch_rotation.x, parts.stretch_rotation.y,
      parts.stretch_rotation.z, parts.stretch_rotation.w, parts.stretch.x,
      parts.stretch.y,          parts.stretch.z,          parts.determinant_sign};
  for (double value : values) EXPECT_TRUE(std::isfinite(value));
}

void ExpectUnit(const Quat& q) {
  EXPECT_NEAR(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w, 1.0, 1e-12);
  EXPECT_GE(q.w, 0.0);
}

TEST(AffinePartsTest, FieldsComeInTheirDeclaredOrder) {
  AffinePartsD parts;
  const char* base = reinterpret_cast<const char*>(&parts);
  const auto offset = [base](const void* field) { return static_cast<const char*>(field) - base; };
  EXPECT_EQ(offset(&parts.translation), 0);
  EXPECT_LT(offset(&parts.translation), offset(&parts.rotation));
  EXPECT_LT(offset(&parts.rotation), offset(&parts.stretch_rotation));
  EXPECT_LT(offset(&parts.stretch_rotation), offset(&parts.stretch));
  EXPECT_LT(offset(&parts.stretch), offset(&parts.determinant_sign));
  EXPECT_EQ(sizeof(Quat), 4 * sizeof(double));
}

TEST(QuatTest, DefaultQuaternionIsTheIdentityRotation) {
  EXPECT_EQ(ToMatrix3(Quat()), Matrix3<double>());
}

TEST(QuatTest, QuarterTurnAboutZTakesXToY) {
  const double h = std::sqrt(0.5);
  const Matrix3<double> m = ToMatrix3(Quat(0, 0, h, h));
  ExpectNear(m, Euler(0, 0, kPi / 2), 1e-15);
}

TEST(QuatTest, MatrixAndQuaternionConvertBothWays) {
  std::mt19937 random(77);
  std::uniform_real_distribution<double> angle(-kPi, kPi);
  for (int trial = 0; trial < 500; ++trial) {
    const Matrix3<double> r = Euler(angle(random), angle(random), angle(random));
    const Quat q = ToQuat(r);
    ExpectUnit(q);
    ExpectNear(ToMatrix3(q), r, 1e-14);
  }
  // Half turns, where the trace is -1 and every branch of the extraction is needed.
  for (const Matrix3<double>& r :
       {Euler(kPi, 0, 0), Euler(0, kPi, 0), Euler(0, 0, kPi), Euler(kPi / 2, kPi, 0)}) {
    const Quat q = ToQuat(r);
    ExpectUnit(q);
    ExpectNear(ToMatrix3(q), r, 1e-14);
  }
}

TEST(DecomposeAffineTest, IdentityHasUnitStretchAndNoRotation) {
  AffinePartsD parts;
  DecomposeAffine(Matrix3<double>(), &parts);
  EXPECT_EQ(parts.translation, Point3<double>(0, 0, 0));
  EXPECT_EQ(parts.stretch, Point3<double>(1, 1, 1));
  EXPECT_EQ(parts.determinant_sign, 1.0);
  ExpectNear(ToMatrix3(parts.rotation), Matrix3<double>(), 1e-15);
  ExpectNear(ToMatrix3(parts.stretch_rotation), Matrix3<double>(), 1e-15);
}

TEST(DecomposeAffineTest, NonUniformScaleComesBackAxisByAxis) {
  AffinePartsD parts;
  DecomposeAffine(Scale(2, 3, 4) * Translation(5, 6, 7), &parts);
  EXPECT_NEAR(parts.stretch.x, 2.0, 1e-12);
  EXPECT_NEAR(parts.stretch.y, 3.0, 1e-12);
  EXPECT_NEAR(parts.stretch.z, 4.0, 1e-12);
  EXPECT_EQ(parts.translation, Point3<double>(5, 6, 7));
  EXPECT_EQ(parts.determinant_sign, 1.0);
  ExpectNear(ToMatrix3(parts.rotation), Matrix3<double>(), 1e-12);
}

TEST(DecomposeAffineTest, ScaleRotationTranslationGivesBackItsParts) {
  std::mt19937 random(2718281);
  std::uniform_real_distribution<double> angle(-kPi, kPi);
  std::uniform_real_distribution<double> scale(0.05, 20.0);
  std::uniform_real_distribution<double> offset(-1000.0, 1000.0);
  for (int trial = 0; trial < 1000; ++trial) {
    const Point3<double> s(scale(random), scale(random), scale(random));
    const Point3<double> t(offset(random), offset(random), offset(random));
    const Matrix3<double> r = Euler(angle(random), angle(random), angle(random));
    const Matrix3<double> m = Scale(s.x, s.y, s.z) * r * Translation(t.x, t.y, t.z);

    AffinePartsD parts;
    DecomposeAffine(m, &parts);
    EXPECT_NEAR(parts.stretch.x, s.x, 1e-9) << trial;
    EXPECT_NEAR(parts.stretch.y, s.y, 1e-9) << trial;
    EXPECT_NEAR(parts.stretch.z, s.z, 1e-9) << trial;
    EXPECT_EQ(parts.translation, t);
    EXPECT_EQ(parts.determinant_sign, 1.0);
    ExpectNear(ToMatrix3(parts.rotation), r, 1e-9);
    ExpectNear(ToMatrix3(parts.stretch_rotation), Matrix3<double>(), 1e-9);
    ExpectUnit(parts.rotation);
    ExpectUnit(parts.stretch_rotation);
  }
}

TEST(DecomposeAffineTest, NegativeDeterminantSetsTheSignAndKeepsTheMagnitudes) {
  AffinePartsD parts;
  DecomposeAffine(Scale(-2, 3, 4) * Euler(0.3, -0.2, 0.9), &parts);
  EXPECT_EQ(parts.determinant_sign, -1.0);
  EXPECT_NEAR(parts.stretch.x, 2.0, 1e-12);
  EXPECT_NEAR(parts.stretch.y, 3.0, 1e-12);
  EXPECT_NEAR(parts.stretch.z, 4.0, 1e-12);
  // The essential rotation stays a proper rotation.
  EXPECT_NEAR(ToMatrix3(parts.rotation).Determinant(), 1.0, 1e-12);
}

TEST(DecomposeAffineTest, DeterminantSignFollowsTheNumberOfMirroredAxes) {
  std::mt19937 random(161803);
  std::uniform_real_distribution<double> angle(-kPi, kPi);
  std::uniform_real_distribution<double> scale(0.1, 10.0);
  std::uniform_int_distribution<int> mirror(0, 7);
  for (int trial = 0; trial < 500; ++trial) {
    const int flips = mirror(random);
    const Point3<double> s(scale(random), scale(random), scale(random));
    const Matrix3<double> m =
        Scale((flips & 1) ? -s.x : s.x, (flips & 2) ? -s.y : s.y, (flips & 4) ? -s.z : s.z) *
        Euler(angle(random), angle(random), angle(random));
    AffinePartsD parts;
    DecomposeAffine(m, &parts);
    const int mirrored = ((flips & 1) != 0) + ((flips & 2) != 0) + ((flips & 4) != 0);
    EXPECT_EQ(parts.determinant_sign, mirrored % 2 == 1 ? -1.0 : 1.0) << flips;
    EXPECT_GT(parts.stretch.x, 0.0);
    EXPECT_GT(parts.stretch.y, 0.0);
    EXPECT_GT(parts.stretch.z, 0.0);
    // An odd number of mirrors keeps the magnitudes as the stretch; the rest fold into the
    // rotation.
    if (mirrored == 1 || mirrored == 3 || mirrored == 0) {
      EXPECT_NEAR(parts.stretch.x, s.x, 1e-9);
      EXPECT_NEAR(parts.stretch.y, s.y, 1e-9);
      EXPECT_NEAR(parts.stretch.z, s.z, 1e-9);
    }
    ExpectNear(ComposeAffine(parts), m, 1e-9);
  }
}

TEST(DecomposeAffineTest, ComposeRebuildsGeneralMatricesWithShear) {
  std::mt19937 random(55);
  std::uniform_real_distribution<double> value(-3.0, 3.0);
  int decomposed = 0;
  for (int trial = 0; trial < 1000; ++trial) {
    Matrix3<double> m;
    for (int r = 0; r < 4; ++r) {
      for (int c = 0; c < 3; ++c) m.m[r][c] = value(random);
    }
    if (std::fabs(m.Determinant()) < 1e-3) continue;
    ++decomposed;
    AffinePartsD parts;
    DecomposeAffine(m, &parts);
    ExpectUnit(parts.rotation);
    ExpectUnit(parts.stretch_rotation);
    EXPECT_EQ(parts.determinant_sign, m.Determinant() < 0 ? -1.0 : 1.0);
    ExpectNear(ComposeAffine(parts), m, 1e-9);
  }
  EXPECT_GT(decomposed, 900);
}

TEST(DecomposeAffineTest, StretchAlongATurnedAxisShowsInTheStretchRotation) {
  // Stretch by 3 along the diagonal of the xy plane, no essential rotation.
  const Matrix3<double> axes = Euler(0, 0, kPi / 4);
  Matrix3<double> axes_transposed;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) axes_transposed.m[i][j] = axes.m[j][i];
  }
  const Matrix3<double> m = axes_transposed * Scale(3, 1, 1) * axes;
  AffinePartsD parts;
  DecomposeAffine(m, &parts);
  ExpectNear(ToMatrix3(parts.rotation), Matrix3<double>(), 1e-12);
  // One factor is 3, the others 1, and the 3 lies along the diagonal.
  const Matrix3<double> u = ToMatrix3(parts.stretch_rotation);
  for (int axis = 0; axis < 3; ++axis) {
    const double k = parts.stretch[axis];
    if (std::fabs(k - 3.0) < 1e-12) {
      EXPECT_NEAR(std::fabs(u.m[axis][0]), std::sqrt(0.5), 1e-12);
      EXPECT_NEAR(std::fabs(u.m[axis][1]), std::sqrt(0.5), 1e-12);
    } else {
      EXPECT_NEAR(k, 1.0, 1e-12);
    }
  }
  EXPECT_NEAR(parts.stretch.x * parts.stretch.y * parts.stretch.z, 3.0, 1e-12);
  ExpectNear(ComposeAffine(parts), m, 1e-12);
}

TEST(DecomposeAffineTest, ZeroLinearPartGivesZeroStretchWithoutNaN) {
  AffinePartsD parts;
  DecomposeAffine(Scale(0, 0, 0) * Translation(1, 2, 3), &parts);
  ExpectFinite(parts);
  EXPECT_EQ(parts.stretch, Point3<double>(0, 0, 0));
  EXPECT_EQ(parts.translation, Point3<double>(1, 2, 3));
  EXPECT_EQ(parts.determinant_sign, 1.0);
  ExpectNear(ToMatrix3(parts.rotation), Matrix3<double>(), 1e-15);
}

TEST(DecomposeAffineTest, CollapsedAxesGiveZeroFactorsAndAProperRotation) {
  std::mt19937 random(8);
  std::uniform_real_distribution<double> angle(-kPi, kPi);
  for (const Point3<double>& s :
       {Point3<double>(0, 2, 3), Point3<double>(2, 0, 3), Point3<double>(2, 3, 0),
        Point3<double>(0, 0, 5), Point3<double>(5, 0, 0), Point3<double>(0, 4, 0)}) {
    for (int trial = 0; trial < 20; ++trial) {
      const Matrix3<double> r = Euler(angle(random), angle(random), angle(random));
      const Matrix3<double> m = Scale(s.x, s.y, s.z) * r;
      AffinePartsD parts;
      DecomposeAffine(m, &parts);
      ExpectFinite(parts);
      EXPECT_NEAR(parts.stretch.x, s.x, 1e-9);
      EXPECT_NEAR(parts.stretch.y, s.y, 1e-9);
      EXPECT_NEAR(parts.stretch.z, s.z, 1e-9);
      EXPECT_NEAR(ToMatrix3(parts.rotation).Determinant(), 1.0, 1e-12);
      ExpectNear(ComposeAffine(parts), m, 1e-9);
    }
  }
}

TEST(DecomposeAffineTest, TakesTheMatrixByValueAndLeavesTheCallersCopy) {
  Matrix3<double> m = Scale(-2, 3, 4) * Translation(1, 1, 1);
  const Matrix3<double> before = m;
  AffinePartsD parts;
  DecomposeAffine(m, &parts);
  EXPECT_EQ(m, before);
}

}  // namespace
}  // namespace Orlo
