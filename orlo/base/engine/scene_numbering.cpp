// The engine's walks over the block graph: resetting and numbering the blocks, listing them,
// calling PostLoad, and listing the scene's nodes.
//
// Each walk is depth first over the non-null slots in ascending order and keeps the visiting
// order of the plain recursive description, but holds its path in an explicit work stack, so
// a scene of any depth is walked with the default thread stack.
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/block/internal/walk_path.h>
#include <orlo/base/engine/internal/block_marking.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/node.h>

namespace Orlo {

namespace {

// One block of a walk's current path and the next of its slots to look at.
struct Frame {
  Block* block;
  int next_slot;
};

// Walks every path down from `root`, which the caller has entered, in pre-order, never
// entering a block that is on the current path. `enter(dependency)` is asked for each
// non-null slot in turn and says whether the walk goes into that block.
template <typename Enter>
void WalkEveryPath(Block* root, Enter&& enter) {
  internal::WalkPath path;
  std::vector<Frame> stack;
  path.Push(root);
  stack.push_back({root, 0});
  while (!stack.empty()) {
    Frame& top = stack.back();
    if (top.next_slot >= top.block->NumDependencies()) {
      path.Pop();
      stack.pop_back();
      continue;
    }
    Block* dependency = top.block->GetDependency(top.next_slot++);
    if (dependency == nullptr || path.Contains(dependency) || !enter(dependency)) continue;
    path.Push(dependency);
    stack.push_back({dependency, 0});
  }
}

}  // namespace

void SceneEngine::InitBlocks(Block* block) {
  if (block == nullptr) return;
  // Resetting is idempotent, so a block reached by a second path need not be walked again:
  // the result is that of walking every path, at a cost linear in the blocks. Every path
  // would matter in a scene: each node's transform links its parent's transform, so on a
  // chain of nodes a per-path walk is quadratic in the depth.
  //
  // Marking a block with its position in the walk is what lets the walk tell it was reached;
  // once the walk is over every reached block is reset.
  for (Block* reached : internal::MarkReachableInPreOrder(block)) reached->SetID(Block::kNoID);
}

void SceneEngine::SetBlockIDs() {
  assert(m_main_scene != nullptr && "SetBlockIDs requires a main scene");
  Block* scene = m_main_scene;
  if (scene->GetID() != Block::kNoID) {
    // The graph was not reset: nothing is numbered, and the count says so.
    m_num_blocks = 0;
    return;
  }
  scene->SetID(0);
  int next_id = 1;
  for (int slot = 0; slot < scene->NumDependencies(); ++slot) {
    Block* dependency = scene->GetDependency(slot);
    if (dependency != nullptr) SetIDToBlock(dependency, next_id);
  }
  m_num_blocks = next_id;
}

void SceneEngine::SetIDToBlock(Block* block, int& next_id) {
  if (block == nullptr || block->GetID() != Block::kNoID) return;
  // A block on the current path has its number already, so the first-visit rule also keeps
  // the walk from entering a cycle.
  std::vector<Frame> stack;
  block->SetID(static_cast<std::uint32_t>(next_id++));
  stack.push_back({block, 0});
  while (!stack.empty()) {
    Frame& top = stack.back();
    if (top.next_slot >= top.block->NumDependencies()) {
      stack.pop_back();
      continue;
    }
    Block* dependency = top.block->GetDependency(top.next_slot++);
    if (dependency == nullptr || dependency->GetID() != Block::kNoID) continue;
    dependency->SetID(static_cast<std::uint32_t>(next_id++));
    stack.push_back({dependency, 0});
  }
}

void SceneEngine::EnumBlocks(std::vector<Block*>& out) {
  assert(m_main_scene != nullptr && "EnumBlocks requires a main scene");
  InitBlocks(m_main_scene);
  int counter = 0;
  EnumBlock(m_main_scene, counter, out);
}

void SceneEngine::EnumBlock(Block* block, int& /*counter*/, std::vector<Block*>& out) {
  // Kept as is: the walk neither numbers nor marks what it lists, so a block reached by
  // several paths is listed once per path. Hosts count a block's uses this way.
  if (block == nullptr || block->GetID() != Block::kNoID) return;
  out.push_back(block);
  WalkEveryPath(block, [&out](Block* dependency) {
    if (dependency->GetID() != Block::kNoID) return false;
    out.push_back(dependency);
    return true;
  });
}

void SceneEngine::CallPostLoad(Block* block) {
  if (block == nullptr) return;
  // Kept as is: a shared block gets PostLoad once per path, as blocks written for this
  // library expect. The slot count is read again at every step (a PostLoad may add slots).
  block->PostLoad();
  WalkEveryPath(block, [](Block* dependency) {
    dependency->PostLoad();
    return true;
  });
}

void SceneEngine::GetAllSceneNodes(std::vector<Node*>& out) {
  assert(m_main_scene != nullptr && "GetAllSceneNodes requires a main scene");
  Node* main_node = GetMainNode();
  if (main_node != nullptr) main_node->GetDecendants(out);
}

}  // namespace Orlo
