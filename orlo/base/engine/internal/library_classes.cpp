#include <orlo/base/engine/internal/library_classes.h>

#include <array>
#include <type_traits>
#include <typeinfo>

#include <orlo/base/block/block.h>
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
#include <orlo/base/engine/unknown_modifier.h>
#include <orlo/base/engine/unknown_object.h>
#include <orlo/base/engine/unknown_object_modifier.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/node_transform.h>

namespace Orlo::internal {

namespace {

struct LibraryClass {
  const std::type_info* type;
  // Whether the class has an UpdateDataTable of its own; Block's does nothing.
  bool refreshes_its_table;
};

template <typename T>
constexpr LibraryClass Describe() {
  // Naming the member through the class gives Block's own member when the class (and every
  // class between) keeps it.
  static_assert(std::is_same_v<decltype(&T::PostLoad), int (Block::*)()>,
                "a class with a PostLoad of its own needs its calls once per path");
  return {&typeid(T), !std::is_same_v<decltype(&T::UpdateDataTable), void (Block::*)(bool)>};
}

// The classes the library's factories and the reader's placeholders make, the most frequent
// in a scene first. Classes are told apart by the address of their type_info: a class always
// has one, and a second copy of it (across shared objects) would only send a scene down the
// per-path walks.
const std::array<LibraryClass, 18> kLibraryClasses = {
    Describe<BezierController>(),
    Describe<DataFloat>(),
    Describe<DataBool>(),
    Describe<DataInt>(),
    Describe<DataPoint3>(),
    Describe<Point3Controller>(),
    Describe<DataTable>(),
    Describe<BlockTable>(),
    Describe<NodeTransform>(),
    Describe<Transform3Controller>(),
    Describe<Node>(),
    Describe<DataColor>(),
    Describe<DataString>(),
    Describe<LookAtController>(),
    Describe<MainScene>(),
    Describe<UnknownObject>(),
    Describe<UnknownObjectModifier>(),
    Describe<UnknownModifier>(),
};

const LibraryClass* FindLibraryClass(const Block& block) {
  const std::type_info* type = &typeid(block);
  for (const LibraryClass& library_class : kLibraryClasses) {
    if (library_class.type == type) return &library_class;
  }
  return nullptr;
}

}  // namespace

bool IsOfLibraryClass(const Block& block) { return FindLibraryClass(block) != nullptr; }

std::optional<std::vector<Block*>> TableRefreshersIfAllOfLibraryClasses(
    const std::vector<Block*>& blocks) {
  std::vector<Block*> refreshers;
  for (Block* block : blocks) {
    const LibraryClass* library_class = FindLibraryClass(*block);
    if (library_class == nullptr) return std::nullopt;
    if (library_class->refreshes_its_table) refreshers.push_back(block);
  }
  return refreshers;
}

}  // namespace Orlo::internal
