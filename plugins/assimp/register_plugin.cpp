#include "plugins/assimp/register_plugin.h"

#include "plugins/assimp/asset_export_tool.h"
#include "plugins/assimp/asset_import_tool.h"
#include "plugins/assimp/asset_material.h"
#include "plugins/assimp/camera_object.h"
#include "plugins/assimp/internal/plugin_factory.h"
#include "plugins/assimp/light_object.h"
#include "plugins/assimp/mesh_object.h"
#include "plugins/assimp/twist_modifier.h"
#include "plugins/assimp/twist_object_modifier.h"

namespace orlo_assimp {

void RegisterAssimpPlugin() {
  internal::RegisterFactory<MeshObject>("MeshObject");
  internal::RegisterFactory<AssetMaterial>("AssetMaterial");
  internal::RegisterFactory<CameraObject>("CameraObject");
  internal::RegisterFactory<LightObject>("LightObject");
  internal::RegisterFactory<TwistModifier>("TwistModifier");
  internal::RegisterFactory<TwistObjectModifier>("TwistObjectModifier");
  internal::RegisterFactory<AssetImportTool>("AssetImportTool");
  internal::RegisterFactory<AssetExportTool>("AssetExportTool");
}

}  // namespace orlo_assimp
