#include <gtest/gtest.h>
#include <orlo/support/color.h>

#include <type_traits>

namespace Orlo {
namespace {

TEST(ColorTest, DefaultIsBlackWithAllThreeComponentsZero) {
  const Color color;
  EXPECT_EQ(color.r, 0.0f);
  EXPECT_EQ(color.g, 0.0f);
  EXPECT_EQ(color.b, 0.0f);
}

TEST(ColorTest, ComponentsAreThirtyTwoBitFloatsInRedGreenBlueOrder) {
  static_assert(std::is_same_v<decltype(Color::r), float>, "red is a float");
  static_assert(sizeof(Color) == 3 * sizeof(float), "three packed floats");
  const Color color(0.25f, 0.5f, 0.75f);
  EXPECT_EQ(color.r, 0.25f);
  EXPECT_EQ(color.g, 0.5f);
  EXPECT_EQ(color.b, 0.75f);
  EXPECT_EQ(color, Color(0.25f, 0.5f, 0.75f));
  EXPECT_NE(color, Color(0.25f, 0.5f, 0.0f));
}

}  // namespace
}  // namespace Orlo
