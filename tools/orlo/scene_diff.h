// Defines Difference and DiffScenes, which compare two scene descriptions node by node and,
// below each node, block by block and field by field.
//
// Nodes are matched by their path of names from the main node; children of one parent with
// equal names are matched in order (the first with the first, and so on). Below a matched
// node, blocks are matched by slot path and compared by class, then field by field and key by
// key. A block whose class differs is reported once, without the fields below it. The walks
// keep explicit stacks, so hierarchies of any depth are compared without deep recursion.
#pragma once

#include <string>
#include <vector>

#include "tools/orlo/scene_description.h"

namespace Orlo::cli {

struct Difference {
  enum Kind {
    kNodeAdded,
    kNodeRemoved,
    kBlockAdded,
    kBlockRemoved,
    kClassChanged,
    kChanged,
    kAdded,
    kRemoved,
  };
  Kind kind = kChanged;
  // The node's path ("/" for the scene itself) and the block's path below it ("" for the
  // node's own fields and for node differences).
  std::string node;
  std::string block;
  // The field ("" for a one-element parameter's value and for node and block differences).
  std::string field;
  // The value in the first file and in the second ("" where there is none).
  std::string before;
  std::string after;
  // For nodes added or removed: the number of nodes below them.
  std::size_t nodes_below = 0;
};

// "node_added", "changed", ...: the kind as the JSON output names it.
const char* KindName(Difference::Kind kind);

// The differences from `a` to `b`, in pre-order of the first scene's hierarchy: a node's own
// differences, then its blocks', then its children's, the nodes only the second scene has
// after the ones the first has.
std::vector<Difference> DiffScenes(const SceneDescription& a, const SceneDescription& b);

// One line, without the line feed:
//   /MainNode/arm/hand: node added
//   /MainNode/arm: node removed, with 2 nodes below
//   /MainNode/arm [transform/position/x] key 2 value 1.5 -> 2
//   /MainNode/box [object] class DemoBox (510, 200, 2) -> DemoCamera (600, 128, 784)
//   /MainNode/box [params/width] 1 -> 2
//   /MainNode/box [material] added: DemoMaterial (405, 200, 3)
std::string FormatDifference(const Difference& difference);

}  // namespace Orlo::cli
