// Defines BuildDemoScene, the example scene of `orlo demo`, built through the public API only.
//
// The scene shows what the library is for in a few nodes:
//
//   MainNode
//     turntable        rotation keyed about z
//       arm            position and scale keyed
//         box          a DemoBox under two DemoDeformers, with a DemoMaterial
//           marker     an empty node, three levels below the turntable
//           camera_aim the point the camera looks at, carried along by the box
//     camera           a DemoCamera on a look-at controller aimed at camera_aim
//
// The material's table holds a parameter of every kind, its roughness keyed.
#pragma once

#include <orlo/base/engine/scene_engine.h>
#include <orlo/support/status.h>

namespace Orlo::cli {

// The times at which the demo reports world positions, and the keys' times.
inline constexpr int kDemoTimes[] = {0, 50, 100};

// Replaces `engine`'s scene by the example scene.
// Requires: the base library and the demo library are registered.
[[nodiscard]] Status BuildDemoScene(SceneEngine& engine);

}  // namespace Orlo::cli
