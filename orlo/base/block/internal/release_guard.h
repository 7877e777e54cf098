// Defines ReleaseGuard, which keeps a block from being destroyed by a release while one of
// its own operations is still running.
// A release can come back to the block that started it through a raw slot: a table whose
// refused PushBack left itself or one of its own dependants as an unlinked entry, or a block
// holding itself. The guarded block then loses its back references like any other block but
// is not destroyed, since its call still has work to do on it. Guards nest and are released
// in reverse order; the guarded blocks are a process-wide stack, like the rest of the graph's
// state used from one thread at a time.
#pragma once

namespace Orlo {
class Block;
}

namespace Orlo::internal {

class ReleaseGuard {
 public:
  explicit ReleaseGuard(const Block* block);
  ReleaseGuard(const ReleaseGuard&) = delete;
  ReleaseGuard& operator=(const ReleaseGuard&) = delete;
  ~ReleaseGuard();
};

// Whether a ReleaseGuard for `block` is alive.
bool IsReleaseGuarded(const Block* block);

}  // namespace Orlo::internal
