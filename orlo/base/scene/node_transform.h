// Defines NodeTransform, the block that places a node relative to its parent, and its factory
// NodeTransformFactory.
//
// Every node owns one NodeTransform through its "transform" slot. The transform holds the
// node's local transform controller (its PRS: position, rotation, scale; any
// Matrix3Controller, by default a Transform3Controller) and a link to the NodeTransform of
// the parent node, which mirrors the node hierarchy (Node::AddChild sets it). Both are
// dependencies, owned through the graph. The node computes the absolute matrix; the transform
// stores the links and turns any change of its controller into one event of its own, code 13.
//
//   auto* transform = new NodeTransform(true);        // with a default Transform3Controller
//   transform->GetNodePRS()->SetPosition(Point3<double>(1, 0, 0), 0);  // posts code 13
#pragma once

#include <string>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_factory.h>
#include <orlo/base/block/internal/typed_slot.h>

namespace Orlo {

class Matrix3Controller;

class NodeTransform : public Block {
 public:
  static constexpr BlockType m_block_type{110, 16, 48};

  // Both links empty; with `create` true a new Transform3Controller (with its sub-blocks)
  // becomes the PRS controller.
  explicit NodeTransform(bool create);

  std::string GetClassName() const override;
  BlockType GetBlockType() const override;
  // Slot 0 "node_prs" (type 300), slot 1 "parent_transform" (type 110).
  int NumDependencies() const override;
  void SetDependency(int index, Block* block) override;
  Block* GetDependency(int index) const override;
  // "nil" outside the two slots, unlike the controllers' "no_dependency": saved scenes and
  // host code name the slots of scene blocks this way.
  std::string GetDependencyName(int index) const override;
  unsigned GetDependencyType(int index) const override;
  // A new transform with a clone of the PRS controller and a clone of the parent transform,
  // which clones its own controller and parent in turn: the whole chain of parent transforms
  // above is copied.
  Block* Clone() override;
  // Nothing is written: both links travel as the block's dependencies.
  int Save(SceneSave* save) override;
  int Load(SceneLoad* load) override;
  void DeleteThis() override;
  // Passes on its own code 12 (parameter 0), turns codes 3 and 13 of the PRS controller into
  // code 13 from itself, and drops everything else, every event of the parent transform
  // included.
  void ProcessEvent(BlockEvent event) override;
  using Block::ProcessEvent;

  // The PRS controller, or null (also when the slot holds a block of another class).
  Matrix3Controller* GetNodePRS() const { return m_node_prs.Get(); }
  // The parent node's transform, or null.
  NodeTransform* GetParentTransform() const { return m_parent_transform.Get(); }

  // Links `controller` as the PRS controller and returns the link's status. Null or a block
  // that is not a controller gives code 3, "Node::SetNodePRS : The block is not a valid
  // Controller." and changes nothing (the message names Node: host code matches it so).
  Status SetNodePRS(Matrix3Controller* controller);
  // Links `parent` as the parent transform (null unlinks) and returns the link's status. A
  // block that is not a NodeTransform gives code 3, "NodeTransform::SetParentTransform : The
  // block is not a valid NodeTransform." and changes nothing.
  Status SetParentTransform(NodeTransform* parent);

 private:
  enum Slot { kNodePRSSlot = 0, kParentTransformSlot = 1, kNumSlots = 2 };

  internal::TypedSlot<NodeTransform> m_parent_transform;
  internal::TypedSlot<Matrix3Controller> m_node_prs;
};

class NodeTransformFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override;
  // Passes the flag to the constructor.
  Block* GetBlock(bool create_defaults) const override;
  std::string GetName() const override;
};

}  // namespace Orlo
