#include <gtest/gtest.h>
#include <orlo/support/point3.h>

namespace Orlo {
namespace {

TEST(Point3Test, DefaultIsZeroAndComponentsKeepTheirOrder) {
  const Point3<double> zero;
  EXPECT_EQ(zero.x, 0.0);
  EXPECT_EQ(zero.y, 0.0);
  EXPECT_EQ(zero.z, 0.0);
  const Point3<int> p(1, -2, 3);
  EXPECT_EQ(p.x, 1);
  EXPECT_EQ(p.y, -2);
  EXPECT_EQ(p.z, 3);
  EXPECT_EQ(p[0], 1);
  EXPECT_EQ(p[1], -2);
  EXPECT_EQ(p[2], 3);
}

TEST(Point3Test, IndexedAccessWritesTheMatchingComponent) {
  Point3<double> p;
  p[0] = 4.0;
  p[1] = 5.0;
  p[2] = 6.0;
  EXPECT_EQ(p, Point3<double>(4.0, 5.0, 6.0));
}

TEST(Point3Test, ArithmeticWorksComponentByComponent) {
  const Point3<double> a(1.0, 2.0, 3.0);
  const Point3<double> b(0.5, -1.0, 4.0);
  EXPECT_EQ(a + b, Point3<double>(1.5, 1.0, 7.0));
  EXPECT_EQ(a - b, Point3<double>(0.5, 3.0, -1.0));
  EXPECT_EQ(-a, Point3<double>(-1.0, -2.0, -3.0));
  EXPECT_EQ(a * 2.0, Point3<double>(2.0, 4.0, 6.0));
  EXPECT_EQ(2.0 * a, Point3<double>(2.0, 4.0, 6.0));
  EXPECT_EQ(a / 2.0, Point3<double>(0.5, 1.0, 1.5));

  Point3<double> c = a;
  c += b;
  EXPECT_EQ(c, Point3<double>(1.5, 1.0, 7.0));
  c -= b;
  EXPECT_EQ(c, a);
  c *= -1.0;
  EXPECT_EQ(c, -a);
}

TEST(Point3Test, EqualityComparesEveryComponent) {
  EXPECT_EQ(Point3<int>(1, 2, 3), Point3<int>(1, 2, 3));
  EXPECT_NE(Point3<int>(1, 2, 3), Point3<int>(0, 2, 3));
  EXPECT_NE(Point3<int>(1, 2, 3), Point3<int>(1, 0, 3));
  EXPECT_NE(Point3<int>(1, 2, 3), Point3<int>(1, 2, 0));
}

TEST(Point3Test, DotProductSumsTheComponentProducts) {
  EXPECT_EQ(Dot(Point3<double>(1, 2, 3), Point3<double>(4, -5, 6)), 12.0);
  EXPECT_EQ(Dot(Point3<double>(1, 0, 0), Point3<double>(0, 1, 0)), 0.0);
}

TEST(Point3Test, CrossProductIsRightHanded) {
  const Point3<double> x(1, 0, 0), y(0, 1, 0), z(0, 0, 1);
  EXPECT_EQ(Cross(x, y), z);
  EXPECT_EQ(Cross(y, z), x);
  EXPECT_EQ(Cross(z, x), y);
  EXPECT_EQ(Cross(y, x), -z);
  // (Ay·Bz − Az·By, Az·Bx − Ax·Bz, Ax·By − Ay·Bx)
  EXPECT_EQ(Cross(Point3<double>(1, 2, 3), Point3<double>(4, 5, 6)), Point3<double>(-3, 6, -3));
  EXPECT_EQ(Cross(Point3<double>(0, 0, 1), Point3<double>(0, 0, 2)), Point3<double>(0, 0, 0));
}

TEST(Point3Test, LengthIsTheEuclideanNorm) {
  EXPECT_EQ(Length(Point3<double>(3, 4, 12)), 13.0);
  EXPECT_EQ(Length(Point3<double>()), 0.0);
}

}  // namespace
}  // namespace Orlo
