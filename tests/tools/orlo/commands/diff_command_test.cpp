#include <gtest/gtest.h>

#include <sys/resource.h>

#include <functional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include <orlo/base/controllers/bezier_controller.h>
#include <orlo/base/controllers/point3_controller.h>
#include <orlo/base/controllers/transform3_controller.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/object_modifier.h>

#include "examples/plugin/torus.h"
#include "tests/tools/orlo/tool_test.h"
#include "tools/orlo/demo/demo_library.h"

namespace Orlo::cli::testing {
namespace {

class DiffCommandTest : public ToolTest {
 protected:
  void SetUp() override {
    ToolTest::SetUp();
    RegisterDemoLibrary();
  }

  using Edit = std::function<void(SceneEngine&)>;

  // Writes this scene, then lets `edit` change it before it is saved:
  //   MainNode
  //     arm    at (1, 0, 0), its position keyed to (2, 0, 0) at time 50
  //       hand at (0, 1, 0)
  //     box    a DemoBox, with the DemoMaterial "steel"
  std::string WriteScene(const std::string& name, const Edit& edit = nullptr) {
    SceneEngine engine;
    SceneEngine::SetScene(&engine);
    engine.InitScene();
    Node* arm = engine.CreateEmptyNode(Point3<double>(1, 0, 0), "arm");
    arm->GetNodeTransformController()->SetPosition(Point3<double>(2, 0, 0), 50);
    Node* hand = engine.CreateEmptyNode(Point3<double>(0, 1, 0), "hand");
    EXPECT_TRUE(engine.SetParent(arm, hand).IsOk());
    Node* box = engine.CreateObjectNode(new DemoBox, Point3<double>(0, 0, 1), "box");
    auto* material = new DemoMaterial(true);
    material->SetName("steel");
    EXPECT_TRUE(box->SetMaterial(material).IsOk());
    if (edit) edit(engine);
    const std::string path = Path(name);
    EXPECT_TRUE(engine.SaveScene(path).IsOk());
    SceneEngine::SetScene(nullptr);
    return path;
  }

  static Node* Find(SceneEngine& engine, const std::string& name) {
    Node* node = engine.GetNodeByName(name);
    EXPECT_NE(node, nullptr) << name;
    return node;
  }

  // The keyed x of a node's position.
  static BezierController* PositionX(Node* node) {
    auto* prs = dynamic_cast<Transform3Controller*>(node->GetNodeTransformController());
    auto* position = dynamic_cast<Point3Controller*>(prs->GetDependency(1));
    return dynamic_cast<BezierController*>(position->GetDependency(0));
  }

  static DataTable* MaterialTable(SceneEngine& engine) {
    return Find(engine, "box")->GetMaterial()->GetDataTable();
  }

  // Runs `orlo diff A B`, expecting exit status 1 and nothing on stderr, and gives stdout.
  static std::string Diff(const std::string& a, const std::string& b,
                          const std::vector<std::string>& extra = {}) {
    std::vector<std::string> arguments{"diff"};
    arguments.insert(arguments.end(), extra.begin(), extra.end());
    arguments.push_back(a);
    arguments.push_back(b);
    const ToolRun run = Run(arguments, 1);
    EXPECT_EQ(run.err, "");
    return run.out;
  }
};

TEST_F(DiffCommandTest, IdenticalFilesReportNothingAndExitZero) {
  const std::string a = WriteScene("a.orlo");
  const std::string b = WriteScene("b.orlo");
  const ToolRun run = Run({"diff", a, b}, 0);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "");
}

TEST_F(DiffCommandTest, TheExampleSceneIsIdenticalToItselfSharedMaterialAndLookAtIncluded) {
  Run({"demo", "--output", Path("demo.orlo")}, 0);
  const ToolRun run = Run({"diff", Path("demo.orlo"), Path("demo.orlo")}, 0);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "");
}

TEST_F(DiffCommandTest, ANodeAddedIsOneLine) {
  const std::string a = WriteScene("a.orlo");
  const std::string b = WriteScene("b.orlo", [](SceneEngine& engine) {
    Node* finger = engine.CreateEmptyNode(Point3<double>(0, 0, 0), "finger");
    EXPECT_TRUE(engine.SetParent(Find(engine, "hand"), finger).IsOk());
  });
  EXPECT_EQ(Diff(a, b), "/MainNode/arm/hand/finger: node added\n");
  EXPECT_EQ(Diff(b, a), "/MainNode/arm/hand/finger: node removed\n");
}

TEST_F(DiffCommandTest, ANodeRemovedCountsTheNodesBelowIt) {
  const std::string a = WriteScene("a.orlo");
  const std::string b = WriteScene(
      "b.orlo", [](SceneEngine& engine) { EXPECT_TRUE(engine.DeleteNode(Find(engine, "arm"))); });
  EXPECT_EQ(Diff(a, b), "/MainNode/arm: node removed, with 1 node below\n");
  EXPECT_EQ(Diff(b, a), "/MainNode/arm: node added, with 1 node below\n");
}

TEST_F(DiffCommandTest, ARenamedNodeIsRemovedAndAdded) {
  const std::string a = WriteScene("a.orlo");
  const std::string b =
      WriteScene("b.orlo", [](SceneEngine& engine) { Find(engine, "hand")->SetName("palm"); });
  EXPECT_EQ(Diff(a, b),
            "/MainNode/arm/hand: node removed\n"
            "/MainNode/arm/palm: node added\n");
}

TEST_F(DiffCommandTest, ParameterValuesOfEveryKindAreComparedWithTheirPaths) {
  const std::string a = WriteScene("a.orlo");
  const std::string b = WriteScene("b.orlo", [](SceneEngine& engine) {
    Node* arm = Find(engine, "arm");
    arm->SetHide(true);
    arm->SetVisibility(0.25, 0);
    DataTable* table = MaterialTable(engine);
    EXPECT_TRUE(table->SetValue(DemoMaterial::kLayersID, 3, 0, 0).IsOk());
    EXPECT_TRUE(
        table->SetValue(DemoMaterial::kNormalScaleID, Point3<double>(1, 2.5, 1), 0, 0).IsOk());
    EXPECT_TRUE(table->SetValue(DemoMaterial::kBaseColorID, Color(1.0f, 0.5f, 0.0f), 0, 0).IsOk());
    EXPECT_TRUE(table->SetValue(DemoMaterial::kTextureNameID, "wood \"oak\".png", 0, 0).IsOk());
    EXPECT_TRUE(engine.GetMainScene()
                    ->GetDataTable()
                    ->SetValue(MainScene::kAmbientOcclusionSamplesID, 64, 0, 0)
                    .IsOk());
  });
  // The scene's own differences come first: the walk is in pre-order from the scene down.
  EXPECT_EQ(Diff(a, b),
            "/ [params/ambient_occlusion_samples] 0 -> 64\n"
            "/MainNode/arm [params/hide] false -> true\n"
            "/MainNode/arm [params/visibility] 1 -> 0.25\n"
            "/MainNode/box [material/params/layers] 1 -> 3\n"
            "/MainNode/box [material/params/normal_scale] (1, 1, 1) -> (1, 2.5, 1)\n"
            "/MainNode/box [material/params/base_color] (0.8, 0.8, 0.8) -> (1, 0.5, 0)\n"
            "/MainNode/box [material/params/texture_name] \"\" -> \"wood \\\"oak\\\".png\"\n");
}

TEST_F(DiffCommandTest, AFloatParameterValueIsPrintedWithTheDigitsItNeeds) {
  const std::string a = WriteScene("a.orlo");
  const std::string b = WriteScene("b.orlo", [](SceneEngine& engine) {
    EXPECT_TRUE(MaterialTable(engine)->SetValue(DemoMaterial::kRoughnessID, 0.1, 0, 0).IsOk());
  });
  EXPECT_EQ(Diff(a, b), "/MainNode/box [material/params/roughness] 0.5 -> 0.1\n");
}

TEST_F(DiffCommandTest, AKeyValueChangedNamesTheKey) {
  const std::string a = WriteScene("a.orlo");
  const std::string b = WriteScene("b.orlo", [](SceneEngine& engine) {
    PositionX(Find(engine, "arm"))->SetKey(BezierKey(50, 1.5));
  });
  EXPECT_EQ(Diff(a, b), "/MainNode/arm [transform/position/x] key 1 value 2 -> 1.5\n");
}

TEST_F(DiffCommandTest, KeyTimesAreComparedKeyByKey) {
  const std::string a = WriteScene("a.orlo");
  const std::string b = WriteScene("b.orlo", [](SceneEngine& engine) {
    // The same keys, but at time 60: rebuilt on a fresh transform.
    Node* arm = Find(engine, "arm");
    auto* fresh = new Transform3Controller(true);
    fresh->SetPosition(Point3<double>(1, 0, 0), 0);
    fresh->SetPosition(Point3<double>(2, 0, 0), 60);
    EXPECT_TRUE(arm->SetNodeTransformController(fresh).IsOk());
  });
  EXPECT_EQ(Diff(a, b),
            "/MainNode/arm [transform/position/x] key 1 time 50 -> 60\n"
            "/MainNode/arm [transform/position/y] key 1 time 50 -> 60\n"
            "/MainNode/arm [transform/position/z] key 1 time 50 -> 60\n");
}

TEST_F(DiffCommandTest, AKeyAddedOrRemovedIsOneLine) {
  const std::string a = WriteScene("a.orlo");
  const std::string b = WriteScene("b.orlo", [](SceneEngine& engine) {
    PositionX(Find(engine, "arm"))->SetKey(BezierKey(100, 4));
  });
  EXPECT_EQ(Diff(a, b), "/MainNode/arm [transform/position/x] key 2 added: time 100, value 4\n");
  EXPECT_EQ(Diff(b, a), "/MainNode/arm [transform/position/x] key 2 removed: time 100, value 4\n");
}

TEST_F(DiffCommandTest, AnObjectOfAnotherClassIsReportedOnceWithBothClasses) {
  const std::string a = WriteScene("a.orlo");
  const std::string b = WriteScene("b.orlo", [](SceneEngine& engine) {
    EXPECT_TRUE(Find(engine, "box")->SetObject(new DemoCamera).IsOk());
  });
  EXPECT_EQ(Diff(a, b),
            "/MainNode/box [object] class DemoBox (510, 200, 2) -> DemoCamera (600, 128, 784)\n");
}

TEST_F(DiffCommandTest, AnObjectsOwnPayloadIsComparedThroughItsAccessors) {
  const std::string a = WriteScene("a.orlo");
  const std::string b = WriteScene("b.orlo", [](SceneEngine& engine) {
    dynamic_cast<DemoBox*>(Find(engine, "box")->GetObject())->SetSize(Point3<double>(2, 1, 1));
  });
  EXPECT_EQ(Diff(a, b), "/MainNode/box [object] size (1, 1, 1) -> (2, 1, 1)\n");
}

TEST_F(DiffCommandTest, AMaterialChangedRemovedOrAddedIsReportedAtTheNode) {
  const std::string a = WriteScene("a.orlo");
  const std::string renamed = WriteScene("renamed.orlo", [](SceneEngine& engine) {
    dynamic_cast<DemoMaterial*>(Find(engine, "box")->GetMaterial())->SetName("iron");
  });
  EXPECT_EQ(Diff(a, renamed), "/MainNode/box [material] name \"steel\" -> \"iron\"\n");

  const std::string bare = WriteScene("bare.orlo", [](SceneEngine& engine) {
    EXPECT_TRUE(Find(engine, "box")->SetMaterial(nullptr).IsOk());
  });
  EXPECT_EQ(Diff(a, bare), "/MainNode/box [material] removed: DemoMaterial (405, 200, 3)\n");
  EXPECT_EQ(Diff(bare, a), "/MainNode/box [material] added: DemoMaterial (405, 200, 3)\n");
}

TEST_F(DiffCommandTest, AModifierStackIsWalkedDownToItsBaseObject) {
  auto stacked = [](const char* name, bool active) {
    return [name, active](SceneEngine& engine) {
      Node* box = Find(engine, "box");
      auto* deformer = new DemoDeformer;
      deformer->SetName(name);
      deformer->SetActive(active);
      ObjectModifier* stack = deformer->GetNewObjectModifier();
      EXPECT_TRUE(stack->SetModifier(deformer).IsOk());
      EXPECT_TRUE(stack->SetObjectToModify(box->GetObject()).IsOk());
      EXPECT_TRUE(box->SetObject(stack).IsOk());
    };
  };
  const std::string a = WriteScene("a.orlo", stacked("taper", true));
  const std::string b = WriteScene("b.orlo", [&stacked](SceneEngine& engine) {
    stacked("twist", false)(engine);
    dynamic_cast<DemoBox*>(
        dynamic_cast<ObjectModifier*>(Find(engine, "box")->GetObject())->GetObjectToModify())
        ->SetSize(Point3<double>(1, 1, 3));
  });
  EXPECT_EQ(Diff(a, b),
            "/MainNode/box [object/modifier] name \"taper\" -> \"twist\"\n"
            "/MainNode/box [object/modifier] active true -> false\n"
            "/MainNode/box [object/base_object] size (1, 1, 1) -> (1, 1, 3)\n");
  const std::string plain = WriteScene("plain.orlo");
  EXPECT_EQ(Diff(plain, a),
            "/MainNode/box [object] class DemoBox (510, 200, 2) -> DemoDeformerStack (520, 200, "
            "5)\n");
}

TEST_F(DiffCommandTest, ALinkToAnotherNodeComparesByThatNodesPath) {
  auto camera = [](const char* aim) {
    return [aim](SceneEngine& engine) {
      Node* node =
          engine.CreateLookAtCamera(Point3<double>(0, -10, 4), Point3<double>(0, 0, 0), "camera");
      EXPECT_TRUE(node->SetLookAtAimNode(Find(engine, aim)).IsOk());
    };
  };
  const std::string a = WriteScene("a.orlo", camera("box"));
  const std::string b = WriteScene("b.orlo", camera("hand"));
  EXPECT_EQ(
      Diff(a, b),
      "/MainNode/camera [transform] aim_node node /MainNode/box -> node /MainNode/arm/hand\n");
}

TEST_F(DiffCommandTest, AMaterialSharedWithTheScenesListIsComparedWhereTheNodeUsesIt) {
  auto listed = [](const char* name) {
    return [name](SceneEngine& engine) {
      auto* material = dynamic_cast<DemoMaterial*>(Find(engine, "box")->GetMaterial());
      material->SetName(name);
      engine.GetMainScene()->AddMaterial(material);
    };
  };
  const std::string a = WriteScene("a.orlo", listed("steel"));
  const std::string b = WriteScene("b.orlo", listed("iron"));
  EXPECT_EQ(Diff(a, b), "/MainNode/box [material] name \"steel\" -> \"iron\"\n");
  const std::string unlisted = WriteScene("unlisted.orlo");
  EXPECT_EQ(Diff(unlisted, a),
            "/ [materials] DemoMaterial added: same block as /MainNode/box [material]\n");
}

TEST_F(DiffCommandTest, NamesWithPathCharactersAreEscaped) {
  const std::string a = WriteScene("a.orlo");
  const std::string b = WriteScene("b.orlo", [](SceneEngine& engine) {
    engine.CreateEmptyNode(Point3<double>(0, 0, 0), "left/right #1 [x]\\");
  });
  EXPECT_EQ(Diff(a, b), "/MainNode/left\\/right \\#1 \\[x\\]\\\\: node added\n");
}

TEST_F(DiffCommandTest, NamesakeChildrenAreMatchedInOrder) {
  const Edit twins = [](SceneEngine& engine) {
    engine.CreateEmptyNode(Point3<double>(0, 0, 0), "twin");
    engine.CreateEmptyNode(Point3<double>(0, 0, 0), "twin");
  };
  const std::string a = WriteScene("a.orlo", twins);
  const std::string b = WriteScene("b.orlo", [&twins](SceneEngine& engine) {
    twins(engine);
    std::vector<Node*> nodes;
    engine.GetAllSceneNodes(nodes);
    nodes.back()->SetNodeColor(Color(1.0f, 0.0f, 0.0f));
  });
  EXPECT_EQ(Diff(a, b), "/MainNode/twin#2: color (0, 0, 0) -> (1, 0, 0)\n");
}

TEST_F(DiffCommandTest, JsonGivesTheDocumentedShape) {
  const std::string a = WriteScene("a.orlo");
  const std::string b = WriteScene("b.orlo", [](SceneEngine& engine) {
    PositionX(Find(engine, "arm"))->SetKey(BezierKey(50, 1.5));
    EXPECT_TRUE(engine.DeleteNode(Find(engine, "hand")));
  });
  const nlohmann::json json = nlohmann::json::parse(Diff(a, b, {"--json"}));
  EXPECT_EQ(json["a"], a);
  EXPECT_EQ(json["b"], b);
  EXPECT_EQ(json["identical"], false);
  EXPECT_EQ(json["differences"], nlohmann::json::parse(R"([
    {"kind": "changed", "node": "/MainNode/arm", "block": "transform/position/x",
     "field": "key 1 value", "a": "2", "b": "1.5", "nodes_below": null,
     "text": "/MainNode/arm [transform/position/x] key 1 value 2 -> 1.5"},
    {"kind": "node_removed", "node": "/MainNode/arm/hand", "block": null, "field": null,
     "a": null, "b": null, "nodes_below": 0, "text": "/MainNode/arm/hand: node removed"}
  ])"))
      << json.dump(2);

  const ToolRun same = Run({"diff", "--json", a, a}, 0);
  const nlohmann::json identical = nlohmann::json::parse(same.out);
  EXPECT_EQ(identical["identical"], true);
  EXPECT_EQ(identical["differences"], nlohmann::json::array());
}

TEST_F(DiffCommandTest, AMissingFileIsReportedOnOneLineWithExitTwo) {
  const std::string a = WriteScene("a.orlo");
  for (const auto& [first, second] :
       {std::make_pair(a, Path("nowhere.orlo")), std::make_pair(Path("nowhere.orlo"), a)}) {
    const ToolRun run = Run({"diff", first, second}, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "orlo: " + Path("nowhere.orlo") + ": no such file\n");
  }
  const ToolRun folder = Run({"diff", a, m_folder}, 2);
  EXPECT_EQ(folder.err, "orlo: " + m_folder + ": not a regular file\n");
}

TEST_F(DiffCommandTest, ACorruptFileIsReportedOnOneLineWithExitTwo) {
  const std::string a = WriteScene("a.orlo");
  const std::string cut = Path("cut.orlo");
  std::vector<std::uint8_t> bytes = ReadBytes(a);
  bytes.resize(bytes.size() / 2);
  WriteBytes(cut, bytes);
  const ToolRun run = Run({"diff", a, cut}, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "orlo: " + cut +
                         ": cannot load: SceneEngine::LoadScene : chunk 0x0005 at offset 0: "
                         "length " +
                         std::to_string(ReadBytes(a).size() - 12) + " exceeds the " +
                         std::to_string(bytes.size() - 12) + " bytes left in the file\n");

  const std::string text = Path("notes.txt");
  WriteBytes(text, {'h', 'e', 'l', 'l', 'o', '\n'});
  const ToolRun not_a_scene = Run({"diff", text, a}, 2);
  ASSERT_EQ(Lines(not_a_scene.err).size(), 1u) << not_a_scene.err;
  EXPECT_EQ(not_a_scene.err.rfind("orlo: " + text + ": cannot load: ", 0), 0u) << not_a_scene.err;
}

TEST_F(DiffCommandTest, UnknownClassesNeedTheirPluginAndAreThenComparedByPayload) {
  auto torus = [](double ring) {
    return [ring](SceneEngine& engine) {
      auto* object = new orlo_example::Torus;
      object->SetRadii(ring, 0.5);
      EXPECT_TRUE(Find(engine, "box")->SetObject(object).IsOk());
    };
  };
  const std::string a = WriteScene("a.orlo", torus(2.0));
  const std::string b = WriteScene("b.orlo", torus(3.0));
  const ToolRun run = Run({"diff", a, b}, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "orlo: " + a +
                         ": cannot load: SceneEngine::LoadBlocks : Couldn't find a factory for "
                         "one or more blocks.\n");

  // | id 0x0005 | length 16, 8 bytes | ring radius, double | tube radius 0.5, double |
  EXPECT_EQ(Diff(a, b, {"--plugin", ExamplePluginPath()}),
            "/MainNode/box [object] payload "
            "05000000"
            "1000000000000000"
            "0000000000000040"
            "000000000000e03f -> "
            "05000000"
            "1000000000000000"
            "0000000000000840"
            "000000000000e03f\n");
}

TEST_F(DiffCommandTest, WrongArgumentsAreUsageErrorsWithExitTwo) {
  const std::string a = WriteScene("a.orlo");
  const std::vector<std::vector<std::string>> commands = {
      {"diff"}, {"diff", a}, {"diff", a, a, a}, {"diff", "--frobnicate", a, a}};
  for (const std::vector<std::string>& arguments : commands) {
    const ToolRun run = Run(arguments, 2);
    EXPECT_EQ(run.out, "");
    ASSERT_EQ(Lines(run.err).size(), 1u) << run.err;
    EXPECT_EQ(run.err.rfind("orlo: usage: ", 0), 0u) << run.err;
  }
}

// Chains of 100,000 nodes that differ only at the deepest node: every walk of the tool keeps
// its own stack, so it must get through with the default 8 MiB stack.
TEST_F(DiffCommandTest, ChainsOfAHundredThousandNodesDifferingAtTheDeepestNodeAreCompared) {
  constexpr int kDepth = 100000;
  auto write_chain = [this](const std::string& name, bool changed) {
    SceneEngine engine;
    SceneEngine::SetScene(&engine);
    engine.InitScene();
    // Built from the bottom up, so that linking a node posts no event through a long chain;
    // bare nodes (no table, no transform) keep the files small.
    Node* below = nullptr;
    for (int i = kDepth - 1; i >= 0; --i) {
      auto* node = new Node(false);
      node->SetName("n" + std::to_string(i));
      if (i == kDepth - 1 && changed) {
        node->SetNodeColor(Color(0.0f, 0.0f, 1.0f));
        auto* leaf = new Node(false);
        leaf->SetName("leaf");
        EXPECT_TRUE(node->AddChild(leaf).IsOk());
      }
      if (below != nullptr) {
        EXPECT_TRUE(node->AddChild(below).IsOk());
      }
      below = node;
    }
    EXPECT_TRUE(engine.GetMainNode()->AddChild(below).IsOk());
    const std::string path = Path(name);
    EXPECT_TRUE(engine.SaveScene(path).IsOk());
    SceneEngine::SetScene(nullptr);
    return path;
  };
  const std::string a = write_chain("a.orlo", false);
  const std::string b = write_chain("b.orlo", true);

  // The child inherits the limit: no more than the usual default stack.
  rlimit saved{};
  ASSERT_EQ(getrlimit(RLIMIT_STACK, &saved), 0);
  rlimit limited = saved;
  constexpr rlim_t kDefaultStack = 8 * 1024 * 1024;
  if (limited.rlim_cur == RLIM_INFINITY || limited.rlim_cur > kDefaultStack) {
    limited.rlim_cur = kDefaultStack;
  }
  ASSERT_EQ(setrlimit(RLIMIT_STACK, &limited), 0);
  const ToolRun same = RunTool({"diff", a, a});
  const ToolRun run = RunTool({"diff", b, a});
  ASSERT_EQ(setrlimit(RLIMIT_STACK, &saved), 0);

  EXPECT_EQ(same.exit_code, 0) << same.err;
  EXPECT_EQ(same.out, "");
  std::string deepest = "/MainNode";
  for (int i = 0; i < kDepth; ++i) deepest += "/n" + std::to_string(i);
  EXPECT_EQ(run.exit_code, 1) << run.err;
  EXPECT_EQ(run.err, "");
  EXPECT_TRUE(run.out ==
              deepest + ": color (0, 0, 1) -> (0, 0, 0)\n" + deepest + "/leaf: node removed\n")
      << run.out.substr(0, 200) << " ... "
      << run.out.substr(run.out.size() > 200 ? run.out.size() - 200 : 0);
}

}  // namespace
}  // namespace Orlo::cli::testing
