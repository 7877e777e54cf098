// The fixture of the asset plug-in's tests: the base library and the plug-in registered, an
// engine with a fresh scene current, and a folder of its own for the files a test writes.
// Everything process-wide is set up and torn down by each test.
#pragma once

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <boost/filesystem.hpp>

#include <orlo/orlo.h>

#include "plugins/assimp/register_plugin.h"

namespace orlo_assimp::testing {

class PluginTest : public ::testing::Test {
 protected:
  void SetUp() override {
    Orlo::RegisterBaseLibrary();
    RegisterAssimpPlugin();
    Orlo::SceneEngine::SetScene(&engine);
    engine.InitScene();
    folder = boost::filesystem::temp_directory_path() /
             boost::filesystem::unique_path("orlo-assimp-%%%%-%%%%-%%%%");
    boost::filesystem::create_directories(folder);
  }
  void TearDown() override {
    engine.DeleteScene();
    Orlo::SceneEngine::SetScene(nullptr);
    Orlo::SceneEngine::DestroyFactories();
    boost::system::error_code ignored;
    boost::filesystem::remove_all(folder, ignored);
  }

  std::string PathOf(const std::string& name) const { return (folder / name).string(); }

  static std::vector<std::uint8_t> ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in), {});
  }
  static void WriteText(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
  }

  // The payload `block` saves, read back into `into`; Load's result.
  static int SaveAndLoad(Orlo::Block* block, Orlo::Block* into) {
    Orlo::SceneSave save;
    EXPECT_EQ(block->Save(&save), 1);
    Orlo::SceneLoad load(save.TakeBytes());
    return into->Load(&load);
  }

  Orlo::SceneEngine engine;
  boost::filesystem::path folder;
};

}  // namespace orlo_assimp::testing
