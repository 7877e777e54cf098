// Defines LightObject, a light as asset formats carry it: its kind, colour, intensity and,
// for a spot light, the inner and outer cone angles.
// The light shines along its node's -Z axis, the asset formats' own default. It owns
// nothing; like every block it is owned by the graph.
#pragma once

#include <string>

#include <orlo/base/block/slotless_block.h>
#include <orlo/base/scene/object.h>
#include <orlo/support/color.h>

#include "plugins/assimp/plugin_types.h"

namespace orlo_assimp {

class LightObject : public Orlo::SlotlessBlock<Orlo::Object> {
 public:
  static constexpr Orlo::BlockType m_block_type = kLightObjectType;

  // Saved as its number: keep the values.
  enum Kind { kDirectional = 0, kPoint = 1, kSpot = 2, kAmbient = 3, kArea = 4 };

  std::string GetClassName() const override { return "LightObject"; }
  Orlo::BlockType GetBlockType() const override { return m_block_type; }
  Orlo::Block* Clone() override;
  // Chunk 0x0005: the kind (int32), the colour (three floats), then intensity, inner and
  // outer cone angles (doubles).
  int Save(Orlo::SceneSave* save) override;
  // A kind outside the enumeration reads as a point light.
  int Load(Orlo::SceneLoad* load) override;
  int Flags() override { return 0; }
  Orlo::Object* BuildObject(int, Orlo::Node*) override { return this; }

  Kind GetKind() const { return m_kind; }
  void SetKind(Kind kind) { m_kind = kind; }
  // The colour, each component in [0, 1]; the brightness is the intensity.
  Orlo::Color GetColor() const { return m_color; }
  void SetColor(Orlo::Color color) { m_color = color; }
  double GetIntensity() const { return m_intensity; }
  void SetIntensity(double intensity) { m_intensity = intensity; }
  // Full cone angles in radians: full brightness inside the inner, none outside the outer.
  double GetInnerConeAngle() const { return m_inner_cone; }
  void SetInnerConeAngle(double radians) { m_inner_cone = radians; }
  double GetOuterConeAngle() const { return m_outer_cone; }
  void SetOuterConeAngle(double radians) { m_outer_cone = radians; }

 private:
  Kind m_kind = kPoint;
  Orlo::Color m_color{1.0f, 1.0f, 1.0f};
  double m_intensity = 1.0;
  double m_inner_cone = 0.0;
  double m_outer_cone = 0.785398163397448;
};

}  // namespace orlo_assimp
