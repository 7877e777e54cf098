// Importing a large asset through the asset plug-in, beside the asset library reading the same
// file alone.
//
// The asset: 10,000 nodes below one root, each with its own translation and its own small
// mesh (a cube: 8 points, 12 triangles), written once as binary glTF into the temporary
// folder. BM_LibraryReadOnly is the library's ReadFile with the flags the import tool uses;
// BM_ImportScene is the engine's ImportScene into a fresh scene, which includes that read and
// builds the nodes, meshes and materials. Both report the heap the result holds (heap_bytes)
// and the bytes allocated on the way (allocated_bytes), counted through replaced allocation
// functions; the library's allocations go through them too.
#include <memory>
#include <string>

#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <benchmark/benchmark.h>
#include <assimp/Exporter.hpp>
#include <assimp/Importer.hpp>
#include <boost/filesystem.hpp>

#include <orlo/orlo.h>

#include "bench/heap_counter.h"
#include "plugins/assimp/register_plugin.h"

namespace {

using Orlo::bench::Heap;
using Orlo::bench::HeapCounters;
using Orlo::bench::HeapSince;

constexpr unsigned kNodes = 10000;

aiMesh* Cube() {
  auto* mesh = new aiMesh;
  mesh->mPrimitiveTypes = aiPrimitiveType_TRIANGLE;
  mesh->mNumVertices = 8;
  mesh->mVertices = new aiVector3D[8];
  for (unsigned i = 0; i < 8; ++i) {
    mesh->mVertices[i] =
        aiVector3D(i & 1 ? 0.5f : -0.5f, i & 2 ? 0.5f : -0.5f, i & 4 ? 0.5f : -0.5f);
  }
  static const unsigned kFaces[12][3] = {{0, 2, 1}, {1, 2, 3}, {4, 5, 6}, {5, 7, 6},
                                         {0, 1, 4}, {1, 5, 4}, {2, 6, 3}, {3, 6, 7},
                                         {0, 4, 2}, {2, 4, 6}, {1, 3, 5}, {3, 7, 5}};
  mesh->mNumFaces = 12;
  mesh->mFaces = new aiFace[12];
  for (unsigned f = 0; f < 12; ++f) {
    mesh->mFaces[f].mNumIndices = 3;
    mesh->mFaces[f].mIndices = new unsigned[3]{kFaces[f][0], kFaces[f][1], kFaces[f][2]};
  }
  return mesh;
}

// Writes the asset once per process and returns its path.
const std::string& AssetPath() {
  static const std::string path = [] {
    const std::string file =
        (boost::filesystem::temp_directory_path() / "orlo_assimp_bench_10000.glb").string();
    auto scene = std::make_unique<aiScene>();
    scene->mRootNode = new aiNode("root");
    scene->mRootNode->mNumChildren = kNodes;
    scene->mRootNode->mChildren = new aiNode*[kNodes];
    scene->mNumMeshes = kNodes;
    scene->mMeshes = new aiMesh*[kNodes];
    for (unsigned i = 0; i < kNodes; ++i) {
      auto* node = new aiNode("node_" + std::to_string(i));
      node->mParent = scene->mRootNode;
      aiMatrix4x4::Translation(
          aiVector3D(static_cast<float>(i % 100), static_cast<float>(i / 100), 0),
          node->mTransformation);
      node->mNumMeshes = 1;
      node->mMeshes = new unsigned[1]{i};
      scene->mRootNode->mChildren[i] = node;
      scene->mMeshes[i] = Cube();
    }
    auto* material = new aiMaterial;
    const aiString name("grey");
    material->AddProperty(&name, AI_MATKEY_NAME);
    scene->mNumMaterials = 1;
    scene->mMaterials = new aiMaterial* [1] { material };
    Assimp::Exporter exporter;
    if (exporter.Export(scene.get(), "glb2", file) != aiReturn_SUCCESS) return std::string();
    return file;
  }();
  return path;
}

void Report(benchmark::State& state, const HeapCounters& held, const HeapCounters& during) {
  state.counters["heap_bytes"] = static_cast<double>(held.live_bytes);
  state.counters["allocated_bytes"] = static_cast<double>(during.allocated_bytes);
  state.counters["allocations"] = static_cast<double>(during.allocations);
}

void BM_LibraryReadOnly(benchmark::State& state) {
  const std::string& path = AssetPath();
  if (path.empty()) {
    state.SkipWithError("cannot write the asset");
    return;
  }
  HeapCounters held, during;
  for (auto _ : state) {
    const HeapCounters before = Heap();
    Assimp::Importer importer;
    const aiScene* scene =
        importer.ReadFile(path, aiProcess_Triangulate | aiProcess_ValidateDataStructure);
    held = HeapSince(before);
    benchmark::DoNotOptimize(scene);
    if (scene == nullptr || scene->mRootNode->mNumChildren != kNodes) {
      state.SkipWithError("the library did not read the asset");
      return;
    }
    state.PauseTiming();  // the importer's release is not part of reading
    during = HeapSince(before);
    state.ResumeTiming();
  }
  Report(state, held, during);
}
BENCHMARK(BM_LibraryReadOnly)->Iterations(3)->Unit(benchmark::kMillisecond);

void BM_ImportScene(benchmark::State& state) {
  const std::string& path = AssetPath();
  if (path.empty()) {
    state.SkipWithError("cannot write the asset");
    return;
  }
  Orlo::RegisterBaseLibrary();
  orlo_assimp::RegisterAssimpPlugin();
  HeapCounters held, during;
  for (auto _ : state) {
    state.PauseTiming();
    auto engine = std::make_unique<Orlo::SceneEngine>();
    Orlo::SceneEngine::SetScene(engine.get());
    engine->InitScene();
    const HeapCounters before = Heap();
    state.ResumeTiming();
    const Orlo::Status status = engine->ImportScene(path);
    state.PauseTiming();
    // The importer is gone by now: what is still live is what the scene holds.
    during = HeapSince(before);
    held = during;
    if (!status.IsOk() || engine->GetMainNode()->GetNumChildren() != static_cast<int>(kNodes)) {
      state.SkipWithError("the import failed");
    }
    Orlo::SceneEngine::SetScene(nullptr);
    engine.reset();
    state.ResumeTiming();
  }
  Report(state, held, during);
  Orlo::SceneEngine::DestroyFactories();
}
BENCHMARK(BM_ImportScene)->Iterations(3)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
