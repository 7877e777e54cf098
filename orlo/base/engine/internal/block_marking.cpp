#include <orlo/base/engine/internal/block_marking.h>

#include <cassert>
#include <cstdint>

#include <orlo/base/block/block.h>

namespace Orlo::internal {

std::vector<Block*> MarkReachableInPreOrder(Block* root, std::size_t expected) {
  assert(root != nullptr && "MarkReachableInPreOrder requires a root");
  struct Frame {
    Block* block;
    int next_slot;
  };
  std::vector<Block*> reached;
  reached.reserve(expected);
  std::vector<Frame> stack;
  auto is_reached = [&reached](const Block* block) {
    const std::uint32_t id = block->GetID();
    return id < reached.size() && reached[id] == block;
  };
  auto mark = [&reached](Block* block) {
    block->SetID(static_cast<std::uint32_t>(reached.size()));
    block->SetSaved(0);
    reached.push_back(block);
  };
  mark(root);
  stack.push_back({root, 0});
  while (!stack.empty()) {
    Frame& top = stack.back();
    if (top.next_slot >= top.block->NumDependencies()) {
      stack.pop_back();
      continue;
    }
    Block* dependency = top.block->GetDependency(top.next_slot++);
    if (dependency == nullptr || is_reached(dependency)) continue;
    mark(dependency);
    stack.push_back({dependency, 0});
  }
  return reached;
}

}  // namespace Orlo::internal
