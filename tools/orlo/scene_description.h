// Defines SceneDescription, a loaded scene taken down into plain values that outlive the
// engine it came from, and DescribeScene, which makes one.
//
// The diff command loads one file, describes it, lets the engine go, then does the same with
// the other file: only one scene is alive at a time, and two descriptions compare without any
// block. A description holds no pointer into a scene.
//
// Shape: the scene itself is entry 0 of `nodes` (its parameter table, scene tools and
// material list are its blocks; the main node is its one child), then every node of the
// hierarchy in pre-order. Below a node, the blocks reached from its slots form a tree of
// DescribedBlock entries named by slot: "transform" (the node's transform controller, seen
// through the NodeTransform that holds it), "params" (a parameter table; its parameters are
// named by their parameter names), "object", "material", and below those the controllers
// ("position", "x", ...), modifiers and base objects. Blocks of a list are named by their
// class. Siblings with equal names keep their order and the k-th of them (k >= 2) is written
// name#k.
//
// Every walk keeps an explicit stack, so hierarchies and block chains of any depth are
// described without deep recursion.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <orlo/base/controllers/bezier_controller.h>
#include <orlo/base/engine/scene_engine.h>

namespace Orlo::cli {

// One value of a node or a block: a payload field reached through a public accessor, a
// parameter element, or a link to a node or to a block described elsewhere.
struct DescribedField {
  enum Kind {
    kText,       // `text` is the value as printed
    kBytes,      // the saved payload of a class compared as bytes
    kNodeLink,   // a link to node `target` of the same description
    kBlockLink,  // the block first described as block `target`
  };
  // "" for the value of a one-element parameter.
  std::string name;
  Kind kind = kText;
  std::string text;
  std::vector<std::uint8_t> bytes;
  // For links: an index into SceneDescription::nodes or ::blocks; -1 for a node outside the
  // hierarchy.
  long target = -1;
};

struct DescribedBlock {
  // The slot name as written in paths, unique among its siblings.
  std::string segment;
  // "DemoBox (510, 200, 2)".
  std::string class_text;
  std::vector<DescribedField> fields;
  // For keyed controllers: the keys in list order.
  bool has_keys = false;
  std::vector<BezierKey> keys;
  // The node the block hangs from, and the enclosing block (-1 directly below the node).
  std::size_t node = 0;
  long parent = -1;
  std::vector<std::size_t> children;
};

struct DescribedNode {
  // The node's name as written in paths (escaped, with its #k when it has namesakes before
  // it); "" for the scene itself.
  std::string segment;
  long parent = -1;
  std::vector<std::size_t> children;
  std::vector<DescribedField> fields;
  // The blocks directly below the node, in slot order.
  std::vector<std::size_t> blocks;
};

struct SceneDescription {
  std::vector<DescribedNode> nodes;
  std::vector<DescribedBlock> blocks;

  // "/MainNode/arm": the segments from the main node down; "/" for the scene itself.
  std::string NodePath(std::size_t node) const;
  // "transform/position/x": the segments from the node down to the block.
  std::string BlockPath(std::size_t block) const;
  // A link as printed: "node /MainNode/arm" or "same block as /MainNode/box [material]".
  std::string LinkText(const DescribedField& field) const;
};

// Describes the scene of `engine`.
// Requires: the engine has a scene and is the current engine.
SceneDescription DescribeScene(SceneEngine& engine);

// A name as written in a path: '\', '/', '#', '[' and ']' are escaped with a backslash and
// control characters written as \xNN, so that paths split back unambiguously.
std::string EscapeSegment(const std::string& name);

// The shortest decimal text that reads back as the same double ("1.5", "2", "0.1").
std::string NumberText(double value);

}  // namespace Orlo::cli
