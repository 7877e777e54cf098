#include <gtest/gtest.h>

#include <string>

#include <nlohmann/json.hpp>

#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node.h>

#include "tests/tools/orlo/tool_test.h"

namespace Orlo::cli::testing {
namespace {

using GraphCommandTest = ToolTest;

TEST_F(GraphCommandTest, NodesOnlyDrawsTheHierarchyLabelledByClassAndName) {
  const std::string path = WriteSmallScene("small.orlo", false);
  const nlohmann::json nodes =
      nlohmann::json::parse(RunTool({"tree", "--json", path}).out)["nodes"];
  ASSERT_EQ(nodes.size(), 4u);
  auto id = [&](int i) { return "b" + std::to_string(nodes[i]["block"].get<int>()); };
  const ToolRun run = Run({"graph", "--nodes-only", path}, 0);
  EXPECT_EQ(run.out,
            "digraph scene {\n"
            "  node [shape=box, fontname=\"Helvetica\"];\n"
            "  edge [fontname=\"Helvetica\", fontsize=10];\n"
            "  " +
                id(0) +
                " [label=\"Node\\nMainNode\"];\n"
                "  " +
                id(1) +
                " [label=\"Node\\nbase\"];\n"
                "  " +
                id(2) +
                " [label=\"Node\\ntip\"];\n"
                "  " +
                id(3) +
                " [label=\"Node\\nlamp\"];\n"
                "  " +
                id(0) + " -> " + id(1) +
                ";\n"
                "  " +
                id(1) + " -> " + id(2) +
                ";\n"
                "  " +
                id(0) + " -> " + id(3) +
                ";\n"
                "}\n");
  EXPECT_EQ(run.err, "");
}

TEST_F(GraphCommandTest, TheBlockGraphHasOneEdgePerLinkLabelledBySlot) {
  const std::string path = WriteSmallScene("torus.orlo", true);
  const nlohmann::json blocks =
      nlohmann::json::parse(RunTool({"blocks", "--json", path}).out)["blocks"];
  const ToolRun run = Run({"graph", path}, 0);
  std::size_t links = 0;
  for (const auto& block : blocks) {
    for (const auto& dependency : block["dependencies"]) {
      if (dependency["block"].get<int>() < 0) continue;
      ++links;
      const std::string edge = "  b" + std::to_string(block["index"].get<int>()) + " -> b" +
                               std::to_string(dependency["block"].get<int>()) + " [label=\"" +
                               dependency["slot"].get<std::string>() + "\"];\n";
      EXPECT_NE(run.out.find(edge), std::string::npos) << edge;
    }
  }
  std::size_t edges = 0;
  for (const std::string& line : Lines(run.out)) edges += line.find(" -> ") != std::string::npos;
  EXPECT_EQ(edges, links);
  EXPECT_NE(run.out.find("  b0 [label=\"MainScene\"];\n"), std::string::npos);
  EXPECT_NE(run.out.find("[label=\"unknown (510, 300, 1)\"];\n"), std::string::npos);
}

TEST_F(GraphCommandTest, NamesAreQuotedForDot) {
  SceneEngine engine;
  SceneEngine::SetScene(&engine);
  engine.InitScene();
  engine.CreateEmptyNode(Point3<double>(0, 0, 0), "say \"hi\" \\ bye");
  const std::string path = Path("quoted.orlo");
  ASSERT_TRUE(engine.SaveScene(path).IsOk());
  SceneEngine::SetScene(nullptr);
  const ToolRun run = Run({"graph", "--nodes-only", path}, 0);
  EXPECT_NE(run.out.find("[label=\"Node\\nsay \\\"hi\\\" \\\\ bye\"];\n"), std::string::npos)
      << run.out;
}

TEST_F(GraphCommandTest, AMissingFileIsReportedOnOneLine) {
  const ToolRun run = Run({"graph", Path("nowhere.orlo")}, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "orlo: " + Path("nowhere.orlo") + ": no such file\n");
}

}  // namespace
}  // namespace Orlo::cli::testing
