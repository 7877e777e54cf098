#include <orlo/base/block/block_paths.h>

#include <cassert>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/block/internal/block_index.h>
#include <orlo/base/block/internal/saturating.h>

namespace Orlo {

namespace {

// One step of a depth-first walk over the non-null slots: the block, its number in the walk's
// index, and the next slot to follow.
struct Frame {
  const Block* block;
  std::uint32_t number;
  int num_slots;
  int next_slot;
};

// The blocks reachable from `root`, numbered in the order the walk first meets them
// (`blocks[number]`), and their numbers in post-order. Reversed, the post-order puts every
// block after all the blocks above it, once the edges that close a cycle are left out.
struct Reachable {
  internal::BlockIndex index;
  std::vector<const Block*> blocks;
  std::vector<std::uint32_t> post_order;
};

void WalkFrom(const Block* root, Reachable& reachable) {
  bool added = false;
  reachable.index.Insert(root, added);
  reachable.blocks.push_back(root);
  std::vector<Frame> stack{{root, 0, root->NumDependencies(), 0}};
  while (!stack.empty()) {
    Frame& top = stack.back();
    if (top.next_slot >= top.num_slots) {
      reachable.post_order.push_back(top.number);
      stack.pop_back();
      continue;
    }
    const Block* dependency = top.block->GetDependency(top.next_slot++);
    if (dependency == nullptr) continue;
    const std::uint32_t number = reachable.index.Insert(dependency, added);
    if (!added) continue;
    reachable.blocks.push_back(dependency);
    stack.push_back({dependency, number, dependency->NumDependencies(), 0});
  }
}

}  // namespace

std::unordered_map<const Block*, std::uint64_t> CountPathsFromRoot(const Block* root) {
  assert(root != nullptr);
  Reachable reachable;
  WalkFrom(root, reachable);
  const std::size_t n = reachable.blocks.size();
  // rank[number]: the block's place in reverse post-order.
  std::vector<std::size_t> rank(n);
  for (std::size_t i = 0; i < n; ++i) rank[reachable.post_order[n - 1 - i]] = i;
  std::vector<std::uint64_t> paths(n, 0);
  paths[0] = 1;
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint32_t number = reachable.post_order[n - 1 - i];
    const Block* block = reachable.blocks[number];
    const int num_slots = block->NumDependencies();
    for (int slot = 0; slot < num_slots; ++slot) {
      const Block* dependency = block->GetDependency(slot);
      if (dependency == nullptr) continue;
      const std::uint32_t below = reachable.index.Find(dependency);
      // An edge to a block that is not later in the order closes a cycle: a walk that never
      // re-enters a block on its current path does not follow it.
      if (rank[below] <= i) continue;
      paths[below] = internal::SaturatingAdd(paths[below], paths[number]);
    }
  }
  std::unordered_map<const Block*, std::uint64_t> by_block;
  by_block.reserve(n);
  for (std::size_t number = 0; number < n; ++number) {
    by_block.emplace(reachable.blocks[number], paths[number]);
  }
  return by_block;
}

PathTotals CountPathTotals(const Block* root) {
  assert(root != nullptr);
  // The paths from root are the paths that start at root. The paths that start at a block are
  // the block alone and, for each slot, those that start at the block in it; they are summed
  // as the walk leaves each block, when every block below it is done. A slot holding a block
  // that is still on the walk's path closes a cycle and is not followed, the edges the
  // per-block counts above leave out too.
  struct Step {
    Frame frame;
    std::uint64_t paths;
  };
  internal::BlockIndex index;
  std::vector<std::uint64_t> paths_from;  // by number; 0 while the block is on the path
  bool added = false;
  index.Insert(root, added);
  paths_from.push_back(0);
  std::vector<Step> stack{{{root, 0, root->NumDependencies(), 0}, 1}};
  while (!stack.empty()) {
    Step& top = stack.back();
    if (top.frame.next_slot >= top.frame.num_slots) {
      const std::uint64_t paths = top.paths;
      paths_from[top.frame.number] = paths;
      stack.pop_back();
      if (!stack.empty()) stack.back().paths = internal::SaturatingAdd(stack.back().paths, paths);
      continue;
    }
    const Block* dependency = top.frame.block->GetDependency(top.frame.next_slot++);
    if (dependency == nullptr) continue;
    const std::uint32_t number = index.Insert(dependency, added);
    if (added) {
      paths_from.push_back(0);
      stack.push_back({{dependency, number, dependency->NumDependencies(), 0}, 1});
    } else if (paths_from[number] != 0) {
      top.paths = internal::SaturatingAdd(top.paths, paths_from[number]);
    }
  }
  return {static_cast<std::uint64_t>(index.Size()), paths_from[0]};
}

std::uint64_t CountPerPathVisits(const Block* root) { return CountPathTotals(root).visits; }

}  // namespace Orlo
