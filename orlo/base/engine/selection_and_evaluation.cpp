// The engine's selection, the evaluation of the node hierarchy at a time, and the refresh of
// every parameter table of the scene.
#include <algorithm>
#include <cstdint>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_paths.h>
#include <orlo/base/block/block_table.h>
#include <orlo/base/block/internal/visited_set.h>
#include <orlo/base/block/internal/walk_path.h>
#include <orlo/base/controllers/matrix3_controller.h>
#include <orlo/base/engine/internal/child_warmer.h>
#include <orlo/base/engine/internal/node_walk.h>
#include <orlo/base/engine/internal/numbered_set.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/node.h>

namespace Orlo {

namespace {

// A node's own matrix at `time`, as Node::GetAbsoluteTM takes it: the identity without a
// transform or controller.
Matrix3<double> LocalMatrix(const Node* node, int time) {
  Matrix3Controller* controller = node->GetNodeTransformController();
  return controller != nullptr ? controller->GetMatrix3(time) : Matrix3<double>::Identity();
}

// How many times the number of blocks a table refresh may visit before it stops walking once
// per path (see UpdateDataTables).
constexpr std::uint64_t kMaxVisitsPerBlock = 16;

}  // namespace

// ---- Selection ----

void SceneEngine::SelectNodes(std::vector<Node*>& nodes, int mode) {
  for (Node* node : m_selected_nodes) {
    if (node != nullptr) node->SetSelected(false);
  }
  switch (mode) {
    case 0:
      m_selected_nodes = nodes;
      break;
    case 1:
      // Duplicates are kept: a node given twice is selected twice.
      m_selected_nodes.insert(m_selected_nodes.end(), nodes.begin(), nodes.end());
      break;
    case 2:
      for (Node*& selected : m_selected_nodes) {
        if (std::find(nodes.begin(), nodes.end(), selected) != nodes.end()) selected = nullptr;
      }
      m_selected_nodes.erase(std::remove(m_selected_nodes.begin(), m_selected_nodes.end(), nullptr),
                             m_selected_nodes.end());
      break;
    default:
      break;
  }
  for (Node* node : m_selected_nodes) {
    if (node != nullptr) node->SetSelected(true);
  }
}

unsigned SceneEngine::GetNumSelectedNodes() const {
  return static_cast<unsigned>(m_selected_nodes.size());
}

Node* SceneEngine::GetSelectedNode(unsigned index) const {
  return index < m_selected_nodes.size() ? m_selected_nodes[index] : nullptr;
}

// ---- Evaluation ----

void SceneEngine::EvaluateNode(Node* node, int time) {
  if (node == nullptr) return;
  (void)node->BuildObject(time);
  internal::ForEachNodeBelow(node, [time](Node*, Node* child) { (void)child->BuildObject(time); });
}

void SceneEngine::EvaluateScene(int time, bool) { EvaluateNode(GetMainNode(), time); }

void SceneEngine::ReevaluateAllNodes(int time) {
  // The list is taken first and built from afterwards, so a build that changes the hierarchy
  // does not change which nodes are built.
  std::vector<Node*> nodes;
  GetAllChildrenNodes(GetMainNode(), nodes);
  for (Node* node : nodes) (void)node->BuildObject(time);
}

void SceneEngine::GetAbsoluteTMs(int time, std::vector<NodeMatrix>& out) {
  Node* main_node = GetMainNode();
  if (main_node == nullptr) return;
  // Each entry's matrix is computed once and then multiplied into its children's, in the
  // order and grouping Node::GetAbsoluteTM uses (own matrix on the left, the parent's
  // absolute matrix on the right), so the results are the same to the last bit.
  //
  // The walk is ForEachNodeBelow's (pre-order, explicit stack, no node entered twice on one
  // path), written out so that each frame carries its node's entry and children table: this
  // pass is meant for every frame of an animation, and the per-node overhead counts.
  struct Frame {
    Node* node;
    const BlockTable* children;  // null when the node has none
    std::size_t entry;           // the node's entry in `out`
    int next_child;
  };
  std::vector<Frame> stack;
  internal::WalkPath path;
  internal::ChildWarmer warmer;
  auto enter = [&](Node* node, const Matrix3<double>& matrix) {
    out.push_back({node, matrix});
    stack.push_back({node, node->GetChildren(), out.size() - 1, 0});
    path.Push(node);
  };
  enter(main_node, main_node->GetAbsoluteTM(time));
  while (!stack.empty()) {
    Frame& frame = stack.back();
    // The count is read again at each step, as every walk of the hierarchy does.
    if (frame.children == nullptr ||
        frame.next_child >= static_cast<int>(frame.children->GetNumBlocks())) {
      stack.pop_back();
      path.Pop();
      continue;
    }
    if (frame.next_child % internal::ChildWarmer::kBatch == 0)
      warmer.Warm(*frame.children, frame.next_child);
    auto* child = dynamic_cast<Node*>(frame.children->GetBlock(frame.next_child++));
    if (child == nullptr || path.Contains(child)) continue;
    // GetAbsoluteTM follows the node's parent pointer. That is the node whose children table
    // holds it in every scene the engine and Node build; any other node is evaluated on its
    // own so that the result stays the one GetAbsoluteTM gives.
    if (child->GetParent() == frame.node) {
      enter(child, LocalMatrix(child, time) * out[frame.entry].matrix);
    } else {
      enter(child, child->GetAbsoluteTM(time));
    }
  }
}

// ---- Parameter tables ----

void SceneEngine::UpdateDataTables() {
  if (m_main_scene != nullptr) UpdateDataTables(m_main_scene);
}

void SceneEngine::UpdateDataTables(Block* block) {
  if (block == nullptr) return;
  // A block reachable along several paths is refreshed once per path, in pre-order. A scene
  // can have far more paths than blocks, though: every node's transform holds its parent's
  // transform, so the transforms of a chain of n nodes are reached about n * n / 2 times.
  // When the paths outnumber the blocks by more than kMaxVisitsPerBlock, each block is
  // refreshed once instead, at its first visit in the same pre-order; a refresh repeats
  // without effect (an id the table holds already keeps its value), so the tables end the
  // same either way.
  const PathTotals totals = CountPathTotals(block);
  RefreshDataTables(block, totals.visits / kMaxVisitsPerBlock <= totals.blocks);
}

namespace {

// The slot count is read before the block's own refresh, as the walk has always done.
struct RefreshFrame {
  Block* block;
  int num_slots;
  int next_slot;
};

RefreshFrame Refresh(Block* block) {
  const int num_slots = block->NumDependencies();
  block->UpdateDataTable(false);
  return {block, num_slots, 0};
}

void RefreshOncePerPath(Block* block) {
  std::vector<RefreshFrame> stack{Refresh(block)};
  internal::WalkPath path;
  path.Push(block);
  while (!stack.empty()) {
    RefreshFrame& frame = stack.back();
    if (frame.next_slot >= frame.num_slots) {
      stack.pop_back();
      path.Pop();
      continue;
    }
    Block* dependency = frame.block->GetDependency(frame.next_slot++);
    if (dependency == nullptr || path.Contains(dependency)) continue;
    stack.push_back(Refresh(dependency));
    path.Push(dependency);
  }
}

template <typename Set>
void RefreshOncePerBlock(Block* block, Set& refreshed) {
  // Every block on the current path was refreshed on the way down, so the refreshed set
  // keeps the walk out of cycles as the path would.
  refreshed.Insert(block);
  std::vector<RefreshFrame> stack{Refresh(block)};
  while (!stack.empty()) {
    RefreshFrame& frame = stack.back();
    if (frame.next_slot >= frame.num_slots) {
      stack.pop_back();
      continue;
    }
    Block* dependency = frame.block->GetDependency(frame.next_slot++);
    if (dependency == nullptr || !refreshed.Insert(dependency)) continue;
    stack.push_back(Refresh(dependency));
  }
}

}  // namespace

void SceneEngine::RefreshDataTables(Block* block, bool once_per_path,
                                    const std::vector<Block*>* numbered) {
  if (once_per_path) {
    RefreshOncePerPath(block);
  } else if (numbered != nullptr) {
    internal::NumberedSet refreshed(*numbered);
    RefreshOncePerBlock(block, refreshed);
  } else {
    internal::VisitedSet refreshed;
    RefreshOncePerBlock(block, refreshed);
  }
}

}  // namespace Orlo
