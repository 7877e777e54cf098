// The engine's scene lifetime: making, resetting and deleting the scene, the undo recorder it
// owns and the bitmap manager it is handed.
#include <memory>

#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/node.h>
#include <orlo/support/bitmap_manager.h>
#include <orlo/support/state_recorder.h>

namespace Orlo {

namespace {

// Process-wide, shared by every engine. The recorder is owned here until an engine's
// destructor destroys it; the bitmap manager is the host's.
std::unique_ptr<StateRecorder>& Recorder() {
  static std::unique_ptr<StateRecorder> recorder;
  return recorder;
}
BitmapManager* g_bitmap_manager = nullptr;

void ClearStateRecorder() {
  if (Recorder() != nullptr) Recorder()->Clear();
}

}  // namespace

SceneEngine::SceneEngine() = default;

SceneEngine::~SceneEngine() {
  ClearStateRecorder();
  // The history goes first: its records may point into the scene, which goes next.
  if (m_main_scene != nullptr) {
    m_main_scene->DeleteThisBlock(true);
    m_main_scene = nullptr;
  }
  Recorder().reset();
}

void SceneEngine::InitScene() {
  ClearStateRecorder();
  m_selected_nodes.clear();
  if (m_main_scene != nullptr) {
    m_main_scene->DeleteThisBlock(true);
    m_main_scene = nullptr;
  }
  m_main_scene = new MainScene(true);
  m_main_scene->GetMainNode()->SetName("MainNode");
}

void SceneEngine::ResetScene() { InitScene(); }

void SceneEngine::DeleteScene() {
  ClearStateRecorder();
  m_selected_nodes.clear();
  if (m_main_scene != nullptr) {
    m_main_scene->DeleteThisBlock(true);
    m_main_scene = nullptr;
  }
}

Node* SceneEngine::GetMainNode() const {
  return m_main_scene != nullptr ? m_main_scene->GetMainNode() : nullptr;
}

StateRecorder* SceneEngine::GetStateRecorder() { return Recorder().get(); }

void SceneEngine::StateRecorderInit() {
  if (Recorder() == nullptr) Recorder() = std::make_unique<StateRecorder>();
}

BitmapManager* SceneEngine::GetBitmapManager() { return g_bitmap_manager; }

void SceneEngine::SetBitmapManager(BitmapManager* manager) { g_bitmap_manager = manager; }

}  // namespace Orlo
