#include <orlo/base/engine/scene_engine.h>

#include <memory>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_factory.h>

namespace Orlo {

namespace {

SceneEngine* g_current_engine = nullptr;

// The registry; it owns the factories it holds.
std::vector<std::unique_ptr<BlockFactory>>& Factories() {
  static std::vector<std::unique_ptr<BlockFactory>> factories;
  return factories;
}

bool HasClassId(Block* block, unsigned class_id) {
  return block != nullptr && block->GetBlockType().class_id == class_id;
}

}  // namespace

SceneEngine* SceneEngine::GetScene() { return g_current_engine; }

void SceneEngine::SetScene(SceneEngine* engine) { g_current_engine = engine; }

void SceneEngine::BlockIsBeingDeleted(Block*) {}

void SceneEngine::ListenerIsBeingDeleted(BlockListener*) {}

bool SceneEngine::IsNode(Block* block) { return HasClassId(block, 115); }
bool SceneEngine::IsNodeTransform(Block* block) { return HasClassId(block, 110); }
bool SceneEngine::IsDataTable(Block* block) { return HasClassId(block, 205); }
bool SceneEngine::IsControl(Block* block) { return HasClassId(block, 300); }
bool SceneEngine::IsMaterial(Block* block) { return HasClassId(block, 405); }
bool SceneEngine::IsTexture(Block* block) { return HasClassId(block, 410); }
bool SceneEngine::IsTextureTransform(Block* block) { return HasClassId(block, 415); }
bool SceneEngine::IsBaseObject(Block* block) { return HasClassId(block, 505); }
bool SceneEngine::IsPrimitiveObject(Block* block) { return HasClassId(block, 510); }
bool SceneEngine::IsRawObject(Block* block) { return HasClassId(block, 515); }
bool SceneEngine::IsObjectModifier(Block* block) { return HasClassId(block, 520); }
bool SceneEngine::IsCamera(Block* block) { return HasClassId(block, 600); }
bool SceneEngine::IsLight(Block* block) { return HasClassId(block, 700); }
bool SceneEngine::IsModifier(Block* block) { return HasClassId(block, 800); }

bool SceneEngine::IsObject(Block* block) {
  if (block == nullptr) return false;
  const unsigned class_id = block->GetBlockType().class_id;
  return class_id >= 500 && class_id < 800;
}

void SceneEngine::AddBlockFactory(BlockFactory* factory) {
  if (factory == nullptr) return;
  const BlockType type = factory->GetBlockType();
  for (const auto& registered : Factories()) {
    if (registered->GetBlockType() == type) return;
  }
  Factories().emplace_back(factory);
}

BlockFactory* SceneEngine::GetBlockFactory(unsigned index) {
  return index < Factories().size() ? Factories()[index].get() : nullptr;
}

unsigned SceneEngine::GetNumBlockFactories() { return static_cast<unsigned>(Factories().size()); }

void SceneEngine::DestroyFactories() {
  // One by one in registration order (clearing the list alone leaves the order to the
  // standard library), each entry emptied as its factory goes; then the list is cleared.
  for (std::unique_ptr<BlockFactory>& factory : Factories()) factory.reset();
  Factories().clear();
}

}  // namespace Orlo
