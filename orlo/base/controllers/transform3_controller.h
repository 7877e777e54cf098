// Defines Transform3Controller, the ordinary transform of a node, and its factory
// Transform3ControllerFactory.
//
// The controller builds an affine matrix from three Point3Controllers (position, rotation as
// Euler angles in radians, scale) and splits a matrix back into them. A fourth one, the shear,
// is linked and cloned but never evaluated. It also carries a parameter table of pivots and
// per-axis limits for the host; nothing here reads them. Every sub-block is a dependency and
// so owned through the graph, as the controller itself is (see Block).
//
//   auto* transform = new Transform3Controller(true);   // sub-blocks and table linked
//   transform->SetPosition(Point3<double>(1, 2, 3), 0);
//   Matrix3<double> m = transform->GetMatrix3(0);        // scale, then rotation, then position
#pragma once

#include <string>

#include <orlo/base/block/block_factory.h>
#include <orlo/base/block/internal/typed_slot.h>
#include <orlo/base/controllers/matrix3_controller.h>

namespace Orlo {

class DataTable;
class Point3Controller;

class Transform3Controller : public Matrix3Controller {
 public:
  static constexpr BlockType m_block_type{300, 48, 48};

  // The parameters have ids 0 to 29: "rotation_order" (int), "rotation_pivot" and
  // "scale_pivot" (points), then for position, rotation and scale in turn, for x, y and z in
  // turn, a use flag (bool) and a minimum and a maximum (floats), as "use_position_limit_x",
  // "min_position_limit_x", "max_position_limit_x" and so on.
  static constexpr int kNumParameters = 30;

  // With `create` true: links four Point3Controllers with their scalar controllers
  // (position, rotation, scale set to (1, 1, 1) at time 0, shear) as dependencies 1 to 4,
  // then a new parameter table as dependency 0, and fills it.
  explicit Transform3Controller(bool create);

  std::string GetClassName() const override;
  BlockType GetBlockType() const override;
  // Slot 0 is the parameter table (type 205); slots 1 to 4 the position, rotation, scale and
  // shear controllers (type 300).
  int NumDependencies() const override;
  void SetDependency(int index, Block* block) override;
  Block* GetDependency(int index) const override;
  std::string GetDependencyName(int index) const override;
  unsigned GetDependencyType(int index) const override;
  DataTable* GetDataTable() const override;
  // Links `table` (or null) as dependency 0. A block that is not a parameter table is refused
  // with code 3, "Transform3Controller::SetDataTable : The block is not a valid data_table.".
  Status SetDataTable(DataTable* table) override;
  // Adds the 30 parameters (existing ids are left alone), rebuilds the table's id lookup and
  // names every parameter. Without a table it does nothing. The flag is not used.
  void UpdateDataTable(bool create) override;
  // A new controller with a clone of each sub-controller that is set, and of the table.
  Block* Clone() override;
  // Nothing is written: the state lives in the dependency blocks, saved on their own.
  // Requires: save is not null.
  int Save(SceneSave* save) override;
  // Requires: load is not null.
  int Load(SceneLoad* load) override;
  void DeleteThis() override;

  // Sets position, rotation and scale at `time` from `matrix`, then posts code 0. The
  // position is the translation row, the scale the stretch factors of DecomposeAffine, and
  // the rotation the Euler angles of `matrix` itself, scale and all.
  // Requires: the position, rotation and scale controllers are linked (a missing one is
  // skipped).
  void SetMatrix3(Matrix3<double> matrix, int time) override;
  // Each setter passes the value to its Point3Controller; without one it does nothing.
  void SetPosition(Point3<double> position, int time) override;
  void SetRotation(Point3<double> rotation, int time) override;
  void SetScale(Point3<double> scale, int time) override;
  // Scale x rotation (X, then Y, then Z) x translation, for row vectors. A missing
  // controller contributes the identity, and a scale of exactly (1, 1, 1) is skipped.
  Matrix3<double> GetMatrix3(int time) override;
  // The controller's value at `time`; (0, 0, 0) without one, for the scale too.
  Point3<double> GetPosition(int time) override;
  Point3<double> GetRotation(int time) override;
  Point3<double> GetScale(int time) override;

  // The matrix member: copied by Clone, read by nothing here. Starts as the identity.
  const Matrix3<double>& GetStoredMatrix() const { return m_matrix; }
  void SetStoredMatrix(const Matrix3<double>& matrix) { m_matrix = matrix; }

 private:
  enum Slot {
    kDataTableSlot = 0,
    kPositionSlot = 1,
    kRotationSlot = 2,
    kScaleSlot = 3,
    kShearSlot = 4,
    kNumSlots = 5,
  };

  static bool IsSlot(int index) { return index >= 0 && index < kNumSlots; }
  // The usable three-component controller of a controller slot, or null.
  Point3Controller* Point3At(int slot) const { return m_controllers[slot - kPositionSlot].Get(); }

  Matrix3<double> m_matrix;
  // Slots 1 to 4 in order: position, rotation, scale, shear; each block as linked, seen as a
  // three-component controller only when it is one of type code 4 (a controller of another
  // kind contributes nothing).
  internal::TypedSlot<Point3Controller> m_controllers[4];
  // Slot 0 as linked, seen as a parameter table when it is one.
  internal::TypedSlot<DataTable> m_data_table;
};

class Transform3ControllerFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override;
  // Passes the flag to the constructor.
  Block* GetBlock(bool create_defaults) const override;
  std::string GetName() const override;
};

}  // namespace Orlo
