#include "plugins/assimp/asset_material.h"

#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

#include "plugins/assimp/internal/plugin_factory.h"

namespace orlo_assimp {

namespace {

constexpr unsigned kNameChunk = 0x0005;
const Orlo::Color kDefaultDiffuse(0.8f, 0.8f, 0.8f);
const Orlo::Color kBlack(0.0f, 0.0f, 0.0f);

}  // namespace

AssetMaterial::AssetMaterial(bool create_defaults) {
  if (create_defaults) CreateDataTable();
}

void AssetMaterial::UpdateDataTable(bool) {
  Orlo::DataTable* table = GetDataTable();
  if (table == nullptr) return;
  // The table refuses ids it holds already: existing values are kept.
  (void)table->AddDataColor(kDiffuseColorID, kDefaultDiffuse, 1);
  (void)table->AddDataColor(kSpecularColorID, kBlack, 1);
  (void)table->AddDataColor(kEmissiveColorID, kBlack, 1);
  (void)table->AddDataFloat(kOpacityID, 1.0, 1);
  (void)table->AddDataFloat(kShininessID, 0.0, 1);
  (void)table->AddDataString(kDiffuseTextureID, "", 1);
  (void)table->AddDataString(kNormalTextureID, "", 1);
  table->UpdateIDToIndex();
  (void)table->SetDataName(kDiffuseColorID, "diffuse_color");
  (void)table->SetDataName(kSpecularColorID, "specular_color");
  (void)table->SetDataName(kEmissiveColorID, "emissive_color");
  (void)table->SetDataName(kOpacityID, "opacity");
  (void)table->SetDataName(kShininessID, "shininess");
  (void)table->SetDataName(kDiffuseTextureID, "diffuse_texture");
  (void)table->SetDataName(kNormalTextureID, "normal_texture");
}

Orlo::Block* AssetMaterial::Clone() {
  auto* copy = new AssetMaterial(false);
  copy->m_name = m_name;
  if (Orlo::DataTable* table = GetDataTable()) {
    Orlo::Block* table_copy = table->Clone();
    if (!copy->SetDataTable(static_cast<Orlo::DataTable*>(table_copy)).IsOk()) {
      table_copy->DeleteThisBlock(true);
    }
  }
  return copy;
}

int AssetMaterial::Save(Orlo::SceneSave* save) {
  save->BeginChunk(kNameChunk);
  save->WriteString(m_name);
  save->EndChunk();
  return 1;
}

int AssetMaterial::Load(Orlo::SceneLoad* load) {
  return internal::ReadPayload(load, [&](unsigned id) {
    if (id == kNameChunk) load->ReadString(m_name);
  });
}

Orlo::Status AssetMaterial::SetSubMaterial(int, Orlo::Material*) {
  return Orlo::Status(Orlo::Status::kNotApplicable,
                      "AssetMaterial::SetSubMaterial : This Block has no SubMaterials.");
}

Orlo::Color AssetMaterial::GetDiffuseColor(int time) const {
  Orlo::DataTable* table = GetDataTable();
  return table != nullptr ? table->GetColor(kDiffuseColorID, time, 0) : kDefaultDiffuse;
}

Orlo::Color AssetMaterial::GetSpecularColor(int time) const {
  Orlo::DataTable* table = GetDataTable();
  return table != nullptr ? table->GetColor(kSpecularColorID, time, 0) : kBlack;
}

Orlo::Color AssetMaterial::GetEmissiveColor(int time) const {
  Orlo::DataTable* table = GetDataTable();
  return table != nullptr ? table->GetColor(kEmissiveColorID, time, 0) : kBlack;
}

double AssetMaterial::GetOpacity(int time) const {
  Orlo::DataTable* table = GetDataTable();
  return table != nullptr ? table->GetFloat(kOpacityID, time, 0) : 1.0;
}

double AssetMaterial::GetShininess(int time) const {
  Orlo::DataTable* table = GetDataTable();
  return table != nullptr ? table->GetFloat(kShininessID, time, 0) : 0.0;
}

std::string AssetMaterial::GetDiffuseTexture() const {
  Orlo::DataTable* table = GetDataTable();
  return table != nullptr ? table->GetString(kDiffuseTextureID, 0, 0) : std::string();
}

std::string AssetMaterial::GetNormalTexture() const {
  Orlo::DataTable* table = GetDataTable();
  return table != nullptr ? table->GetString(kNormalTextureID, 0, 0) : std::string();
}

// The setters discard the table's status: the ids are the table's own, so only a missing
// table could fail, and that is tested first.
void AssetMaterial::SetDiffuseColor(Orlo::Color color, int time) {
  if (Orlo::DataTable* table = GetDataTable())
    (void)table->SetValue(kDiffuseColorID, color, time, 0);
}

void AssetMaterial::SetSpecularColor(Orlo::Color color, int time) {
  if (Orlo::DataTable* table = GetDataTable())
    (void)table->SetValue(kSpecularColorID, color, time, 0);
}

void AssetMaterial::SetEmissiveColor(Orlo::Color color, int time) {
  if (Orlo::DataTable* table = GetDataTable())
    (void)table->SetValue(kEmissiveColorID, color, time, 0);
}

void AssetMaterial::SetOpacity(double opacity, int time) {
  if (Orlo::DataTable* table = GetDataTable()) (void)table->SetValue(kOpacityID, opacity, time, 0);
}

void AssetMaterial::SetShininess(double shininess, int time) {
  if (Orlo::DataTable* table = GetDataTable())
    (void)table->SetValue(kShininessID, shininess, time, 0);
}

void AssetMaterial::SetDiffuseTexture(const std::string& path) {
  if (Orlo::DataTable* table = GetDataTable()) (void)table->SetValue(kDiffuseTextureID, path, 0, 0);
}

void AssetMaterial::SetNormalTexture(const std::string& path) {
  if (Orlo::DataTable* table = GetDataTable()) (void)table->SetValue(kNormalTextureID, path, 0, 0);
}

}  // namespace orlo_assimp
