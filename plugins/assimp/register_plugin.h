// Declares RegisterAssimpPlugin, which registers the factories of the asset plug-in's block
// classes with the engine's registry.
//
// A host that links the static library `orlo_assimp` calls it once, after
// RegisterBaseLibrary; the shared module `orlo_assimp_plugin` calls it from its exported
// OrloRegisterPlugin, which the orlo tool calls when it loads the module. A factory whose type
// is registered already is refused and the first one stays, so calling it twice is harmless.
#pragma once

namespace orlo_assimp {

// Registers, in this order: MeshObject, AssetMaterial, CameraObject, LightObject,
// TwistModifier, TwistObjectModifier, AssetImportTool and AssetExportTool.
void RegisterAssimpPlugin();

}  // namespace orlo_assimp
