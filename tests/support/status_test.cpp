#include <orlo/support/status.h>

#include <gtest/gtest.h>

namespace Orlo {
namespace {

TEST(StatusTest, DefaultIsSuccessWithAnEmptyMessage) {
  Status status;
  EXPECT_EQ(status.GetCode(), 0);
  EXPECT_EQ(status.GetMessage(), "");
  EXPECT_TRUE(status.IsOk());
}

TEST(StatusTest, SetReplacesCodeAndMessage) {
  Status status;
  status.Set(Status::kFailed, "SceneEngine::LoadScene : File doesn't exist.");
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(), "SceneEngine::LoadScene : File doesn't exist.");
  EXPECT_FALSE(status.IsOk());
  status.Set(Status::kInvalidArgument, "other");
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(), "other");
}

TEST(StatusTest, CopiesCarryCodeAndMessage) {
  const Status original(Status::kNotApplicable, "This Block has no DataTables.");
  const Status copy(original);
  EXPECT_EQ(copy.GetCode(), 1);
  EXPECT_EQ(copy.GetMessage(), "This Block has no DataTables.");
}

Status FailWhenAsked(bool fail) {
  if (fail) return Status(Status::kFailed, "asked to fail");
  return Status();
}

Status Chain(bool fail, int& reached) {
  ORLO_RETURN_IF_ERROR(FailWhenAsked(fail));
  reached = 1;
  return Status();
}

TEST(StatusTest, ReturnIfErrorStopsAtTheFirstFailure) {
  int reached = 0;
  Status failed = Chain(true, reached);
  EXPECT_EQ(failed.GetCode(), 2);
  EXPECT_EQ(failed.GetMessage(), "asked to fail");
  EXPECT_EQ(reached, 0);
  EXPECT_TRUE(Chain(false, reached).IsOk());
  EXPECT_EQ(reached, 1);
}

}  // namespace
}  // namespace Orlo
