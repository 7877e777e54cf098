// DataFloat's controller slots: fixed at construction, linked through the graph, cloned with
// the value, and the path of a controller's change up through the value.
#include <orlo/base/data/data_float.h>

#include <gtest/gtest.h>

#include "tests/base/data/data_test_blocks.h"

namespace Orlo {
namespace {

using testing::RecordingListener;
using testing::TestBlock;
using testing::data::Release;
using testing::data::TestController;

class DataFloatTest : public ::testing::Test {
 protected:
  void SetUp() override { TestController::live = 0; }
  void TearDown() override { EXPECT_EQ(TestController::live, 0) << "a controller leaked"; }
};

TEST_F(DataFloatTest, HasOneControllerSlotPerElementNamedFloatAnimationController) {
  auto* data = new DataFloat(0, 0.0, 3);
  EXPECT_EQ(data->NumDependencies(), 3);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(data->GetDependency(i), nullptr);
    EXPECT_EQ(data->GetController(i), nullptr);
    EXPECT_EQ(data->GetDependencyName(i), "float_animation_controller");
    EXPECT_EQ(data->GetDependencyType(i), 0u);
  }
  for (int outside : {-1, 3, 100}) {
    EXPECT_EQ(data->GetDependency(outside), nullptr);
    EXPECT_EQ(data->GetController(outside), nullptr);
    EXPECT_EQ(data->GetDependencyName(outside), "no_dependency");
  }
  Release(data);
}

TEST_F(DataFloatTest, SetSizeAndEraseKeepTheNumberOfControllerSlots) {
  auto* data = new DataFloat(0, 0.0, 3);
  data->SetSize(6);
  EXPECT_EQ(data->GetSize(), 6);
  EXPECT_EQ(data->NumDependencies(), 3);
  data->Erase(0);
  data->Erase(0);
  data->SetSize(1);
  EXPECT_EQ(data->GetSize(), 1);
  EXPECT_EQ(data->NumDependencies(), 3);
  Release(data);
}

TEST_F(DataFloatTest, SetControllerLinksTheControllerIntoItsSlot) {
  auto* data = new DataFloat(0, 0.0, 2);
  auto* controller = new TestController(4.0);
  RecordingListener listener;
  data->AddBlockListener(&listener);
  data->SetController(controller, 1);
  EXPECT_EQ(data->GetController(1), controller);
  EXPECT_EQ(data->GetDependency(1), controller);
  EXPECT_EQ(data->GetController(0), nullptr);
  EXPECT_EQ(controller->GetParentBlock(), data);
  // The link itself is reported as a slot change.
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].code, 2);
  EXPECT_EQ(listener.events[0].param, 1);
  data->RemoveBlockListener(&listener);
  // The value owns the controller: releasing the value releases it.
  Release(data);
}

TEST_F(DataFloatTest, SetControllerReplacingAControllerReleasesTheOldOne) {
  auto* data = new DataFloat(0, 0.0, 1);
  data->SetController(new TestController(1.0), 0);
  auto* second = new TestController(2.0);
  data->SetController(second, 0);
  EXPECT_EQ(TestController::live, 1);
  EXPECT_EQ(data->GetController(0), second);
  Release(data);
}

TEST_F(DataFloatTest, SetControllerWithNullEmptiesTheSlotAndReleasesTheController) {
  auto* data = new DataFloat(0, 0.0, 1);
  data->SetController(new TestController(1.0), 0);
  data->SetController(nullptr, 0);
  EXPECT_EQ(data->GetController(0), nullptr);
  EXPECT_EQ(TestController::live, 0);
  Release(data);
}

TEST_F(DataFloatTest, SetControllerOutsideTheSlotsChangesNothing) {
  auto* data = new DataFloat(0, 0.0, 2);
  data->SetSize(5);
  auto* controller = new TestController(1.0);
  RecordingListener listener;
  data->AddBlockListener(&listener);
  for (int outside : {-1, 2, 4}) {
    data->SetController(controller, outside);
    EXPECT_EQ(data->GetController(outside), nullptr);
  }
  EXPECT_EQ(controller->GetParentBlock(), nullptr);
  EXPECT_TRUE(listener.events.empty());
  data->RemoveBlockListener(&listener);
  Release(controller);
  Release(data);
}

TEST_F(DataFloatTest, SetDependencyIsARawStoreIgnoredOutsideTheSlots) {
  auto* data = new DataFloat(0, 0.0, 1);
  auto* controller = new TestController(1.0);
  data->SetDependency(0, controller);
  EXPECT_EQ(data->GetDependency(0), controller);
  EXPECT_EQ(controller->GetParentBlock(), nullptr);
  data->SetDependency(-1, controller);
  data->SetDependency(1, controller);
  EXPECT_EQ(data->GetDependency(1), nullptr);
  data->SetDependency(0, nullptr);
  Release(controller);
  Release(data);
}

TEST_F(DataFloatTest, GetControllerOfASlotHoldingABlockThatIsNoControllerIsNull) {
  auto* data = new DataFloat(0, 0.0, 1);
  auto* other = new TestBlock("other", 0);
  ASSERT_TRUE(data->MakeDependencyByID(0, other).IsOk());
  EXPECT_EQ(data->GetDependency(0), other);
  EXPECT_EQ(data->GetController(0), nullptr);
  Release(data);
}

TEST_F(DataFloatTest, AControllerChangeReachesTheValuesListenersStampedWithTheValue) {
  auto* data = new DataFloat(0, 0.0, 3);
  auto* controller = new TestController(1.0);
  data->SetController(controller, 2);
  RecordingListener listener;
  data->AddBlockListener(&listener);
  controller->SetFloat(0, 5.0);
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].block, data);
  EXPECT_EQ(listener.events[0].code, 3);
  EXPECT_EQ(listener.events[0].param, 0);
  // The stored element is what the value gives, whatever its controller says.
  EXPECT_EQ(data->GetFloat(0, 2), 0.0);
  data->RemoveBlockListener(&listener);
  Release(data);
}

TEST_F(DataFloatTest, CloneClonesEachControllerIntoTheSameSlotOfTheCopy) {
  auto* data = new DataFloat(4, 1.5, 3);
  auto* first = new TestController(1.0);
  auto* last = new TestController(3.0);
  data->SetController(first, 0);
  data->SetController(last, 2);
  data->SetValue(8.0, 0, 1);

  auto* copy = dynamic_cast<DataFloat*>(data->Clone());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(TestController::live, 4);
  ASSERT_EQ(copy->NumDependencies(), 3);
  EXPECT_NE(copy->GetController(0), nullptr);
  EXPECT_NE(copy->GetController(0), first);
  EXPECT_EQ(copy->GetController(1), nullptr);
  EXPECT_NE(copy->GetController(2), nullptr);
  EXPECT_NE(copy->GetController(2), last);
  EXPECT_EQ(dynamic_cast<TestController*>(copy->GetController(2))->GetFloat(0), 3.0);
  // The clones are linked: the copy owns them.
  EXPECT_EQ(copy->GetController(0)->GetParentBlock(), copy);
  EXPECT_EQ(copy->GetController(2)->GetParentBlock(), copy);
  EXPECT_EQ(copy->GetParameterID(), 4);
  EXPECT_EQ(copy->GetFloat(0, 1), 8.0);
  Release(copy);
  EXPECT_EQ(TestController::live, 2);
  Release(data);
}

TEST_F(DataFloatTest, CloneOfAShrunkValueHasOneSlotPerElementAndDropsTheControllersBeyond) {
  auto* data = new DataFloat(0, 0.0, 3);
  data->SetController(new TestController(1.0), 0);
  data->SetController(new TestController(2.0), 2);
  data->SetSize(2);
  auto* copy = dynamic_cast<DataFloat*>(data->Clone());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->NumDependencies(), 2);
  EXPECT_NE(copy->GetController(0), nullptr);
  EXPECT_EQ(copy->GetController(1), nullptr);
  EXPECT_EQ(TestController::live, 3);
  Release(copy);
  Release(data);
}

TEST_F(DataFloatTest, CloneOfAGrownValueHasEmptySlotsForTheNewElements) {
  auto* data = new DataFloat(0, 0.0, 1);
  data->SetController(new TestController(1.0), 0);
  data->SetSize(3);
  auto* copy = dynamic_cast<DataFloat*>(data->Clone());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->NumDependencies(), 3);
  EXPECT_NE(copy->GetController(0), nullptr);
  EXPECT_EQ(copy->GetController(1), nullptr);
  EXPECT_EQ(copy->GetController(2), nullptr);
  Release(copy);
  Release(data);
}

TEST_F(DataFloatTest, ACopyConstructedValueSharesTheControllersOfItsSource) {
  auto* data = new DataFloat(0, 0.0, 2);
  auto* controller = new TestController(1.0);
  data->SetController(controller, 1);
  auto* copy = new DataFloat(*data);
  EXPECT_EQ(copy->GetController(1), controller);
  // The copy holds no reference of its own, so it is destroyed without a release.
  copy->DeleteThis();
  EXPECT_EQ(TestController::live, 1);
  Release(data);
}

}  // namespace
}  // namespace Orlo
