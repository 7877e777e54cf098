#include "tests/tools/orlo/tool_test.h"

#include <fstream>
#include <iterator>

#include <boost/filesystem.hpp>

#include <orlo/base/engine/base_library.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node.h>

#include "examples/plugin/torus.h"

namespace Orlo::cli::testing {

void ToolTest::SetUp() {
  const boost::filesystem::path folder = boost::filesystem::temp_directory_path() /
                                         boost::filesystem::unique_path("orlo-tool-%%%%-%%%%");
  boost::filesystem::create_directories(folder);
  m_folder = folder.string();
  RegisterBaseLibrary();
  orlo_example::RegisterTorusPlugin();
}

void ToolTest::TearDown() {
  SceneEngine::SetScene(nullptr);
  SceneEngine::DestroyFactories();
  boost::system::error_code ignored;
  boost::filesystem::remove_all(m_folder, ignored);
}

std::string ToolTest::Path(const std::string& name) const {
  return (boost::filesystem::path(m_folder) / name).string();
}

std::string ToolTest::WriteSmallScene(const std::string& name, bool with_torus) {
  SceneEngine engine;
  SceneEngine::SetScene(&engine);
  engine.InitScene();
  Node* base = engine.CreateEmptyNode(Point3<double>(1, 0, 0), "base");
  Object* object = nullptr;
  if (with_torus) {
    auto* torus = new orlo_example::Torus;
    torus->SetRadii(2.0, 0.5);
    object = torus;
  }
  Node* tip = engine.CreateObjectNode(object, Point3<double>(0, 2, 0), "tip");
  EXPECT_TRUE(engine.SetParent(base, tip).IsOk());
  engine.CreateEmptyNode(Point3<double>(0, 0, 3), "lamp");
  const std::string path = Path(name);
  EXPECT_TRUE(engine.SaveScene(path).IsOk());
  SceneEngine::SetScene(nullptr);
  return path;
}

std::vector<std::uint8_t> ToolTest::ReadBytes(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(stream),
                                   std::istreambuf_iterator<char>());
}

void ToolTest::WriteBytes(const std::string& path, const std::vector<std::uint8_t>& bytes) {
  std::ofstream stream(path, std::ios::binary | std::ios::trunc);
  stream.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

ToolRun ToolTest::Run(const std::vector<std::string>& arguments, int expected_exit,
                      const ToolOptions& options) {
  ToolRun run = RunTool(arguments, options);
  std::string command = "orlo";
  for (const std::string& argument : arguments) command += " " + argument;
  EXPECT_EQ(run.exit_code, expected_exit) << command << "\nstdout:\n"
                                          << run.out << "\nstderr:\n"
                                          << run.err;
  return run;
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::string::size_type start = 0;
  while (start < text.size()) {
    std::string::size_type end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

}  // namespace Orlo::cli::testing
