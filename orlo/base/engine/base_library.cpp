#include <orlo/base/engine/base_library.h>

#include <memory>

#include <orlo/base/block/block_table.h>
#include <orlo/base/controllers/bezier_controller.h>
#include <orlo/base/controllers/look_at_controller.h>
#include <orlo/base/controllers/point3_controller.h>
#include <orlo/base/controllers/transform3_controller.h>
#include <orlo/base/data/data_bool.h>
#include <orlo/base/data/data_color.h>
#include <orlo/base/data/data_float.h>
#include <orlo/base/data/data_int.h>
#include <orlo/base/data/data_point3.h>
#include <orlo/base/data/data_string.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/node_transform.h>

namespace Orlo {

namespace {

// Hands the factory to the registry; one the registry refuses (its type is registered
// already) is destroyed here instead of leaking.
template <typename Factory>
void Register() {
  auto factory = std::make_unique<Factory>();
  const unsigned before = SceneEngine::GetNumBlockFactories();
  SceneEngine::AddBlockFactory(factory.get());
  if (SceneEngine::GetNumBlockFactories() != before) (void)factory.release();  // registry owns it
}

}  // namespace

void RegisterBaseLibrary() {
  // The order is part of the library's contract: hosts and the scene reader see the
  // factories in this order.
  Register<BlockVectorFactory>();
  Register<BezierControllerFactory>();
  Register<Point3ControllerFactory>();
  Register<Transform3ControllerFactory>();
  Register<LookAtControllerFactory>();
  Register<NodeTransformFactory>();
  Register<NodeFactory>();
  Register<MainSceneFactory>();
  Register<DataFloatFactory>();
  Register<DataIntFactory>();
  Register<DataBoolFactory>();
  Register<DataPoint3Factory>();
  Register<DataColorFactory>();
  Register<DataStringFactory>();
  Register<DataTableFactory>();
}

}  // namespace Orlo
