#include <orlo/base/scene/node.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <orlo/base/block/block_table.h>
#include <orlo/base/controllers/bezier_controller.h>
#include <orlo/base/controllers/point3_controller.h>
#include <orlo/base/controllers/transform3_controller.h>
#include <orlo/base/data/data.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/base_library.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node_transform.h>

#include "tests/base/data/payload_bytes.h"
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
using testing::TestMaterial;
using testing::TestModifier;
using testing::TestObject;
using testing::TestObjectModifier;
using testing::TestTexture;
using testing::Translation;

// Detaches a listener from a block when the test ends.
class Listening {
 public:
  Listening(Block* block, RecordingListener* listener) : m_block(block), m_listener(listener) {
    m_block->AddBlockListener(m_listener);
  }
  Listening(const Listening&) = delete;
  Listening& operator=(const Listening&) = delete;
  ~Listening() { m_block->RemoveBlockListener(m_listener); }

 private:
  Block* m_block;
  RecordingListener* m_listener;
};

std::vector<int> Codes(const RecordingListener& listener) {
  std::vector<int> codes;
  for (const BlockEvent& event : listener.events) codes.push_back(event.code);
  return codes;
}

// ---- Identity, slots and defaults ----

TEST(NodeTest, ReportsItsIdentityAndSlotNames) {
  ScopedBlock<Node> node(new Node(false));
  EXPECT_EQ(node->GetClassName(), "Node");
  EXPECT_EQ(node->GetBlockType().class_id, 115u);
  EXPECT_EQ(node->GetBlockType().super_class_id, 16u);
  EXPECT_EQ(node->GetBlockType().sub_id, 32u);
  EXPECT_EQ(node->NumDependencies(), 5);
  const char* names[] = {"data_table", "object", "material", "children", "transform"};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(node->GetDependencyName(i), names[i]);
  EXPECT_EQ(node->GetDependencyName(5), "nil");
  EXPECT_EQ(node->GetDependencyName(-1), "nil");
  EXPECT_EQ(node->GetDependency(5), nullptr);
  EXPECT_EQ(node->GetDependency(-1), nullptr);
}

TEST(NodeTest, WithoutDefaultsEverySlotIsEmptyAndTheFieldsAreZero) {
  ScopedBlock<Node> node(new Node(false));
  for (int i = 0; i < 5; ++i) EXPECT_EQ(node->GetDependency(i), nullptr) << i;
  EXPECT_EQ(node->GetName(), "");
  EXPECT_EQ(node->GetNodeColor(), Color(0, 0, 0));
  EXPECT_FALSE(node->IsSelected());
  EXPECT_EQ(node->GetParent(), nullptr);
  EXPECT_EQ(node->GetNumChildren(), 0);
  EXPECT_EQ(node->GetChild(0), nullptr);
  EXPECT_EQ(node->GetObject(), nullptr);
  EXPECT_EQ(node->GetMaterial(), nullptr);
  EXPECT_EQ(node->GetNodeTransform(), nullptr);
  EXPECT_EQ(node->GetNodeTransformController(), nullptr);
  EXPECT_EQ(node->GetDataTable(), nullptr);
}

TEST(NodeTest, WithDefaultsLinksATableAChildrenTableAndATransform) {
  ScopedBlock<Node> node(new Node(true));
  ASSERT_NE(node->GetDataTable(), nullptr);
  ASSERT_NE(node->GetChildren(), nullptr);
  ASSERT_NE(node->GetNodeTransform(), nullptr);
  EXPECT_EQ(node->GetDependency(0), node->GetDataTable());
  EXPECT_EQ(node->GetDependency(3), node->GetChildren());
  EXPECT_EQ(node->GetDependency(4), node->GetNodeTransform());
  EXPECT_EQ(node->GetDependency(1), nullptr);
  EXPECT_EQ(node->GetDependency(2), nullptr);
  EXPECT_EQ(node->GetDataTable()->GetParentBlock(), node.get());
  EXPECT_EQ(node->GetChildren()->GetParentBlock(), node.get());
  EXPECT_EQ(node->GetNodeTransform()->GetParentBlock(), node.get());
  EXPECT_NE(dynamic_cast<Transform3Controller*>(node->GetNodeTransformController()), nullptr);
  EXPECT_EQ(node->GetNumChildren(), 0);
}

TEST(NodeTest, ANewNodeWithDefaultsHasTheDisplayDefaults) {
  ScopedBlock<Node> node(new Node(true));
  EXPECT_FALSE(node->GetHide());
  EXPECT_FALSE(node->GetFreeze());
  EXPECT_EQ(node->GetVisibility(0), 1.0);
  EXPECT_TRUE(node->GetRendereable());
  EXPECT_TRUE(node->GetReceiveShadows());
  EXPECT_TRUE(node->GetCastShadows());
}

TEST(NodeTest, TheDisplayParametersHaveTheirIdsNamesTypesAndSizes) {
  ScopedBlock<Node> node(new Node(true));
  DataTable* table = node->GetDataTable();
  ASSERT_EQ(table->GetNumDatas(), 6);
  const char* names[] = {"hide",       "freeze",          "visibility",
                         "renderable", "receive_shadows", "cast_shadows"};
  for (int id = 0; id < 6; ++id) {
    EXPECT_EQ(table->GetDataName(id), names[id]) << id;
    EXPECT_EQ(table->GetDataSize(id), 1) << id;
    EXPECT_EQ(table->GetDataType(id), id == 2 ? Data::kTypeFloat : Data::kTypeBool) << id;
  }
}

TEST(NodeTest, DisplaySettersWriteTheTableAndGettersReadIt) {
  ScopedBlock<Node> node(new Node(true));
  node->SetHide(true);
  node->SetFreeze(true);
  node->SetVisibility(0.25, 0);
  node->SetRenderable(false);
  node->SetReceiveShadows(false);
  node->SetCastShadows(false);
  DataTable* table = node->GetDataTable();
  EXPECT_TRUE(table->GetBool(0, 0, 0));
  EXPECT_TRUE(table->GetBool(1, 0, 0));
  EXPECT_EQ(table->GetFloat(2, 0, 0), 0.25);
  EXPECT_FALSE(table->GetBool(3, 0, 0));
  EXPECT_FALSE(table->GetBool(4, 0, 0));
  EXPECT_FALSE(table->GetBool(5, 0, 0));
  EXPECT_TRUE(node->GetHide());
  EXPECT_TRUE(node->GetFreeze());
  EXPECT_EQ(node->GetVisibility(0), 0.25);
  EXPECT_FALSE(node->GetRendereable());
  EXPECT_FALSE(node->GetReceiveShadows());
  EXPECT_FALSE(node->GetCastShadows());
}

TEST(NodeTest, VisibilityIsReadAndWrittenAtTheGivenTime) {
  ScopedBlock<Node> node(new Node(true));
  RecordingListener listener;
  Listening listening(node.get(), &listener);
  node->SetVisibility(0.75, 20);
  // The value itself is not keyed: every time reads what was stored last.
  EXPECT_EQ(node->GetVisibility(20), 0.75);
  EXPECT_EQ(node->GetVisibility(0), 0.75);
  EXPECT_EQ(Codes(listener), std::vector<int>({3}));
}

TEST(NodeTest, WithoutATableTheDisplayGettersFailQuietlyAndTheSettersDoNothing) {
  ScopedBlock<Node> node(new Node(false));
  node->SetHide(true);
  node->SetVisibility(0.5, 0);
  node->SetRenderable(true);
  EXPECT_FALSE(node->GetHide());
  EXPECT_FALSE(node->GetFreeze());
  EXPECT_EQ(node->GetVisibility(0), -1.0);
  EXPECT_FALSE(node->GetRendereable());
  EXPECT_FALSE(node->GetReceiveShadows());
  EXPECT_FALSE(node->GetCastShadows());
  EXPECT_EQ(node->GetDataTable(), nullptr);
}

TEST(NodeTest, UpdateDataTableAddsTheMissingParametersWhateverTheFlagAndKeepsExistingValues) {
  for (bool flag : {false, true}) {
    ScopedBlock<Node> node(new Node(false));
    auto* table = new DataTable(true);
    table->AddDataBool(Node::kFreezeID, true, 1);
    table->AddDataFloat(Node::kVisibilityID, 0.5, 1);
    ASSERT_TRUE(node->SetDataTable(table).IsOk());
    node->UpdateDataTable(flag);
    EXPECT_EQ(table->GetNumDatas(), 6);
    EXPECT_TRUE(node->GetFreeze());
    EXPECT_EQ(node->GetVisibility(0), 0.5);
    EXPECT_FALSE(node->GetHide());
    EXPECT_TRUE(node->GetCastShadows());
    EXPECT_EQ(table->GetDataName(Node::kFreezeID), "freeze");
    EXPECT_EQ(table->GetDataName(Node::kCastShadowsID), "cast_shadows");
  }
}

TEST(NodeTest, UpdateDataTableWithoutATableDoesNothing) {
  ScopedBlock<Node> node(new Node(false));
  node->UpdateDataTable(true);
  EXPECT_EQ(node->GetDependency(0), nullptr);
}

TEST(NodeTest, FactoryPassesItsFlagToTheConstructor) {
  NodeFactory factory;
  EXPECT_EQ(factory.GetName(), "Node");
  EXPECT_EQ(factory.GetBlockType().class_id, 115u);
  EXPECT_EQ(factory.GetBlockType().sub_id, 32u);
  ScopedBlock<Block> empty(factory.GetBlock(false));
  ScopedBlock<Block> full(factory.GetBlock(true));
  for (int i = 0; i < 5; ++i) EXPECT_EQ(empty->GetDependency(i), nullptr);
  EXPECT_NE(full->GetDependency(0), nullptr);
  EXPECT_NE(full->GetDependency(3), nullptr);
  EXPECT_NE(full->GetDependency(4), nullptr);
}

TEST(NodeTest, CarriesHostFlagsSelectionAndColour) {
  ScopedBlock<Node> node(new Node(false));
  EXPECT_EQ(node->GetFlags(), 0u);
  node->SetFlag(0x5);
  EXPECT_TRUE(node->TestFlag(0x4));
  node->ClearFlag(0x4);
  EXPECT_FALSE(node->TestFlag(0x4));
  node->SetFlag(0x1, false);
  EXPECT_EQ(node->GetFlags(), 0u);
  node->SetFlags(0x80);
  EXPECT_EQ(node->GetFlags(), 0x80u);
  node->SetSelected(true);
  EXPECT_TRUE(node->IsSelected());
  node->SetNodeColor(Color(0.5f, 0.25f, 1.0f));
  EXPECT_EQ(node->GetNodeColor(), Color(0.5f, 0.25f, 1.0f));
}

// ---- Names and events ----

TEST(NodeTest, SetNamePostsCode3WithParameterZero) {
  ScopedBlock<Node> node(new Node(true));
  RecordingListener listener;
  Listening listening(node.get(), &listener);
  node->SetName("Box01");
  EXPECT_EQ(node->GetName(), "Box01");
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].block, node.get());
  EXPECT_EQ(listener.events[0].code, 3);
  EXPECT_EQ(listener.events[0].param, 0);
}

TEST(NodeTest, ChangingFreezePostsCode3FromTheNodeToItsListeners) {
  ScopedBlock<Node> node(new Node(true));
  RecordingListener listener;
  Listening listening(node.get(), &listener);
  node->SetFreeze(true);
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].block, node.get());
  EXPECT_EQ(listener.events[0].code, 3);
  EXPECT_EQ(listener.events[0].param, 0);
}

TEST(NodeTest, EveryDisplaySetterPostsOneCode3) {
  ScopedBlock<Node> node(new Node(true));
  RecordingListener listener;
  Listening listening(node.get(), &listener);
  node->SetHide(true);
  node->SetVisibility(0.5, 0);
  node->SetRenderable(false);
  node->SetReceiveShadows(false);
  node->SetCastShadows(false);
  EXPECT_EQ(Codes(listener), std::vector<int>({3, 3, 3, 3, 3}));
}

TEST(NodeTest, AnyCodeFromTheTableBecomesCode3) {
  ScopedBlock<Node> node(new Node(true));
  RecordingListener listener;
  Listening listening(node.get(), &listener);
  for (int code : {0, 1, 2, 7, 42}) node->GetDataTable()->PostEvent(code, 9);
  EXPECT_EQ(Codes(listener), std::vector<int>({3, 3, 3, 3, 3}));
  for (const BlockEvent& event : listener.events) {
    EXPECT_EQ(event.block, node.get());
    EXPECT_EQ(event.param, 0);
  }
}

TEST(NodeTest, TransformCodesPassWithTheirOwnCodeAndOthersAreDropped) {
  ScopedBlock<Node> node(new Node(true));
  RecordingListener listener;
  Listening listening(node.get(), &listener);
  for (int code = 0; code <= 20; ++code) node->GetNodeTransform()->PostEvent(code, 5);
  EXPECT_EQ(Codes(listener), std::vector<int>({4, 5, 6, 7, 12, 13}));
  for (const BlockEvent& event : listener.events) {
    EXPECT_EQ(event.block, node.get());
    EXPECT_EQ(event.param, 0);
  }
}

TEST(NodeTest, AKeyChangeOfTheTransformReachesTheNodeAsCode13) {
  ScopedBlock<Node> node(new Node(true));
  RecordingListener listener;
  Listening listening(node.get(), &listener);
  node->GetNodeTransformController()->SetPosition(Point3<double>(1, 0, 0), 0);
  ASSERT_FALSE(listener.events.empty());
  for (const BlockEvent& event : listener.events) {
    EXPECT_EQ(event.block, node.get());
    EXPECT_EQ(event.code, 13);
  }
}

TEST(NodeTest, OnlyCode9PassesFromTheObject) {
  ScopedBlock<Node> node(new Node(true));
  auto* object = new TestObject();
  ASSERT_TRUE(node->SetObject(object).IsOk());
  RecordingListener listener;
  Listening listening(node.get(), &listener);
  for (int code = 0; code <= 20; ++code) object->PostEvent(code, 5);
  EXPECT_EQ(Codes(listener), std::vector<int>({9}));
  EXPECT_EQ(listener.events[0].block, node.get());
  EXPECT_EQ(listener.events[0].param, 0);
}

TEST(NodeTest, MaterialCodesAreTranslated) {
  ScopedBlock<Node> node(new Node(true));
  auto* material = new TestMaterial();
  ASSERT_TRUE(node->SetMaterial(material).IsOk());
  RecordingListener listener;
  Listening listening(node.get(), &listener);
  for (int code = 0; code <= 21; ++code) material->PostEvent(code, 5);
  EXPECT_EQ(Codes(listener), std::vector<int>({19, 16, 19, 20}));
  for (const BlockEvent& event : listener.events) {
    EXPECT_EQ(event.block, node.get());
    EXPECT_EQ(event.param, 0);
  }
}

TEST(NodeTest, SlotChangesPostCode8ForTheObjectAnd18ForTheMaterialOnly) {
  ScopedBlock<Node> node(new Node(true));
  RecordingListener listener;
  Listening listening(node.get(), &listener);
  ASSERT_TRUE(node->SetObject(new TestObject()).IsOk());
  ASSERT_TRUE(node->SetMaterial(new TestMaterial()).IsOk());
  ASSERT_TRUE(node->SetNodeTransform(new NodeTransform(false)).IsOk());
  ASSERT_TRUE(node->SetDataTable(new DataTable(true)).IsOk());
  ASSERT_TRUE(node->SetObject(nullptr).IsOk());
  ASSERT_TRUE(node->SetMaterial(nullptr).IsOk());
  EXPECT_EQ(Codes(listener), std::vector<int>({8, 18, 8, 18}));
  for (const BlockEvent& event : listener.events) {
    EXPECT_EQ(event.block, node.get());
    EXPECT_EQ(event.param, 0);
  }
}

TEST(NodeTest, EventsOfOtherBlocksAndOfTheChildrenTableStopAtTheNode) {
  ScopedBlock<Node> node(new Node(true));
  RecordingListener listener;
  Listening listening(node.get(), &listener);
  node->GetChildren()->PostEvent(2, 0);
  node->ProcessEvent(BlockEvent(nullptr, 3, 0));
  TestBlock stranger("stranger");
  node->ProcessEvent(BlockEvent(&stranger, 3, 0));
  node->ProcessEvent(2, 0);  // its own slot 0
  node->ProcessEvent(3, 1);  // its own code other than 2
  EXPECT_TRUE(listener.events.empty());
}

TEST(NodeTest, TranslatedEventsClimbToTheBlocksAboveTheNode) {
  Holder holder(new Node(true));
  auto* node = dynamic_cast<Node*>(holder.Root()->GetDependency(0));
  RecordingListener listener;
  Listening listening(holder.Root(), &listener);
  node->SetFreeze(true);
  node->GetNodeTransform()->PostEvent(13, 0);
  ASSERT_EQ(Codes(listener), std::vector<int>({3, 13}));
  for (const BlockEvent& event : listener.events) EXPECT_EQ(event.block, holder.Root());
}

// ---- Typed setters ----

TEST(NodeTest, SetObjectRefusesABlockThatIsNotAnObject) {
  ScopedBlock<Node> node(new Node(true));
  auto* kept = new TestObject("kept");
  ASSERT_TRUE(node->SetObject(kept).IsOk());
  ScopedBlock<TestObject> modifier_like(new TestObject("m", BlockType(800, 1, 1)));
  const Status status = node->SetObject(modifier_like.get());
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(), "Node::SetObject : The block is not a valid object.");
  EXPECT_EQ(node->GetObject(), kept);
}

TEST(NodeTest, SetObjectOfNullEmptiesTheSlotAndReleasesTheObject) {
  ScopedBlock<Node> node(new Node(true));
  auto* object = new TestObject();
  ASSERT_TRUE(node->SetObject(object).IsOk());
  EXPECT_EQ(object->GetParentBlock(), node.get());
  RecordingListener listener;
  object->AddBlockListener(&listener);
  EXPECT_TRUE(node->SetObject(nullptr).IsOk());
  EXPECT_EQ(node->GetDependency(1), nullptr);
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].code, 1);
}

TEST(NodeTest, SetObjectReportsARefusedCycle) {
  Holder holder(new Node(true));
  auto* node = dynamic_cast<Node*>(holder.Root()->GetDependency(0));
  // A stack that holds the node (through a raw link of its modifier slot) may not become the
  // node's object.
  ScopedBlock<TestObjectModifier> stack(new TestObjectModifier());
  ASSERT_TRUE(stack->MakeDependencyByID(0, node).IsOk());
  const Status status = node->SetObject(stack.get());
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(), "Block::MakeDependencyByID : Cyclic Dependency.");
  EXPECT_EQ(node->GetObject(), nullptr);
}

TEST(NodeTest, SetMaterialTakesAMaterialAndRefusesATexture) {
  ScopedBlock<Node> node(new Node(true));
  auto* material = new TestMaterial();
  EXPECT_TRUE(node->SetMaterial(material).IsOk());
  EXPECT_EQ(node->GetMaterial(), material);
  ScopedBlock<TestTexture> texture(new TestTexture());
  const Status status = node->SetMaterial(texture.get());
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(), "Node::SetMaterial : The block is not a valid material.");
  EXPECT_EQ(node->GetMaterial(), material);
  EXPECT_TRUE(node->SetMaterial(nullptr).IsOk());
  EXPECT_EQ(node->GetMaterial(), nullptr);
}

TEST(NodeTest, SetNodeTransformRefusesAnotherClass) {
  ScopedBlock<Node> node(new Node(true));
  NodeTransform* kept = node->GetNodeTransform();
  class NotATransform : public NodeTransform {
   public:
    NotATransform() : NodeTransform(false) {}
    BlockType GetBlockType() const override { return BlockType(300, 1, 1); }
  };
  ScopedBlock<NotATransform> impostor(new NotATransform());
  const Status status = node->SetNodeTransform(impostor.get());
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(),
            "Node::SetNodeTransform : The block is not a valid NodeTransform.");
  EXPECT_EQ(node->GetNodeTransform(), kept);
  auto* replacement = new NodeTransform(false);
  EXPECT_TRUE(node->SetNodeTransform(replacement).IsOk());
  EXPECT_EQ(node->GetNodeTransform(), replacement);
  EXPECT_TRUE(node->SetNodeTransform(nullptr).IsOk());
  EXPECT_EQ(node->GetNodeTransform(), nullptr);
}

TEST(NodeTest, SetDataTableRefusesAnotherClassAndKeepsTheOldTable) {
  ScopedBlock<Node> node(new Node(true));
  DataTable* kept = node->GetDataTable();
  class NotATable : public DataTable {
   public:
    BlockType GetBlockType() const override { return BlockType(115, 16, 32); }
  };
  ScopedBlock<NotATable> impostor(new NotATable());
  const Status status = node->SetDataTable(impostor.get());
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(), "Node::SetDataTable : The block is not a valid data_table.");
  EXPECT_EQ(node->GetDataTable(), kept);
  EXPECT_TRUE(node->SetDataTable(nullptr).IsOk());
  EXPECT_EQ(node->GetDataTable(), nullptr);
}

TEST(NodeTest, SetDataTableReportsSuccessForARefusedCycle) {
  Node* node = new Node(false);
  ScopedBlock<DataTable> table(new DataTable(true));
  ASSERT_TRUE(table->AddDataBool(0, false, 1));
  // The table holds the node, so the node may not hold the table.
  ASSERT_TRUE(table->MakeDependencyByID(0, node).IsOk());
  const Status status = node->SetDataTable(table.get());
  EXPECT_TRUE(status.IsOk());
  EXPECT_EQ(node->GetDataTable(), nullptr);
}

TEST(NodeTest, SetNodeTransformControllerReplacesTheController) {
  ScopedBlock<Node> node(new Node(true));
  auto* controller = new FixedMatrixController(Translation(1, 2, 3));
  EXPECT_TRUE(node->SetNodeTransformController(controller).IsOk());
  EXPECT_EQ(node->GetNodeTransformController(), controller);
  EXPECT_EQ(node->GetNodeTransform()->GetNodePRS(), controller);
}

TEST(NodeTest, SetNodeTransformControllerRefusesABlockThatIsNotAController) {
  ScopedBlock<Node> node(new Node(true));
  Matrix3Controller* kept = node->GetNodeTransformController();
  class NotAController : public FixedMatrixController {
   public:
    BlockType GetBlockType() const override { return BlockType(200, 1, 1); }
  };
  ScopedBlock<NotAController> impostor(new NotAController());
  const Status status = node->SetNodeTransformController(impostor.get());
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(),
            "Node::SetNodeTransformController : The block is not a valid Matrix3Controller.");
  EXPECT_EQ(node->GetNodeTransformController(), kept);
}

TEST(NodeTest, SetNodeTransformControllerWithoutATransformFails) {
  ScopedBlock<Node> node(new Node(false));
  ScopedBlock<FixedMatrixController> controller(new FixedMatrixController());
  const Status status = node->SetNodeTransformController(controller.get());
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(),
            "Node::SetNodeTransformController : m_node_transform is not initialiced.");
}

TEST(NodeTest, SetNodeTransformControllerOfNullGivesTheTransformsRefusal) {
  ScopedBlock<Node> node(new Node(true));
  const Status status = node->SetNodeTransformController(nullptr);
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(), "Node::SetNodePRS : The block is not a valid Controller.");
  EXPECT_NE(node->GetNodeTransformController(), nullptr);
}

// ---- Children ----

TEST(NodeTest, AddChildOfNullFails) {
  ScopedBlock<Node> node(new Node(true));
  const Status status = node->AddChild(nullptr);
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(), "Node::AddChild : child_node parameter is not valid.");
}

TEST(NodeTest, AddChildLinksTheChildItsTransformAndItsParentPointerAndPostsCode2) {
  ScopedBlock<Node> parent(new Node(true));
  auto* child = new Node(true);
  RecordingListener parent_listener;
  RecordingListener child_listener;
  Listening listening_parent(parent.get(), &parent_listener);
  Listening listening_child(child, &child_listener);
  EXPECT_TRUE(parent->AddChild(child).IsOk());
  EXPECT_EQ(parent->GetNumChildren(), 1);
  EXPECT_EQ(parent->GetChild(0), child);
  EXPECT_TRUE(parent->IsChild(child));
  EXPECT_EQ(child->GetParent(), parent.get());
  EXPECT_EQ(child->GetParentBlock(), parent->GetChildren());
  EXPECT_EQ(child->GetNodeTransform()->GetParentTransform(), parent->GetNodeTransform());
  ASSERT_EQ(parent_listener.events.size(), 1u);
  EXPECT_EQ(parent_listener.events[0].block, parent.get());
  EXPECT_EQ(parent_listener.events[0].code, 2);
  EXPECT_EQ(parent_listener.events[0].param, 0);
  EXPECT_TRUE(child_listener.events.empty());
}

TEST(NodeTest, AddChildOfAChildAlreadyThereSucceedsAndPostsNothing) {
  ScopedBlock<Node> parent(new Node(true));
  auto* child = new Node(true);
  ASSERT_TRUE(parent->AddChild(child).IsOk());
  RecordingListener listener;
  Listening listening(parent.get(), &listener);
  EXPECT_TRUE(parent->AddChild(child).IsOk());
  EXPECT_EQ(parent->GetNumChildren(), 1);
  EXPECT_TRUE(listener.events.empty());
}

TEST(NodeTest, AddChildOfItsOwnParentIsRefused) {
  ScopedBlock<Node> parent(new Node(true));
  auto* child = new Node(true);
  ASSERT_TRUE(parent->AddChild(child).IsOk());
  const Status status = child->AddChild(parent.get());
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(), "Node::AddChild : This node is a dependency of the child node.");
  EXPECT_EQ(child->GetNumChildren(), 0);
  EXPECT_EQ(parent->GetParent(), nullptr);
  const Status self = parent->AddChild(parent.get());
  EXPECT_EQ(self.GetCode(), 2);
  EXPECT_EQ(self.GetMessage(), "Node::AddChild : This node is a dependency of the child node.");
}

TEST(NodeTest, AddChildIsRefusedWhenTheChildsTransformHangsBelowThisNodesTransform) {
  ScopedBlock<Node> node(new Node(true));
  ScopedBlock<Node> other(new Node(true));
  // The node's transform takes the other node's transform as its parent, so the other node's
  // transform may not take the node's transform as its own parent.
  ASSERT_TRUE(node->GetNodeTransform()->SetParentTransform(other->GetNodeTransform()).IsOk());
  RecordingListener listener;
  Listening listening(node.get(), &listener);
  const Status status = node->AddChild(other.get());
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(),
            "Node::AddChild : The child_node_transform is a dependency of this node's "
            "m_node_transform.");
  EXPECT_EQ(node->GetNumChildren(), 0);
  EXPECT_EQ(other->GetParent(), nullptr);
  EXPECT_TRUE(listener.events.empty());
}

TEST(NodeTest, AddChildIsRefusedWhenBothNodesShareOneTransform) {
  ScopedBlock<Node> node(new Node(true));
  ScopedBlock<Node> other(new Node(false));
  ASSERT_TRUE(other->SetNodeTransform(node->GetNodeTransform()).IsOk());
  const Status status = node->AddChild(other.get());
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(),
            "Node::AddChild : The child_node_transform is a dependency of this node's "
            "m_node_transform.");
}

TEST(NodeTest, MovingAChildWithAddChildLeavesItOnlyInTheNewParent) {
  ScopedBlock<Node> first(new Node(true));
  ScopedBlock<Node> second(new Node(true));
  auto* child = new Node(true);
  ASSERT_TRUE(first->AddChild(child).IsOk());
  RecordingListener first_listener;
  Listening listening(first.get(), &first_listener);
  RecordingListener deleted;
  child->AddBlockListener(&deleted);
  EXPECT_TRUE(second->AddChild(child).IsOk());
  EXPECT_EQ(first->GetNumChildren(), 0);
  EXPECT_FALSE(first->IsChild(child));
  EXPECT_EQ(second->GetNumChildren(), 1);
  EXPECT_EQ(second->GetChild(0), child);
  EXPECT_EQ(child->GetParent(), second.get());
  EXPECT_EQ(child->GetNodeTransform()->GetParentTransform(), second->GetNodeTransform());
  std::vector<Block*> dependants;
  child->GetDependants(dependants);
  EXPECT_EQ(dependants, std::vector<Block*>({second->GetChildren()}));
  EXPECT_TRUE(deleted.events.empty());         // the child survived the move
  EXPECT_TRUE(first_listener.events.empty());  // the erase stops at the old parent's table
  child->RemoveBlockListener(&deleted);
}

TEST(NodeTest, AddChildGivesANodeWithoutAChildrenTableANewOne) {
  ScopedBlock<Node> parent(new Node(false));
  auto* child = new Node(false);
  EXPECT_TRUE(parent->AddChild(child).IsOk());
  ASSERT_NE(parent->GetChildren(), nullptr);
  EXPECT_EQ(parent->GetChild(0), child);
  EXPECT_EQ(child->GetParent(), parent.get());
}

TEST(NodeTest, AChildWithATransformUnderAParentWithoutOneLosesItsParentTransform) {
  ScopedBlock<Node> parent(new Node(false));
  ScopedBlock<Node> grandparent(new Node(true));
  auto* child = new Node(true);
  ASSERT_TRUE(grandparent->AddChild(child).IsOk());
  ASSERT_NE(child->GetNodeTransform()->GetParentTransform(), nullptr);
  EXPECT_TRUE(parent->AddChild(child).IsOk());
  EXPECT_EQ(child->GetNodeTransform()->GetParentTransform(), nullptr);
  EXPECT_EQ(child->GetParent(), parent.get());
}

TEST(NodeTest, RemoveChildReleasesTheChildAndClearsItsParentPointer) {
  ScopedBlock<Node> parent(new Node(true));
  auto* child = new Node(true);
  auto* kept = new Node(true);
  ASSERT_TRUE(parent->AddChild(child).IsOk());
  ASSERT_TRUE(parent->AddChild(kept).IsOk());
  Holder holder(kept);  // something else holds this one
  RecordingListener deleted;
  child->AddBlockListener(&deleted);
  EXPECT_TRUE(parent->RemoveChild(child).IsOk());
  ASSERT_EQ(deleted.events.size(), 1u);  // deleted: nothing else held it
  EXPECT_EQ(deleted.events[0].code, 1);
  EXPECT_EQ(parent->GetNumChildren(), 1);
  EXPECT_TRUE(parent->RemoveChild(kept).IsOk());
  EXPECT_EQ(kept->GetParent(), nullptr);
  EXPECT_EQ(parent->GetNumChildren(), 0);
}

TEST(NodeTest, RemoveChildOfANodeThatIsNotAChildFails) {
  ScopedBlock<Node> parent(new Node(true));
  ScopedBlock<Node> stranger(new Node(true));
  for (Node* child : {stranger.get(), static_cast<Node*>(nullptr)}) {
    const Status status = parent->RemoveChild(child);
    EXPECT_EQ(status.GetCode(), 1);
    EXPECT_EQ(status.GetMessage(),
              "Node::RemoveChild : The child_node was not a child of this node.");
  }
  ScopedBlock<Node> bare(new Node(false));
  EXPECT_EQ(bare->RemoveChild(stranger.get()).GetCode(), 1);
}

TEST(NodeTest, RemoveChildKeepsAParentPointerThatNamesAnotherNode) {
  ScopedBlock<Node> parent(new Node(true));
  ScopedBlock<Node> other(new Node(true));
  auto* child = new Node(true);
  ASSERT_TRUE(parent->AddChild(child).IsOk());
  other->GetChildren()->PushBack(child);  // in a second table behind the parent's back
  EXPECT_TRUE(other->RemoveChild(child).IsOk());
  EXPECT_EQ(child->GetParent(), parent.get());
  EXPECT_TRUE(parent->IsChild(child));
}

TEST(NodeTest, RemoveChildErasesOnlyTheFirstEntry) {
  ScopedBlock<Node> parent(new Node(true));
  auto* child = new Node(true);
  ASSERT_TRUE(parent->AddChild(child).IsOk());
  parent->GetChildren()->PushBack(child);
  ASSERT_EQ(parent->GetNumChildren(), 2);
  EXPECT_TRUE(parent->RemoveChild(child).IsOk());
  EXPECT_EQ(parent->GetNumChildren(), 1);
  EXPECT_EQ(parent->GetChild(0), child);
}

TEST(NodeTest, GetChildOutOfRangeOrOfAnotherClassIsNull) {
  ScopedBlock<Node> parent(new Node(true));
  ASSERT_TRUE(parent->AddChild(new Node(true)).IsOk());
  parent->GetChildren()->PushBack(new TestBlock("not a node"));
  EXPECT_EQ(parent->GetNumChildren(), 2);
  EXPECT_NE(parent->GetChild(0), nullptr);
  EXPECT_EQ(parent->GetChild(1), nullptr);
  EXPECT_EQ(parent->GetChild(2), nullptr);
  EXPECT_EQ(parent->GetChild(-1), nullptr);
  EXPECT_FALSE(parent->IsChild(nullptr));
}

TEST(NodeTest, GetDecendantsListsEveryNodeBelowInPreOrderAndAppends) {
  ScopedBlock<Node> root(new Node(true));
  auto* a = new Node(true);
  auto* b = new Node(true);
  auto* a1 = new Node(true);
  auto* a2 = new Node(true);
  auto* a1x = new Node(true);
  ASSERT_TRUE(root->AddChild(a).IsOk());
  ASSERT_TRUE(root->AddChild(b).IsOk());
  ASSERT_TRUE(a->AddChild(a1).IsOk());
  ASSERT_TRUE(a->AddChild(a2).IsOk());
  ASSERT_TRUE(a1->AddChild(a1x).IsOk());
  std::vector<Node*> out{nullptr};
  root->GetDecendants(out);
  EXPECT_EQ(out, std::vector<Node*>({nullptr, a, a1, a1x, a2, b}));
  std::vector<Node*> leaf;
  b->GetDecendants(leaf);
  EXPECT_TRUE(leaf.empty());
}

// ---- Aiming ----

// A stand-in with the look-at controller's type and slots: table, transform, aim, up.
class LookAtLikeController : public FixedMatrixController {
 public:
  explicit LookAtLikeController(BlockType type = BlockType(300, 48, 64)) : m_type(type) {}
  BlockType GetBlockType() const override { return m_type; }
  int NumDependencies() const override { return 4; }
  void SetDependency(int index, Block* block) override {
    if (index >= 0 && index < 4) m_slots[index] = block;
  }
  Block* GetDependency(int index) const override {
    return index >= 0 && index < 4 ? m_slots[index] : nullptr;
  }

 private:
  BlockType m_type;
  Block* m_slots[4] = {};
};

TEST(NodeTest, TheLookAtNodesAreTheLookAtControllersAimAndUpSlots) {
  ScopedBlock<Node> scene(new Node(true));
  auto* camera = new Node(true);
  auto* aim = new Node(true);
  auto* up = new Node(true);
  for (Node* node : {camera, aim, up}) ASSERT_TRUE(scene->AddChild(node).IsOk());
  auto* controller = new LookAtLikeController();
  ASSERT_TRUE(camera->SetNodeTransformController(controller).IsOk());
  EXPECT_TRUE(camera->SetLookAtAimNode(aim).IsOk());
  EXPECT_TRUE(camera->SetLookAtUpNode(up).IsOk());
  EXPECT_EQ(controller->GetDependency(2), aim);
  EXPECT_EQ(controller->GetDependency(3), up);
  EXPECT_EQ(camera->GetLookAtAimNode(), aim);
  EXPECT_EQ(camera->GetLookAtUpNode(), up);
  std::vector<Block*> dependants;
  aim->GetDependants(dependants);
  EXPECT_EQ(dependants.back(), controller);
  EXPECT_TRUE(camera->SetLookAtAimNode(nullptr).IsOk());
  EXPECT_EQ(camera->GetLookAtAimNode(), nullptr);
}

TEST(NodeTest, TheLookAtNodesOfAnotherControllerAreNullAndSettingThemDoesNothing) {
  ScopedBlock<Node> node(new Node(true));
  ScopedBlock<Node> aim(new Node(true));
  EXPECT_TRUE(node->SetLookAtAimNode(aim.get()).IsOk());
  EXPECT_TRUE(node->SetLookAtUpNode(aim.get()).IsOk());
  EXPECT_EQ(node->GetLookAtAimNode(), nullptr);
  EXPECT_EQ(node->GetLookAtUpNode(), nullptr);
  EXPECT_EQ(aim->GetParentBlock(), nullptr);
  // Another sub id of the controller kind is not a look-at controller either.
  auto* other = new LookAtLikeController(BlockType(300, 48, 65));
  ASSERT_TRUE(node->SetNodeTransformController(other).IsOk());
  EXPECT_TRUE(node->SetLookAtAimNode(aim.get()).IsOk());
  EXPECT_EQ(other->GetDependency(2), nullptr);
  EXPECT_EQ(node->GetLookAtAimNode(), nullptr);
}

TEST(NodeTest, SettingTheLookAtNodesWithoutATransformSucceedsAndDoesNothing) {
  ScopedBlock<Node> node(new Node(false));
  ScopedBlock<Node> aim(new Node(true));
  EXPECT_TRUE(node->SetLookAtAimNode(aim.get()).IsOk());
  EXPECT_TRUE(node->SetLookAtUpNode(aim.get()).IsOk());
  EXPECT_EQ(aim->GetParentBlock(), nullptr);
}

// ---- Matrices ----

TEST(NodeTest, GetAbsoluteTMOfANodeWithoutTransformOrParentIsTheIdentity) {
  ScopedBlock<Node> node(new Node(false));
  testing::ExpectMatrixEq(node->GetAbsoluteTM(0), Matrix3<double>::Identity());
}

TEST(NodeTest, GetAbsoluteTMPutsTheNodesOwnMatrixOnTheLeftOfItsParents) {
  ScopedBlock<Node> parent(new Node(true));
  auto* child = new Node(true);
  ASSERT_TRUE(parent->AddChild(child).IsOk());
  Matrix3<double> rotation;
  rotation.FromEulerAnglesXYZ(0.0, 0.0, 1.5707963267948966);
  ASSERT_TRUE(parent->SetNodeTransformController(new FixedMatrixController(rotation)).IsOk());
  ASSERT_TRUE(
      child->SetNodeTransformController(new FixedMatrixController(Translation(1, 0, 0))).IsOk());
  const Matrix3<double> absolute = child->GetAbsoluteTM(0);
  testing::ExpectMatrixEq(absolute, Translation(1, 0, 0) * rotation);
  // The child's origin: moved along x, then turned a quarter about z onto y.
  EXPECT_NEAR(absolute.m[3][0], 0.0, 1e-15);
  EXPECT_NEAR(absolute.m[3][1], 1.0, 1e-15);
}

TEST(NodeTest, GetAbsoluteTMFollowsParentNodesNotParentTransforms) {
  ScopedBlock<Node> parent(new Node(false));
  auto* child = new Node(false);
  ASSERT_TRUE(parent->AddChild(child).IsOk());
  auto* child_transform = new NodeTransform(false);
  ASSERT_TRUE(child->SetNodeTransform(child_transform).IsOk());
  ASSERT_TRUE(child_transform->SetNodePRS(new FixedMatrixController(Translation(0, 1, 0))).IsOk());
  // A parent transform the node hierarchy does not know of contributes nothing.
  auto* stray = new NodeTransform(false);
  ASSERT_TRUE(stray->SetNodePRS(new FixedMatrixController(Translation(50, 0, 0))).IsOk());
  ASSERT_TRUE(child_transform->SetParentTransform(stray).IsOk());
  testing::ExpectMatrixEq(child->GetAbsoluteTM(0), Translation(0, 1, 0));
}

TEST(NodeTest, GetAbsoluteTMEvaluatesEveryControllerAtTheGivenTime) {
  ScopedBlock<Node> parent(new Node(true));
  auto* child = new Node(true);
  ASSERT_TRUE(parent->AddChild(child).IsOk());
  // A scale without keys is (1, 1, 1) at time 0 only, so both nodes are keyed at time 10 too.
  for (Node* node : {parent.get(), child}) {
    node->GetNodeTransformController()->SetScale(Point3<double>(1, 1, 1), 10);
  }
  parent->GetNodeTransformController()->SetPosition(Point3<double>(10, 0, 0), 10);
  child->GetNodeTransformController()->SetPosition(Point3<double>(0, 2, 0), 10);
  testing::ExpectMatrixNear(child->GetAbsoluteTM(10), Translation(10, 2, 0), 1e-12);
  testing::ExpectMatrixNear(child->GetAbsoluteTM(0), Translation(0, 0, 0), 1e-12);
}

TEST(NodeTest, SetAbsoluteTMMakesTheMatrixTheLocalTransform) {
  ScopedBlock<Node> parent(new Node(true));
  auto* child = new Node(true);
  ASSERT_TRUE(parent->AddChild(child).IsOk());
  parent->GetNodeTransformController()->SetPosition(Point3<double>(5, 0, 0), 0);
  RecordingListener listener;
  Listening listening(child, &listener);
  child->SetAbsoluteTM(Translation(1, 2, 3), 0);
  testing::ExpectMatrixNear(child->GetNodeTransformController()->GetMatrix3(0),
                            Translation(1, 2, 3), 1e-12);
  // The parent's matrix is not factored out.
  testing::ExpectMatrixNear(child->GetAbsoluteTM(0), Translation(6, 2, 3), 1e-12);
  ASSERT_FALSE(listener.events.empty());
  for (const BlockEvent& event : listener.events) EXPECT_EQ(event.code, 13);
}

// ---- The object chain ----

// node -> top (applies m1) -> lower (applies m2) -> base
struct Chain {
  Chain() : node(new Node(true)) {
    top = new TestObjectModifier();
    lower = new TestObjectModifier();
    base = new TestObject("base");
    base->built = base;
    m1 = new TestModifier();
    m2 = new TestModifier();
    EXPECT_TRUE(top->SetModifier(m1).IsOk());
    EXPECT_TRUE(top->SetObjectToModify(lower).IsOk());
    EXPECT_TRUE(lower->SetModifier(m2).IsOk());
    EXPECT_TRUE(lower->SetObjectToModify(base).IsOk());
    EXPECT_TRUE(node->SetObject(top).IsOk());
  }
  ScopedBlock<Node> node;
  TestObjectModifier* top;
  TestObjectModifier* lower;
  TestObject* base;
  TestModifier* m1;
  TestModifier* m2;
};

TEST(NodeTest, BuildAndUnbuildPassTheNodeToTheObject) {
  ScopedBlock<Node> node(new Node(true));
  EXPECT_EQ(node->BuildObject(0), nullptr);
  EXPECT_EQ(node->UnbuildObject(0), nullptr);
  auto* object = new TestObject();
  object->built = object;
  ASSERT_TRUE(node->SetObject(object).IsOk());
  EXPECT_EQ(node->BuildObject(7), object);
  EXPECT_EQ(object->last_node, node.get());
  EXPECT_EQ(object->last_time, 7);
  EXPECT_EQ(node->UnbuildObject(9), nullptr);
  EXPECT_EQ(object->unbuilds, 1);
  EXPECT_EQ(object->last_time, 9);
}

TEST(NodeTest, GetBaseObjectWalksDownTheObjectModifiers) {
  Chain chain;
  EXPECT_EQ(chain.node->GetBaseObject(), chain.base);
  ScopedBlock<Node> empty(new Node(true));
  EXPECT_EQ(empty->GetBaseObject(), nullptr);
  auto* plain = new TestObject();
  ASSERT_TRUE(empty->SetObject(plain).IsOk());
  EXPECT_EQ(empty->GetBaseObject(), plain);
  // A stack without a base object ends on nothing.
  ASSERT_TRUE(chain.lower->SetObjectToModify(nullptr).IsOk());
  EXPECT_EQ(chain.node->GetBaseObject(), nullptr);
}

TEST(NodeTest, CollapseReplacesTheChainByACopyOfItsResult) {
  Chain chain;
  RecordingListener released;
  chain.top->AddBlockListener(&released);
  chain.node->Collapse(3);
  Object* object = chain.node->GetObject();
  auto* copy = dynamic_cast<TestObject*>(object);
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->Name(), "base_clone");
  EXPECT_EQ(copy->GetParentBlock(), chain.node.get());
  ASSERT_FALSE(released.events.empty());  // the chain went with its last link
  EXPECT_EQ(released.events[0].code, 1);
}

TEST(NodeTest, CollapseWithoutAnObjectOrABuildDoesNothing) {
  ScopedBlock<Node> node(new Node(true));
  node->Collapse(0);
  EXPECT_EQ(node->GetObject(), nullptr);
  auto* object = new TestObject();  // builds nothing
  ASSERT_TRUE(node->SetObject(object).IsOk());
  node->Collapse(0);
  EXPECT_EQ(node->GetObject(), object);
  EXPECT_EQ(object->builds, 1);
}

TEST(NodeTest, RemoveAllModifiersLeavesTheBaseObject) {
  Chain chain;
  RecordingListener m1_listener;
  chain.m1->AddBlockListener(&m1_listener);
  chain.node->RemoveAllModifiers();
  EXPECT_EQ(chain.node->GetObject(), chain.base);
  EXPECT_EQ(chain.base->GetParentBlock(), chain.node.get());
  ASSERT_FALSE(m1_listener.events.empty());
  EXPECT_EQ(m1_listener.events[0].code, 1);
}

TEST(NodeTest, RemoveAllModifiersOfAPlainObjectChangesNothing) {
  ScopedBlock<Node> node(new Node(true));
  node->RemoveAllModifiers();
  EXPECT_EQ(node->GetObject(), nullptr);
  auto* object = new TestObject();
  ASSERT_TRUE(node->SetObject(object).IsOk());
  RecordingListener listener;
  Listening listening(node.get(), &listener);
  node->RemoveAllModifiers();
  EXPECT_EQ(node->GetObject(), object);
  EXPECT_TRUE(listener.events.empty());
}

TEST(NodeTest, RemoveAllModifiersOfAStackWithoutABaseEmptiesTheObjectSlot) {
  Chain chain;
  ASSERT_TRUE(chain.lower->SetObjectToModify(nullptr).IsOk());
  chain.node->RemoveAllModifiers();
  EXPECT_EQ(chain.node->GetObject(), nullptr);
}

TEST(NodeTest, RemoveModifierAtTheTopLinksTheObjectBelowToTheNode) {
  Chain chain;
  EXPECT_TRUE(chain.node->RemoveModifier(chain.m1).IsOk());
  EXPECT_EQ(chain.node->GetObject(), chain.lower);
  EXPECT_EQ(chain.lower->GetObjectToModify(), chain.base);
}

TEST(NodeTest, RemoveModifierBelowTheTopLinksTheObjectBelowToTheHolder) {
  Chain chain;
  EXPECT_TRUE(chain.node->RemoveModifier(chain.m2).IsOk());
  EXPECT_EQ(chain.node->GetObject(), chain.top);
  EXPECT_EQ(chain.top->GetObjectToModify(), chain.base);
  EXPECT_EQ(chain.base->GetParentBlock(), chain.top);
}

TEST(NodeTest, RemoveModifierUnbuildsTheObjectAtTimeZeroFirst) {
  Chain chain;
  ASSERT_EQ(chain.node->BuildObject(5), chain.base);
  TestModifier other;
  EXPECT_TRUE(chain.node->RemoveModifier(&other).IsOk());
  EXPECT_EQ(chain.top->log, std::vector<std::string>({"apply 5", "unapply 0"}));
  EXPECT_EQ(chain.base->unbuilds, 1);
  EXPECT_EQ(chain.base->last_time, 0);
  EXPECT_EQ(chain.base->last_node, chain.node.get());
  // Not found: the chain is as it was.
  EXPECT_EQ(chain.node->GetObject(), chain.top);
  EXPECT_EQ(chain.top->GetObjectToModify(), chain.lower);
}

TEST(NodeTest, RemoveModifierTakesOutOnlyTheFirstObjectModifierThatAppliesIt) {
  Chain chain;
  ASSERT_TRUE(chain.lower->SetModifier(chain.m1).IsOk());  // both apply m1 now
  EXPECT_TRUE(chain.node->RemoveModifier(chain.m1).IsOk());
  EXPECT_EQ(chain.node->GetObject(), chain.lower);
  EXPECT_EQ(chain.lower->GetModifier(), chain.m1);
}

TEST(NodeTest, RemoveModifierOfAPlainObjectOrWithoutAnObjectSucceedsAndChangesNothing) {
  ScopedBlock<Node> node(new Node(true));
  TestModifier modifier;
  EXPECT_TRUE(node->RemoveModifier(&modifier).IsOk());
  auto* object = new TestObject();
  ASSERT_TRUE(node->SetObject(object).IsOk());
  EXPECT_TRUE(node->RemoveModifier(&modifier).IsOk());
  EXPECT_EQ(node->GetObject(), object);
  EXPECT_EQ(object->unbuilds, 1);
}

TEST(NodeTest, RemoveModifierStopsAtAStackWithoutABase) {
  // A stack that unbuilds without a base object, as a host stack may.
  class BaselessStack : public TestObjectModifier {
   public:
    Object* UnbuildObject(int, Node*) override { return nullptr; }
  };
  ScopedBlock<Node> node(new Node(true));
  auto* stack = new BaselessStack();
  auto* modifier = new TestModifier();
  ASSERT_TRUE(stack->SetModifier(modifier).IsOk());
  ASSERT_TRUE(node->SetObject(stack).IsOk());
  TestModifier other;
  EXPECT_TRUE(node->RemoveModifier(&other).IsOk());
  EXPECT_EQ(node->GetObject(), stack);
  EXPECT_EQ(stack->GetModifier(), modifier);
}

// ---- Copies ----

struct Source {
  Source() : parent(new Node(true)) {
    node = new Node(true);
    EXPECT_TRUE(parent->AddChild(node).IsOk());
    node->SetName("Teapot");
    node->SetNodeColor(Color(0.1f, 0.2f, 0.3f));
    node->SetFreeze(true);
    object = new TestObject("teapot");
    material = new TestMaterial("glaze");
    EXPECT_TRUE(node->SetObject(object).IsOk());
    EXPECT_TRUE(node->SetMaterial(material).IsOk());
    node->GetNodeTransformController()->SetPosition(Point3<double>(1, 2, 3), 0);
    EXPECT_TRUE(node->AddChild(new Node(true)).IsOk());
  }
  ScopedBlock<Node> parent;
  Node* node;
  TestObject* object;
  TestMaterial* material;
};

TEST(NodeTest, CloneForEditingInModeZeroCopiesObjectAndMaterialAndJoinsTheParent) {
  Source source;
  Node* copy = source.node->Clone(0, false);
  EXPECT_EQ(copy->GetName(), "Teapot");
  EXPECT_EQ(copy->GetNodeColor(), Color(0.1f, 0.2f, 0.3f));
  auto* object = dynamic_cast<TestObject*>(copy->GetObject());
  ASSERT_NE(object, nullptr);
  EXPECT_EQ(object->Name(), "teapot_clone");
  auto* material = dynamic_cast<TestMaterial*>(copy->GetMaterial());
  ASSERT_NE(material, nullptr);
  EXPECT_EQ(material->GetName(), "glaze_clone");
  EXPECT_EQ(source.material->table_updates, 1);
  // A sibling of the source, with an empty children table and no parameter table.
  EXPECT_EQ(copy->GetParent(), source.parent.get());
  EXPECT_EQ(source.parent->GetNumChildren(), 2);
  EXPECT_EQ(source.parent->GetChild(1), copy);
  ASSERT_NE(copy->GetChildren(), nullptr);
  EXPECT_EQ(copy->GetNumChildren(), 0);
  EXPECT_EQ(copy->GetDataTable(), nullptr);
}

TEST(NodeTest, CloneForEditingInModeOneSharesObjectAndMaterial) {
  Source source;
  Node* copy = source.node->Clone(1, true);
  EXPECT_EQ(copy->GetObject(), source.object);
  EXPECT_EQ(copy->GetMaterial(), source.material);
  EXPECT_EQ(source.material->table_updates, 1);
  std::vector<Block*> dependants;
  source.object->GetDependants(dependants);
  EXPECT_EQ(dependants, std::vector<Block*>({source.node, copy}));
}

TEST(NodeTest, CloneForEditingInAnotherModeGivesNeitherObjectNorMaterial) {
  Source source;
  Node* copy = source.node->Clone(2, false);
  EXPECT_EQ(copy->GetObject(), nullptr);
  EXPECT_EQ(copy->GetMaterial(), nullptr);
  // The material's table is refreshed whatever the mode.
  EXPECT_EQ(source.material->table_updates, 1);
}

TEST(NodeTest, CloneForEditingStoresTheTransformCopyWithoutABackReference) {
  Source source;
  Node* copy = source.node->Clone(0, false);
  NodeTransform* transform = copy->GetNodeTransform();
  ASSERT_NE(transform, nullptr);
  EXPECT_NE(transform, source.node->GetNodeTransform());
  EXPECT_EQ(transform->GetParentBlock(), nullptr);
  // Joining the parent re-linked the copy's transform under the parent's transform, which
  // released the copied chain of parent transforms.
  EXPECT_EQ(transform->GetParentTransform(), source.parent->GetNodeTransform());
  testing::ExpectMatrixNear(copy->GetNodeTransformController()->GetMatrix3(0), Translation(1, 2, 3),
                            1e-12);
  // Without the back reference the copy does not hear its transform.
  RecordingListener listener;
  Listening listening(copy, &listener);
  copy->GetNodeTransformController()->SetPosition(Point3<double>(0, 0, 0), 0);
  EXPECT_TRUE(listener.events.empty());
}

TEST(NodeTest, CloneForEditingOfANodeWithoutParentStaysUnattached) {
  ScopedBlock<Node> node(new Node(true));
  node->SetName("alone");
  ScopedBlock<Node> copy(node->Clone(0, false));
  EXPECT_EQ(copy->GetParent(), nullptr);
  EXPECT_EQ(copy->GetParentBlock(), nullptr);
  EXPECT_EQ(copy->GetName(), "alone");
  ASSERT_NE(copy->GetNodeTransform(), nullptr);
  EXPECT_EQ(copy->GetNodeTransform()->GetParentBlock(), nullptr);
}

TEST(NodeTest, CloneIsADeepCopyAttachedNowhere) {
  Source source;
  ScopedBlock<Block> clone(source.node->Clone());
  auto* copy = dynamic_cast<Node*>(clone.get());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->GetName(), "Teapot");
  EXPECT_EQ(copy->GetNodeColor(), Color(0.1f, 0.2f, 0.3f));
  EXPECT_EQ(copy->GetParent(), nullptr);
  EXPECT_EQ(copy->GetParentBlock(), nullptr);
  EXPECT_EQ(source.parent->GetNumChildren(), 1);
  auto* object = dynamic_cast<TestObject*>(copy->GetObject());
  ASSERT_NE(object, nullptr);
  EXPECT_EQ(object->Name(), "teapot_clone");
  auto* material = dynamic_cast<TestMaterial*>(copy->GetMaterial());
  ASSERT_NE(material, nullptr);
  EXPECT_EQ(material->GetName(), "glaze_clone");
  EXPECT_EQ(source.material->table_updates, 1);
  // The transform is linked through the setter, with its copied chain of parent transforms.
  ASSERT_NE(copy->GetNodeTransform(), nullptr);
  EXPECT_EQ(copy->GetNodeTransform()->GetParentBlock(), copy);
  ASSERT_NE(copy->GetNodeTransform()->GetParentTransform(), nullptr);
  EXPECT_NE(copy->GetNodeTransform()->GetParentTransform(), source.parent->GetNodeTransform());
  testing::ExpectMatrixNear(copy->GetNodeTransformController()->GetMatrix3(0), Translation(1, 2, 3),
                            1e-12);
  // Children are not copied; the parameter table is, with its values.
  EXPECT_EQ(copy->GetNumChildren(), 0);
  ASSERT_NE(copy->GetDataTable(), nullptr);
  EXPECT_NE(copy->GetDataTable(), source.node->GetDataTable());
  EXPECT_TRUE(copy->GetFreeze());
  EXPECT_EQ(copy->GetDataTable()->GetDataName(Node::kCastShadowsID), "cast_shadows");
  // The copy hears its own parts.
  RecordingListener listener;
  Listening listening(copy, &listener);
  copy->SetHide(true);
  copy->GetNodeTransformController()->SetPosition(Point3<double>(0, 0, 0), 0);
  ASSERT_GE(listener.events.size(), 2u);
  EXPECT_EQ(listener.events.front().code, 3);
  EXPECT_EQ(listener.events.back().code, 13);
}

TEST(NodeTest, CloneOfAnEmptyNodeHasOnlyAChildrenTable) {
  ScopedBlock<Node> node(new Node(false));
  ScopedBlock<Block> clone(node->Clone());
  auto* copy = dynamic_cast<Node*>(clone.get());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->GetDataTable(), nullptr);
  EXPECT_EQ(copy->GetObject(), nullptr);
  EXPECT_EQ(copy->GetMaterial(), nullptr);
  EXPECT_EQ(copy->GetNodeTransform(), nullptr);
  EXPECT_NE(copy->GetChildren(), nullptr);
}

// ---- File payload ----

using testing::data::Bytes;
using testing::data::LoadPayload;
using testing::data::PayloadChunks;
using testing::data::PayloadFile;
using testing::data::SavePayload;
using testing::data::StringBytes;

TEST(NodeTest, SavesTheNameAndTheColour) {
  ScopedBlock<Node> node(new Node(true));
  node->SetName("Sphere");
  node->SetNodeColor(Color(0.5f, -1.0f, 2.0f));
  const auto chunks = PayloadChunks(SavePayload(*node));
  ASSERT_EQ(chunks.size(), 2u);
  EXPECT_EQ(chunks[0].id, 0x0005u);
  EXPECT_EQ(chunks[0].bytes, StringBytes("Sphere"));
  EXPECT_EQ(chunks[1].id, 0x0010u);
  EXPECT_EQ(chunks[1].bytes, Bytes().F32(0.5f).F32(-1.0f).F32(2.0f).Get());
}

TEST(NodeTest, LoadsTheChunksInAnyOrderAndSkipsOthers) {
  ScopedBlock<Node> node(new Node(false));
  const auto outcome = LoadPayload(*node, PayloadFile({{0x0010, Bytes().F32(1).F32(2).F32(3).Get()},
                                                       {0x0077, {1, 2, 3}},
                                                       {0x0005, StringBytes("Cone")}}));
  EXPECT_EQ(outcome.result, 1);
  EXPECT_FALSE(outcome.reader_error);
  EXPECT_EQ(node->GetName(), "Cone");
  EXPECT_EQ(node->GetNodeColor(), Color(1, 2, 3));
}

TEST(NodeTest, AShortColourChunkFailsTheLoad) {
  ScopedBlock<Node> node(new Node(false));
  const auto outcome = LoadPayload(*node, PayloadFile({{0x0010, Bytes().F32(1).Get()}}));
  EXPECT_EQ(outcome.result, 0);
  EXPECT_TRUE(outcome.reader_error);
}

TEST(NodeTest, APayloadCutShortAtAnyByteFailsTheLoad) {
  ScopedBlock<Node> source(new Node(false));
  source->SetName("cut");
  SceneSave save;
  ASSERT_EQ(source->Save(&save), 1);
  const std::vector<std::uint8_t> file = save.TakeBytes();
  // A cut between the two chunks leaves a whole name chunk: that loads.
  const std::size_t name_chunk = 12 + StringBytes("cut").size();
  for (std::size_t size = 0; size <= file.size(); ++size) {
    ScopedBlock<Node> loaded(new Node(false));
    SceneLoad load(std::vector<std::uint8_t>(file.begin(), file.begin() + size));
    const int expected = size == 0 || size == name_chunk || size == file.size() ? 1 : 0;
    EXPECT_EQ(loaded->Load(&load), expected) << size;
  }
}

class NodeFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SceneEngine::DestroyFactories();
    RegisterBaseLibrary();
  }
  void TearDown() override { SceneEngine::DestroyFactories(); }
};

TEST_F(NodeFileTest, AHierarchyComesBackThroughTheChunkStream) {
  ScopedBlock<Node> root(new Node(true));
  root->SetName("root");
  auto* child = new Node(true);
  child->SetName("child");
  child->SetNodeColor(Color(1, 0, 0));
  child->SetCastShadows(false);
  ASSERT_TRUE(root->AddChild(child).IsOk());
  child->GetNodeTransformController()->SetPosition(Point3<double>(0, 0, 4), 0);

  ScopedBlock<Block> loaded(testing::LoadBlockGraph(testing::SaveBlockGraph(root.get())));
  auto* copy = dynamic_cast<Node*>(loaded.get());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->GetName(), "root");
  ASSERT_EQ(copy->GetNumChildren(), 1);
  Node* child_copy = copy->GetChild(0);
  ASSERT_NE(child_copy, nullptr);
  EXPECT_EQ(child_copy->GetName(), "child");
  EXPECT_EQ(child_copy->GetNodeColor(), Color(1, 0, 0));
  EXPECT_FALSE(child_copy->GetCastShadows());
  EXPECT_TRUE(child_copy->GetReceiveShadows());
  EXPECT_EQ(child_copy->GetNodeTransform()->GetParentTransform(), copy->GetNodeTransform());
  // Parent pointers are not part of the file: the engine derives them after a load.
  EXPECT_EQ(child_copy->GetParent(), nullptr);
  testing::ExpectMatrixNear(child_copy->GetNodeTransformController()->GetMatrix3(0),
                            Translation(0, 0, 4), 1e-12);
  // A loaded node passes its table's changes on again.
  RecordingListener listener;
  Listening listening(child_copy, &listener);
  child_copy->SetHide(true);
  EXPECT_EQ(Codes(listener), std::vector<int>({3}));
}

}  // namespace
}  // namespace Orlo
