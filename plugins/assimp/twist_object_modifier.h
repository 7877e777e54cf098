// Defines TwistObjectModifier, the object-modifier that stacks a TwistModifier on an object.
//
// Building the stack twists a copy of the object below: the base object's points are never
// changed, so saving a scene after evaluating it writes the geometry as it was modelled. The
// copy is a MeshObject the stack owns outside the graph (it is the stack's cached result)
// and releases when the stack is rebuilt with another source or destroyed. An object below
// that is not a MeshObject, or a modifier that is not a TwistModifier, is passed through.
// TwistModifier::GetNewObjectModifier makes stacks that hold their modifier already, as the
// engine's AddModifierToNodes expects.
#pragma once

#include <string>

#include <orlo/base/block/block_event.h>
#include <orlo/base/scene/object_modifier.h>

#include "plugins/assimp/plugin_types.h"

namespace orlo_assimp {

class MeshObject;

class TwistObjectModifier : public Orlo::ObjectModifier {
 public:
  static constexpr Orlo::BlockType m_block_type = kTwistObjectModifierType;

  TwistObjectModifier() = default;
  TwistObjectModifier(const TwistObjectModifier&) = delete;
  TwistObjectModifier& operator=(const TwistObjectModifier&) = delete;
  ~TwistObjectModifier() override;

  std::string GetClassName() const override { return "TwistObjectModifier"; }
  Orlo::BlockType GetBlockType() const override { return m_block_type; }
  // A new stack with the same record and enabled flag, the same modifier and a clone of the
  // object below.
  Orlo::Block* Clone() override;
  void DeleteThis() override { delete this; }

  // The span in which neither the twist nor the object below changes.
  void GetTimeInterval(Orlo::TimeInterval& interval) override;
  // A change of the twist's parameters (code 3 from the modifier) drops the cached result, so
  // that the next build twists again; every event is then relayed as the base class does.
  void ProcessEvent(Orlo::BlockEvent event) override;
  using Orlo::ObjectModifier::ProcessEvent;

  // Returns the object the twisted copy was made from.
  Orlo::Object* UnapplyModifier(int time, Orlo::Object* object, Orlo::Node* node) override;
  // Returns a twisted copy of `object` when it is a MeshObject, else `object` itself.
  Orlo::Object* ApplyModifier(int time, Orlo::Object* object, Orlo::Node* node) override;

 private:
  // The twisted copy this stack owns, and the object it was made from (not owned).
  MeshObject* m_result = nullptr;
  Orlo::Object* m_source = nullptr;
};

}  // namespace orlo_assimp
