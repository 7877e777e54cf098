// Defines CameraObject, a perspective camera as asset formats carry it: a horizontal field
// of view, the near and far clip planes and the aspect ratio.
// The camera looks along its node's -Z axis with +Y up, the asset formats' own default, so
// its node's transform aims it. It owns nothing; like every block it is owned by the graph.
#pragma once

#include <string>

#include <orlo/base/block/slotless_block.h>
#include <orlo/base/scene/object.h>

#include "plugins/assimp/plugin_types.h"

namespace orlo_assimp {

class CameraObject : public Orlo::SlotlessBlock<Orlo::Object> {
 public:
  static constexpr Orlo::BlockType m_block_type = kCameraObjectType;

  std::string GetClassName() const override { return "CameraObject"; }
  Orlo::BlockType GetBlockType() const override { return m_block_type; }
  Orlo::Block* Clone() override;
  // Chunk 0x0005: field of view, near clip, far clip and aspect ratio, four doubles.
  int Save(Orlo::SceneSave* save) override;
  int Load(Orlo::SceneLoad* load) override;
  int Flags() override { return 0; }
  Orlo::Object* BuildObject(int, Orlo::Node*) override { return this; }

  // The horizontal field of view in radians.
  double GetFieldOfView() const { return m_field_of_view; }
  void SetFieldOfView(double radians) { m_field_of_view = radians; }
  double GetNearClip() const { return m_near_clip; }
  void SetNearClip(double distance) { m_near_clip = distance; }
  double GetFarClip() const { return m_far_clip; }
  void SetFarClip(double distance) { m_far_clip = distance; }
  // Width over height; 0 when the asset leaves it to the viewer.
  double GetAspectRatio() const { return m_aspect_ratio; }
  void SetAspectRatio(double ratio) { m_aspect_ratio = ratio; }

 private:
  double m_field_of_view = 0.785398163397448;  // a quarter turn's half: 45 degrees
  double m_near_clip = 0.1;
  double m_far_clip = 1000.0;
  double m_aspect_ratio = 0.0;
};

}  // namespace orlo_assimp
