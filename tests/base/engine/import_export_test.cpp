#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include <orlo/base/block/block_factory.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/export_tool.h>
#include <orlo/base/scene/import_tool.h>
#include <orlo/base/scene/main_scene.h>

#include "tests/base/engine/engine_test_scene.h"
#include "tests/testing/test_blocks.h"

namespace Orlo {
namespace {

// What the tools of a test did, in order: "make <name>", "execute <name> <path>",
// "release <name>"; and how many tools are alive.
struct ToolLog {
  std::vector<std::string> events;
  int live = 0;
  SceneEngine* last_engine = nullptr;
};

ToolLog g_tools;

// How a tool ends its Execute.
enum class Ending {
  kReleaseItself,  // not kept anywhere: it releases itself, as every tool must then
  kKeepInScene,    // adds itself to the scene's tools, which keep it
};

struct ToolPlan {
  ToolPlan(std::string tool_name, std::vector<std::string> tool_extensions,
           Ending tool_ending = Ending::kReleaseItself)
      : name(std::move(tool_name)), extensions(std::move(tool_extensions)), ending(tool_ending) {}

  std::string name;
  std::vector<std::string> extensions;
  Ending ending;
  Status result;
};

// An import or export tool that logs its life and does what its plan says.
template <typename Base>
class LoggedTool : public Base {
 public:
  LoggedTool(BlockType type, ToolPlan plan) : m_type(type), m_plan(std::move(plan)) {
    ++g_tools.live;
    g_tools.events.push_back("make " + m_plan.name);
  }

  std::string GetClassName() const override { return "LoggedTool"; }
  BlockType GetBlockType() const override { return m_type; }
  int NumDependencies() const override { return 0; }
  void SetDependency(int, Block*) override {}
  Block* GetDependency(int) const override { return nullptr; }
  std::string GetDependencyName(int) const override { return "no_dependency"; }
  Block* Clone() override { return new LoggedTool(m_type, m_plan); }
  int Save(SceneSave*) override { return 1; }
  int Load(SceneLoad*) override { return 1; }
  void DeleteThis() override {
    --g_tools.live;
    g_tools.events.push_back("release " + m_plan.name);
    delete this;
  }

  std::vector<std::string> GetExtensions() override { return m_plan.extensions; }

  Status Execute(SceneEngine* engine, std::string path) override {
    g_tools.events.push_back("execute " + m_plan.name + " " + path);
    g_tools.last_engine = engine;
    const Status result = m_plan.result;
    if (m_plan.ending == Ending::kKeepInScene) engine->GetMainScene()->AddSceneTool(this);
    // A tool that nothing keeps releases itself at the end of its own Execute: the engine
    // that called it never does.
    if (this->GetParentBlock() == nullptr) this->DeleteThisBlock(true);
    return result;
  }

 private:
  BlockType m_type;
  ToolPlan m_plan;
};

template <typename Tool>
class LoggedToolFactory : public BlockFactory {
 public:
  LoggedToolFactory(BlockType type, ToolPlan plan) : m_type(type), m_plan(std::move(plan)) {}
  BlockType GetBlockType() const override { return m_type; }
  Block* GetBlock(bool) const override { return new Tool(m_type, m_plan); }
  std::string GetName() const override { return m_plan.name; }

 private:
  BlockType m_type;
  ToolPlan m_plan;
};

// A factory that claims a kind and counts the blocks asked of it.
class CountingFactory : public BlockFactory {
 public:
  CountingFactory(BlockType type, int* made) : m_type(type), m_made(made) {}
  BlockType GetBlockType() const override { return m_type; }
  Block* GetBlock(bool) const override {
    ++*m_made;
    auto* block = new testing::TestBlock("not a tool", 0);
    block->SetType(m_type);
    return block;
  }
  std::string GetName() const override { return "Counting"; }

 private:
  BlockType m_type;
  int* m_made;
};

class ImportExportTest : public testing::EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    g_tools = ToolLog();
  }
  void TearDown() override {
    // Tools kept by the scene go with it, while the log is still there to hear them.
    engine.DeleteScene();
    SceneEngine::DestroyFactories();
    EngineTest::TearDown();
    EXPECT_EQ(g_tools.live, 0);
  }

  // Registers an import tool factory; `sub_id` tells factories apart.
  static void AddImporter(unsigned sub_id, ToolPlan plan) {
    SceneEngine::AddBlockFactory(new LoggedToolFactory<LoggedTool<ImportTool>>(
        BlockType(ImportTool::kClassID, 1, sub_id), std::move(plan)));
  }
  static void AddExporter(unsigned sub_id, ToolPlan plan) {
    SceneEngine::AddBlockFactory(new LoggedToolFactory<LoggedTool<ExportTool>>(
        BlockType(ExportTool::kClassID, 2, sub_id), std::move(plan)));
  }
};

TEST_F(ImportExportTest, AnExtensionInAnyCaseFindsTheSameImportTool) {
  AddImporter(1, {"obj", {".obj"}});
  EXPECT_TRUE(engine.ImportScene("models/Scene.OBJ").IsOk());
  EXPECT_TRUE(engine.ImportScene("models/scene.obj").IsOk());
  EXPECT_EQ(g_tools.events,
            (std::vector<std::string>{"make obj", "execute obj models/Scene.OBJ", "release obj",
                                      "make obj", "execute obj models/scene.obj", "release obj"}));
}

TEST_F(ImportExportTest, TheToolsOwnExtensionsAreComparedInLowerCase) {
  AddImporter(1, {"obj", {".ObJ"}});
  EXPECT_TRUE(engine.ImportScene("scene.oBj").IsOk());
  EXPECT_EQ(g_tools.events[1], "execute obj scene.oBj");
}

TEST_F(ImportExportTest, ImportSceneNeverConsidersAnExportTool) {
  AddExporter(1, {"writer", {".obj"}});
  Status status = engine.ImportScene("scene.obj");
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(), "Couldn't find an ImportTool.");
  EXPECT_TRUE(g_tools.events.empty());
}

TEST_F(ImportExportTest, ExportSceneNeverConsidersAnImportTool) {
  AddImporter(1, {"reader", {".obj"}});
  Status status = engine.ExportScene("scene.obj");
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(), "Couldn't find an ExportTool.");
  EXPECT_TRUE(g_tools.events.empty());
}

TEST_F(ImportExportTest, OfTwoImportToolsForOneExtensionTheFirstRegisteredWins) {
  AddImporter(1, {"first", {".dae"}});
  AddImporter(2, {"second", {".dae"}});
  EXPECT_TRUE(engine.ImportScene("a.dae").IsOk());
  EXPECT_EQ(g_tools.events,
            (std::vector<std::string>{"make first", "execute first a.dae", "release first"}));
}

TEST_F(ImportExportTest, ToolsThatDoNotMatchAreReleasedAtOnceInRegistrationOrder) {
  AddImporter(1, {"fbx", {".fbx"}});
  AddImporter(2, {"three", {".3ds", ".obj", ".ply"}});
  AddImporter(3, {"stl", {".stl"}});
  EXPECT_TRUE(engine.ImportScene("mesh.ply").IsOk());
  EXPECT_EQ(g_tools.events, (std::vector<std::string>{"make fbx", "release fbx", "make three",
                                                      "execute three mesh.ply", "release three"}));
  EXPECT_EQ(g_tools.live, 0);
}

TEST_F(ImportExportTest, WithoutAMatchEveryCandidateIsReleasedAndTheImportFails) {
  AddImporter(1, {"fbx", {".fbx"}});
  AddImporter(2, {"stl", {".stl"}});
  Status status = engine.ImportScene("mesh.ply");
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(), "Couldn't find an ImportTool.");
  EXPECT_EQ(g_tools.events,
            (std::vector<std::string>{"make fbx", "release fbx", "make stl", "release stl"}));
}

TEST_F(ImportExportTest, WithoutAnyToolTheImportAndExportFail) {
  EXPECT_EQ(engine.ImportScene("scene.obj").GetMessage(), "Couldn't find an ImportTool.");
  EXPECT_EQ(engine.ExportScene("scene.obj").GetMessage(), "Couldn't find an ExportTool.");
}

TEST_F(ImportExportTest, TheEngineNeverReleasesTheToolItRan) {
  AddImporter(1, {"keeper", {".kp"}, Ending::kKeepInScene});
  EXPECT_TRUE(engine.ImportScene("a.kp").IsOk());
  // The tool is alive, held by the scene's tools only.
  EXPECT_EQ(g_tools.live, 1);
  EXPECT_EQ(g_tools.events, (std::vector<std::string>{"make keeper", "execute keeper a.kp"}));
  ASSERT_EQ(engine.GetMainScene()->GetNumSceneTools(), 1);
  EXPECT_EQ(engine.GetMainScene()->GetSceneTool(0)->GetBlockType(),
            BlockType(ImportTool::kClassID, 1, 1));
  // It goes with the scene.
  engine.DeleteScene();
  EXPECT_EQ(g_tools.live, 0);
  EXPECT_EQ(g_tools.events.back(), "release keeper");
}

TEST_F(ImportExportTest, TheToolsStatusIsReturnedAsItIs) {
  ToolPlan failing{"broken", {".xyz"}};
  failing.result = Status(Status::kFailed, "Writer::Execute : the disk is full.");
  AddExporter(1, failing);
  Status status = engine.ExportScene("out.xyz");
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(), "Writer::Execute : the disk is full.");
  ToolPlan odd{"odd", {".odd"}};
  odd.result = Status(Status::kInvalidArgument, "Odd::Execute : bad path.");
  AddImporter(1, odd);
  Status import_status = engine.ImportScene("in.odd");
  EXPECT_EQ(import_status.GetCode(), 3);
  EXPECT_EQ(import_status.GetMessage(), "Odd::Execute : bad path.");
}

TEST_F(ImportExportTest, TheToolWorksOnThisEngine) {
  AddExporter(1, {"writer", {".out"}});
  EXPECT_TRUE(engine.ExportScene("scene.out").IsOk());
  EXPECT_EQ(g_tools.last_engine, &engine);
}

TEST_F(ImportExportTest, APathWithoutExtensionFindsOnlyAToolListingTheEmptyExtension) {
  AddImporter(1, {"dotted", {".v2"}});
  EXPECT_EQ(engine.ImportScene("folder.v2/scene").GetCode(), 2);
  AddImporter(2, {"bare", {""}});
  EXPECT_TRUE(engine.ImportScene("folder.v2/scene").IsOk());
  EXPECT_EQ(g_tools.events[g_tools.events.size() - 2], "execute bare folder.v2/scene");
}

TEST_F(ImportExportTest, TheExtensionStartsAtTheLastDotOfTheFileName) {
  AddImporter(1, {"tar", {".tar"}});
  AddImporter(2, {"gz", {".gz"}});
  EXPECT_TRUE(engine.ImportScene("archive.tar.gz").IsOk());
  EXPECT_EQ(g_tools.events[3], "execute gz archive.tar.gz");
  // Without its dot an extension never matches.
  AddExporter(1, {"nodot", {"obj"}});
  EXPECT_EQ(engine.ExportScene("scene.obj").GetCode(), 2);
}

TEST_F(ImportExportTest, PathsAreTakenAsCharPointersAndAsStrings) {
  AddImporter(1, {"obj", {".obj"}});
  AddExporter(1, {"out", {".obj"}});
  const char* as_chars = "a.obj";
  const std::string as_string = "b.obj";
  EXPECT_TRUE(engine.ImportScene(as_chars).IsOk());
  EXPECT_TRUE(engine.ImportScene(as_string).IsOk());
  EXPECT_TRUE(engine.ExportScene(as_chars).IsOk());
  EXPECT_TRUE(engine.ExportScene(as_string).IsOk());
  EXPECT_EQ(g_tools.events[1], "execute obj a.obj");
  EXPECT_EQ(g_tools.events[4], "execute obj b.obj");
  EXPECT_EQ(g_tools.events[7], "execute out a.obj");
  EXPECT_EQ(g_tools.events[10], "execute out b.obj");
}

TEST_F(ImportExportTest, ANullPathReadsAsAnEmptyPath) {
  AddImporter(1, {"obj", {".obj"}});
  EXPECT_EQ(engine.ImportScene(static_cast<const char*>(nullptr)).GetMessage(),
            "Couldn't find an ImportTool.");
  AddExporter(1, {"bare", {""}});
  EXPECT_TRUE(engine.ExportScene(static_cast<const char*>(nullptr)).IsOk());
  EXPECT_EQ(g_tools.events.back(), "release bare");
  EXPECT_EQ(g_tools.events[g_tools.events.size() - 2], "execute bare ");
}

TEST_F(ImportExportTest, OnlyFactoriesOfTheToolsClassIdAreAskedForBlocks) {
  int made_other = 0;
  int made_fake = 0;
  SceneEngine::AddBlockFactory(
      new CountingFactory(BlockType(ExportTool::kClassID, 9, 1), &made_other));
  // A factory that claims the import class id but makes something else: its block is asked
  // nothing and released.
  SceneEngine::AddBlockFactory(
      new CountingFactory(BlockType(ImportTool::kClassID, 9, 2), &made_fake));
  AddImporter(1, {"obj", {".obj"}});
  EXPECT_TRUE(engine.ImportScene("a.obj").IsOk());
  EXPECT_EQ(made_other, 0);
  EXPECT_EQ(made_fake, 1);
}

}  // namespace
}  // namespace Orlo
