// Defines CurrentEngine, which makes an engine the process's current one for a scope.
#pragma once

#include <orlo/base/engine/scene_engine.h>

namespace Orlo::cli {

// Makes `engine` the current engine for the life of this object, then restores the previous
// one: blocks reach the engine through the static while a scene is built, loaded or deleted.
class CurrentEngine {
 public:
  explicit CurrentEngine(SceneEngine* engine) : m_previous(SceneEngine::GetScene()) {
    SceneEngine::SetScene(engine);
  }
  ~CurrentEngine() { SceneEngine::SetScene(m_previous); }
  CurrentEngine(const CurrentEngine&) = delete;
  CurrentEngine& operator=(const CurrentEngine&) = delete;

 private:
  SceneEngine* m_previous;
};

}  // namespace Orlo::cli
