#include "plugins/assimp/internal/conversions.h"

#include <cmath>

#include <gtest/gtest.h>

namespace orlo_assimp::internal {
namespace {

using Orlo::Point3;

constexpr double kPi = 3.14159265358979323846;

double MaxDifference(const Orlo::Matrix3<double>& a, const Orlo::Matrix3<double>& b) {
  double out = 0;
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 3; ++c) out = std::max(out, std::abs(a.m[r][c] - b.m[r][c]));
  }
  return out;
}

TEST(ConversionsTest, AssetTicksBecomeMillisecondsAtTheAnimationsRate) {
  EXPECT_EQ(ToSceneTime(1.5, 1.0), 1500);
  EXPECT_EQ(ToSceneTime(48, 24.0), 2000);
  EXPECT_EQ(ToSceneTime(250, 1000.0), 250);
  // No rate given: 25 ticks per second.
  EXPECT_EQ(ToSceneTime(50, 0.0), 2000);
  EXPECT_EQ(ToSceneTime(1, 3.0), 333);
}

TEST(ConversionsTest, MatricesAreTheTransposeOfTheLibrarys) {
  aiMatrix4x4 m;
  aiMatrix4x4::Translation(aiVector3D(1, 2, 3), m);
  m.a2 = 0.5f;  // row 0, column 1: the y axis's x component
  const Orlo::Matrix3<double> engine = ToMatrix3(m);
  EXPECT_EQ(engine.m[3][0], 1.0);
  EXPECT_EQ(engine.m[3][2], 3.0);
  EXPECT_EQ(engine.m[1][0], 0.5);
  EXPECT_EQ(ToAiMatrix(engine), m);
}

TEST(ConversionsTest, SplittingAComposedTransformGivesItsPartsBack) {
  const Point3<double> position(1, -2, 3), rotation(0.3, -0.7, 2.5), scale(2, 0.5, 3);
  const Orlo::Matrix3<double> m = ComposeTransform(position, rotation, scale);
  const TransformParts parts = SplitTransform(m);
  EXPECT_TRUE(parts.exact);
  EXPECT_LT(MaxDifference(ComposeTransform(parts.position, parts.rotation, parts.scale), m), 1e-12);
  EXPECT_NEAR(parts.rotation.z, 2.5, 1e-12);
  EXPECT_NEAR(parts.scale.y, 0.5, 1e-12);
}

TEST(ConversionsTest, AReflectionIsCarriedByANegativeScale) {
  const Orlo::Matrix3<double> m = ComposeTransform(
      Point3<double>(0, 0, 0), Point3<double>(0.1, 0.2, 0.3), Point3<double>(-1, 1, 1));
  const TransformParts parts = SplitTransform(m);
  EXPECT_TRUE(parts.exact);
  EXPECT_LT(parts.scale.x, 0);
  EXPECT_LT(MaxDifference(ComposeTransform(parts.position, parts.rotation, parts.scale), m), 1e-12);
}

TEST(ConversionsTest, AShearIsApproximatedAndSaidToBe) {
  Orlo::Matrix3<double> m;
  m.m[1][0] = 0.5;  // the y axis leans towards x
  const TransformParts parts = SplitTransform(m);
  EXPECT_FALSE(parts.exact);
  // The closest rotation and stretch stay finite and near the matrix.
  EXPECT_LT(MaxDifference(ComposeTransform(parts.position, parts.rotation, parts.scale), m), 0.5);
}

TEST(ConversionsTest, EulerAnglesFollowThePreviousKeyAcrossAWholeTurn) {
  // 240 degrees about z reads back as -120; after a key at 120 it stays 240.
  const Point3<double> read(0, 0, -2 * kPi / 3);
  const Point3<double> kept = ClosestEulerAngles(read, Point3<double>(0, 0, 2 * kPi / 3));
  EXPECT_NEAR(kept.z, 4 * kPi / 3, 1e-12);
  EXPECT_NEAR(kept.x, 0, 1e-12);
  // The other triple of the same rotation is taken when it is closer.
  const Point3<double> flipped = ClosestEulerAngles(Point3<double>(kPi, kPi / 2 - 0.1, kPi),
                                                    Point3<double>(0, kPi / 2 + 0.1, 0));
  EXPECT_NEAR(flipped.x, 0, 1e-12);
  EXPECT_NEAR(flipped.y, kPi / 2 + 0.1, 1e-12);
  EXPECT_NEAR(flipped.z, 0, 1e-12);
}

TEST(ConversionsTest, QuaternionsAndEulerAnglesAgreeWithTheMatrices) {
  const Point3<double> euler(0.4, -0.3, 1.2);
  const aiQuaternion q = ToAiQuaternion(euler);
  const Point3<double> back = ToEulerAngles(q);
  EXPECT_NEAR(back.x, euler.x, 1e-6);
  EXPECT_NEAR(back.y, euler.y, 1e-6);
  EXPECT_NEAR(back.z, euler.z, 1e-6);
  Orlo::Matrix3<double> from_euler;
  from_euler.FromEulerAnglesXYZ(euler.x, euler.y, euler.z);
  EXPECT_LT(MaxDifference(ToMatrix3(aiMatrix4x4(q.GetMatrix())), from_euler), 1e-6);
}

}  // namespace
}  // namespace orlo_assimp::internal
