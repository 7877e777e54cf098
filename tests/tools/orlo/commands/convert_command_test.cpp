#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "tests/tools/orlo/tool_test.h"

namespace Orlo::cli::testing {
namespace {

using ConvertCommandTest = ToolTest;

std::string ReadText(const std::string& path) {
  std::ifstream stream(path);
  return std::string(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
}

TEST_F(ConvertCommandTest, ASceneFileIsLoadedAndSavedToTheSameBytes) {
  const std::string path = WriteSmallScene("small.orlo", false);
  const ToolRun run = Run({"convert", path, Path("copy.ORLO")}, 0);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(ReadBytes(Path("copy.ORLO")), ReadBytes(path));
}

TEST_F(ConvertCommandTest, AnExportToolOfAPluginWritesItsFormat) {
  const std::string path = WriteSmallScene("torus.orlo", true);
  Run({"convert", "--plugin", ExamplePluginPath(), path, Path("nodes.nodes")}, 0);
  EXPECT_EQ(ReadText(Path("nodes.nodes")), "base\n  tip\nlamp\n");
}

TEST_F(ConvertCommandTest, WithoutAToolForTheExtensionItFailsNamingTheFile) {
  const std::string path = WriteSmallScene("small.orlo", false);
  const ToolRun out = Run({"convert", path, Path("nodes.nodes")}, 2);
  EXPECT_EQ(out.err, "orlo: " + Path("nodes.nodes") +
                         ": cannot write: Couldn't find an "
                         "ExportTool.\n");
  const ToolRun in = Run({"convert", Path("scene.obj"), Path("out.orlo")}, 2);
  EXPECT_EQ(in.err, "orlo: " + Path("scene.obj") +
                        ": cannot read: Couldn't find an "
                        "ImportTool.\n");
}

TEST_F(ConvertCommandTest, AnUnreadableSceneFileFails) {
  const ToolRun missing = Run({"convert", Path("nowhere.orlo"), Path("out.orlo")}, 2);
  EXPECT_EQ(missing.err, "orlo: " + Path("nowhere.orlo") +
                             ": cannot read: SceneEngine::LoadScene : File doesn't exist.\n");
  const std::string path = WriteSmallScene("torus.orlo", true);
  const ToolRun unknown = Run({"convert", path, Path("out.orlo")}, 2);
  EXPECT_EQ(unknown.err, "orlo: " + path +
                             ": cannot read: SceneEngine::LoadBlocks : Couldn't find a factory "
                             "for one or more blocks.\n");
  Run({"convert", path}, 2);
}

}  // namespace
}  // namespace Orlo::cli::testing
