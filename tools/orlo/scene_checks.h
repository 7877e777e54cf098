// Defines CheckSceneFile, the checks a loader makes of a scene file's structure, run over the
// block records of a SceneFile so that every problem is found, not only the first.
#pragma once

#include <vector>

#include "tools/orlo/block_catalog.h"
#include "tools/orlo/scene_file.h"

namespace Orlo::cli {

// The problems of `file`: those found while reading it (framing, chunks out of place), then
// the header count, the block numbers, the dependency numbers, the links that would close a
// cycle and the classes without a registered factory. Whether the file actually loads is not
// checked here.
std::vector<FileProblem> CheckSceneFile(const SceneFile& file, BlockCatalog& catalog);

}  // namespace Orlo::cli
