// Defines BlockListener, the observer through which host code hears a block's events.
// A listener is not owned by the blocks it listens to: the owner detaches it from every block
// (Block::RemoveBlockListener) before destroying it.
#pragma once

#include <orlo/base/block/block_event.h>

namespace Orlo {

class BlockListener {
 public:
  BlockListener() = default;
  BlockListener(const BlockListener&) = default;
  BlockListener& operator=(const BlockListener&) = default;
  // Tells the current engine, if any, that the listener is going away. It does not detach
  // the listener from any block.
  virtual ~BlockListener();

  // Receives every event delivered by a block the listener is attached to.
  virtual void OnBlockEvent(BlockEvent event) = 0;
};

}  // namespace Orlo
