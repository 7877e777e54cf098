// Defines Texture, the abstract base of the texture blocks that host libraries implement.
// A texture is a material without sub-materials that does not shade on its own; texture
// libraries supply the rest. Owned through the graph like every block.
#pragma once

#include <orlo/base/scene/material.h>

namespace Orlo {

class Texture : public Material {
 public:
  // Does nothing.
  void SetNumSubMaterials(int count) override;
  // 0.
  int GetNumSubMaterials() override;
  // Null.
  Material* GetSubMaterial(int index) override;
  // Code 1, "This Block has no SubMaterials.".
  Status SetSubMaterial(int index, Material* material) override;
  // Does nothing.
  void Shade(RenderState& state) override;

 protected:
  Texture() = default;
  Texture(const Texture&) = default;
  Texture& operator=(const Texture&) = default;
};

}  // namespace Orlo
