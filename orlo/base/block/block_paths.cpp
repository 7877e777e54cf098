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

namespace {

// Numbers blocks in the order a walk first meets them, through a hash index.
class IndexNumbering {
 public:
  std::uint32_t Number(const Block* block, bool& added) { return m_index.Insert(block, added); }

 private:
  internal::BlockIndex m_index;
};

// Takes each block's number from its id, which every block below the root carries distinct and
// below `count`.
class IdNumbering {
 public:
  explicit IdNumbering(std::size_t count) : m_met(count, false) {}
  std::uint32_t Number(const Block* block, bool& added) {
    const std::uint32_t id = block->GetID();
    assert(id < m_met.size() && "a block below the root has no number of the walk");
    added = !m_met[id];
    m_met[id] = true;
    return id;
  }

 private:
  std::vector<bool> m_met;
};

// `expected` is the number of blocks the walk will meet, when known (0 otherwise).
template <typename Numbering>
PathTotals SumPathsFrom(const Block* root, Numbering& numbering, std::size_t expected) {
  // The paths from root are the paths that start at root. The paths that start at a block are
  // the block alone and, for each slot, those that start at the block in it; they are summed
  // as the walk leaves each block, when every block below it is done. A slot holding a block
  // that is still on the walk's path closes a cycle and is not followed, the edges the
  // per-block counts above leave out too.
  struct Step {
    Frame frame;
    std::uint64_t paths;
  };
  std::vector<std::uint64_t> paths_from;  // by number; 0 while the block is on the path
  paths_from.reserve(expected);
  auto at = [&paths_from](std::uint32_t number) -> std::uint64_t& {
    if (number >= paths_from.size()) paths_from.resize(number + std::size_t{1}, 0);
    return paths_from[number];
  };
  std::uint64_t blocks = 1;
  bool added = false;
  const std::uint32_t root_number = numbering.Number(root, added);
  at(root_number) = 0;
  std::vector<Step> stack{{{root, root_number, root->NumDependencies(), 0}, 1}};
  while (!stack.empty()) {
    Step& top = stack.back();
    if (top.frame.next_slot >= top.frame.num_slots) {
      const std::uint64_t paths = top.paths;
      at(top.frame.number) = paths;
      stack.pop_back();
      if (!stack.empty()) stack.back().paths = internal::SaturatingAdd(stack.back().paths, paths);
      continue;
    }
    const Block* dependency = top.frame.block->GetDependency(top.frame.next_slot++);
    if (dependency == nullptr) continue;
    const std::uint32_t number = numbering.Number(dependency, added);
    if (added) {
      ++blocks;
      at(number) = 0;
      stack.push_back({{dependency, number, dependency->NumDependencies(), 0}, 1});
    } else if (const std::uint64_t below = at(number); below != 0) {
      top.paths = internal::SaturatingAdd(top.paths, below);
    }
  }
  return {blocks, at(root_number)};
}

}  // namespace

PathTotals CountPathTotals(const Block* root) {
  assert(root != nullptr);
  IndexNumbering numbering;
  return SumPathsFrom(root, numbering, 0);
}

PathTotals CountPathTotalsOfNumbered(const Block* root, std::size_t count) {
  assert(root != nullptr);
  IdNumbering numbering(count);
  return SumPathsFrom(root, numbering, count);
}

std::uint64_t CountPerPathVisits(const Block* root) { return CountPathTotals(root).visits; }

}  // namespace Orlo
