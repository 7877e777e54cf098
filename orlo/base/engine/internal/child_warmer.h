// Defines ChildWarmer, which brings the blocks that evaluating a batch of nodes reads into the
// cache ahead of the evaluation.
#pragma once

#include <algorithm>
#include <typeinfo>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_table.h>
#include <orlo/base/controllers/transform3_controller.h>
#include <orlo/base/scene/node.h>

namespace Orlo::internal {

// Evaluation reads, for each node, a chain of small blocks: the node, its transform, the
// transform's controller, and for the library's transform controller its position, rotation
// and scale controllers and their x, y and z controllers. Chased one node at a time, every
// link of the chain waits on memory in turn. ChildWarmer goes through the chains of a batch of
// children a level at a time, so that the loads of one level, which do not depend on each
// other, are in flight together, and the evaluation then finds the blocks in the cache. It
// only reads, through the documented slots.
class ChildWarmer {
 public:
  static constexpr int kBatch = 16;

  // Warms children `from` .. `from` + kBatch - 1 of `children` (those it has). A lone child
  // has nothing to overlap with and is left to the evaluation.
  void Warm(const BlockTable& children, int from) {
    const int end = std::min<int>(from + kBatch, static_cast<int>(children.GetNumBlocks()));
    if (end - from < 2) return;
    int num_controllers = 0;
    for (int i = from; i < end; ++i) {
      const auto* node = dynamic_cast<const Node*>(children.GetBlock(i));
      if (node == nullptr) continue;
      if (const BlockTable* table = node->GetChildren()) __builtin_prefetch(table);
      const Block* controller = node->GetNodeTransformController();
      if (controller != nullptr && &typeid(*controller) == &typeid(Transform3Controller)) {
        m_controllers[num_controllers++] = controller;
      }
    }
    int num_parts = 0;
    for (int i = 0; i < num_controllers; ++i) {
      for (int slot = kPositionSlot; slot <= kScaleSlot; ++slot) {
        if (const Block* part = m_controllers[i]->GetDependency(slot)) m_parts[num_parts++] = part;
      }
    }
    for (int i = 0; i < num_parts; ++i) {
      for (int axis = 0; axis < 3; ++axis) {
        if (const Block* component = m_parts[i]->GetDependency(axis)) {
          __builtin_prefetch(component);
        }
      }
    }
  }

 private:
  // A Transform3Controller's position, rotation and scale slots.
  static constexpr int kPositionSlot = 1;
  static constexpr int kScaleSlot = 3;
  const Block* m_controllers[kBatch];
  const Block* m_parts[kBatch * (kScaleSlot - kPositionSlot + 1)];
};

}  // namespace Orlo::internal
