// Defines IrregularLinks, the record of pairs of blocks whose link bookkeeping departs from
// "one back reference for each slot that links".
//
// Deliberate rules leave such pairs behind. Setting a block twice into one slot leaves a back
// reference that no slot accounts for once the slot is emptied; MakeDependant called on its own
// appends a back reference without a slot; a refused BlockTable::PushBack leaves an entry that
// holds its block without a back reference; a copied block starts with its source's dependants.
// The record keeps the graph safe around them: when a block of a pair is destroyed, the other one
// forgets it (its back references to the dead block go, its slots holding the dead block become
// null), and the cycle test checks such a pair's slots instead of trusting its back references.
//
// A pair is recorded while both blocks live and dropped when either is destroyed; a pair whose
// irregularity has gone in the meantime costs a slot scan, nothing more. The record is
// process-wide, like the rest of the graph's state used from one thread at a time.
#pragma once

#include <unordered_map>
#include <vector>

namespace Orlo {
class Block;
}

namespace Orlo::internal {

class IrregularLinks {
 public:
  // Records that `holder` may be listed among `held`'s dependants without a slot holding it,
  // or may hold `held` in a slot without being listed. A pair is recorded once.
  static void Add(Block* holder, Block* held);
  static bool Empty() { return HeldByHolder().empty(); }
  static bool Contains(const Block* holder, const Block* held);
  // The blocks recorded as held by `holder`, or null when there are none.
  static const std::vector<Block*>* HeldBy(const Block* holder);
  // The blocks recorded as holders of `held`, or null when there are none.
  static const std::vector<Block*>* HoldersOf(const Block* held);
  // Drops every pair that names `block`, handing back the blocks it held and its holders.
  static void Forget(const Block* block, std::vector<Block*>& held, std::vector<Block*>& holders);

 private:
  using Index = std::unordered_map<const Block*, std::vector<Block*>>;
  static Index& HeldByHolder();
  static Index& HoldersByHeld();
};

}  // namespace Orlo::internal
