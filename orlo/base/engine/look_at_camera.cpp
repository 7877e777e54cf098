// The engine's aimed cameras.
#include <orlo/base/block/block_factory.h>
#include <orlo/base/controllers/look_at_controller.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/node_transform.h>
#include <orlo/base/scene/object.h>

namespace Orlo {

namespace {

// The camera object class of the host's object library.
constexpr BlockType kCameraType{600, 128, 784};

}  // namespace

Node* SceneEngine::CreateLookAtCamera(Point3<double> position, Point3<double> target,
                                      std::string name) {
  // Every matching factory makes a block and the last one wins. The registry refuses a second
  // factory of an equal type, so at most one matches today; should more match, the blocks the
  // earlier ones made are released, since nothing holds them. A block of the camera's type
  // that is no object (a host factory reusing the type) gives no object either.
  Block* camera = nullptr;
  for (unsigned i = 0; i < GetNumBlockFactories(); ++i) {
    BlockFactory* factory = GetBlockFactory(i);
    if (!(factory->GetBlockType() == kCameraType)) continue;
    Block* made = factory->GetBlock(true);
    if (camera != nullptr) camera->DeleteThisBlock(true);
    camera = made;
  }
  Object* object = IsObject(camera) ? dynamic_cast<Object*>(camera) : nullptr;
  if (camera != nullptr && object == nullptr) camera->DeleteThisBlock(true);

  Node* node = CreateObjectNode(object, position, name.c_str());
  Node* aim = CreateEmptyNode(target, (name + "_aim").c_str());
  auto* look_at = new LookAtController(true);
  look_at->SetAimNode(aim);
  NodeTransform* transform = node->GetNodeTransform();
  look_at->SetTransformController(transform->GetNodePRS());
  (void)transform->SetNodePRS(look_at);
  return node;
}

}  // namespace Orlo
