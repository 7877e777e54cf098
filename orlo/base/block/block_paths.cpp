#include <orlo/base/block/block_paths.h>

#include <cassert>
#include <unordered_set>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/block/internal/saturating.h>

namespace Orlo {

namespace {

// The blocks reachable from `root` in reverse post-order: every block comes after all the
// blocks above it, once the edges that close a cycle are left out.
std::vector<const Block*> TopologicalOrder(const Block* root,
                                           std::unordered_map<const Block*, std::size_t>& rank) {
  struct Frame {
    const Block* block;
    int next_slot;
  };
  std::vector<const Block*> post_order;
  std::unordered_set<const Block*> reached{root};
  std::vector<Frame> stack{{root, 0}};
  while (!stack.empty()) {
    Frame& top = stack.back();
    if (top.next_slot >= top.block->NumDependencies()) {
      post_order.push_back(top.block);
      stack.pop_back();
      continue;
    }
    const Block* dependency = top.block->GetDependency(top.next_slot++);
    if (dependency == nullptr) continue;
    if (reached.insert(dependency).second) stack.push_back({dependency, 0});
  }
  std::vector<const Block*> order(post_order.rbegin(), post_order.rend());
  for (std::size_t i = 0; i < order.size(); ++i) rank[order[i]] = i;
  return order;
}

}  // namespace

std::unordered_map<const Block*, std::uint64_t> CountPathsFromRoot(const Block* root) {
  assert(root != nullptr);
  std::unordered_map<const Block*, std::size_t> rank;
  const std::vector<const Block*> order = TopologicalOrder(root, rank);
  std::unordered_map<const Block*, std::uint64_t> paths;
  paths.reserve(order.size());
  paths[root] = 1;
  for (std::size_t i = 0; i < order.size(); ++i) {
    const Block* block = order[i];
    const std::uint64_t reaching = paths[block];
    const int num_slots = block->NumDependencies();
    for (int slot = 0; slot < num_slots; ++slot) {
      const Block* dependency = block->GetDependency(slot);
      // An edge to a block that is not later in the order closes a cycle: a walk that never
      // re-enters a block on its current path does not follow it.
      if (dependency == nullptr || rank[dependency] <= i) continue;
      std::uint64_t& count = paths[dependency];
      count = internal::SaturatingAdd(count, reaching);
    }
  }
  return paths;
}

std::uint64_t CountPerPathVisits(const Block* root) {
  std::uint64_t visits = 0;
  for (const auto& [block, count] : CountPathsFromRoot(root)) {
    visits = internal::SaturatingAdd(visits, count);
  }
  return visits;
}

}  // namespace Orlo
