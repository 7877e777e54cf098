#include "tools/orlo/demo/demo_scene.h"

#include <iterator>

#include <orlo/base/controllers/bezier_controller.h>
#include <orlo/base/controllers/matrix3_controller.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/node.h>

#include "tools/orlo/demo/demo_library.h"

namespace Orlo::cli {

namespace {

constexpr double kQuarterTurn = 1.5707963267948966;

Node* AddNode(SceneEngine& engine, Node* parent, Point3<double> position, const char* name,
              Status* status) {
  Node* node = engine.CreateEmptyNode(position, name);
  if (status->IsOk() && parent != nullptr) *status = engine.SetParent(parent, node);
  return node;
}

}  // namespace

Status BuildDemoScene(SceneEngine& engine) {
  engine.InitScene();
  Status status;

  Node* turntable = AddNode(engine, nullptr, Point3<double>(0, 0, 0), "turntable", &status);
  Node* arm = AddNode(engine, turntable, Point3<double>(2, 0, 0), "arm", &status);
  Node* box = AddNode(engine, arm, Point3<double>(0, 0, 1), "box", &status);
  Node* marker = AddNode(engine, box, Point3<double>(0, 0, 0.5), "marker", &status);
  ORLO_RETURN_IF_ERROR(status);
  // The camera looks at a node of its own, which then rides on the moving box.
  Node* camera =
      engine.CreateLookAtCamera(Point3<double>(0, -10, 4), Point3<double>(0, 0, 0), "camera");
  Node* aim = engine.GetNodeByName("camera_aim");
  if (aim == nullptr) return Status(Status::kFailed, "the look-at camera has no aim node");
  ORLO_RETURN_IF_ERROR(engine.SetParent(box, aim));
  auto* lens = dynamic_cast<DemoCamera*>(camera->GetObject());
  if (lens == nullptr) return Status(Status::kFailed, "the look-at camera is not a DemoCamera");
  lens->SetFieldOfView(0.9);

  // Keyed animation: half a turn over 100 ticks, the arm sliding out and growing. Every node,
  // the main node included, is keyed at every reported time: an unkeyed controller reads 0
  // at any time but 0 (a scale of 0 away from time 0), and between keys the controllers
  // follow their own rule, which the demo does not mean to show. The camera's look-at
  // controller takes its position and ignores rotation and scale: the aim decides those.
  struct Pose {
    Point3<double> position;
    Point3<double> rotation;
    Point3<double> scale;
  };
  const Point3<double> none(0, 0, 0);
  const Point3<double> unit(1, 1, 1);
  const struct {
    Node* node;
    Pose poses[3];
  } keys[] = {
      {engine.GetMainNode(), {{none, none, unit}, {none, none, unit}, {none, none, unit}}},
      {turntable,
       {{none, none, unit},
        {none, {0, 0, kQuarterTurn}, unit},
        {none, {0, 0, 2 * kQuarterTurn}, unit}}},
      {arm,
       {{{2, 0, 0}, none, unit},
        {{3, 0, 0}, none, {1.25, 1.25, 1.25}},
        {{4, 0, 1}, none, {1.5, 1.5, 1.5}}}},
      {box,
       {{{0, 0, 1}, none, unit},
        {{0, 0, 1}, {kQuarterTurn, 0, 0}, unit},
        {{0, 0, 1}, {2 * kQuarterTurn, 0, 0}, unit}}},
      {marker, {{{0, 0, 0.5}, none, unit}, {{0, 0, 0.5}, none, unit}, {{0, 0, 0.5}, none, unit}}},
      {aim, {{none, none, unit}, {none, none, unit}, {none, none, unit}}},
      {camera, {{{0, -10, 4}, none, unit}, {{0, -10, 4}, none, unit}, {{0, -10, 4}, none, unit}}},
  };
  for (const auto& entry : keys) {
    Matrix3Controller* controller = entry.node->GetNodeTransformController();
    for (std::size_t i = 0; i < std::size(kDemoTimes); ++i) {
      controller->SetPosition(entry.poses[i].position, kDemoTimes[i]);
      controller->SetRotation(entry.poses[i].rotation, kDemoTimes[i]);
      controller->SetScale(entry.poses[i].scale, kDemoTimes[i]);
    }
  }

  // The box's object: a DemoBox under a stack of two deformers, the last applied on top.
  auto* shape = new DemoBox;
  shape->SetSize(Point3<double>(1.0, 0.5, 2.0));
  Object* top = shape;
  for (const char* name : {"twist", "taper"}) {
    auto* deformer = new DemoDeformer;
    deformer->SetName(name);
    ObjectModifier* stack = deformer->GetNewObjectModifier();
    ORLO_RETURN_IF_ERROR(stack->SetModifier(deformer));
    ORLO_RETURN_IF_ERROR(stack->SetObjectToModify(top));
    top = stack;
  }
  ORLO_RETURN_IF_ERROR(box->SetObject(top));

  // The material, kept in the scene's list too, with a parameter of every kind.
  auto* material = new DemoMaterial(true);
  material->SetName("brushed_steel");
  ORLO_RETURN_IF_ERROR(box->SetMaterial(material));
  engine.GetMainScene()->AddMaterial(material);
  DataTable* table = material->GetDataTable();
  ORLO_RETURN_IF_ERROR(table->SetValue(DemoMaterial::kDoubleSidedID, true, 0, 0));
  ORLO_RETURN_IF_ERROR(table->SetValue(DemoMaterial::kLayersID, 3, 0, 0));
  ORLO_RETURN_IF_ERROR(
      table->SetValue(DemoMaterial::kNormalScaleID, Point3<double>(1.0, -1.0, 0.5), 0, 0));
  ORLO_RETURN_IF_ERROR(
      table->SetValue(DemoMaterial::kBaseColorID, Color(0.7f, 0.72f, 0.75f), 0, 0));
  ORLO_RETURN_IF_ERROR(table->SetValue(DemoMaterial::kTextureNameID, "steel.png", 0, 0));
  auto* roughness = new BezierController(0.25);
  roughness->SetKey(BezierKey(100, 0.75));
  if (!table->SetController(DemoMaterial::kRoughnessID, roughness, 0)) {
    roughness->DeleteThisBlock(true);
    return Status(Status::kFailed, "cannot animate the material's roughness");
  }

  return Status();
}

}  // namespace Orlo::cli
