// Defines AssetExportTool, the export tool that writes the engine's scene through the Open
// Asset Import Library's exporters: glTF 2 (.gltf, .glb), Wavefront (.obj), Collada (.dae),
// .ply, .stl and whatever else the installed library writes.
//
// What an export writes: the nodes below the main node, which becomes the asset's root, with
// their names and local transforms at time 0; each node's MeshObject (a modifier stack is
// built at time 0 and its result written), its AssetMaterial (a default material for meshes
// without one), its CameraObject or LightObject under the node's name; and one animation of
// every node whose transform holds keys, sampled at those key times (the main node, the
// asset's root, only when its keys move it). A scene time of t milliseconds (see
// AssetImportTool) is written as t / 1000 seconds, at one tick per second. Formats that carry
// no hierarchy or animation keep what they can.
//
// A failed write gives code 2, "AssetExportTool::Execute : <path>: <the library's
// message>". A tool that nothing keeps releases itself at the end of Execute.
#pragma once

#include <string>
#include <vector>

#include <orlo/base/block/slotless_block.h>
#include <orlo/base/scene/export_tool.h>

#include "plugins/assimp/plugin_types.h"

namespace orlo_assimp {

class AssetExportTool : public Orlo::SlotlessBlock<Orlo::ExportTool> {
 public:
  static constexpr Orlo::BlockType m_block_type = kAssetExportToolType;

  std::string GetClassName() const override { return "AssetExportTool"; }
  Orlo::BlockType GetBlockType() const override { return m_block_type; }
  Orlo::Block* Clone() override;
  int Save(Orlo::SceneSave*) override { return 1; }
  int Load(Orlo::SceneLoad*) override { return 1; }

  // Every extension the installed library writes, lower case with the leading dot.
  std::vector<std::string> GetExtensions() override;
  Orlo::Status Execute(Orlo::SceneEngine* engine, std::string path) override;

  // The library's format id used for `extension` (".gltf" writes glTF 2, ".glb" binary glTF
  // 2); empty when no exporter writes it.
  static std::string FormatFor(const std::string& extension);
};

}  // namespace orlo_assimp
