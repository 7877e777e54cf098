#include <orlo/base/scene/node_transform.h>

#include <orlo/base/controllers/matrix3_controller.h>
#include <orlo/base/controllers/transform3_controller.h>
#include <orlo/base/engine/scene_engine.h>

namespace Orlo {

namespace {

constexpr const char* kSlotNames[] = {"node_prs", "parent_transform"};
constexpr unsigned kSlotTypes[] = {300, 110};
constexpr char kNoSlot[] = "nil";

}  // namespace

NodeTransform::NodeTransform(bool create) {
  if (!create) return;
  // A fresh controller linked into a fresh transform: the link cannot be refused.
  (void)MakeDependencyByID(kNodePRSSlot, new Transform3Controller(true));
}

std::string NodeTransform::GetClassName() const { return "NodeTransform"; }

BlockType NodeTransform::GetBlockType() const { return m_block_type; }

int NodeTransform::NumDependencies() const { return kNumSlots; }

void NodeTransform::SetDependency(int index, Block* block) {
  if (index == kNodePRSSlot) {
    m_node_prs.Set(block);
  } else if (index == kParentTransformSlot) {
    m_parent_transform.Set(block);
  }
}

Block* NodeTransform::GetDependency(int index) const {
  if (index == kNodePRSSlot) return m_node_prs.Raw();
  if (index == kParentTransformSlot) return m_parent_transform.Raw();
  return nullptr;
}

std::string NodeTransform::GetDependencyName(int index) const {
  return index >= 0 && index < kNumSlots ? kSlotNames[index] : kNoSlot;
}

unsigned NodeTransform::GetDependencyType(int index) const {
  return index >= 0 && index < kNumSlots ? kSlotTypes[index] : 0;
}

Block* NodeTransform::Clone() {
  // The chain of parent transforms is copied level by level with a loop, so a chain of any
  // length is cloned without deep recursion. Each copy is linked under the copy below it
  // while it still has no parent of its own: the result is the one a recursive copy gives,
  // but every link's cycle test only meets a fresh block instead of the chain copied so far.
  auto* clone = new NodeTransform(false);
  NodeTransform* source = this;
  NodeTransform* level = clone;
  while (true) {
    if (auto* prs = internal::CloneAs<Matrix3Controller>(source->GetNodePRS())) {
      (void)level->SetNodePRS(prs);
    }
    NodeTransform* parent = source->GetParentTransform();
    if (parent == nullptr) break;
    auto* parent_copy = new NodeTransform(false);
    (void)level->SetParentTransform(parent_copy);
    level = parent_copy;
    source = parent;
  }
  return clone;
}

int NodeTransform::Save(SceneSave*) { return 1; }

int NodeTransform::Load(SceneLoad*) { return 1; }

void NodeTransform::DeleteThis() { delete this; }

void NodeTransform::ProcessEvent(BlockEvent event) {
  if (event.block == this) {
    if (event.code == 12 && event.param == 0) PostEvent(BlockEvent(this, 12, 0));
    return;
  }
  if (event.block != nullptr && event.block == m_node_prs.Raw() &&
      (event.code == 3 || event.code == 13)) {
    PostEvent(BlockEvent(this, 13, 0));
  }
}

Status NodeTransform::SetNodePRS(Matrix3Controller* controller) {
  if (controller != nullptr && SceneEngine::IsControl(controller)) {
    return MakeDependencyByID(kNodePRSSlot, controller);
  }
  return Status(Status::kInvalidArgument,
                "Node::SetNodePRS : The block is not a valid Controller.");
}

Status NodeTransform::SetParentTransform(NodeTransform* parent) {
  if (parent != nullptr && !SceneEngine::IsNodeTransform(parent)) {
    return Status(Status::kInvalidArgument,
                  "NodeTransform::SetParentTransform : The block is not a valid NodeTransform.");
  }
  return MakeDependencyByID(kParentTransformSlot, parent);
}

BlockType NodeTransformFactory::GetBlockType() const { return NodeTransform::m_block_type; }

Block* NodeTransformFactory::GetBlock(bool create_defaults) const {
  return new NodeTransform(create_defaults);
}

std::string NodeTransformFactory::GetName() const { return "NodeTransform"; }

}  // namespace Orlo
