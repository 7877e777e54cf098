#include <orlo/base/block/block_listener.h>

#include <orlo/base/engine/scene_engine.h>

namespace Orlo {

BlockListener::~BlockListener() {
  if (SceneEngine* engine = SceneEngine::GetScene()) engine->ListenerIsBeingDeleted(this);
}

}  // namespace Orlo
