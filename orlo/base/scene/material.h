// Defines Material, the abstract base of the material blocks that host libraries implement,
// and declares RenderState, the shading state those libraries define.
// A node shows its material through its "material" slot and the scene keeps a list of
// materials; like every block a material is owned through the graph.
#pragma once

#include <string>

#include <orlo/base/block/block.h>

namespace Orlo {

// Declared only: its contents belong to the material libraries, which define it.
struct RenderState;

class Material : public Block {
 public:
  // The operations below follow Block's in this order; material libraries implement them.

  // The material's display name, read and written by the engine's name access.
  virtual std::string GetName() const = 0;
  virtual void SetName(std::string name) = 0;
  virtual void SetNumSubMaterials(int count) = 0;
  virtual int GetNumSubMaterials() = 0;
  // Sub-material `index`, or null.
  virtual Material* GetSubMaterial(int index) = 0;
  virtual Status SetSubMaterial(int index, Material* material) = 0;
  virtual void Shade(RenderState& state) = 0;

 protected:
  Material() = default;
  Material(const Material&) = default;
  Material& operator=(const Material&) = default;
};

}  // namespace Orlo
