#include <orlo/base/scene/node.h>

#include <cassert>

#include <orlo/base/block/block_table.h>
#include <orlo/base/controllers/matrix3_controller.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node_transform.h>
#include <orlo/base/scene/object.h>
#include <orlo/base/scene/object_modifier.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

namespace Orlo {

namespace {

// Payload of a node. Format history, newest first:
//   v1: chunk 0x0005 with the name, chunk 0x0010 with the colour (three floats).
constexpr unsigned kNameChunk = 0x0005;
constexpr unsigned kColorChunk = 0x0010;

constexpr const char* kSlotNames[] = {"data_table", "object", "material", "children", "transform"};
constexpr char kNoSlot[] = "nil";

// The look-at controller's type and its slots for the aim and up nodes.
constexpr BlockType kLookAtControllerType{300, 48, 64};
constexpr int kAimNodeSlot = 2;
constexpr int kUpNodeSlot = 3;

// Every display parameter holds one element.
constexpr int kParameterSize = 1;

// Releases a copy that a setter refused, so that nothing is left without an owner.
void ReleaseIfUnlinked(Block* copy) {
  if (copy != nullptr && copy->GetParentBlock() == nullptr) copy->DeleteThisBlock(true);
}

// The block as an object-modifier, when its class id says it is one and it is one.
ObjectModifier* AsObjectModifier(Block* block) {
  return SceneEngine::IsObjectModifier(block) ? dynamic_cast<ObjectModifier*>(block) : nullptr;
}

}  // namespace

Node::Node(bool create_defaults) {
  if (!create_defaults) return;
  // Fresh blocks linked into a fresh node: no link can be refused.
  (void)MakeDependencyByID(kDataTableSlot, new DataTable(true));
  (void)MakeDependencyByID(kChildrenSlot, new BlockTable(true));
  (void)MakeDependencyByID(kTransformSlot, new NodeTransform(true));
  UpdateDataTable(true);
}

// ---- Block ----

std::string Node::GetClassName() const { return "Node"; }

BlockType Node::GetBlockType() const { return m_block_type; }

int Node::NumDependencies() const { return kNumSlots; }

void Node::SetDependency(int index, Block* block) {
  switch (index) {
    case kDataTableSlot:
      m_data_table.Set(block);
      break;
    case kObjectSlot:
      m_object.Set(block);
      break;
    case kMaterialSlot:
      m_material = block;
      break;
    case kChildrenSlot:
      m_children.Set(block);
      break;
    case kTransformSlot:
      m_node_transform.Set(block);
      break;
    default:
      break;
  }
}

Block* Node::GetDependency(int index) const {
  switch (index) {
    case kDataTableSlot:
      return m_data_table.Raw();
    case kObjectSlot:
      return m_object.Raw();
    case kMaterialSlot:
      return m_material;
    case kChildrenSlot:
      return m_children.Raw();
    case kTransformSlot:
      return m_node_transform.Raw();
    default:
      return nullptr;
  }
}

std::string Node::GetDependencyName(int index) const {
  return index >= 0 && index < kNumSlots ? kSlotNames[index] : kNoSlot;
}

DataTable* Node::GetDataTable() const { return m_data_table.Get(); }

Status Node::SetDataTable(DataTable* table) {
  if (table != nullptr && !SceneEngine::IsDataTable(table)) {
    return Status(Status::kInvalidArgument,
                  "Node::SetDataTable : The block is not a valid data_table.");
  }
  // Kept as is: a refused cycle is not reported here; callers only learn about the kind.
  (void)MakeDependencyByID(kDataTableSlot, table);
  return Status();
}

void Node::UpdateDataTable(bool) {
  DataTable* table = GetDataTable();
  if (table == nullptr) return;
  // An id the table holds already is refused by the table and keeps its value, so this is
  // also the repair step after a load.
  (void)table->AddDataBool(kHideID, false, kParameterSize);
  (void)table->AddDataBool(kFreezeID, false, kParameterSize);
  (void)table->AddDataFloat(kVisibilityID, 1.0, kParameterSize);
  (void)table->AddDataBool(kRenderableID, true, kParameterSize);
  (void)table->AddDataBool(kReceiveShadowsID, true, kParameterSize);
  (void)table->AddDataBool(kCastShadowsID, true, kParameterSize);
  table->UpdateIDToIndex();
  (void)table->SetDataName(kHideID, "hide");
  (void)table->SetDataName(kFreezeID, "freeze");
  (void)table->SetDataName(kVisibilityID, "visibility");
  (void)table->SetDataName(kRenderableID, "renderable");
  (void)table->SetDataName(kReceiveShadowsID, "receive_shadows");
  (void)table->SetDataName(kCastShadowsID, "cast_shadows");
}

Block* Node::Clone() {
  auto* copy = new Node(false);
  copy->m_name = m_name;
  copy->m_node_color = m_node_color;
  if (Object* object = GetObject()) {
    Object* object_copy = internal::CloneAs<Object>(object);
    if (object_copy != nullptr && !copy->SetObject(object_copy).IsOk()) {
      ReleaseIfUnlinked(object_copy);
    }
  }
  if (NodeTransform* transform = GetNodeTransform()) {
    NodeTransform* transform_copy = internal::CloneAs<NodeTransform>(transform);
    if (transform_copy != nullptr && !copy->SetNodeTransform(transform_copy).IsOk()) {
      ReleaseIfUnlinked(transform_copy);
    }
  }
  if (m_material != nullptr) {
    m_material->UpdateDataTable(false);
    Block* material_copy = m_material->Clone();
    if (!copy->SetMaterial(material_copy).IsOk()) ReleaseIfUnlinked(material_copy);
  }
  (void)copy->MakeDependencyByID(kChildrenSlot, new BlockTable(true));
  if (GetDataTable() != nullptr) {
    UpdateDataTable(false);
    DataTable* table_copy = internal::CloneAs<DataTable>(GetDataTable());
    (void)copy->SetDataTable(table_copy);
    ReleaseIfUnlinked(table_copy);
    copy->UpdateDataTable(false);
  }
  return copy;
}

int Node::Save(SceneSave* save) {
  save->BeginChunk(kNameChunk);
  save->WriteString(m_name);
  save->EndChunk();
  save->BeginChunk(kColorChunk);
  save->WriteFloat(m_node_color.r);
  save->WriteFloat(m_node_color.g);
  save->WriteFloat(m_node_color.b);
  save->EndChunk();
  return 1;
}

int Node::Load(SceneLoad* load) {
  int opened = SceneLoad::kError;
  while ((opened = load->OpenChunk()) == SceneLoad::kChunkOpened) {
    switch (load->CurChunkID()) {
      case kNameChunk:
        load->ReadString(m_name);
        break;
      case kColorChunk:
        load->ReadFloat(m_node_color.r);
        load->ReadFloat(m_node_color.g);
        load->ReadFloat(m_node_color.b);
        break;
      default:
        break;
    }
    load->CloseChunk();
  }
  return opened == SceneLoad::kError ? 0 : 1;
}

void Node::DeleteThis() { delete this; }

void Node::ProcessEvent(BlockEvent event) {
  Block* sender = event.block;
  if (sender == nullptr) return;
  int code = -1;
  if (sender == this) {
    if (event.code == 2 && event.param == kMaterialSlot) code = 18;
    if (event.code == 2 && event.param == kObjectSlot) code = 8;
  } else if (sender == m_object.Raw()) {
    if (event.code == 9) code = 9;
  } else if (sender == m_data_table.Raw()) {
    code = 3;
  } else if (sender == m_node_transform.Raw()) {
    switch (event.code) {
      case 4:
      case 5:
      case 6:
      case 7:
      case 12:
      case 13:
        code = event.code;
        break;
      default:
        break;
    }
  } else if (sender == m_material) {
    if (event.code == 3 || event.code == 19) code = 19;
    if (event.code == 20) code = 20;
    if (event.code == 16) code = 16;
  }
  if (code >= 0) PostEvent(BlockEvent(this, code, 0));
}

// ---- Copying for editing ----

Node* Node::Clone(int mode, bool) {
  auto* copy = new Node(false);
  copy->m_name = m_name;
  copy->m_node_color = m_node_color;
  if (Object* object = GetObject()) {
    if (mode == 0) {
      Object* object_copy = internal::CloneAs<Object>(object);
      if (object_copy != nullptr && !copy->SetObject(object_copy).IsOk()) {
        ReleaseIfUnlinked(object_copy);
      }
    } else if (mode == 1) {
      (void)copy->SetObject(object);
    }
  }
  if (m_material != nullptr) {
    m_material->UpdateDataTable(false);
    if (mode == 0) {
      Block* material_copy = m_material->Clone();
      if (!copy->SetMaterial(material_copy).IsOk()) ReleaseIfUnlinked(material_copy);
    } else if (mode == 1) {
      (void)copy->SetMaterial(m_material);
    }
  }
  if (NodeTransform* transform = GetNodeTransform()) {
    // Kept as is: the copy's transform is stored as a plain field, without a back reference
    // to the copy and without an event. Duplicating tools have always made copies this way
    // and rely on the copy not hearing its transform until it is re-linked. The copy still
    // releases it when it goes, since a block with no back reference left is released by the
    // release of any slot that holds it.
    copy->SetDependency(kTransformSlot, transform->Clone());
  }
  (void)copy->MakeDependencyByID(kChildrenSlot, new BlockTable(true));
  // The parent's status is not reported: the copy is returned either way.
  if (m_parent != nullptr) (void)m_parent->AddChild(copy);
  return copy;
}

// ---- Name ----

void Node::SetName(std::string name) {
  m_name = std::move(name);
  PostEvent(3, 0);
}

// ---- Children ----

BlockTable* Node::EnsureChildren() {
  if (m_children.Get() == nullptr) {
    (void)MakeDependencyByID(kChildrenSlot, new BlockTable(true));
  }
  return m_children.Get();
}

Status Node::AddChild(Node* child) {
  if (child == nullptr) {
    return Status(Status::kInvalidArgument, "Node::AddChild : child_node parameter is not valid.");
  }
  if (IsChild(child)) return Status();
  if (!OkToSetAsDependency(child)) {
    return Status(Status::kFailed, "Node::AddChild : This node is a dependency of the child node.");
  }
  NodeTransform* transform = GetNodeTransform();
  NodeTransform* child_transform = child->GetNodeTransform();
  if (child_transform != nullptr && !child_transform->OkToSetAsDependency(transform)) {
    return Status(Status::kFailed,
                  "Node::AddChild : The child_node_transform is a dependency of this node's "
                  "m_node_transform.");
  }
  if (child_transform != nullptr) (void)child_transform->SetParentTransform(transform);
  EnsureChildren()->PushBack(child);
  // The child is held by this node's table now, so the former parent may let go of it.
  Node* former_parent = child->m_parent;
  child->m_parent = this;
  if (former_parent != nullptr && former_parent != this) (void)former_parent->RemoveChild(child);
  PostEvent(2, 0);
  return Status();
}

Status Node::RemoveChild(Node* child) {
  if (BlockTable* children = m_children.Get()) {
    const int count = static_cast<int>(children->GetNumBlocks());
    for (int i = 0; i < count; ++i) {
      if (children->GetBlock(i) != child) continue;
      // Before the erase: the child may be deleted by it.
      if (child != nullptr && child->m_parent == this) child->m_parent = nullptr;
      children->Erase(i);
      return Status();
    }
  }
  return Status(Status::kNotApplicable,
                "Node::RemoveChild : The child_node was not a child of this node.");
}

int Node::GetNumChildren() const {
  const BlockTable* children = m_children.Get();
  return children != nullptr ? static_cast<int>(children->GetNumBlocks()) : 0;
}

Node* Node::GetChild(int index) const {
  const BlockTable* children = m_children.Get();
  return children != nullptr ? dynamic_cast<Node*>(children->GetBlock(index)) : nullptr;
}

bool Node::IsChild(Node* child) const {
  const BlockTable* children = m_children.Get();
  return children != nullptr && children->IsBlock(child);
}

void Node::GetDecendants(std::vector<Node*>& out) const {
  // Pre-order with an explicit stack, so a hierarchy of any depth is listed without deep
  // recursion, in the order a recursive walk gives.
  struct Frame {
    const Node* node;
    int next_child;
  };
  std::vector<Frame> stack;
  stack.push_back({this, 0});
  while (!stack.empty()) {
    Frame& top = stack.back();
    if (top.next_child >= top.node->GetNumChildren()) {
      stack.pop_back();
      continue;
    }
    Node* child = top.node->GetChild(top.next_child++);
    if (child == nullptr) continue;
    out.push_back(child);
    stack.push_back({child, 0});
  }
}

// ---- Object, material, transform ----

Status Node::SetObject(Object* object) {
  if (object != nullptr && !SceneEngine::IsObject(object)) {
    return Status(Status::kInvalidArgument, "Node::SetObject : The block is not a valid object.");
  }
  return MakeDependencyByID(kObjectSlot, object);
}

Status Node::SetMaterial(Block* material) {
  if (material != nullptr && !SceneEngine::IsMaterial(material)) {
    return Status(Status::kInvalidArgument,
                  "Node::SetMaterial : The block is not a valid material.");
  }
  return MakeDependencyByID(kMaterialSlot, material);
}

Status Node::SetNodeTransform(NodeTransform* transform) {
  if (transform != nullptr && !SceneEngine::IsNodeTransform(transform)) {
    return Status(Status::kInvalidArgument,
                  "Node::SetNodeTransform : The block is not a valid NodeTransform.");
  }
  return MakeDependencyByID(kTransformSlot, transform);
}

Matrix3Controller* Node::GetNodeTransformController() const {
  NodeTransform* transform = GetNodeTransform();
  return transform != nullptr ? transform->GetNodePRS() : nullptr;
}

Status Node::SetNodeTransformController(Matrix3Controller* controller) {
  if (controller != nullptr && !SceneEngine::IsControl(controller)) {
    return Status(Status::kInvalidArgument,
                  "Node::SetNodeTransformController : The block is not a valid "
                  "Matrix3Controller.");
  }
  NodeTransform* transform = GetNodeTransform();
  if (transform == nullptr) {
    // The spelling of the message is kept: host code compares it.
    return Status(Status::kFailed,
                  "Node::SetNodeTransformController : m_node_transform is not initialiced.");
  }
  return transform->SetNodePRS(controller);
}

// ---- Aiming ----

namespace {

// The node's transform controller when it is a look-at controller, else null.
Matrix3Controller* LookAtController(const Node& node) {
  Matrix3Controller* controller = node.GetNodeTransformController();
  return controller != nullptr && controller->GetBlockType() == kLookAtControllerType ? controller
                                                                                      : nullptr;
}

}  // namespace

Status Node::SetLookAtAimNode(Node* aim) {
  // The controller's own setter links the node into this slot and drops the status; so does
  // this one.
  if (Matrix3Controller* controller = LookAtController(*this)) {
    (void)controller->MakeDependencyByID(kAimNodeSlot, aim);
  }
  return Status();
}

Status Node::SetLookAtUpNode(Node* up) {
  if (Matrix3Controller* controller = LookAtController(*this)) {
    (void)controller->MakeDependencyByID(kUpNodeSlot, up);
  }
  return Status();
}

Node* Node::GetLookAtAimNode() const {
  assert(GetNodeTransform() != nullptr && "Node::GetLookAtAimNode needs a transform");
  Matrix3Controller* controller = LookAtController(*this);
  return controller != nullptr ? dynamic_cast<Node*>(controller->GetDependency(kAimNodeSlot))
                               : nullptr;
}

Node* Node::GetLookAtUpNode() const {
  assert(GetNodeTransform() != nullptr && "Node::GetLookAtUpNode needs a transform");
  Matrix3Controller* controller = LookAtController(*this);
  return controller != nullptr ? dynamic_cast<Node*>(controller->GetDependency(kUpNodeSlot))
                               : nullptr;
}

// ---- Matrices ----

Matrix3<double> Node::GetAbsoluteTM(int time) const {
  // The local matrices from this node up to the root, each taken before its parent's, then
  // multiplied from the root down: the same products, in the same grouping, as
  // local(node) * GetAbsoluteTM(parent) computed recursively.
  std::vector<Matrix3<double>> locals;
  for (const Node* node = this; node != nullptr; node = node->m_parent) {
    Matrix3Controller* controller = node->GetNodeTransformController();
    locals.push_back(controller != nullptr ? controller->GetMatrix3(time)
                                           : Matrix3<double>::Identity());
  }
  Matrix3<double> result = locals.back();
  for (std::size_t i = locals.size() - 1; i-- > 0;) result = locals[i] * result;
  return result;
}

void Node::SetAbsoluteTM(Matrix3<double> matrix, int time) {
  Matrix3Controller* controller = GetNodeTransformController();
  assert(controller != nullptr && "Node::SetAbsoluteTM needs a transform with a controller");
  // Kept as is: the parent's matrix is not factored out. Scenes and tools were built on the
  // matrix becoming the local transform.
  if (controller != nullptr) controller->SetMatrix3(matrix, time);
}

// ---- The object chain ----

Object* Node::BuildObject(int time) {
  Object* object = GetObject();
  return object != nullptr ? object->BuildObject(time, this) : nullptr;
}

Object* Node::UnbuildObject(int time) {
  Object* object = GetObject();
  return object != nullptr ? object->UnbuildObject(time, this) : nullptr;
}

Object* Node::GetBaseObject() const {
  Object* current = GetObject();
  while (current != nullptr && current->GetBlockType().class_id == 520) {
    auto* stacked = dynamic_cast<ObjectModifier*>(current);
    if (stacked == nullptr) break;  // a host block that claims the class id: nothing below
    current = stacked->GetObjectToModify();
  }
  return current;
}

void Node::Collapse(int time) {
  Object* object = GetObject();
  if (object == nullptr) return;
  Object* built = object->BuildObject(time, this);
  Object* copy = internal::CloneAs<Object>(built);
  if (copy == nullptr) return;
  // A refused copy is not reported; it is released instead of leaking.
  if (!SetObject(copy).IsOk()) ReleaseIfUnlinked(copy);
}

void Node::RemoveAllModifiers() {
  Object* current = GetObject();
  if (AsObjectModifier(current) == nullptr) return;
  while (ObjectModifier* stacked = AsObjectModifier(current)) {
    current = stacked->GetObjectToModify();
  }
  // The status is not reported; the object-modifiers released here go with their last link.
  (void)SetObject(current);
}

Status Node::RemoveModifier(Modifier* modifier) {
  Object* object = GetObject();
  if (object == nullptr) return Status();
  (void)object->UnbuildObject(0, this);
  ObjectModifier* holder = nullptr;  // null: the holder is this node
  ObjectModifier* found = AsObjectModifier(object);
  while (found != nullptr && found->GetModifier() != modifier) {
    holder = found;
    Object* below = found->GetObjectToModify();
    if (below == nullptr) return Status();
    found = AsObjectModifier(below);
  }
  if (found == nullptr) return Status();  // the chain ended on a plain object
  Object* below = found->GetObjectToModify();
  // Statuses are not reported: the operation always succeeds.
  if (holder != nullptr) {
    (void)holder->SetObjectToModify(below);
  } else {
    (void)SetObject(below);
  }
  return Status();
}

// ---- Display parameters ----

bool Node::GetHide() const {
  const DataTable* table = GetDataTable();
  return table != nullptr && table->GetBool(kHideID, 0, 0);
}

void Node::SetHide(bool hide) {
  if (DataTable* table = GetDataTable()) (void)table->SetValue(kHideID, hide, 0, 0);
}

bool Node::GetFreeze() const {
  const DataTable* table = GetDataTable();
  return table != nullptr && table->GetBool(kFreezeID, 0, 0);
}

void Node::SetFreeze(bool freeze) {
  if (DataTable* table = GetDataTable()) (void)table->SetValue(kFreezeID, freeze, 0, 0);
}

double Node::GetVisibility(int time) const {
  const DataTable* table = GetDataTable();
  return table != nullptr ? table->GetFloat(kVisibilityID, time, 0) : -1.0;
}

void Node::SetVisibility(double visibility, int time) {
  if (DataTable* table = GetDataTable()) (void)table->SetValue(kVisibilityID, visibility, time, 0);
}

bool Node::GetRendereable() const {
  const DataTable* table = GetDataTable();
  return table != nullptr && table->GetBool(kRenderableID, 0, 0);
}

void Node::SetRenderable(bool renderable) {
  if (DataTable* table = GetDataTable()) (void)table->SetValue(kRenderableID, renderable, 0, 0);
}

bool Node::GetReceiveShadows() const {
  const DataTable* table = GetDataTable();
  return table != nullptr && table->GetBool(kReceiveShadowsID, 0, 0);
}

void Node::SetReceiveShadows(bool receive) {
  if (DataTable* table = GetDataTable()) (void)table->SetValue(kReceiveShadowsID, receive, 0, 0);
}

bool Node::GetCastShadows() const {
  const DataTable* table = GetDataTable();
  return table != nullptr && table->GetBool(kCastShadowsID, 0, 0);
}

void Node::SetCastShadows(bool cast) {
  if (DataTable* table = GetDataTable()) (void)table->SetValue(kCastShadowsID, cast, 0, 0);
}

BlockType NodeFactory::GetBlockType() const { return Node::m_block_type; }

Block* NodeFactory::GetBlock(bool create_defaults) const { return new Node(create_defaults); }

std::string NodeFactory::GetName() const { return "Node"; }

}  // namespace Orlo
