// Defines AcyclicLinks, the way to link blocks whose links were proved acyclic all at once.
#pragma once

#include <cassert>

#include <orlo/base/block/block.h>

namespace Orlo::internal {

// MakeDependencyByID tests each new link for a cycle with a search around it, which on a
// deep graph grows with the depth. A caller that has tested a whole set of links at once (the
// scene loader sorts a file's links before making any) makes them here, with the same result
// and event as MakeDependencyByID and without the per-link search.
class AcyclicLinks {
 public:
  // Requires: `index` is a slot of `holder`, `block` is neither null nor `holder`, and no
  // path of slots leads from `block` back to `holder`.
  static void Link(Block* holder, int index, Block* block) {
    assert(holder != nullptr && block != nullptr && holder != block);
    assert(index >= 0 && index < holder->NumDependencies());
    holder->LinkAcyclic(index, block);
  }
};

}  // namespace Orlo::internal
