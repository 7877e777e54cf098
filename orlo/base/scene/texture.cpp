#include <orlo/base/scene/texture.h>

namespace Orlo {

void Texture::SetNumSubMaterials(int) {}

int Texture::GetNumSubMaterials() { return 0; }

Material* Texture::GetSubMaterial(int) { return nullptr; }

Status Texture::SetSubMaterial(int, Material*) {
  return Status(Status::kNotApplicable, "This Block has no SubMaterials.");
}

void Texture::Shade(RenderState&) {}

}  // namespace Orlo
