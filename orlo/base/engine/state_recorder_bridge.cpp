// The engine's static bridges to the process-wide undo recorder. Each is silent without a
// recorder.
#include <orlo/base/engine/scene_engine.h>
#include <orlo/support/state_container.h>
#include <orlo/support/state_recorder.h>

namespace Orlo {

void SceneEngine::StateRecorderDelete() {
  // Kept as is on purpose: the recorder is destroyed only by an engine's destructor, and
  // hosts call this between edits expecting their history to stay. The static is emptied only
  // when it is empty already, which changes nothing.
}

void SceneEngine::StateRecorderBegin() {
  if (StateRecorder* recorder = GetStateRecorder()) recorder->Begin();
}

void SceneEngine::StateRecorderPut(StateContainer* container) {
  if (StateRecorder* recorder = GetStateRecorder()) {
    recorder->Put(container);
  } else {
    // Nobody records: the caller has handed the container over, so it goes now.
    delete container;
  }
}

void SceneEngine::StateRecorderAccept(const char* name) {
  if (StateRecorder* recorder = GetStateRecorder()) recorder->Accept(name);
}

void SceneEngine::StateRecorderCancel() {
  if (StateRecorder* recorder = GetStateRecorder()) recorder->Cancel();
}

bool SceneEngine::StateRecorderIsHolding() {
  StateRecorder* recorder = GetStateRecorder();
  return recorder != nullptr && recorder->Holding();
}

bool SceneEngine::StateRecorderCanUndo() {
  StateRecorder* recorder = GetStateRecorder();
  return recorder != nullptr && recorder->CanUndo();
}

bool SceneEngine::StateRecorderCanRedo() {
  StateRecorder* recorder = GetStateRecorder();
  return recorder != nullptr && recorder->CanRedo();
}

void SceneEngine::StateRecorderUndo() {
  if (StateRecorder* recorder = GetStateRecorder()) recorder->Undo();
}

void SceneEngine::StateRecorderRedo() {
  if (StateRecorder* recorder = GetStateRecorder()) recorder->Redo();
}

void SceneEngine::StateRecorderRestore() {
  if (StateRecorder* recorder = GetStateRecorder()) recorder->Restore();
}

void SceneEngine::StateRecorderClear() {
  if (StateRecorder* recorder = GetStateRecorder()) recorder->Clear();
}

}  // namespace Orlo
