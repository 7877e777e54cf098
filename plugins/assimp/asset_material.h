// Defines AssetMaterial, the material of an imported asset: a name and a parameter table of
// colours, opacity, shininess and texture file names.
//
// The table is a dependency (slot 0, "data_table") and so owned through the graph, like the
// material itself. A colour or number may be animated through the table's controllers.
//
//   | id | name             | kind   | default          |
//   |  0 | diffuse_color    | colour | (0.8, 0.8, 0.8)  |
//   |  1 | specular_color   | colour | (0, 0, 0)        |
//   |  2 | emissive_color   | colour | (0, 0, 0)        |
//   |  3 | opacity          | float  | 1                |
//   |  4 | shininess        | float  | 0                |
//   |  5 | diffuse_texture  | string | ""               |
//   |  6 | normal_texture   | string | ""               |
#pragma once

#include <string>

#include <orlo/base/scene/material.h>
#include <orlo/support/color.h>

#include "plugins/assimp/internal/table_slot_block.h"
#include "plugins/assimp/plugin_types.h"

namespace orlo_assimp {

class AssetMaterial : public internal::TableSlotBlock<Orlo::Material> {
 public:
  static constexpr Orlo::BlockType m_block_type = kAssetMaterialType;
  static constexpr int kDiffuseColorID = 0;
  static constexpr int kSpecularColorID = 1;
  static constexpr int kEmissiveColorID = 2;
  static constexpr int kOpacityID = 3;
  static constexpr int kShininessID = 4;
  static constexpr int kDiffuseTextureID = 5;
  static constexpr int kNormalTextureID = 6;

  // With `create_defaults` a table holding every parameter is linked into slot 0; without,
  // the slot stays empty for the scene reader to fill.
  explicit AssetMaterial(bool create_defaults);

  std::string GetClassName() const override { return "AssetMaterial"; }
  Orlo::BlockType GetBlockType() const override { return m_block_type; }
  // Adds the parameters the table lacks (so it also repairs a loaded table) and names them.
  void UpdateDataTable(bool create) override;
  // A new material with the name and a clone of the table.
  Orlo::Block* Clone() override;
  // Chunk 0x0005: the name.
  int Save(Orlo::SceneSave* save) override;
  int Load(Orlo::SceneLoad* load) override;
  void DeleteThis() override { delete this; }

  std::string GetName() const override { return m_name; }
  void SetName(std::string name) override { m_name = std::move(name); }
  // An asset material has no sub-materials.
  void SetNumSubMaterials(int) override {}
  int GetNumSubMaterials() override { return 0; }
  Orlo::Material* GetSubMaterial(int) override { return nullptr; }
  // Code 1, "AssetMaterial::SetSubMaterial : This Block has no SubMaterials.".
  Orlo::Status SetSubMaterial(int, Orlo::Material*) override;
  void Shade(Orlo::RenderState&) override {}

  // The parameters at `time`; the defaults above when the table is missing.
  Orlo::Color GetDiffuseColor(int time) const;
  Orlo::Color GetSpecularColor(int time) const;
  Orlo::Color GetEmissiveColor(int time) const;
  double GetOpacity(int time) const;
  double GetShininess(int time) const;
  std::string GetDiffuseTexture() const;
  std::string GetNormalTexture() const;
  // Each setter sets the value at `time` (time 0 for the strings); without a table it does
  // nothing.
  void SetDiffuseColor(Orlo::Color color, int time);
  void SetSpecularColor(Orlo::Color color, int time);
  void SetEmissiveColor(Orlo::Color color, int time);
  void SetOpacity(double opacity, int time);
  void SetShininess(double shininess, int time);
  void SetDiffuseTexture(const std::string& path);
  void SetNormalTexture(const std::string& path);

 private:
  std::string m_name;
};

}  // namespace orlo_assimp
