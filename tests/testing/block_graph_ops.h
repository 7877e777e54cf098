// Defines BlockGraphOps, which reads a byte string as a sequence of operations on a small pool
// of blocks and checks the block graph after every step. The operation-sequence test and the
// fuzz target both drive it.
//
// The pool holds test blocks with one to three slots and tables, created by the operations
// themselves. Every block the harness creates reports its destruction, so the checks know at
// every step which blocks are alive. After each operation they require that:
//   - every non-null slot and every dependant entry of a live block is a live block;
//   - for each pair (A, B), B lists A among its dependants at least as often as A holds B in
//     slots that were linked (the unlinked entry of a refused PushBack is not counted, and a
//     second back reference left by setting B twice into one slot is allowed);
//   - every live block that the harness does not keep as a root has at least one dependant.
// At the end the roots are deleted, after which no block may be alive.
//
// The harness owns nothing between runs: a run creates its blocks and releases them, and does
// not touch the process-wide state (the current engine, the factory registry). A run that
// fails stops there and leaves its blocks as they are, for the leak checker to report. Runs
// use the block graph from one thread, one run at a time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace Orlo::testing {

class BlockGraphOps {
 public:
  // The operations, in the order of their codes; the first byte of a step picks one modulo
  // kNumOps.
  enum Op {
    kNewBlock,
    kNewTable,
    kLink,
    kLinkAgain,
    kDeleteDependency,
    kReplaceDependency,
    kDeleteAllDependencies,
    kPushBack,
    kPushBackAgain,
    kEraseIndex,
    kEraseBlock,
    kSetNumBlocks,
    kSwapBlocks,
    kSetBlock,
    kClone,
    kMute,
    kPostEvent,
    kListen,
    kDeleteThisBlock,
    kNumOps
  };

  BlockGraphOps() = default;
  BlockGraphOps(const BlockGraphOps&) = delete;
  BlockGraphOps& operator=(const BlockGraphOps&) = delete;

  // Runs the operations encoded in `data`, checking the graph after each one, then deletes
  // the roots and checks that no block is left. Returns an empty string when every check
  // held, otherwise a description of the first one that did not (the run stops there).
  std::string Run(const std::uint8_t* data, std::size_t size);

  // How many times each operation was carried out (not skipped) over all runs so far.
  const std::array<long, kNumOps>& OpsRun() const { return m_ops_run; }

 private:
  std::array<long, kNumOps> m_ops_run{};
};

}  // namespace Orlo::testing
