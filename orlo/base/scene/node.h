// Defines Node, the element of the scene hierarchy, and its factory NodeFactory.
//
// A node has a name, a colour, a parameter table of display flags, an optional object (a
// plain object or the top of a chain of object-modifiers) and material, a table of child
// nodes and a NodeTransform that places it relative to its parent. All of these are
// dependency slots, so the node owns its parts through the graph, and a change in any of them
// reaches the node as an event that it turns into a node-level code:
//
//   | from                    | codes in             | code posted by the node     |
//   | the node (slot changed) | 2 for slot 1 / 2     | 8 (object) / 18 (material)  |
//   | the object              | 9                    | 9                           |
//   | the parameter table     | any                  | 3                           |
//   | the transform           | 12, 13, 4, 5, 7, 6   | the same                    |
//   | the material            | 3, 19 / 20 / 16      | 19 / 20 / 16                |
//
// Every other event stops at the node; the node posts with parameter 0. The node also keeps a
// pointer to its parent node, set by AddChild and RemoveChild and re-derived by the engine
// after a load.
//
//   Node* parent = new Node(true);     // parameter table, children table, transform
//   Node* child = new Node(true);
//   parent->AddChild(child);           // the parent's children table now owns the child
//   Matrix3<double> m = child->GetAbsoluteTM(0);
#pragma once

#include <string>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_factory.h>
#include <orlo/base/scene/flag_interface.h>
#include <orlo/base/block/internal/typed_slot.h>
#include <orlo/support/color.h>
#include <orlo/support/matrix3.h>

namespace Orlo {

class BlockTable;
class DataTable;
class Material;
class Matrix3Controller;
class Modifier;
class NodeTransform;
class Object;
class SceneEngine;

class Node : public Block, public FlagInterface {
 public:
  static constexpr BlockType m_block_type{115, 16, 32};

  // Ids of the display parameters in the node's table.
  static constexpr int kHideID = 0;
  static constexpr int kFreezeID = 1;
  static constexpr int kVisibilityID = 2;
  static constexpr int kRenderableID = 3;
  static constexpr int kReceiveShadowsID = 4;
  static constexpr int kCastShadowsID = 5;

  // Name empty, colour zero, every slot empty. With `create_defaults` true a new parameter
  // table, children table and NodeTransform (with its Transform3Controller) are linked into
  // slots 0, 3 and 4, and the display parameters are added.
  explicit Node(bool create_defaults);

  // ---- Block ----

  std::string GetClassName() const override;
  BlockType GetBlockType() const override;
  // Slots: 0 "data_table", 1 "object", 2 "material", 3 "children", 4 "transform".
  int NumDependencies() const override;
  void SetDependency(int index, Block* block) override;
  Block* GetDependency(int index) const override;
  // "nil" outside the five slots: saved scenes and host code name a node's slots this way.
  std::string GetDependencyName(int index) const override;
  DataTable* GetDataTable() const override;
  // Links `table` (null empties the slot) and reports success, also when the link was refused
  // as a cycle. A block that is not a parameter table gives code 3, "Node::SetDataTable : The
  // block is not a valid data_table." and changes nothing.
  Status SetDataTable(DataTable* table) override;
  // Adds the six display parameters (an id already present keeps its value), rebuilds the
  // table's id lookup and names them, whatever the flag. Without a table it does nothing.
  void UpdateDataTable(bool create) override;
  // A copy attached nowhere: name, colour, and clones of the object, the transform (through
  // SetNodeTransform, with its chain of parent transforms), the material and the parameter
  // table; an empty children table. Children are not copied and the copy has no parent.
  Block* Clone() override;
  // Chunk 0x0005 with the name and chunk 0x0010 with the colour (three floats).
  int Save(SceneSave* save) override;
  // Reads the name and colour chunks in any order, skipping others. Returns 0 only when the
  // reader reported an error.
  int Load(SceneLoad* load) override;
  void DeleteThis() override;
  // Turns the events of the node's slots into node-level codes (see the table above).
  void ProcessEvent(BlockEvent event) override;
  using Block::ProcessEvent;

  // ---- Copying for editing ----

  // A copy for duplicating a node in a scene. The copy gets the name and colour; with mode 0
  // clones of the object and material, with mode 1 the same object and material (shared), with
  // any other mode neither; a clone of the transform stored without a back reference (see
  // node.cpp); an empty children table and no parameter table. When the source has a parent
  // the copy is added to it, as a sibling of the source. The flag is not used.
  Node* Clone(int mode, bool unused);

  // ---- Name, colour, selection, parent ----

  std::string GetName() const { return m_name; }
  // Stores the name and posts code 3 with parameter 0.
  void SetName(std::string name);
  Color GetNodeColor() const { return m_node_color; }
  void SetNodeColor(Color color) { m_node_color = color; }
  bool IsSelected() const { return m_selected; }
  void SetSelected(bool selected) { m_selected = selected; }
  // The parent node, or null.
  Node* GetParent() const { return m_parent; }

  // ---- Children ----

  // Makes `child` a child of this node, taking it from its former parent. Codes: 3 for a null
  // child; 2 when this node hangs below the child ("Node::AddChild : This node is a
  // dependency of the child node.") or when the child's transform may not take this node's
  // transform as its parent ("Node::AddChild : The child_node_transform is a dependency of
  // this node's m_node_transform."). A node that is a child already is left as it is. A node
  // without a children table (one made empty for loading) gets a new one first.
  Status AddChild(Node* child);
  // Releases the first entry of `child` in the children table (the child is deleted if
  // nothing else holds it) and clears its parent pointer when that names this node. Code 1,
  // "Node::RemoveChild : The child_node was not a child of this node." when it was not found.
  Status RemoveChild(Node* child);
  int GetNumChildren() const;
  // Child `index`, or null when out of range or not a node.
  Node* GetChild(int index) const;
  bool IsChild(Node* child) const;
  // The children table, or null.
  BlockTable* GetChildren() const { return m_children.Get(); }
  // Appends every node below this one in pre-order: each child, then its own descendants,
  // children in index order. `out` is not cleared; the node itself is not included.
  void GetDecendants(std::vector<Node*>& out) const;

  // ---- Object, material, transform ----

  // The object, or null (also when the slot holds a block that is not an Object).
  Object* GetObject() const { return m_object.Get(); }
  // Links `object` (null empties the slot) and returns the link's status. A block that is not
  // an object gives code 3, "Node::SetObject : The block is not a valid object.".
  Status SetObject(Object* object);
  // The block in the material slot, or null.
  Block* GetMaterial() const { return m_material; }
  // Links `material` (null empties the slot) and returns the link's status. A block whose
  // class id is not a material's gives code 3, "Node::SetMaterial : The block is not a valid
  // material.".
  Status SetMaterial(Block* material);
  // The transform, or null.
  NodeTransform* GetNodeTransform() const { return m_node_transform.Get(); }
  // Links `transform` (null empties the slot) and returns the link's status. A block that is
  // not a NodeTransform gives code 3, "Node::SetNodeTransform : The block is not a valid
  // NodeTransform.".
  Status SetNodeTransform(NodeTransform* transform);
  // The PRS controller of the node's transform, or null.
  Matrix3Controller* GetNodeTransformController() const;
  // Makes `controller` the PRS controller of the node's transform and returns that status.
  // A block that is not a controller gives code 3, "Node::SetNodeTransformController : The
  // block is not a valid Matrix3Controller."; without a transform, code 2,
  // "Node::SetNodeTransformController : m_node_transform is not initialiced.".
  Status SetNodeTransformController(Matrix3Controller* controller);

  // ---- Aiming ----
  // For a node whose transform controller is a look-at controller (type 300, 48, 64): the
  // node it aims at and the node that gives its up direction, the controller's slots 2
  // ("aim_node") and 3 ("up_node").

  // Links `aim` (null unlinks) into the look-at controller, as the controller's SetAimNode
  // does; with another controller nothing happens. Always success.
  Status SetLookAtAimNode(Node* aim);
  Status SetLookAtUpNode(Node* up);
  // The aim and up nodes of the look-at controller, or null with another controller.
  // Requires: a transform (without one they give null).
  Node* GetLookAtAimNode() const;
  Node* GetLookAtUpNode() const;

  // ---- Matrices ----

  // The node's matrix at `time` times its parent's absolute matrix, the node's own on the
  // left; a node without a transform (or controller) contributes the identity. Follows the
  // parent nodes, not the parent transforms, with a loop: a chain of any depth is evaluated
  // without deep recursion.
  Matrix3<double> GetAbsoluteTM(int time) const;
  // Hands `matrix` unchanged to the PRS controller's SetMatrix3: the matrix becomes the
  // node's local transform, the parent's matrix is not factored out.
  // Requires: a transform with a PRS controller (without one nothing happens).
  void SetAbsoluteTM(Matrix3<double> matrix, int time);

  // ---- The object chain ----

  // The object's BuildObject(time, this), or null without an object.
  Object* BuildObject(int time);
  // The object's UnbuildObject(time, this), or null without an object.
  Object* UnbuildObject(int time);
  // The first object below the chain of object-modifiers, or null.
  Object* GetBaseObject() const;
  // Replaces the object by a clone of what it builds at `time`: the modifier chain collapses
  // into one plain copy of its result. Nothing happens without an object, or when the build
  // gives nothing.
  void Collapse(int time);
  // Replaces a chain of object-modifiers by the object at its bottom (or nothing).
  void RemoveAllModifiers();
  // Unbuilds the object, then takes out of the chain the first object-modifier that applies
  // `modifier`, linking the object below it in its place. Always success.
  Status RemoveModifier(Modifier* modifier);

  // ---- Display parameters (time 0, visibility at the given time) ----
  // Without a table, or without the parameter, the getters give false and -1.0, as the
  // table does for an id it does not hold, and the setters do nothing.

  bool GetHide() const;
  void SetHide(bool hide);
  bool GetFreeze() const;
  void SetFreeze(bool freeze);
  double GetVisibility(int time) const;
  void SetVisibility(double visibility, int time);
  // The spelling is the public name host code calls.
  bool GetRendereable() const;
  void SetRenderable(bool renderable);
  bool GetReceiveShadows() const;
  void SetReceiveShadows(bool receive);
  bool GetCastShadows() const;
  void SetCastShadows(bool cast);

 private:
  friend class SceneEngine;

  enum Slot {
    kDataTableSlot = 0,
    kObjectSlot = 1,
    kMaterialSlot = 2,
    kChildrenSlot = 3,
    kTransformSlot = 4,
    kNumSlots = 5,
  };

  // The engine re-derives parent pointers after a load.
  void SetParent(Node* parent) { m_parent = parent; }
  // The children table, created first when the node has none.
  BlockTable* EnsureChildren();

  std::string m_name;
  Color m_node_color;
  bool m_selected = false;
  Node* m_parent = nullptr;
  internal::TypedSlot<DataTable> m_data_table;
  internal::TypedSlot<Object> m_object;
  Block* m_material = nullptr;
  internal::TypedSlot<BlockTable> m_children;
  internal::TypedSlot<NodeTransform> m_node_transform;
};

class NodeFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override;
  // Passes the flag to the constructor.
  Block* GetBlock(bool create_defaults) const override;
  std::string GetName() const override;
};

}  // namespace Orlo
