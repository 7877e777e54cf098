// Defines AssetImportTool, the import tool that reads every format the Open Asset Import
// Library reads into the engine's scene.
//
// What an import brings in:
//  - the node hierarchy with the asset's node names, below the scene's main node. The
//    asset's root node is kept as a node of its own unless it is an empty identity (no
//    transform, mesh, camera or light), as most formats write it;
//  - each node's local transform on its transform controller, split into position, Euler
//    rotation (X, then Y, then Z) and scale. A matrix that is not such a product (a shear)
//    is replaced by the closest one and counted: the status is then still success (code 0)
//    with the message "AssetImportTool::Execute : <n> transforms were not position, rotation
//    and scale; they were approximated.";
//  - a MeshObject per node mesh (a node with several meshes gets one child node per mesh,
//    "<node>_mesh<k>"), the asset's materials as AssetMaterials in the scene's material list
//    and on the nodes of their meshes, and cameras and lights as CameraObject and
//    LightObject on the nodes of the same name (on a child "<node>_camera" or
//    "<node>_light" when the node shows a mesh already);
//  - node animation as keys.
//
// Time: the scene's time unit is the millisecond (1000 ticks per second). An asset time of t
// ticks in an animation of r ticks per second becomes round(t / r * 1000); r = 0 reads as
// 25. The engine's scalar controllers hold their value only at their keys (between keys they
// take a midpoint, after the last key 0), so when the asset is animated every imported node,
// and the main node, is keyed at every key time of the asset and at time 0, with the pose the
// asset gives it there: position and scale interpolated linearly, rotation spherically, as
// the asset library defines its keys. Rotation keys become Euler angles, each chosen among
// the equivalent triples so that no angle jumps by 2 pi from one key to the next.
//
// A file the library cannot read gives code 2, "AssetImportTool::Execute : <path>: <the
// library's message>", and leaves the scene untouched. A tool that nothing keeps releases
// itself at the end of Execute.
#pragma once

#include <string>
#include <vector>

#include <orlo/base/block/slotless_block.h>
#include <orlo/base/scene/import_tool.h>

#include "plugins/assimp/plugin_types.h"

namespace orlo_assimp {

class AssetImportTool : public Orlo::SlotlessBlock<Orlo::ImportTool> {
 public:
  static constexpr Orlo::BlockType m_block_type = kAssetImportToolType;

  std::string GetClassName() const override { return "AssetImportTool"; }
  Orlo::BlockType GetBlockType() const override { return m_block_type; }
  Orlo::Block* Clone() override;
  int Save(Orlo::SceneSave*) override { return 1; }
  int Load(Orlo::SceneLoad*) override { return 1; }

  // Every extension the installed library reads, lower case with the leading dot.
  std::vector<std::string> GetExtensions() override;
  Orlo::Status Execute(Orlo::SceneEngine* engine, std::string path) override;
};

}  // namespace orlo_assimp
