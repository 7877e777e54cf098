// Defines LookAtController, the transform that turns a node to face another node, and its
// factory LookAtControllerFactory.
//
// The eye position comes from a wrapped transform controller; the target is the aim node's
// absolute position and the up direction points at the up node (world Z without one). The
// controller, its parameter table and its transform controller are owned through the graph;
// the aim and up nodes are dependencies too, shared with the scene.
//
//   LookAtController* look_at = LookAtController::Create(&engine, eye, target);
//   (void)camera->GetNodeTransform()->SetNodePRS(look_at);
#pragma once

#include <string>

#include <orlo/base/block/block_factory.h>
#include <orlo/base/controllers/matrix3_controller.h>

namespace Orlo {

class Controller;
class DataTable;
class Node;
class SceneEngine;

class LookAtController : public Matrix3Controller {
 public:
  static constexpr BlockType m_block_type{300, 48, 64};

  // With `create` true: links a new Transform3Controller with its sub-blocks as the transform
  // (dependency 1), then a new parameter table (dependency 0), and fills it.
  explicit LookAtController(bool create);
  // Links `aim` (2), `up` (3) and `transform` (1), in that order, then a new parameter table.
  LookAtController(Controller* transform, Node* aim, Node* up);

  // A new controller placed at `position` at time 0, aimed at `aim` and steered by `up`
  // (either may be null). `engine` is not used by this form.
  static LookAtController* Create(SceneEngine* engine, Point3<double> position, Node* aim,
                                  Node* up);
  // The same, aimed at a new empty node "Aim" made at `target` by the engine.
  // Requires: engine has a main scene.
  static LookAtController* Create(SceneEngine* engine, Point3<double> position,
                                  Point3<double> target);
  // The same with a new empty node "Up" at `up` as the up node.
  static LookAtController* Create(SceneEngine* engine, Point3<double> position,
                                  Point3<double> target, Point3<double> up);

  std::string GetClassName() const override;
  BlockType GetBlockType() const override;
  // Slot 0 "data_table" (205), 1 "transform" (kept at 110 though it holds a controller: saved
  // scenes carry it), 2 "aim_node" (115), 3 "up_node" (115).
  int NumDependencies() const override;
  void SetDependency(int index, Block* block) override;
  Block* GetDependency(int index) const override;
  std::string GetDependencyName(int index) const override;
  unsigned GetDependencyType(int index) const override;
  DataTable* GetDataTable() const override;
  // A non-null block that is not a parameter table is refused with code 3,
  // "LookAtController::SetDataTable : The block is not a valid data_table.".
  Status SetDataTable(DataTable* table) override;
  // Adds "axis_aim" (id 0, int 5) and "axis_up" (id 1, int 0), stored for the host; the aim
  // below uses fixed axes. The flag is not used.
  void UpdateDataTable(bool create) override;
  // Shares the aim and up nodes, clones the table, and links no transform controller.
  Block* Clone() override;
  // Nothing is written: the links travel as dependencies.
  int Save(SceneSave* save) override;
  int Load(SceneLoad* load) override;
  void DeleteThis() override;

  Node* GetAimNode() const { return m_aim_node; }
  Node* GetUpNode() const { return m_up_node; }
  Controller* GetTransformController() const { return m_transform; }
  void SetAimNode(Node* node);
  void SetUpNode(Node* node);
  void SetTransformController(Controller* controller);

  // Passed to the transform controller. Requires: a transform controller of type 7.
  void SetMatrix3(Matrix3<double> matrix, int time) override;
  void SetPosition(Point3<double> position, int time) override;
  // The rotation and scale follow from the aim: these do nothing.
  void SetRotation(Point3<double> rotation, int time) override;
  void SetScale(Point3<double> scale, int time) override;
  // Rows X, Y, Z and the eye P, with Z pointing from the target back to the eye (the node
  // looks along its negative Z axis), X = up × Z, Y = Z × X, each normalised. Stored as the
  // last computed matrix.
  Matrix3<double> GetMatrix3(int time) override;
  // The eye of the last computed matrix, whatever `time` says.
  Point3<double> GetPosition(int time) override;
  // (0, 0, 0): the aim has no stored rotation or scale.
  Point3<double> GetRotation(int time) override;
  Point3<double> GetScale(int time) override;

 private:
  enum Slot {
    kDataTableSlot = 0,
    kTransformSlot = 1,
    kAimNodeSlot = 2,
    kUpNodeSlot = 3,
    kNumSlots = 4,
  };

  // Written by every GetMatrix3; the identity before the first.
  Matrix3<double> m_matrix;
  // Slot 0 as linked, and the same block when it is a parameter table.
  Block* m_data_table_block = nullptr;
  DataTable* m_data_table = nullptr;
  // Slots 2 and 3 as linked (nodes, or null when the slot holds another kind).
  Block* m_aim_block = nullptr;
  Node* m_aim_node = nullptr;
  Block* m_up_block = nullptr;
  Node* m_up_node = nullptr;
  // Slot 1 as linked, and the same block when it is a controller.
  Block* m_transform_block = nullptr;
  Controller* m_transform = nullptr;
};

class LookAtControllerFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override;
  // Passes the flag to the constructor.
  Block* GetBlock(bool create_defaults) const override;
  std::string GetName() const override;
};

}  // namespace Orlo
