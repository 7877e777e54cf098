// Defines BlockWatch, weak references to blocks: a watched reference becomes null when the
// block it names is destroyed, however that happens.
//
// For holders that must not own a block and may outlive it, such as an undo record that names
// the block whose slot it changes: owning it would keep alive, or release, a block the record
// has no business with, and a plain pointer would dangle once the scene lets the block go.
//
//   Block* target = block;
//   BlockWatch::Watch(&target);
//   ...                            // target is null once the block is destroyed
//   BlockWatch::Unwatch(&target);  // before the reference itself goes
//
// The references are kept beside the blocks, like the graph's other rarely used state, and
// used from one thread at a time.
#pragma once

namespace Orlo {
class Block;
}

namespace Orlo::internal {

class BlockWatch {
 public:
  // Watches `reference`, which names a live block or is null (then nothing is watched).
  // Requires: reference is not null and not watched already.
  static void Watch(Block** reference);
  // Stops watching `reference`; nothing when it is null or was nulled by the destruction of
  // its block.
  static void Unwatch(Block** reference);
  // Nulls every reference watching `block`; the block's destructor calls it.
  static void Destroyed(Block* block);
};

}  // namespace Orlo::internal
