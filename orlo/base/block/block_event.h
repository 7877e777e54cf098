// Defines BlockEvent, the value that carries a change up the dependency graph.
#pragma once

#include <cstdint>

namespace Orlo {

class Block;

// Codes used by the library: 0 a controller's value was set, 1 the block lost its last
// dependant, 2 a dependency or the structure changed, 3 a value changed. Composite blocks
// add codes of their own; hosts may post further codes.
struct BlockEvent {
  // The block that delivers the event at the current hop; re-stamped at every hop.
  Block* block = nullptr;
  std::int32_t code = 0;
  // A slot index, a parameter id, or 0, as the code says.
  std::int32_t param = 0;

  constexpr BlockEvent() = default;
  constexpr BlockEvent(Block* sender, int event_code, int event_param)
      : block(sender), code(event_code), param(event_param) {}
};

}  // namespace Orlo
