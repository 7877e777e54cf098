// Declares BuildAsset, which copies an engine's scene into a new asset-library scene for its
// exporters (see AssetExportTool for what is written).
// The returned scene owns everything in it; the engine's scene is only read (modifier stacks
// are built at time 0).
#pragma once

#include <memory>

#include <assimp/scene.h>

#include <orlo/base/engine/scene_engine.h>

namespace orlo_assimp::internal {

// Requires: engine has a scene.
std::unique_ptr<aiScene> BuildAsset(Orlo::SceneEngine* engine);

}  // namespace orlo_assimp::internal
