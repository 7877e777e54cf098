// The engine's modifier application: inserting object modifiers into nodes' object chains,
// with one undo record per relinking, and finding the object modifier of a modifier.
#include <cstddef>
#include <vector>

#include <orlo/base/engine/replace_dependency_state_container.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/modifier.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/object.h>
#include <orlo/base/scene/object_modifier.h>
#include <orlo/support/box3.h>
#include <orlo/support/math.h>
#include <orlo/support/matrix3.h>

namespace Orlo {

namespace {

// The object slot of a node and the object-to-modify slot of an object modifier.
constexpr int kNodeObjectSlot = 1;
constexpr int kObjectModifierBaseSlot = 1;

// The object flags that let a modifier be inserted: bit 22 or bit 23.
constexpr int kModifiableFlags = 0x400000 | 0x800000;

bool IsModifiable(Object* built) {
  return built != nullptr && (built->Flags() & kModifiableFlags) != 0;
}

// Links `object_modifier` between `holder` (a node or an object modifier) and the object
// below it, recording both relinkings before making them. A holder of any other kind is left
// alone, and the object modifier, which nothing then holds, is released.
void LinkUnder(Block* holder, ObjectModifier* object_modifier) {
  if (SceneEngine::IsNode(holder)) {
    auto* node = static_cast<Node*>(holder);
    Object* below = node->GetObject();
    SceneEngine::StateRecorderPut(
        new ReplaceDependencyStateContainer(object_modifier, kObjectModifierBaseSlot, below));
    (void)object_modifier->SetObjectToModify(below);
    SceneEngine::StateRecorderPut(
        new ReplaceDependencyStateContainer(node, kNodeObjectSlot, object_modifier));
    (void)node->SetObject(object_modifier);
  } else if (SceneEngine::IsObjectModifier(holder)) {
    auto* above = static_cast<ObjectModifier*>(holder);
    Object* below = above->GetObjectToModify();
    SceneEngine::StateRecorderPut(
        new ReplaceDependencyStateContainer(object_modifier, kObjectModifierBaseSlot, below));
    (void)object_modifier->SetObjectToModify(below);
    SceneEngine::StateRecorderPut(
        new ReplaceDependencyStateContainer(above, kObjectModifierBaseSlot, object_modifier));
    (void)above->SetObjectToModify(object_modifier);
  } else {
    object_modifier->DeleteThisBlock(true);
  }
}

}  // namespace

Status SceneEngine::AddModifierToNodes(std::vector<Node*> nodes, std::vector<Object*> objects,
                                       Modifier* modifier, int time) {
  Status status;
  // Kept as is: this form works on exactly one node and quietly ignores any other count;
  // hosts that insert into several nodes use the other form.
  if (nodes.size() != 1) return status;
  Node* node = nodes[0];
  if (node == nullptr) {
    return Status(Status::kFailed, "There should be at least one valid node.");
  }
  if (modifier == nullptr) return Status(Status::kFailed, "Modifier can't be NULL.");

  // The insertion point: the holder is the block whose object slot receives the new object
  // modifier. Walking down the chain stops at objects[0], so the modifier goes above it.
  Block* holder = node;
  std::vector<Object*> above;
  if (!objects.empty() && node->GetObject() != nullptr) {
    Object* element = node->GetObject();
    while (element != nullptr && element != objects[0]) {
      holder = element;
      above.push_back(element);
      if (!IsObjectModifier(element)) break;
      element = static_cast<ObjectModifier*>(element)->GetObjectToModify();
    }
  }

  // The modifiers above the insertion point must not take part in the build that decides
  // whether the object can be modified.
  std::vector<bool> was_active;
  for (Object* element : above) {
    if (!IsObjectModifier(element)) continue;
    Modifier* above_modifier = static_cast<ObjectModifier*>(element)->GetModifier();
    was_active.push_back(above_modifier != nullptr && above_modifier->IsActive());
    if (above_modifier != nullptr) above_modifier->SetActive(false);
  }

  Object* built = node->BuildObject(time);
  if (IsModifiable(built)) {
    ObjectModifier* object_modifier = modifier->GetNewObjectModifier();
    modifier->SetBox(built->GetObjectBoundingBox(time, nullptr));
    if (object_modifier != nullptr) {
      object_modifier->SetTransform(Matrix3<double>::Identity());
      LinkUnder(holder, object_modifier);
    }
    node->PostEvent(2, 0);
  }

  std::size_t next = 0;
  for (Object* element : above) {
    if (!IsObjectModifier(element)) continue;
    Modifier* above_modifier = static_cast<ObjectModifier*>(element)->GetModifier();
    if (above_modifier != nullptr) above_modifier->SetActive(was_active[next]);
    ++next;
  }
  return status;
}

bool SceneEngine::AddModifierToNodes(std::vector<Node*> nodes, Modifier* modifier, int time) {
  if (modifier == nullptr) return false;
  bool all_modifiable = true;
  // The modifier's box gathers every node's built object in world space, starting empty
  // (corners at +-MAX_REAL).
  constexpr double kMax = Math<double>::MAX_REAL;
  Box3<double> box(Point3<double>(kMax, kMax, kMax), Point3<double>(-kMax, -kMax, -kMax));
  for (Node* node : nodes) {
    if (node == nullptr) continue;
    Object* built = node->BuildObject(time);
    if (!IsModifiable(built)) {
      all_modifiable = false;
      continue;
    }
    Matrix3<double> world = node->GetAbsoluteTM(time);
    box += built->GetObjectBoundingBox(time, &world);
    ObjectModifier* object_modifier = modifier->GetNewObjectModifier();
    if (object_modifier != nullptr) {
      object_modifier->SetTransform(Matrix3<double>::Identity());
      LinkUnder(node, object_modifier);
    }
    node->PostEvent(2, 0);
  }
  modifier->SetBox(box);
  return all_modifiable;
}

ObjectModifier* SceneEngine::GetObjectModifier(Node* node, Modifier* modifier) {
  if (node == nullptr) return nullptr;
  Object* element = node->GetObject();
  while (element != nullptr && IsObjectModifier(element)) {
    auto* object_modifier = static_cast<ObjectModifier*>(element);
    if (object_modifier->GetModifier() == modifier) return object_modifier;
    element = object_modifier->GetObjectToModify();
  }
  return nullptr;
}

}  // namespace Orlo
