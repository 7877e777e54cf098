// Declares ImportAsset, which builds an asset read by the asset library into an engine's
// scene (see AssetImportTool for what is brought in and how time is converted).
// The new blocks are owned through the scene's graph once attached; the asset stays the
// caller's.
#pragma once

#include <assimp/scene.h>

#include <orlo/base/engine/scene_engine.h>

namespace orlo_assimp::internal {

// Builds the asset below the engine's main node and returns how many node transforms had to
// be approximated.
// Requires: engine has a scene.
int ImportAsset(const aiScene& scene, Orlo::SceneEngine* engine);

}  // namespace orlo_assimp::internal
