// The assets the plug-in's tests import, built in memory and written through the asset
// library's own exporters, with the absolute matrices the tests expect computed here
// independently of the plug-in (column vectors, double precision, from the same numbers).
//
// The asset: an empty root, then
//   base  translate (1, 2, 3), turn 30 degrees about z; a mesh with material "red"
//     arm   translate (0, 1, 0), turn 45 degrees about x, then about z by 0, 120 and 240
//           degrees at 0, 1 and 2 seconds (keyed), scale 2
//       hand  translate (0, 0, 1.5), turn -20 degrees about y, scale (1, 0.5, 1); a mesh
//             with material "blue"
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <assimp/scene.h>

#include <orlo/base/engine/scene_engine.h>
#include <orlo/support/matrix3.h>

namespace orlo_assimp::testing {

// The key times of the arm, in scene ticks (milliseconds).
inline const std::vector<std::int32_t> kAssetTimes = {0, 1000, 2000};
// The arm's turn about z at each key time, in radians.
double ArmTurn(std::int32_t time);

std::unique_ptr<aiScene> MakeTestAsset();

// Writes the asset with the library's exporter of `format` ("gltf2", "glb2", "collada",
// "obj", ...) and returns whether it worked.
bool WriteTestAsset(const std::string& format, const std::string& path);

// The absolute matrix the asset gives `name` ("base", "arm" or "hand") at scene time `time`,
// as the engine stores matrices (row vectors, translation in row 3).
Orlo::Matrix3<double> ExpectedAbsolute(const std::string& name, std::int32_t time);

// The largest difference between two matrices' entries.
double MaxDifference(const Orlo::Matrix3<double>& a, const Orlo::Matrix3<double>& b);

// Expects the test asset's three nodes in `engine`, each with ExpectedAbsolute's matrix
// (within 1e-6) at every time of kAssetTimes.
void ExpectAssetMatrices(Orlo::SceneEngine& engine);

}  // namespace orlo_assimp::testing
