// Defines Point3Controller, the controller of a three-component vector, and its factory
// Point3ControllerFactory.
//
// Each component is animated by its own scalar controller, held as dependency 0 (x), 1 (y)
// or 2 (z) and so owned through the graph; a component without one keeps a plain fallback
// value instead. The controller itself is owned by the graph like every block (see Block).
//
//   auto* position = new Point3Controller(true);        // three BezierControllers linked
//   position->SetPoint3(10, Point3<double>(1, 2, 3));   // each component keyed at time 10
#pragma once

#include <string>

#include <orlo/base/block/block_factory.h>
#include <orlo/base/block/internal/typed_slot.h>
#include <orlo/base/controllers/controller.h>
#include <orlo/support/point3.h>

namespace Orlo {

class FloatController;

class Point3Controller : public Controller {
 public:
  static constexpr BlockType m_block_type{300, 48, 32};
  static constexpr int kControllerType = 4;

  // With `create_subcontrollers` true, links a new BezierController (default 0.0) as each of
  // the three dependencies, x first.
  explicit Point3Controller(bool create_subcontrollers);

  int GetControllerType() const override { return kControllerType; }

  std::string GetClassName() const override;
  BlockType GetBlockType() const override;
  // Slots 0, 1, 2: the x, y and z controllers, of dependency type 300.
  int NumDependencies() const override;
  void SetDependency(int index, Block* block) override;
  Block* GetDependency(int index) const override;
  std::string GetDependencyName(int index) const override;
  unsigned GetDependencyType(int index) const override;
  // A new controller with the same fallback values and a clone of each sub-controller.
  Block* Clone() override;
  // Nothing is written: the sub-controllers travel as dependency blocks, and the fallback
  // values are deliberately not part of a scene file.
  // Requires: save is not null.
  int Save(SceneSave* save) override;
  // Requires: load is not null.
  int Load(SceneLoad* load) override;
  void DeleteThis() override;

  // Each component is its sub-controller's value at `time`, or its fallback value when it
  // has none.
  Point3<double> GetPoint3(int time);
  double GetX(int time);
  double GetY(int time);
  double GetZ(int time);

  // Sets x, then y, then z through their sub-controllers (which post their own events), or as
  // fallback values. Posts nothing itself, even when it stores fallback values.
  void SetPoint3(int time, Point3<double> value);
  // Sets one component through its sub-controller; without one it stores the fallback value
  // and posts code 0.
  void SetX(int time, double value);
  void SetY(int time, double value);
  void SetZ(int time, double value);

 private:
  struct Component {
    // The value while there is no sub-controller.
    double fallback = 0.0;
    // The block in the component's slot, as linked, seen as a scalar controller when it is
    // one: a slot filled from a corrupt file with another kind of block evaluates as if empty.
    internal::TypedSlot<FloatController> link;
  };

  static double GetComponent(const Component& component, int time);
  // Returns true when the value was stored as the fallback value.
  static bool SetComponent(Component& component, int time, double value);

  bool IsSlot(int index) const { return index >= 0 && index < kNumSlots; }

  static constexpr int kNumSlots = 3;

  // x, y, z: slots 0, 1, 2.
  Component m_components[kNumSlots];
};

class Point3ControllerFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override;
  // Passes the flag to the constructor.
  Block* GetBlock(bool create_defaults) const override;
  std::string GetName() const override;
};

}  // namespace Orlo
