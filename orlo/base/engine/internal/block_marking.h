// Defines MarkReachableInPreOrder, the one walk behind resetting the scene's numbers and
// numbering it for saving.
// The walk is depth first over the non-null slots in ascending order, enters each block once
// (the first time it is reached), and keeps an explicit stack, so a scene of any depth is
// walked with the default call stack.
#pragma once

#include <cstddef>
#include <vector>

namespace Orlo {
class Block;
}

namespace Orlo::internal {

// Reaches every block below `root` (root included) and sets each one's number to its position
// in the walk's pre-order and its saved mark to 0. Returns the blocks in that order.
//
// A block counts as reached when its number is its own position in the returned list, whatever
// number it had before, so no other marking is needed.
// `expected` is room reserved for the list up front (the loader knows about how many blocks
// it made), sparing the regrowth of a list of millions.
// Requires: root is not null.
std::vector<Block*> MarkReachableInPreOrder(Block* root, std::size_t expected = 0);

}  // namespace Orlo::internal
