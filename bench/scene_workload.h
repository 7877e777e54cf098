// Defines the scene workload that the engine's benchmarks share: N default nodes named
// node_<i>, each with its own transform, in one of three shapes, built through the public API
// under an engine's main node.
//
// Node i is placed at (i, 2i, 3i) * 0.01, rotated by the Euler XYZ angles (0.1i, 0.2i, 0.3i)
// radians and scaled uniformly by 1 + 0.001i, all at time 0 through its transform controller.
// The shapes:
//   flat   every node is a child of the main node;
//   tree   a balanced 8-ary tree in breadth-first order: the main node's children are nodes
//          0..7, node k's children are nodes 8k+8 .. 8k+15;
//   chain  node 0 under the main node, node i+1 under node i.
//
//   SceneEngine engine;
//   engine.InitScene();
//   std::vector<Node*> nodes = BuildSceneWorkload(&engine, WorkloadShape::kTree, 10000);
#pragma once

#include <string>
#include <vector>

#include <orlo/base/controllers/matrix3_controller.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node.h>
#include <orlo/support/point3.h>

namespace Orlo::bench {

enum class WorkloadShape { kFlat, kTree, kChain };

inline const char* WorkloadShapeName(WorkloadShape shape) {
  switch (shape) {
    case WorkloadShape::kFlat:
      return "flat";
    case WorkloadShape::kTree:
      return "tree";
    case WorkloadShape::kChain:
      return "chain";
  }
  return "";
}

// The parent of node `i`: its index, or -1 for the main node.
inline int WorkloadParent(WorkloadShape shape, int i) {
  switch (shape) {
    case WorkloadShape::kFlat:
      return -1;
    case WorkloadShape::kTree:
      return i < 8 ? -1 : (i - 8) / 8;
    case WorkloadShape::kChain:
      return i - 1;
  }
  return -1;
}

// Names node `i` and sets its transform at time 0.
inline void SetUpWorkloadNode(Node* node, int i) {
  node->SetName("node_" + std::to_string(i));
  Matrix3Controller* prs = node->GetNodeTransformController();
  const double d = static_cast<double>(i);
  prs->SetPosition(Point3<double>(d * 0.01, 2.0 * d * 0.01, 3.0 * d * 0.01), 0);
  prs->SetRotation(Point3<double>(0.1 * d, 0.2 * d, 0.3 * d), 0);
  const double scale = 1.0 + 0.001 * d;
  prs->SetScale(Point3<double>(scale, scale, scale), 0);
}

// Builds `count` nodes of the given shape under the engine's main node and returns them in
// index order. Requires: the engine has a scene.
//
// The cost is linear in `count` for the tree and the chain: a change event climbs from a node
// to the root, and adding a child checks that no cycle forms, so every node is set up and
// given its children before it is attached itself (bottom-up), and the main node takes its
// children last. Attaching to the main node checks the children it has already, so the flat
// shape pays that check once per node.
inline std::vector<Node*> BuildSceneWorkload(SceneEngine* engine, WorkloadShape shape, int count) {
  std::vector<Node*> nodes(static_cast<std::size_t>(count), nullptr);
  for (int i = 0; i < count; ++i) {
    nodes[static_cast<std::size_t>(i)] = new Node(true);
    SetUpWorkloadNode(nodes[static_cast<std::size_t>(i)], i);
  }
  // Highest index first: every child has a higher index than its parent, so a node has all
  // its children when it is attached. Children are attached in ascending order to each parent
  // by walking the parents' child ranges, which keeps the children tables in index order.
  std::vector<std::vector<int>> children(static_cast<std::size_t>(count));
  std::vector<int> top_level;
  for (int i = 0; i < count; ++i) {
    const int parent = WorkloadParent(shape, i);
    if (parent < 0) {
      top_level.push_back(i);
    } else {
      children[static_cast<std::size_t>(parent)].push_back(i);
    }
  }
  for (int k = count - 1; k >= 0; --k) {
    Node* parent = nodes[static_cast<std::size_t>(k)];
    for (int child : children[static_cast<std::size_t>(k)]) {
      (void)parent->AddChild(nodes[static_cast<std::size_t>(child)]);
    }
  }
  Node* main_node = engine->GetMainNode();
  for (int i : top_level) (void)main_node->AddChild(nodes[static_cast<std::size_t>(i)]);
  return nodes;
}

}  // namespace Orlo::bench
