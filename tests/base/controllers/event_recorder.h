// Defines EventRecorder, a listener that keeps every event it hears, for the controller tests.
// Detach it (or destroy the blocks it listens to) before it goes out of scope.
#pragma once

#include <vector>

#include <orlo/base/block/block_listener.h>

namespace Orlo::testing {

class EventRecorder : public BlockListener {
 public:
  void OnBlockEvent(BlockEvent event) override { events.push_back(event); }

  std::vector<BlockEvent> events;
};

}  // namespace Orlo::testing
