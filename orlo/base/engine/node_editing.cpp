// The engine's node editing: creating, finding, reparenting, duplicating and deleting the
// nodes of the current scene.
#include <string>
#include <utility>
#include <vector>

#include <orlo/base/block/block_table.h>
#include <orlo/base/block/internal/block_watch.h>
#include <orlo/base/controllers/matrix3_controller.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/internal/node_walk.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/node_transform.h>
#include <orlo/base/scene/object.h>

namespace Orlo {

namespace {

// Releases a copy that a setter refused, so that nothing is left without an owner.
void ReleaseIfUnlinked(Block* copy) {
  if (copy != nullptr && copy->GetParentBlock() == nullptr) copy->DeleteThisBlock(true);
}

// Nulls the entries of a list of nodes whose nodes are destroyed while it lives; the other
// entries stay as they are.
class DestroyedEntriesNulled {
 public:
  explicit DestroyedEntriesNulled(std::vector<Node*>& nodes)
      : m_nodes(nodes), m_watched(nodes.begin(), nodes.end()) {
    for (Block*& entry : m_watched) internal::BlockWatch::Watch(&entry);
  }
  DestroyedEntriesNulled(const DestroyedEntriesNulled&) = delete;
  DestroyedEntriesNulled& operator=(const DestroyedEntriesNulled&) = delete;
  ~DestroyedEntriesNulled() {
    for (std::size_t i = 0; i < m_watched.size(); ++i) {
      if (m_watched[i] == nullptr) {
        if (i < m_nodes.size()) m_nodes[i] = nullptr;
      } else {
        internal::BlockWatch::Unwatch(&m_watched[i]);
      }
    }
  }

 private:
  std::vector<Node*>& m_nodes;
  std::vector<Block*> m_watched;  // never resized while watched
};

// A new node with its parameter table, children table and transform, named `name` (a null
// name reads as "").
Node* NewNamedNode(const char* name) {
  auto* node = new Node(true);
  node->SetName(name != nullptr ? name : "");
  return node;
}

// Attaches `object` (when not null) to the new `node` and adds the node under `main_node`.
Node* AttachNewNode(Node* main_node, Node* node, Object* object) {
  if (object != nullptr) {
    // A block that is not an object is refused by the node, which then stays empty.
    (void)node->SetObject(object);
  }
  // Kept as is: new nodes always go directly under the main node, and the status is not
  // examined (a fresh node cannot be refused there).
  (void)main_node->AddChild(node);
  return node;
}

}  // namespace

// ---- Creating nodes ----

Node* SceneEngine::CreateEmptyNode(Matrix3<double> matrix, const char* name) {
  return CreateObjectNode(nullptr, matrix, name);
}

Node* SceneEngine::CreateEmptyNode(Point3<double> position, const char* name) {
  return CreateObjectNode(nullptr, position, name);
}

Node* SceneEngine::CreateObjectNode(Object* object, Matrix3<double> matrix, const char* name) {
  Node* node = NewNamedNode(name);
  // A node made with its defaults has a transform with a Transform3Controller.
  node->GetNodeTransformController()->SetMatrix3(matrix, 0);
  return AttachNewNode(GetMainNode(), node, object);
}

Node* SceneEngine::CreateObjectNode(Object* object, Point3<double> position, const char* name) {
  Node* node = NewNamedNode(name);
  node->GetNodeTransformController()->SetPosition(position, 0);
  return AttachNewNode(GetMainNode(), node, object);
}

// ---- Finding nodes ----

void SceneEngine::GetAllChildrenNodes(Node* node, std::vector<Node*>& out) {
  internal::ForEachNodeBelow(node, [&out](Node*, Node* child) { out.push_back(child); });
}

bool SceneEngine::DoesNodeExistsInScene(Node* node) {
  if (node == nullptr) return false;
  // Only the nodes below the main node count: the main node itself deliberately fails this
  // test, which keeps it out of DeleteNode's reach.
  bool found = false;
  internal::ForEachNodeBelow(GetMainNode(),
                             [&](Node*, Node* child) { found = found || child == node; });
  return found;
}

Node* SceneEngine::GetNodeByName(std::string name) {
  Node* match = nullptr;
  internal::ForEachNodeBelow(GetMainNode(), [&](Node*, Node* child) {
    if (match == nullptr && child->GetName() == name) match = child;
  });
  return match;
}

// ---- Reparenting ----

Status SceneEngine::SetParent(Node* parent, Node* child) {
  if (parent == nullptr) {
    return Status(Status::kInvalidArgument,
                  "SceneEngine::SetParent : parent_node parameter is not valid.");
  }
  return parent->AddChild(child);
}

void SceneEngine::SetParentPointer(Node* node) {
  if (node == nullptr) return;
  internal::ForEachNodeBelow(node, [](Node* parent, Node* child) { child->SetParent(parent); });
}

// ---- Deleting ----

bool SceneEngine::DeleteNode(Node* node) {
  if (node == nullptr || !DoesNodeExistsInScene(node)) return false;
  // Deleting a node leaves the selection alone: its entries keep their count and places, as
  // hosts that index the selection expect. A selected node that the deletion destroys would
  // be left there dangling, though: its entry becomes null, which the selection skips.
  DestroyedEntriesNulled selection(m_selected_nodes);
  // The table keeps the node referenced while it is detached from its parent, so that the
  // removal does not release it before it is deleted explicitly below.
  auto* keeper = new BlockTable(true);
  keeper->PushBack(node);
  if (Node* parent = node->GetParent()) (void)parent->RemoveChild(node);
  node->DeleteThisBlock(true);
  keeper->DeleteThisBlock(true);
  return true;
}

// ---- Duplicating ----

Node* SceneEngine::DuplicateNode(Node* source, bool instance) {
  if (source == nullptr) return nullptr;
  auto* copy = new Node(false);
  copy->SetName(source->GetName());
  if (Block* material = source->GetMaterial()) {
    if (instance) {
      (void)copy->SetMaterial(material);
    } else {
      Block* material_copy = material->Clone();
      if (!copy->SetMaterial(material_copy).IsOk()) ReleaseIfUnlinked(material_copy);
    }
  }
  // The transform is never shared, not even by an instance: each node has its own place.
  if (NodeTransform* transform = source->GetNodeTransform()) {
    Block* transform_copy = transform->Clone();
    auto* typed = dynamic_cast<NodeTransform*>(transform_copy);
    if (typed == nullptr || !copy->SetNodeTransform(typed).IsOk()) {
      ReleaseIfUnlinked(transform_copy);
    }
  }
  if (Object* object = source->GetObject()) {
    if (instance) {
      (void)copy->SetObject(object);
    } else {
      Block* object_copy = object->Clone();
      auto* typed = dynamic_cast<Object*>(object_copy);
      if (typed == nullptr || !copy->SetObject(typed).IsOk()) ReleaseIfUnlinked(object_copy);
    }
  }
  // Nor is the parameter table: the copy's display flags are its own from the start.
  if (DataTable* table = source->GetDataTable()) {
    Block* table_copy = table->Clone();
    auto* typed = dynamic_cast<DataTable*>(table_copy);
    if (typed != nullptr) (void)copy->SetDataTable(typed);
    ReleaseIfUnlinked(table_copy);
  }
  // Kept as is: the copy goes under the main node, not beside its source, and the source's
  // children are not copied.
  (void)GetMainNode()->AddChild(copy);
  return copy;
}

Status SceneEngine::DuplicateNodes(std::vector<Node*> nodes, std::vector<Node*>& out,
                                   bool instance) {
  out.resize(nodes.size());
  for (std::size_t i = 0; i < nodes.size(); ++i) out[i] = DuplicateNode(nodes[i], instance);
  return Status();
}

}  // namespace Orlo
