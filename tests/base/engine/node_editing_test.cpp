#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <orlo/base/block/block_table.h>
#include <orlo/base/controllers/matrix3_controller.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/node_transform.h>

#include "tests/base/engine/engine_test_scene.h"
#include "tests/base/scene/scene_test_blocks.h"
#include "tests/testing/scoped_block.h"
#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

using testing::ExpectMatrixEq;
using testing::ExpectMatrixNear;
using testing::ScopedBlock;
using testing::TestMaterial;
using testing::TestObject;
using testing::Translation;

// An object that counts the deletions of its kind.
class CountedObject : public TestObject {
 public:
  explicit CountedObject(int* deleted) : m_deleted(deleted) {}
  void DeleteThis() override {
    ++*m_deleted;
    delete this;
  }

 private:
  int* m_deleted;
};

class NodeEditingTest : public testing::EngineTest {};

// How many of the events `listener` heard have the code `code`.
int CountCode(const testing::RecordingListener& listener, int code) {
  int count = 0;
  for (const BlockEvent& event : listener.events) count += event.code == code ? 1 : 0;
  return count;
}

// ---- Creating nodes ----

TEST_F(NodeEditingTest, CreateEmptyNodeWithAMatrixPlacesANamedNodeUnderTheMainNode) {
  Node* node = engine.CreateEmptyNode(Translation(1, 2, 3), "box");
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(node->GetName(), "box");
  EXPECT_EQ(node->GetParent(), MainNode());
  ASSERT_EQ(MainNode()->GetNumChildren(), 1);
  EXPECT_EQ(MainNode()->GetChild(0), node);
  EXPECT_EQ(node->GetObject(), nullptr);
  ExpectMatrixNear(node->GetNodeTransformController()->GetMatrix3(0), Translation(1, 2, 3), 1e-12);
  // The node has the parts of a default node.
  EXPECT_NE(node->GetDataTable(), nullptr);
  EXPECT_NE(node->GetChildren(), nullptr);
  EXPECT_EQ(node->GetNodeTransform()->GetParentTransform(), MainNode()->GetNodeTransform());
}

TEST_F(NodeEditingTest, CreateEmptyNodeWithAPointSetsThePositionAtTimeZero) {
  Node* node = engine.CreateEmptyNode(Point3<double>(4, 5, 6), "marker");
  EXPECT_EQ(node->GetName(), "marker");
  EXPECT_EQ(node->GetParent(), MainNode());
  EXPECT_EQ(node->GetNodeTransformController()->GetPosition(0), Point3<double>(4, 5, 6));
  ExpectMatrixEq(node->GetNodeTransformController()->GetMatrix3(0), Translation(4, 5, 6));
}

TEST_F(NodeEditingTest, CreateObjectNodeAttachesTheObjectInBothForms) {
  auto* first = new TestObject("first");
  auto* second = new TestObject("second");
  Node* by_matrix = engine.CreateObjectNode(first, Translation(1, 0, 0), "a");
  Node* by_point = engine.CreateObjectNode(second, Point3<double>(0, 1, 0), "b");
  EXPECT_EQ(by_matrix->GetObject(), first);
  EXPECT_EQ(by_point->GetObject(), second);
  EXPECT_EQ(by_point->GetNodeTransformController()->GetPosition(0), Point3<double>(0, 1, 0));
  ExpectMatrixNear(by_matrix->GetNodeTransformController()->GetMatrix3(0), Translation(1, 0, 0),
                   1e-12);
  EXPECT_EQ(MainNode()->GetNumChildren(), 2);
}

TEST_F(NodeEditingTest, CreateObjectNodeWithoutAnObjectMakesAnEmptyNode) {
  Node* node = engine.CreateObjectNode(nullptr, Point3<double>(1, 1, 1), "empty");
  EXPECT_EQ(node->GetObject(), nullptr);
  EXPECT_EQ(node->GetParent(), MainNode());
  Node* other = engine.CreateObjectNode(nullptr, Translation(0, 0, 1), "empty too");
  EXPECT_EQ(other->GetObject(), nullptr);
}

TEST_F(NodeEditingTest, CreateObjectNodeWithABlockThatIsNotAnObjectLeavesTheNodeEmpty) {
  // A host block that claims a modifier's class id is refused by the node.
  ScopedBlock<TestObject> not_an_object(new TestObject("modifier", BlockType(800, 1, 1)));
  Node* node = engine.CreateObjectNode(not_an_object.get(), Point3<double>(), "refused");
  EXPECT_EQ(node->GetObject(), nullptr);
  EXPECT_EQ(node->GetParent(), MainNode());
}

TEST_F(NodeEditingTest, CreatedNodesGoUnderTheMainNodeInCreationOrder) {
  Node* a = AddNode("a");
  Node* b = AddNode("b");
  Node* c = AddNode("c", a);
  Node* d = engine.CreateEmptyNode(Point3<double>(), "d");
  ASSERT_EQ(MainNode()->GetNumChildren(), 3);
  EXPECT_EQ(MainNode()->GetChild(0), a);
  EXPECT_EQ(MainNode()->GetChild(1), b);
  EXPECT_EQ(MainNode()->GetChild(2), d);
  EXPECT_EQ(c->GetParent(), a);
}

TEST_F(NodeEditingTest, ANullNameGivesAnEmptyName) {
  Node* node = engine.CreateEmptyNode(Point3<double>(), nullptr);
  EXPECT_EQ(node->GetName(), "");
}

// ---- Finding nodes ----

TEST_F(NodeEditingTest, GetAllChildrenNodesListsTheDescendantsInPreOrderWithoutTheNode) {
  Node* a = AddNode("a");
  Node* b = AddNode("b");
  AddNode("a1", a);
  Node* a2 = AddNode("a2", a);
  AddNode("a2x", a2);
  AddNode("b1", b);
  std::vector<Node*> out;
  engine.GetAllChildrenNodes(MainNode(), out);
  EXPECT_EQ(Names(out), (std::vector<std::string>{"a", "a1", "a2", "a2x", "b", "b1"}));
  out.clear();
  engine.GetAllChildrenNodes(a, out);
  EXPECT_EQ(Names(out), (std::vector<std::string>{"a1", "a2", "a2x"}));
}

TEST_F(NodeEditingTest, GetAllChildrenNodesAppendsWithoutClearing) {
  Node* a = AddNode("a");
  AddNode("a1", a);
  std::vector<Node*> out{MainNode()};
  engine.GetAllChildrenNodes(a, out);
  EXPECT_EQ(Names(out), (std::vector<std::string>{"MainNode", "a1"}));
  engine.GetAllChildrenNodes(nullptr, out);
  EXPECT_EQ(out.size(), 2u);
}

TEST_F(NodeEditingTest, GetAllChildrenNodesDoesNotEnterANodeAlreadyOnItsPath) {
  Node* a = AddNode("a");
  Node* b = AddNode("b", a);
  // A children table keeps an entry that would close a cycle, unlinked: the walk lists it as
  // the child it is but does not walk below it again.
  b->GetChildren()->PushBack(a);
  ASSERT_EQ(b->GetNumChildren(), 1);
  std::vector<Node*> out;
  engine.GetAllChildrenNodes(MainNode(), out);
  EXPECT_EQ(Names(out), (std::vector<std::string>{"a", "b"}));
  b->GetChildren()->Erase(0);
}

TEST_F(NodeEditingTest, DoesNodeExistsInSceneIsTrueForEveryNodeBelowTheMainNode) {
  Node* a = AddNode("a");
  Node* deep = AddNode("deep", AddNode("middle", a));
  EXPECT_TRUE(engine.DoesNodeExistsInScene(a));
  EXPECT_TRUE(engine.DoesNodeExistsInScene(deep));
}

TEST_F(NodeEditingTest, DoesNodeExistsInSceneIsFalseForTheMainNodeNullAndOutsiders) {
  EXPECT_FALSE(engine.DoesNodeExistsInScene(MainNode()));
  EXPECT_FALSE(engine.DoesNodeExistsInScene(nullptr));
  ScopedBlock<Node> outsider(new Node(true));
  EXPECT_FALSE(engine.DoesNodeExistsInScene(outsider.get()));
}

TEST_F(NodeEditingTest, GetNodeByNameReturnsTheFirstMatchInPreOrder) {
  Node* a = AddNode("twin");  // first in pre-order
  Node* a_child = AddNode("twin", a);
  Node* b = AddNode("other");
  Node* b_child = AddNode("late", b);
  AddNode("late");
  EXPECT_EQ(engine.GetNodeByName("twin"), a);
  // A parent comes before its children, earlier children before later ones.
  EXPECT_EQ(engine.GetNodeByName("late"), b_child);
  (void)a_child;
}

TEST_F(NodeEditingTest, GetNodeByNameComparesWholeNamesByteForByte) {
  AddNode("node");
  EXPECT_EQ(engine.GetNodeByName("nod"), nullptr);
  EXPECT_EQ(engine.GetNodeByName("node "), nullptr);
  EXPECT_EQ(engine.GetNodeByName("Node"), nullptr);
  EXPECT_EQ(engine.GetNodeByName(std::string("node\0x", 6)), nullptr);
  EXPECT_NE(engine.GetNodeByName("node"), nullptr);
}

TEST_F(NodeEditingTest, GetNodeByNameDoesNotFindTheMainNode) {
  EXPECT_EQ(engine.GetNodeByName("MainNode"), nullptr);
  Node* named = AddNode("MainNode");
  EXPECT_EQ(engine.GetNodeByName("MainNode"), named);
}

TEST_F(NodeEditingTest, GetNodeByNameOfAnEmptyNameFindsAnUnnamedNode) {
  EXPECT_EQ(engine.GetNodeByName(""), nullptr);
  Node* unnamed = AddNode("");
  EXPECT_EQ(engine.GetNodeByName(""), unnamed);
}

// ---- Reparenting ----

TEST_F(NodeEditingTest, SetParentMovesTheChildUnderTheNewParent) {
  Node* a = AddNode("a");
  Node* b = AddNode("b");
  Status status = engine.SetParent(a, b);
  EXPECT_TRUE(status.IsOk());
  EXPECT_EQ(b->GetParent(), a);
  EXPECT_TRUE(a->IsChild(b));
  EXPECT_FALSE(MainNode()->IsChild(b));
  EXPECT_EQ(b->GetNodeTransform()->GetParentTransform(), a->GetNodeTransform());
}

TEST_F(NodeEditingTest, SetParentPassesOnTheStatusOfAddChild) {
  Node* a = AddNode("a");
  Node* b = AddNode("b", a);
  Status cycle = engine.SetParent(b, a);
  EXPECT_EQ(cycle.GetCode(), 2);
  EXPECT_EQ(cycle.GetMessage(), "Node::AddChild : This node is a dependency of the child node.");
  EXPECT_EQ(a->GetParent(), MainNode());
  Status null_child = engine.SetParent(a, nullptr);
  EXPECT_EQ(null_child.GetCode(), 3);
  EXPECT_EQ(null_child.GetMessage(), "Node::AddChild : child_node parameter is not valid.");
}

TEST_F(NodeEditingTest, SetParentWithoutAParentIsAnInvalidArgument) {
  Node* a = AddNode("a");
  Status status = engine.SetParent(nullptr, a);
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(), "SceneEngine::SetParent : parent_node parameter is not valid.");
  EXPECT_EQ(a->GetParent(), MainNode());
}

TEST_F(NodeEditingTest, SetParentPointerRestoresParentsFromTheChildrenTables) {
  // Linked the way a scene file links them: through the children tables only.
  Node* a = AddNode("a");
  auto* b = new Node(true);
  auto* c = new Node(true);
  auto* d = new Node(true);
  a->GetChildren()->PushBack(b);
  b->GetChildren()->PushBack(c);
  a->GetChildren()->PushBack(d);
  ASSERT_EQ(b->GetParent(), nullptr);
  engine.SetParentPointer(MainNode());
  EXPECT_EQ(a->GetParent(), MainNode());
  EXPECT_EQ(b->GetParent(), a);
  EXPECT_EQ(c->GetParent(), b);
  EXPECT_EQ(d->GetParent(), a);
  EXPECT_EQ(MainNode()->GetParent(), nullptr);
  engine.SetParentPointer(nullptr);
}

// ---- Deleting ----

TEST_F(NodeEditingTest, DeleteNodeOfTheMainNodeReturnsFalseAndChangesNothing) {
  Node* a = AddNode("a");
  EXPECT_FALSE(engine.DeleteNode(MainNode()));
  EXPECT_EQ(engine.GetMainScene()->GetMainNode(), MainNode());
  EXPECT_EQ(MainNode()->GetName(), "MainNode");
  EXPECT_TRUE(MainNode()->IsChild(a));
}

TEST_F(NodeEditingTest, DeleteNodeOfNullOrOfANodeOutsideTheSceneReturnsFalse) {
  EXPECT_FALSE(engine.DeleteNode(nullptr));
  int deleted = 0;
  ScopedBlock<Node> outsider(new Node(true));
  (void)outsider->SetObject(new CountedObject(&deleted));
  EXPECT_FALSE(engine.DeleteNode(outsider.get()));
  EXPECT_EQ(deleted, 0);
  EXPECT_NE(outsider->GetObject(), nullptr);
}

TEST_F(NodeEditingTest, DeleteNodeRemovesTheNodeAndItsDescendants) {
  int deleted = 0;
  Node* a = AddNode("a");
  Node* b = AddNode("b");
  Node* a1 = AddNode("a1", a);
  (void)a->SetObject(new CountedObject(&deleted));
  (void)a1->SetObject(new CountedObject(&deleted));
  EXPECT_TRUE(engine.DeleteNode(a));
  EXPECT_EQ(deleted, 2);
  ASSERT_EQ(MainNode()->GetNumChildren(), 1);
  EXPECT_EQ(MainNode()->GetChild(0), b);
  EXPECT_EQ(engine.GetNodeByName("a"), nullptr);
  EXPECT_EQ(engine.GetNodeByName("a1"), nullptr);
}

TEST_F(NodeEditingTest, DeleteNodeNullsTheSelectionEntriesOfTheNodesItDestroys) {
  Node* a = AddNode("a");
  Node* b = AddNode("b");
  Node* a1 = AddNode("a1", a);
  std::vector<Node*> selected{a1, b, a};
  engine.SelectNodes(selected, 0);
  ASSERT_TRUE(engine.DeleteNode(a));
  // The entries keep their count and places; the destroyed nodes' entries are null.
  ASSERT_EQ(engine.GetNumSelectedNodes(), 3u);
  EXPECT_EQ(engine.GetSelectedNode(0), nullptr);
  EXPECT_EQ(engine.GetSelectedNode(1), b);
  EXPECT_EQ(engine.GetSelectedNode(2), nullptr);
  EXPECT_TRUE(b->IsSelected());
  // Selecting again clears the flags of the entries, skipping the null ones; removing b drops
  // the null entries with it.
  std::vector<Node*> remove{b};
  engine.SelectNodes(remove, 2);
  EXPECT_EQ(engine.GetNumSelectedNodes(), 0u);
  EXPECT_FALSE(b->IsSelected());
}

TEST_F(NodeEditingTest, DeleteNodeOfADeepNodeDetachesItFromItsOwnParent) {
  Node* a = AddNode("a");
  Node* b = AddNode("b", a);
  Node* c = AddNode("c", a);
  EXPECT_TRUE(engine.DeleteNode(b));
  ASSERT_EQ(a->GetNumChildren(), 1);
  EXPECT_EQ(a->GetChild(0), c);
  std::vector<Node*> all;
  engine.GetAllSceneNodes(all);
  EXPECT_EQ(Names(all), (std::vector<std::string>{"a", "c"}));
}

TEST_F(NodeEditingTest, DeleteNodeHoldsTheNodeWhileItIsDetachedAndThenDeletesIt) {
  // Taken out of its parent's children table on its own, a node that nothing else holds is
  // released at once and says so with code 1.
  Node* released = AddNode("released");
  testing::RecordingListener released_listener;
  released->AddBlockListener(&released_listener);
  ASSERT_TRUE(MainNode()->RemoveChild(released).IsOk());
  EXPECT_EQ(CountCode(released_listener, 1), 1);

  // DeleteNode holds the node in a table of its own while it detaches it, so the node is never
  // released by the detaching: it is deleted explicitly, and no code 1 is posted.
  int deleted = 0;
  Node* a = AddNode("a");
  (void)a->SetObject(new CountedObject(&deleted));
  testing::RecordingListener listener;
  a->AddBlockListener(&listener);
  EXPECT_TRUE(engine.DeleteNode(a));
  EXPECT_EQ(deleted, 1);
  EXPECT_EQ(CountCode(listener, 1), 0);
  EXPECT_EQ(MainNode()->GetNumChildren(), 0);
}

TEST_F(NodeEditingTest, DeleteNodeLeavesAnObjectSharedWithAnotherNode) {
  int deleted = 0;
  auto* shared = new CountedObject(&deleted);
  Node* a = engine.CreateObjectNode(shared, Point3<double>(), "a");
  Node* instance = engine.DuplicateNode(a, true);
  EXPECT_TRUE(engine.DeleteNode(a));
  EXPECT_EQ(deleted, 0);
  EXPECT_EQ(instance->GetObject(), shared);
  EXPECT_TRUE(engine.DeleteNode(instance));
  EXPECT_EQ(deleted, 1);
}

// ---- Duplicating ----

TEST_F(NodeEditingTest, ADuplicateOfADeepNodeLandsUnderTheMainNodeWithTheSameName) {
  Node* a = AddNode("a");
  Node* deep = AddNode("deep", AddNode("b", a));
  AddNode("below deep", deep);
  Node* copy = engine.DuplicateNode(deep, false);
  ASSERT_NE(copy, nullptr);
  EXPECT_NE(copy, deep);
  EXPECT_EQ(copy->GetName(), "deep");
  EXPECT_EQ(copy->GetParent(), MainNode());
  EXPECT_EQ(MainNode()->GetChild(MainNode()->GetNumChildren() - 1), copy);
  // Children are not copied; the source keeps its place and its child.
  EXPECT_EQ(copy->GetNumChildren(), 0);
  EXPECT_EQ(deep->GetNumChildren(), 1);
  EXPECT_EQ(deep->GetParent()->GetName(), "b");
}

TEST_F(NodeEditingTest, AnInstanceSharesObjectAndMaterialButNotTransformOrTable) {
  auto* object = new TestObject("mesh");
  auto* material = new TestMaterial("paint");
  Node* source = engine.CreateObjectNode(object, Translation(1, 2, 3), "source");
  ASSERT_TRUE(source->SetMaterial(material).IsOk());
  Node* instance = engine.DuplicateNode(source, true);
  EXPECT_EQ(instance->GetObject(), object);
  EXPECT_EQ(instance->GetMaterial(), material);
  ASSERT_NE(instance->GetNodeTransform(), nullptr);
  EXPECT_NE(instance->GetNodeTransform(), source->GetNodeTransform());
  ASSERT_NE(instance->GetDataTable(), nullptr);
  EXPECT_NE(instance->GetDataTable(), source->GetDataTable());
}

TEST_F(NodeEditingTest, ACopyClonesObjectAndMaterial) {
  auto* object = new TestObject("mesh");
  auto* material = new TestMaterial("paint");
  Node* source = engine.CreateObjectNode(object, Point3<double>(), "source");
  ASSERT_TRUE(source->SetMaterial(material).IsOk());
  Node* copy = engine.DuplicateNode(source, false);
  auto* object_copy = dynamic_cast<TestObject*>(copy->GetObject());
  auto* material_copy = dynamic_cast<TestMaterial*>(copy->GetMaterial());
  ASSERT_NE(object_copy, nullptr);
  ASSERT_NE(material_copy, nullptr);
  EXPECT_EQ(object_copy->Name(), "mesh_clone");
  EXPECT_EQ(material_copy->GetName(), "paint_clone");
  EXPECT_EQ(source->GetObject(), object);
  EXPECT_EQ(source->GetMaterial(), material);
}

TEST_F(NodeEditingTest, ADuplicateCarriesTheSourcesLocalMatrixUnderTheMainNodesTransform) {
  Node* a = engine.CreateEmptyNode(Translation(10, 0, 0), "a");
  Node* source = engine.CreateEmptyNode(Translation(1, 2, 3), "source");
  ASSERT_TRUE(engine.SetParent(a, source).IsOk());
  Node* copy = engine.DuplicateNode(source, true);
  ExpectMatrixEq(copy->GetNodeTransformController()->GetMatrix3(0),
                 source->GetNodeTransformController()->GetMatrix3(0));
  EXPECT_EQ(copy->GetNodeTransform()->GetParentTransform(), MainNode()->GetNodeTransform());
  // The copy's matrix is no longer moved by the source's parent.
  ExpectMatrixNear(copy->GetAbsoluteTM(0), Translation(1, 2, 3), 1e-12);
  ExpectMatrixNear(source->GetAbsoluteTM(0), Translation(11, 2, 3), 1e-12);
  // Moving the copy does not move the source.
  copy->GetNodeTransformController()->SetPosition(Point3<double>(7, 7, 7), 0);
  EXPECT_EQ(source->GetNodeTransformController()->GetPosition(0), Point3<double>(1, 2, 3));
}

TEST_F(NodeEditingTest, ADuplicateCopiesTheDisplayParametersIntoItsOwnTable) {
  Node* source = AddNode("source");
  source->SetHide(true);
  source->SetVisibility(0.25, 0);
  Node* copy = engine.DuplicateNode(source, true);
  EXPECT_TRUE(copy->GetHide());
  EXPECT_EQ(copy->GetVisibility(0), 0.25);
  copy->SetHide(false);
  EXPECT_TRUE(source->GetHide());
}

TEST_F(NodeEditingTest, ADuplicateOfAnEmptyNodeHasNoObjectMaterialOrTable) {
  auto* bare = new Node(false);
  ASSERT_TRUE(MainNode()->AddChild(bare).IsOk());
  bare->SetName("bare");
  Node* copy = engine.DuplicateNode(bare, false);
  EXPECT_EQ(copy->GetName(), "bare");
  EXPECT_EQ(copy->GetObject(), nullptr);
  EXPECT_EQ(copy->GetMaterial(), nullptr);
  EXPECT_EQ(copy->GetDataTable(), nullptr);
  EXPECT_EQ(copy->GetNodeTransform(), nullptr);
  EXPECT_EQ(copy->GetParent(), MainNode());
}

TEST_F(NodeEditingTest, DuplicateNodeOfNullGivesNull) {
  EXPECT_EQ(engine.DuplicateNode(nullptr, true), nullptr);
  EXPECT_EQ(MainNode()->GetNumChildren(), 0);
}

TEST_F(NodeEditingTest, DuplicateNodesDuplicatesEachEntryInOrder) {
  Node* a = AddNode("a");
  Node* b = AddNode("b", a);
  std::vector<Node*> out(5, a);
  Status status = engine.DuplicateNodes({b, a}, out, false);
  EXPECT_TRUE(status.IsOk());
  EXPECT_EQ(status.GetMessage(), "");
  ASSERT_EQ(out.size(), 2u);
  EXPECT_EQ(Names(out), (std::vector<std::string>{"b", "a"}));
  EXPECT_NE(out[0], b);
  EXPECT_NE(out[1], a);
  EXPECT_EQ(out[0]->GetParent(), MainNode());
  EXPECT_EQ(out[1]->GetParent(), MainNode());
  // The main node now holds a, then the two copies.
  EXPECT_EQ(MainNode()->GetNumChildren(), 3);
  std::vector<Node*> none;
  EXPECT_TRUE(engine.DuplicateNodes({}, none, true).IsOk());
  EXPECT_TRUE(none.empty());
}

}  // namespace
}  // namespace Orlo
