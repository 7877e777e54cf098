// Defines TwistModifier, a modifier that twists an object's points about one of its local
// axes, and its parameters.
//
// The twist turns each point about the axis through the object's origin, by an angle that
// grows linearly from 0 at the lowest point along the axis to `angle` at the highest. Its
// parameters live in a table (slot 0, "data_table"), owned through the graph, so the angle
// can be animated:
//
//   | id | name  | kind  | default | meaning                                  |
//   |  0 | angle | float | 0       | the whole twist in radians               |
//   |  1 | axis  | int   | 2       | 0 x, 1 y, 2 z; other values read as z    |
//
// Stacked on an object by a TwistObjectModifier (GetNewObjectModifier).
#pragma once

#include <string>

#include <orlo/base/scene/modifier.h>

#include "plugins/assimp/internal/table_slot_block.h"
#include "plugins/assimp/plugin_types.h"

namespace orlo_assimp {

class TwistModifier : public internal::TableSlotBlock<Orlo::Modifier> {
 public:
  static constexpr Orlo::BlockType m_block_type = kTwistModifierType;
  static constexpr int kAngleID = 0;
  static constexpr int kAxisID = 1;

  // With `create_defaults` a table holding both parameters is linked into slot 0.
  explicit TwistModifier(bool create_defaults);

  std::string GetClassName() const override { return "TwistModifier"; }
  Orlo::BlockType GetBlockType() const override { return m_block_type; }
  // Adds the parameters the table lacks and names them.
  void UpdateDataTable(bool create) override;
  // A new modifier with the name, box, active flag and a clone of the table.
  Orlo::Block* Clone() override;
  void DeleteThis() override { delete this; }

  // A new TwistObjectModifier that holds this modifier already, owned by the caller.
  Orlo::ObjectModifier* GetNewObjectModifier() override;
  // Narrows `interval` to the span in which the parameters keep their values: empty when the
  // angle is animated (the parameter table reports no spans of its own).
  void GetTimeInterval(Orlo::TimeInterval& interval) override;

  // The parameters at `time`: 0 and 2 without a table. An angle with a controller in the
  // table is that controller's value at `time`.
  double GetAngle(int time) const;
  int GetAxis() const;
  void SetAngle(double radians, int time);
  void SetAxis(int axis);

  // `point` twisted for an object whose points span [low, high] along the axis.
  static Orlo::Point3<double> Twist(Orlo::Point3<double> point, double angle, int axis, double low,
                                    double high);
};

}  // namespace orlo_assimp
