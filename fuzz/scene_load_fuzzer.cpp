// Fuzz target: hands its input to SceneEngine::LoadScene as a scene file. Every input must
// come back as a Status (code 0, or code 2 with a message) without a crash, a hang, a leak or
// a sanitizer report; a scene that loads must save again and give every node a matrix.
//
// Run with --write-seeds=DIR (before any libFuzzer flag) to write the seed corpus instead:
// small scenes saved by the library itself, which the fuzzer then mutates.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include <orlo/base/controllers/matrix3_controller.h>
#include <orlo/base/engine/base_library.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node.h>
#include <orlo/support/point3.h>

namespace {

using Orlo::Node;
using Orlo::Point3;
using Orlo::SceneEngine;
using Orlo::Status;

std::string TempPath(const char* what) {
  const char* directory = std::getenv("TMPDIR");
  return std::string(directory != nullptr && *directory != '\0' ? directory : "/tmp") +
         "/orlo-scene-load-fuzzer-" + std::to_string(getpid()) + "-" + what + ".scene";
}

bool WriteFile(const std::string& path, const std::uint8_t* data, std::size_t size) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  return static_cast<bool>(out);
}

[[noreturn]] void Fail(const std::string& what) {
  std::fprintf(stderr, "scene load check failed: %s\n", what.c_str());
  std::abort();
}

// The seeds: scenes of a few nodes, with keys, nested hierarchies and names.
void WriteSeeds(const std::string& directory) {
  SceneEngine engine;
  SceneEngine::SetScene(&engine);
  int written = 0;
  for (int shape = 0; shape < 4; ++shape) {
    engine.InitScene();
    Node* previous = nullptr;
    for (int i = 0; i < shape; ++i) {
      const std::string name = "node" + std::to_string(i);
      Node* node = engine.CreateEmptyNode(Point3<double>(i, 2.0 * i, -1.0), name.c_str());
      if (shape == 3 && previous != nullptr) (void)engine.SetParent(previous, node);
      if (Orlo::Matrix3Controller* prs = node->GetNodeTransformController()) {
        // A second key makes the controllers write key lists.
        prs->SetPosition(Point3<double>(i + 1.0, 0.5, 4.0), 10);
      }
      previous = node;
    }
    const std::string path = directory + "/seed-" + std::to_string(shape) + ".scene";
    const Status status = engine.SaveScene(path);
    if (!status.IsOk()) Fail("cannot write seed " + path + ": " + status.GetMessage());
    ++written;
  }
  engine.DeleteScene();
  SceneEngine::SetScene(nullptr);
  std::printf("wrote %d seed scenes to %s\n", written, directory.c_str());
}

SceneEngine* g_engine = nullptr;
std::string g_input_path;
std::string g_output_path;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  Orlo::RegisterBaseLibrary();
  const char* flag = "--write-seeds=";
  for (int i = 1; i < *argc; ++i) {
    if (std::strncmp((*argv)[i], flag, std::strlen(flag)) == 0) {
      WriteSeeds((*argv)[i] + std::strlen(flag));
      SceneEngine::DestroyFactories();
      std::exit(0);
    }
  }
  g_engine = new SceneEngine();
  SceneEngine::SetScene(g_engine);
  g_input_path = TempPath("in");
  g_output_path = TempPath("out");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (!WriteFile(g_input_path, data, size)) Fail("cannot write " + g_input_path);
  const Status status = g_engine->LoadScene(g_input_path);
  if (status.IsOk()) {
    if (g_engine->GetMainScene() == nullptr) Fail("code 0 without a scene");
    const Status saved = g_engine->SaveScene(g_output_path);
    if (!saved.IsOk()) Fail("a loaded scene does not save: " + saved.GetMessage());
    std::vector<SceneEngine::NodeMatrix> matrices;
    g_engine->GetAbsoluteTMs(0, matrices);
  } else {
    if (status.GetCode() != 2) Fail("code " + std::to_string(status.GetCode()));
    if (status.GetMessage().empty()) Fail("code 2 without a message");
    if (g_engine->GetMainScene() != nullptr) Fail("a failed load left a scene");
  }
  // The next input starts from no scene, so that nothing of this one is kept.
  g_engine->DeleteScene();
  return 0;
}
