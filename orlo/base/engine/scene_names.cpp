// Names across block kinds: nodes, modifiers, materials and textures carry a name, each in its
// own way; the engine reads and writes it by the block's class id.
#include <orlo/base/block/block.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/material.h>
#include <orlo/base/scene/modifier.h>
#include <orlo/base/scene/node.h>

namespace Orlo {

namespace {

// The class ids of the named kinds, tested in this order.
constexpr unsigned kNodeClassId = 115;
constexpr unsigned kModifierClassId = 800;
constexpr unsigned kMaterialClassId = 405;
constexpr unsigned kTextureClassId = 410;

// A block whose class id claims a kind is normally of that class; one that only claims it (a
// block of another library with a borrowed id) is treated as unnamed rather than misread.
template <typename T>
T* As(Block* block) {
  return dynamic_cast<T*>(block);
}

}  // namespace

std::string SceneEngine::GetName(Block* block) {
  if (block == nullptr) return std::string();
  if (block->GetBlockType().class_id == kNodeClassId) {
    Node* node = As<Node>(block);
    return node != nullptr ? node->GetName() : std::string();
  }
  if (block->GetBlockType().class_id == kModifierClassId) {
    Modifier* modifier = As<Modifier>(block);
    return modifier != nullptr ? modifier->GetName() : std::string();
  }
  if (block->GetBlockType().class_id == kMaterialClassId ||
      block->GetBlockType().class_id == kTextureClassId) {
    // A texture is a material and names itself through the material's operations.
    Material* material = As<Material>(block);
    return material != nullptr ? material->GetName() : std::string();
  }
  return std::string();
}

void SceneEngine::SetName(Block* block, std::string name) {
  if (block == nullptr) return;
  if (block->GetBlockType().class_id == kNodeClassId) {
    if (Node* node = As<Node>(block)) node->SetName(std::move(name));
    return;
  }
  if (block->GetBlockType().class_id == kModifierClassId) {
    if (Modifier* modifier = As<Modifier>(block)) modifier->SetName(std::move(name));
    return;
  }
  if (block->GetBlockType().class_id == kMaterialClassId ||
      block->GetBlockType().class_id == kTextureClassId) {
    if (Material* material = As<Material>(block)) material->SetName(std::move(name));
  }
}

bool SceneEngine::HasName(Block* block) {
  if (block == nullptr) return false;
  const unsigned class_id = block->GetBlockType().class_id;
  return class_id == kNodeClassId || class_id == kModifierClassId || class_id == kMaterialClassId ||
         class_id == kTextureClassId;
}

}  // namespace Orlo
