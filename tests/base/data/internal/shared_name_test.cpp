#include <orlo/base/data/internal/shared_name.h>

#include <gtest/gtest.h>

#include <string>

#include <orlo/base/data/data_bool.h>

namespace Orlo::internal {
namespace {

TEST(SharedNameTest, TheDefaultNameIsEmpty) {
  SharedName name;
  EXPECT_EQ(name.Get(), "");
  EXPECT_EQ(SharedName(std::string()).Get(), "");
}

TEST(SharedNameTest, NamesWithTheSameTextShareOneCopy) {
  const SharedName a(std::string("min_position_limit_x"));
  const SharedName b(std::string("min_position_limit_x"));
  const SharedName c(std::string("max_position_limit_x"));
  EXPECT_EQ(a.Get(), "min_position_limit_x");
  EXPECT_EQ(&a.Get(), &b.Get());
  EXPECT_NE(&a.Get(), &c.Get());
  EXPECT_EQ(c.Get(), "max_position_limit_x");
}

TEST(SharedNameTest, RenamingOneValueLeavesAnotherOfTheSameNameAlone) {
  DataBool first(0, false, 1);
  DataBool second(1, false, 1);
  first.SetName("use_scale_limit_z");
  second.SetName("use_scale_limit_z");
  first.SetName("renamed");
  EXPECT_EQ(first.GetName(), "renamed");
  EXPECT_EQ(second.GetName(), "use_scale_limit_z");
}

}  // namespace
}  // namespace Orlo::internal
