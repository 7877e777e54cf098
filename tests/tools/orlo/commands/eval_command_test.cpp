#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include <orlo/base/controllers/matrix3_controller.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node.h>

#include "tests/tools/orlo/tool_test.h"

namespace Orlo::cli::testing {
namespace {

class EvalCommandTest : public ToolTest {
 protected:
  // A scene of three nodes with keyed transforms; `expected` gets each node's absolute
  // matrices at `times` as the library computes them, main node first, in pre-order.
  std::string WriteKeyedScene(const std::vector<int>& times,
                              std::vector<std::vector<Matrix3<double>>>* expected) {
    SceneEngine engine;
    SceneEngine::SetScene(&engine);
    engine.InitScene();
    Node* spinner = engine.CreateEmptyNode(Point3<double>(1, 0, 0), "spinner");
    Node* rider = engine.CreateEmptyNode(Point3<double>(0, 2, 0), "rider");
    EXPECT_TRUE(engine.SetParent(spinner, rider).IsOk());
    Node* nodes[] = {engine.GetMainNode(), spinner, rider};
    for (Node* node : nodes) {
      Matrix3Controller* controller = node->GetNodeTransformController();
      for (int time : {0, 10, 20}) {
        controller->SetScale(Point3<double>(1 + time / 20.0, 1, 1), time);
        controller->SetRotation(Point3<double>(0, 0, time * 0.05), time);
      }
      controller->SetPosition(Point3<double>(1, 2, 3), 10);
    }
    for (int time : times) {
      std::vector<Matrix3<double>> at_time;
      for (Node* node : nodes) at_time.push_back(node->GetAbsoluteTM(time));
      expected->push_back(at_time);
    }
    const std::string path = Path("keyed.orlo");
    EXPECT_TRUE(engine.SaveScene(path).IsOk());
    SceneEngine::SetScene(nullptr);
    return path;
  }
};

TEST_F(EvalCommandTest, JsonGivesEveryNodesAbsoluteMatrixAtEachTime) {
  std::vector<std::vector<Matrix3<double>>> expected;
  const std::string path = WriteKeyedScene({0, 10, 20}, &expected);
  const ToolRun run = Run({"eval", path, "--json", "--time", "0", "-t", "10", "--time", "20"}, 0);
  const nlohmann::json json = nlohmann::json::parse(run.out);
  EXPECT_EQ(json["file"], path);
  ASSERT_EQ(json["times"].size(), 3u);
  const char* names[] = {"MainNode", "spinner", "rider"};
  for (std::size_t t = 0; t < 3; ++t) {
    const nlohmann::json& at_time = json["times"][t];
    EXPECT_EQ(at_time["time"], t * 10);
    ASSERT_EQ(at_time["nodes"].size(), 3u);
    for (std::size_t n = 0; n < 3; ++n) {
      EXPECT_EQ(at_time["nodes"][n]["node"], n);
      EXPECT_EQ(at_time["nodes"][n]["name"], names[n]);
      for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 3; ++column) {
          // Bit for bit: JSON numbers carry every digit of a double.
          EXPECT_EQ(at_time["nodes"][n]["matrix"][row][column].get<double>(),
                    expected[t][n].m[row][column])
              << "time " << t * 10 << " node " << n << " row " << row << " column " << column;
        }
      }
    }
  }
  EXPECT_EQ(run.err, "");
}

TEST_F(EvalCommandTest, CsvHasAHeaderAndOneRowPerNodeAndTime) {
  std::vector<std::vector<Matrix3<double>>> expected;
  const std::string path = WriteKeyedScene({10}, &expected);
  const ToolRun run = Run({"eval", "--csv", "--time", "10", path}, 0);
  const std::vector<std::string> lines = Lines(run.out);
  ASSERT_EQ(lines.size(), 4u) << run.out;
  EXPECT_EQ(lines[0], "time,node,name,m00,m01,m02,m10,m11,m12,m20,m21,m22,m30,m31,m32");
  EXPECT_EQ(lines[2].rfind("10,1,\"spinner\",", 0), 0u) << lines[2];
  // The last three fields are the position.
  char position[128];
  std::snprintf(position, sizeof(position), ",%.17g,%.17g,%.17g", expected[0][2].m[3][0],
                expected[0][2].m[3][1], expected[0][2].m[3][2]);
  EXPECT_EQ(lines[3].substr(lines[3].size() - std::string(position).size()), position);
}

TEST_F(EvalCommandTest, TextPrintsTheRowsOfEachMatrixAtTimeZeroByDefault) {
  const std::string path = WriteSmallScene("small.orlo", false);
  const ToolRun run = Run({"eval", path}, 0);
  EXPECT_EQ(run.out,
            "time 0:\n"
            "  0 MainNode: [1 0 0] [0 1 0] [0 0 1] [0 0 0]\n"
            "  1 base: [1 0 0] [0 1 0] [0 0 1] [1 0 0]\n"
            "  2 tip: [1 0 0] [0 1 0] [0 0 1] [1 2 0]\n"
            "  3 lamp: [1 0 0] [0 1 0] [0 0 1] [0 0 3]\n");
}

TEST_F(EvalCommandTest, AFileWithAnUnregisteredClassDoesNotLoadWithoutItsPlugin) {
  const std::string path = WriteSmallScene("torus.orlo", true);
  const ToolRun run = Run({"eval", path}, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "orlo: " + path +
                         ": cannot load: SceneEngine::LoadBlocks : Couldn't find a factory for "
                         "one or more blocks.\n");
  const ToolRun with_plugin = Run({"eval", "--plugin", ExamplePluginPath(), path}, 0);
  EXPECT_NE(with_plugin.out.find("  2 tip: "), std::string::npos) << with_plugin.out;
}

TEST_F(EvalCommandTest, MissingCorruptAndBadArgumentsFail) {
  const ToolRun missing = Run({"eval", Path("nowhere.orlo")}, 2);
  EXPECT_EQ(missing.err, "orlo: " + Path("nowhere.orlo") +
                             ": cannot load: SceneEngine::LoadScene : File doesn't exist.\n");

  const std::string path = WriteSmallScene("small.orlo", false);
  std::vector<std::uint8_t> bytes = ReadBytes(path);
  bytes.resize(bytes.size() / 2);
  WriteBytes(path, bytes);
  const ToolRun corrupt = Run({"eval", path}, 2);
  ASSERT_EQ(Lines(corrupt.err).size(), 1u) << corrupt.err;
  EXPECT_EQ(corrupt.err.rfind("orlo: " + path + ": cannot load: ", 0), 0u) << corrupt.err;

  Run({"eval", path, "--time", "soon"}, 2);
  Run({"eval", path, "--json", "--csv"}, 2);
}

}  // namespace
}  // namespace Orlo::cli::testing
