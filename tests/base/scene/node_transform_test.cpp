#include <orlo/base/scene/node_transform.h>

#include <gtest/gtest.h>

#include <orlo/base/controllers/bezier_controller.h>
#include <orlo/base/controllers/point3_controller.h>
#include <orlo/base/controllers/transform3_controller.h>
#include <orlo/base/engine/base_library.h>
#include <orlo/base/engine/scene_engine.h>

#include "tests/base/scene/scene_test_blocks.h"
#include "tests/testing/block_record_stream.h"
#include "tests/testing/scoped_block.h"
#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using testing::FixedMatrixController;
using testing::Holder;
using testing::RecordingListener;
using testing::ScopedBlock;
using testing::TestBlock;

TEST(NodeTransformTest, ReportsItsIdentityAndSlots) {
  ScopedBlock<NodeTransform> transform(new NodeTransform(false));
  EXPECT_EQ(transform->GetClassName(), "NodeTransform");
  const BlockType type = transform->GetBlockType();
  EXPECT_EQ(type.class_id, 110u);
  EXPECT_EQ(type.super_class_id, 16u);
  EXPECT_EQ(type.sub_id, 48u);
  EXPECT_EQ(transform->NumDependencies(), 2);
  EXPECT_EQ(transform->GetDependencyName(0), "node_prs");
  EXPECT_EQ(transform->GetDependencyName(1), "parent_transform");
  EXPECT_EQ(transform->GetDependencyName(2), "nil");
  EXPECT_EQ(transform->GetDependencyName(-1), "nil");
  EXPECT_EQ(transform->GetDependencyType(0), 300u);
  EXPECT_EQ(transform->GetDependencyType(1), 110u);
  EXPECT_EQ(transform->GetDependencyType(2), 0u);
  EXPECT_EQ(transform->GetDependencyType(-1), 0u);
  EXPECT_EQ(transform->GetDependency(2), nullptr);
  EXPECT_EQ(transform->GetDependency(-1), nullptr);
  EXPECT_EQ(transform->GetDataTable(), nullptr);
}

TEST(NodeTransformTest, WithoutCreateBothLinksAreEmpty) {
  ScopedBlock<NodeTransform> transform(new NodeTransform(false));
  EXPECT_EQ(transform->GetNodePRS(), nullptr);
  EXPECT_EQ(transform->GetParentTransform(), nullptr);
  EXPECT_EQ(transform->GetDependency(0), nullptr);
  EXPECT_EQ(transform->GetDependency(1), nullptr);
}

TEST(NodeTransformTest, WithCreateLinksADefaultTransformControllerWithItsSubBlocks) {
  ScopedBlock<NodeTransform> transform(new NodeTransform(true));
  auto* prs = dynamic_cast<Transform3Controller*>(transform->GetNodePRS());
  ASSERT_NE(prs, nullptr);
  EXPECT_EQ(transform->GetDependency(0), prs);
  EXPECT_EQ(prs->GetParentBlock(), transform.get());
  EXPECT_NE(prs->GetDependency(1), nullptr);
  EXPECT_NE(prs->GetDataTable(), nullptr);
  EXPECT_EQ(transform->GetParentTransform(), nullptr);
}

TEST(NodeTransformTest, IgnoresRawStoresOutsideItsSlots) {
  ScopedBlock<NodeTransform> transform(new NodeTransform(false));
  TestBlock other("other");
  transform->SetDependency(2, &other);
  transform->SetDependency(-1, &other);
  EXPECT_EQ(transform->GetDependency(0), nullptr);
  EXPECT_EQ(transform->GetDependency(1), nullptr);
}

TEST(NodeTransformTest, SetNodePRSLinksAControllerAndReleasesTheOldOne) {
  ScopedBlock<NodeTransform> transform(new NodeTransform(true));
  auto* controller = new FixedMatrixController(testing::Translation(1, 2, 3));
  const Status status = transform->SetNodePRS(controller);
  EXPECT_TRUE(status.IsOk());
  EXPECT_EQ(transform->GetNodePRS(), controller);
  EXPECT_EQ(controller->GetParentBlock(), transform.get());
}

TEST(NodeTransformTest, SetNodePRSOfNullFailsWithTheNodeMessageAndKeepsTheController) {
  ScopedBlock<NodeTransform> transform(new NodeTransform(true));
  Matrix3Controller* before = transform->GetNodePRS();
  const Status status = transform->SetNodePRS(nullptr);
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(), "Node::SetNodePRS : The block is not a valid Controller.");
  EXPECT_EQ(transform->GetNodePRS(), before);
}

// A matrix controller that claims a class id other than a controller's.
class NotAController : public FixedMatrixController {
 public:
  BlockType GetBlockType() const override { return BlockType(205, 1, 1); }
};

TEST(NodeTransformTest, SetNodePRSOfABlockThatIsNotAControllerFails) {
  ScopedBlock<NodeTransform> transform(new NodeTransform(true));
  Matrix3Controller* before = transform->GetNodePRS();
  ScopedBlock<NotAController> impostor(new NotAController());
  const Status status = transform->SetNodePRS(impostor.get());
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(), "Node::SetNodePRS : The block is not a valid Controller.");
  EXPECT_EQ(transform->GetNodePRS(), before);
  EXPECT_EQ(impostor->GetParentBlock(), nullptr);
}

TEST(NodeTransformTest, SetNodePRSReportsARefusedCycle) {
  // A controller that hangs below the transform cannot become its own PRS's owner's PRS.
  Holder holder(new NodeTransform(false));
  auto* transform = dynamic_cast<NodeTransform*>(holder.Root()->GetDependency(0));
  auto* controller = new FixedMatrixController();
  ASSERT_TRUE(transform->SetNodePRS(controller).IsOk());
  auto* outer = new NodeTransform(false);
  ASSERT_TRUE(outer->SetParentTransform(transform).IsOk());
  // `outer` depends on `transform`; linking `outer` under `transform` would close a cycle.
  const Status status = transform->SetParentTransform(outer);
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(), "Block::MakeDependencyByID : Cyclic Dependency.");
  EXPECT_EQ(transform->GetParentTransform(), nullptr);
  outer->DeleteThisBlock(true);
}

TEST(NodeTransformTest, SetParentTransformLinksAndNullClearsTheLink) {
  ScopedBlock<NodeTransform> child(new NodeTransform(false));
  auto* parent = new NodeTransform(false);
  RecordingListener listener;
  parent->AddBlockListener(&listener);
  EXPECT_TRUE(child->SetParentTransform(parent).IsOk());
  EXPECT_EQ(child->GetParentTransform(), parent);
  EXPECT_EQ(child->GetDependency(1), parent);
  EXPECT_EQ(parent->GetParentBlock(), child.get());

  const Status cleared = child->SetParentTransform(nullptr);
  EXPECT_TRUE(cleared.IsOk());
  EXPECT_EQ(child->GetParentTransform(), nullptr);
  // The parent lost its only dependant and released itself.
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].code, 1);
}

TEST(NodeTransformTest, SetParentTransformOfAnotherClassFailsAndKeepsTheLink) {
  ScopedBlock<NodeTransform> child(new NodeTransform(false));
  auto* parent = new NodeTransform(false);
  ASSERT_TRUE(child->SetParentTransform(parent).IsOk());
  // A NodeTransform subclass that reports the class id of a node.
  class NotATransform : public NodeTransform {
   public:
    NotATransform() : NodeTransform(false) {}
    BlockType GetBlockType() const override { return BlockType(115, 16, 32); }
  };
  ScopedBlock<NotATransform> impostor(new NotATransform());
  const Status status = child->SetParentTransform(impostor.get());
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(),
            "NodeTransform::SetParentTransform : The block is not a valid NodeTransform.");
  EXPECT_EQ(child->GetParentTransform(), parent);
}

TEST(NodeTransformTest, AKeyChangeUnderTheControllerBecomesCode13FromTheTransform) {
  ScopedBlock<NodeTransform> transform(new NodeTransform(true));
  auto* prs = transform->GetNodePRS();
  auto* position = dynamic_cast<Point3Controller*>(prs->GetDependency(1));
  ASSERT_NE(position, nullptr);
  auto* x = dynamic_cast<BezierController*>(position->GetDependency(0));
  ASSERT_NE(x, nullptr);
  RecordingListener listener;
  transform->AddBlockListener(&listener);
  x->SetFloat(10, 4.0);
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].block, transform.get());
  EXPECT_EQ(listener.events[0].code, 13);
  EXPECT_EQ(listener.events[0].param, 0);
  transform->RemoveBlockListener(&listener);
}

TEST(NodeTransformTest, RelaysCode13OfTheControllerAndDropsItsOtherCodes) {
  ScopedBlock<NodeTransform> transform(new NodeTransform(false));
  auto* controller = new FixedMatrixController();
  ASSERT_TRUE(transform->SetNodePRS(controller).IsOk());
  RecordingListener listener;
  transform->AddBlockListener(&listener);
  for (int code : {0, 1, 2, 4, 5, 12, 13, 3, 14}) controller->PostEvent(code, 7);
  ASSERT_EQ(listener.events.size(), 2u);
  for (const BlockEvent& event : listener.events) {
    EXPECT_EQ(event.block, transform.get());
    EXPECT_EQ(event.code, 13);
    EXPECT_EQ(event.param, 0);
  }
  transform->RemoveBlockListener(&listener);
}

TEST(NodeTransformTest, PassesItsOwnCode12WithParameterZeroOnly) {
  Holder holder(new NodeTransform(false));
  auto* transform = dynamic_cast<NodeTransform*>(holder.Root()->GetDependency(0));
  RecordingListener listener;
  holder.Root()->AddBlockListener(&listener);
  transform->ProcessEvent(12, 0);
  transform->ProcessEvent(12, 1);
  transform->ProcessEvent(13, 0);
  transform->ProcessEvent(2, 0);
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].code, 12);
  EXPECT_EQ(listener.events[0].param, 0);
  holder.Root()->RemoveBlockListener(&listener);
}

TEST(NodeTransformTest, DropsEveryEventOfTheParentTransform) {
  ScopedBlock<NodeTransform> child(new NodeTransform(false));
  auto* parent = new NodeTransform(false);
  ASSERT_TRUE(child->SetParentTransform(parent).IsOk());
  auto* controller = new FixedMatrixController();
  RecordingListener listener;
  child->AddBlockListener(&listener);
  ASSERT_TRUE(parent->SetNodePRS(controller).IsOk());
  controller->PostEvent(3, 0);  // the parent posts code 13; its child transform drops it
  parent->PostEvent(12, 0);
  parent->PostEvent(3, 0);
  EXPECT_TRUE(listener.events.empty());
  child->RemoveBlockListener(&listener);
}

TEST(NodeTransformTest, LinkingItsSlotsPostsNothing) {
  ScopedBlock<NodeTransform> transform(new NodeTransform(false));
  RecordingListener listener;
  transform->AddBlockListener(&listener);
  ASSERT_TRUE(transform->SetNodePRS(new FixedMatrixController()).IsOk());
  ASSERT_TRUE(transform->SetParentTransform(new NodeTransform(false)).IsOk());
  ASSERT_TRUE(transform->SetParentTransform(nullptr).IsOk());
  EXPECT_TRUE(listener.events.empty());
  transform->RemoveBlockListener(&listener);
}

TEST(NodeTransformTest, CloneCopiesTheControllerAndTheWholeChainOfParents) {
  auto* grandparent = new NodeTransform(false);
  ASSERT_TRUE(
      grandparent->SetNodePRS(new FixedMatrixController(testing::Translation(3, 0, 0))).IsOk());
  auto* parent = new NodeTransform(true);
  ASSERT_TRUE(parent->SetParentTransform(grandparent).IsOk());
  ScopedBlock<NodeTransform> child(new NodeTransform(false));
  ASSERT_TRUE(child->SetParentTransform(parent).IsOk());
  ASSERT_TRUE(child->SetNodePRS(new FixedMatrixController(testing::Translation(1, 0, 0))).IsOk());

  ScopedBlock<Block> clone(child->Clone());
  auto* copy = dynamic_cast<NodeTransform*>(clone.get());
  ASSERT_NE(copy, nullptr);
  ASSERT_NE(copy->GetNodePRS(), nullptr);
  EXPECT_NE(copy->GetNodePRS(), child->GetNodePRS());
  testing::ExpectMatrixEq(copy->GetNodePRS()->GetMatrix3(0), testing::Translation(1, 0, 0));
  EXPECT_EQ(copy->GetNodePRS()->GetParentBlock(), copy);

  NodeTransform* parent_copy = copy->GetParentTransform();
  ASSERT_NE(parent_copy, nullptr);
  EXPECT_NE(parent_copy, parent);
  EXPECT_EQ(parent_copy->GetParentBlock(), copy);
  ASSERT_NE(parent_copy->GetNodePRS(), nullptr);
  EXPECT_NE(parent_copy->GetNodePRS(), parent->GetNodePRS());
  EXPECT_NE(dynamic_cast<Transform3Controller*>(parent_copy->GetNodePRS()), nullptr);

  NodeTransform* grandparent_copy = parent_copy->GetParentTransform();
  ASSERT_NE(grandparent_copy, nullptr);
  EXPECT_NE(grandparent_copy, grandparent);
  EXPECT_EQ(grandparent_copy->GetParentBlock(), parent_copy);
  testing::ExpectMatrixEq(grandparent_copy->GetNodePRS()->GetMatrix3(0),
                          testing::Translation(3, 0, 0));
  EXPECT_EQ(grandparent_copy->GetParentTransform(), nullptr);

  // The source chain is untouched.
  EXPECT_EQ(child->GetParentTransform(), parent);
  EXPECT_EQ(parent->GetParentTransform(), grandparent);
}

TEST(NodeTransformTest, CloneWithoutLinksIsAnEmptyTransform) {
  ScopedBlock<NodeTransform> transform(new NodeTransform(false));
  ScopedBlock<Block> clone(transform->Clone());
  auto* copy = dynamic_cast<NodeTransform*>(clone.get());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->GetNodePRS(), nullptr);
  EXPECT_EQ(copy->GetParentTransform(), nullptr);
}

class NodeTransformFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SceneEngine::DestroyFactories();
    RegisterBaseLibrary();
  }
  void TearDown() override { SceneEngine::DestroyFactories(); }
};

TEST_F(NodeTransformFileTest, WritesNoPayloadAndComesBackWithBothLinks) {
  auto* parent = new NodeTransform(true);
  ScopedBlock<NodeTransform> child(new NodeTransform(true));
  ASSERT_TRUE(child->SetParentTransform(parent).IsOk());
  dynamic_cast<Transform3Controller*>(parent->GetNodePRS())
      ->SetPosition(Point3<double>(4, 5, 6), 0);

  SceneSave save;
  EXPECT_EQ(child->Save(&save), 1);
  EXPECT_TRUE(save.TakeBytes().empty());

  ScopedBlock<Block> loaded(testing::LoadBlockGraph(testing::SaveBlockGraph(child.get())));
  auto* copy = dynamic_cast<NodeTransform*>(loaded.get());
  ASSERT_NE(copy, nullptr);
  ASSERT_NE(copy->GetNodePRS(), nullptr);
  ASSERT_NE(copy->GetParentTransform(), nullptr);
  ASSERT_NE(copy->GetParentTransform()->GetNodePRS(), nullptr);
  testing::ExpectMatrixEq(copy->GetParentTransform()->GetNodePRS()->GetMatrix3(0),
                          testing::Translation(4, 5, 6));
}

TEST_F(NodeTransformFileTest, FactoryPassesItsFlagToTheConstructor) {
  NodeTransformFactory factory;
  EXPECT_EQ(factory.GetName(), "NodeTransform");
  EXPECT_EQ(factory.GetBlockType().class_id, 110u);
  ScopedBlock<Block> empty(factory.GetBlock(false));
  ScopedBlock<Block> full(factory.GetBlock(true));
  EXPECT_EQ(empty->GetDependency(0), nullptr);
  EXPECT_NE(full->GetDependency(0), nullptr);
}

}  // namespace
}  // namespace Orlo
