// Declares the block types of the asset plug-in's classes in one place.
// Every class of the plug-in shares the super class id 400, the plug-in's own family, and
// is told apart by its sub id; the class id is the kind the engine tests (515 raw object,
// 405 material, 600 camera, 700 light, 800 modifier, 520 object modifier, 100005 and 100010
// import and export tools).
#pragma once

#include <orlo/base/block/block_type.h>

namespace orlo_assimp {

inline constexpr unsigned kPluginSuperClassID = 400;

inline constexpr Orlo::BlockType kMeshObjectType{515, kPluginSuperClassID, 1};
inline constexpr Orlo::BlockType kAssetMaterialType{405, kPluginSuperClassID, 2};
inline constexpr Orlo::BlockType kCameraObjectType{600, kPluginSuperClassID, 3};
inline constexpr Orlo::BlockType kLightObjectType{700, kPluginSuperClassID, 4};
inline constexpr Orlo::BlockType kTwistModifierType{800, kPluginSuperClassID, 5};
inline constexpr Orlo::BlockType kTwistObjectModifierType{520, kPluginSuperClassID, 6};
inline constexpr Orlo::BlockType kAssetImportToolType{100005, kPluginSuperClassID, 7};
inline constexpr Orlo::BlockType kAssetExportToolType{100010, kPluginSuperClassID, 8};

}  // namespace orlo_assimp
