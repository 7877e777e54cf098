// Counts the paths of a block graph without walking them one by one.
//
// A walk that visits a block once for every path that reaches it (an event climbing through
// duplicate dependants, a per-path pass over a loaded scene) does as many visits as there are
// paths, and a graph that shares blocks can have exponentially many. These helpers count them
// in time linear in the graph, so that a caller can refuse such a graph before walking it.
// They follow the non-null slots; an edge that closes a cycle (raw slot stores can leave one) is
// not followed, as a walk never re-enters a block on its current path. On an acyclic graph the
// counts are exact.
#pragma once

#include <cstdint>
#include <limits>
#include <unordered_map>

namespace Orlo {

class Block;

// The largest count the helpers report: a larger count saturates to it.
inline constexpr std::uint64_t kMaxPathCount = std::numeric_limits<std::uint64_t>::max();

// For every block reachable from `root` through its slots, the number of distinct paths from
// `root` down to it; `root` itself counts one. Requires: root is not null.
std::unordered_map<const Block*, std::uint64_t> CountPathsFromRoot(const Block* root);

// The blocks reachable from `root` (`root` included) and the visits a walk makes that enters
// every block once per path from `root`: the size and the sum of CountPathsFromRoot, found in
// one walk without building the map. Requires: root is not null.
struct PathTotals {
  std::uint64_t blocks;
  std::uint64_t visits;
};
PathTotals CountPathTotals(const Block* root);

// The number of visits a walk makes that enters every block once per path from `root`, `root`
// included: the sum of CountPathsFromRoot. Requires: root is not null.
std::uint64_t CountPerPathVisits(const Block* root);

}  // namespace Orlo
