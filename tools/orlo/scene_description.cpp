#include "tools/orlo/scene_description.h"

#include <cassert>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <typeinfo>
#include <unordered_map>
#include <utility>

#include <orlo/base/block/block_table.h>
#include <orlo/base/controllers/look_at_controller.h>
#include <orlo/base/controllers/point3_controller.h>
#include <orlo/base/controllers/transform3_controller.h>
#include <orlo/base/data/data.h>
#include <orlo/base/data/data_bool.h>
#include <orlo/base/data/data_color.h>
#include <orlo/base/data/data_float.h>
#include <orlo/base/data/data_int.h>
#include <orlo/base/data/data_point3.h>
#include <orlo/base/data/data_string.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/scene/main_scene.h>
#include <orlo/base/scene/material.h>
#include <orlo/base/scene/modifier.h>
#include <orlo/base/scene/node.h>
#include <orlo/base/scene/node_transform.h>
#include <orlo/base/scene/object_modifier.h>
#include <orlo/support/scene_save.h>

#include "tools/orlo/block_catalog.h"
#include "tools/orlo/demo/demo_library.h"

namespace Orlo::cli {

namespace {

constexpr const char* kControllerSuffix = "_animation_controller";

std::string Hex(const std::uint8_t* bytes, std::size_t size) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(size * 2);
  for (std::size_t i = 0; i < size; ++i) {
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 0xf];
  }
  return text;
}

// A string value in double quotes, with quotes, backslashes and control characters escaped.
std::string Quote(const std::string& text) {
  std::string quoted = "\"";
  for (char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      quoted += '\\';
      quoted += c;
    } else if (byte < 0x20 || byte == 0x7f) {
      char escape[8];
      std::snprintf(escape, sizeof(escape), "\\x%02x", byte);
      quoted += escape;
    } else {
      quoted += c;
    }
  }
  return quoted + "\"";
}

std::string PointText(const Point3<double>& point) {
  return "(" + NumberText(point.x) + ", " + NumberText(point.y) + ", " + NumberText(point.z) + ")";
}

// Colour components are floats: printed with the digits a float needs, not a double.
std::string FloatText(float value) {
  if (std::isnan(value) || std::isinf(value)) return NumberText(value);
  char text[40];
  for (int precision = 1; precision <= 9; ++precision) {
    std::snprintf(text, sizeof(text), "%.*g", precision, static_cast<double>(value));
    if (std::strtof(text, nullptr) == value) break;
  }
  return text;
}

std::string ColorText(const Color& color) {
  return "(" + FloatText(color.r) + ", " + FloatText(color.g) + ", " + FloatText(color.b) + ")";
}

std::string BoxText(const Box3<double>& box) {
  if (box.min.x > box.max.x || box.min.y > box.max.y || box.min.z > box.max.z) return "empty";
  return PointText(box.min) + " " + PointText(box.max);
}

DescribedField TextField(std::string name, std::string text) {
  DescribedField field;
  field.name = std::move(name);
  field.text = std::move(text);
  return field;
}

// Whether the block is of one of the classes whose whole saved state the description reaches
// through accessors; the payload of any other class is compared as bytes.
bool IsDescribedClass(const Block& block) {
  const std::type_info& type = typeid(block);
  return type == typeid(BlockTable) || type == typeid(DataTable) || type == typeid(DataBool) ||
         type == typeid(DataInt) || type == typeid(DataFloat) || type == typeid(DataPoint3) ||
         type == typeid(DataColor) || type == typeid(DataString) ||
         type == typeid(BezierController) || type == typeid(Point3Controller) ||
         type == typeid(Transform3Controller) || type == typeid(LookAtController) ||
         type == typeid(NodeTransform) || type == typeid(MainScene) || type == typeid(Node) ||
         type == typeid(DemoCamera) || type == typeid(DemoBox) || type == typeid(DemoMaterial) ||
         type == typeid(DemoDeformer) || type == typeid(DemoDeformerStack);
}

void DescribeDataElements(Data& data, std::vector<DescribedField>& fields) {
  fields.push_back(TextField("id", std::to_string(data.GetParameterID())));
  const int size = data.GetSize();
  if (size != 1) fields.push_back(TextField("size", std::to_string(size)));
  for (int i = 0; i < size; ++i) {
    std::string text;
    switch (data.GetType()) {
      case Data::kTypeBool:
        text = data.GetBool(0, i) ? "true" : "false";
        break;
      case Data::kTypeInt:
        text = std::to_string(data.GetInt(0, i));
        break;
      case Data::kTypeFloat:
        text = NumberText(data.GetFloat(0, i));
        break;
      case Data::kTypePoint3:
        text = PointText(data.GetPoint3F(0, i));
        break;
      case Data::kTypeColor:
        text = ColorText(data.GetColor(0, i));
        break;
      case Data::kTypeString:
        text = Quote(data.GetString(0, i));
        break;
      default:
        text = "(type " + std::to_string(data.GetType()) + ")";
        break;
    }
    fields.push_back(TextField(size == 1 ? "" : "element " + std::to_string(i), std::move(text)));
  }
}

// The values a block's class exposes, in a fixed order per class.
void DescribeBlockFields(Block& block, DescribedBlock& out) {
  if (auto* data = dynamic_cast<Data*>(&block)) DescribeDataElements(*data, out.fields);
  if (auto* keyed = dynamic_cast<BezierController*>(&block)) {
    out.fields.push_back(TextField("default", NumberText(keyed->GetDefaultValue())));
    out.has_keys = true;
    out.keys = keyed->GetKeys();
  }
  if (auto* material = dynamic_cast<Material*>(&block)) {
    out.fields.push_back(TextField("name", Quote(material->GetName())));
  }
  if (auto* modifier = dynamic_cast<Modifier*>(&block)) {
    out.fields.push_back(TextField("name", Quote(modifier->GetName())));
    out.fields.push_back(TextField("active", modifier->IsActive() ? "true" : "false"));
    out.fields.push_back(TextField("box", BoxText(modifier->GetBox())));
  }
  if (auto* stack = dynamic_cast<ObjectModifier*>(&block)) {
    const ObjectModifier::Record& record = stack->GetRecord();
    out.fields.push_back(TextField("record", Hex(record.data(), record.size())));
  }
  if (auto* box = dynamic_cast<DemoBox*>(&block)) {
    out.fields.push_back(TextField("size", PointText(box->GetSize())));
  }
  if (auto* camera = dynamic_cast<DemoCamera*>(&block)) {
    out.fields.push_back(TextField("field_of_view", NumberText(camera->GetFieldOfView())));
  }
  if (!IsDescribedClass(block)) {
    SceneSave save;
    // A payload that fails to save still compares by what was written.
    (void)block.Save(&save);
    DescribedField payload;
    payload.name = "payload";
    payload.kind = DescribedField::kBytes;
    payload.bytes = save.TakeBytes();
    out.fields.push_back(std::move(payload));
  }
}

// One slot of a block as the description sees it.
struct Link {
  std::string name;
  Block* target = nullptr;
};

std::string SlotSegment(const std::string& slot_name) {
  if (slot_name == "data_table") return "params";
  if (slot_name == "float_animation_controller") return "controller";
  const std::string suffix = kControllerSuffix;
  if (slot_name.size() > suffix.size() &&
      slot_name.compare(slot_name.size() - suffix.size(), suffix.size(), suffix) == 0) {
    return slot_name.substr(0, slot_name.size() - suffix.size());
  }
  return slot_name;
}

// The slots of `block` that the description follows, named as paths write them. A node's
// children are the hierarchy's business and its NodeTransform is seen through: its
// controller stands at "transform". Parent transforms (which mirror the hierarchy) and the
// scene's main node are left out.
std::vector<Link> Links(Block& block) {
  std::vector<Link> links;
  const int count = block.NumDependencies();
  const bool is_node = SceneEngine::IsNode(&block);
  const bool is_scene = dynamic_cast<MainScene*>(&block) != nullptr;
  auto* table = dynamic_cast<DataTable*>(&block);
  const bool is_list = dynamic_cast<BlockTable*>(&block) != nullptr;
  for (int i = 0; i < count; ++i) {
    Block* target = block.GetDependency(i);
    if (target == nullptr) continue;
    const std::string slot_name = block.GetDependencyName(i);
    if (is_node && slot_name == "children") continue;
    if (is_scene && slot_name == "main_node") continue;
    if (SceneEngine::IsNodeTransform(target)) {
      if (!is_node || slot_name != "transform") continue;
      Block* controller = target->GetDependency(0);
      if (controller != nullptr) links.push_back({"transform", controller});
      continue;
    }
    std::string name;
    if (table != nullptr) {
      auto* data = dynamic_cast<Data*>(target);
      if (data == nullptr) {
        name = target->GetClassName();
      } else {
        name = data->GetName();
        if (name.empty()) name = "id_" + std::to_string(data->GetParameterID());
      }
    } else if (is_list) {
      // By class, not by name: renaming a material shows once, as its name, where a node
      // uses it, and not again as an entry of the scene's list.
      name = target->GetClassName();
    } else {
      name = SlotSegment(slot_name);
    }
    links.push_back({EscapeSegment(name), target});
  }
  return links;
}

// Appends "#k" to the k-th (k >= 2) of equal names, in order.
template <typename Names>
void NumberNamesakes(Names& names) {
  std::map<std::string, int> seen;
  for (std::string& name : names) {
    const int count = ++seen[name];
    if (count > 1) name += "#" + std::to_string(count);
  }
}

class Describer {
 public:
  explicit Describer(SceneEngine& engine) : m_engine(engine) {}

  SceneDescription Run() {
    m_out.nodes.emplace_back();
    m_node_blocks.push_back(m_engine.GetMainScene());
    DescribeHierarchy();
    // Nodes first, in pre-order, the scene last: a block shared between a node and a list of
    // the scene (a material) is described where a node uses it.
    for (std::size_t node = 1; node < m_out.nodes.size(); ++node) DescribeBlocks(node);
    DescribeBlocks(0);
    return std::move(m_out);
  }

 private:
  void DescribeHierarchy() {
    Node* main_node = m_engine.GetMainNode();
    if (main_node == nullptr) return;
    struct Pending {
      Node* node;
      std::size_t parent;
      std::string segment;
    };
    std::vector<Pending> stack{{main_node, 0, EscapeSegment(main_node->GetName())}};
    while (!stack.empty()) {
      Pending next = std::move(stack.back());
      stack.pop_back();
      // A damaged file may list a node twice; it is described once, where it is met first.
      if (!m_node_index.emplace(next.node, m_out.nodes.size()).second) continue;
      const std::size_t index = m_out.nodes.size();
      DescribedNode node;
      node.segment = std::move(next.segment);
      node.parent = static_cast<long>(next.parent);
      node.fields.push_back(TextField("color", ColorText(next.node->GetNodeColor())));
      m_out.nodes.push_back(std::move(node));
      m_out.nodes[next.parent].children.push_back(index);
      m_node_blocks.push_back(next.node);

      std::vector<Node*> children;
      std::vector<std::string> names;
      const int count = next.node->GetNumChildren();
      for (int i = 0; i < count; ++i) {
        Node* child = next.node->GetChild(i);
        if (child == nullptr) continue;
        children.push_back(child);
        names.push_back(EscapeSegment(child->GetName()));
      }
      NumberNamesakes(names);
      // Pushed in reverse, so that children come off the stack in order.
      for (std::size_t i = children.size(); i-- > 0;) {
        stack.push_back({children[i], index, std::move(names[i])});
      }
    }
  }

  void DescribeBlocks(std::size_t node) {
    Block* owner = m_node_blocks[node];
    if (owner == nullptr) return;
    struct Pending {
      Block* block;
      long index;  // -1 for the node itself
    };
    std::vector<Pending> stack{{owner, -1}};
    while (!stack.empty()) {
      const Pending next = stack.back();
      stack.pop_back();
      std::vector<Link> links = Links(*next.block);
      std::vector<std::string> names;
      for (const Link& link : links) names.push_back(link.name);
      NumberNamesakes(names);
      std::vector<Pending> added;
      for (std::size_t i = 0; i < links.size(); ++i) {
        Block* target = links[i].target;
        DescribedField link;
        link.name = names[i];
        if (SceneEngine::IsNode(target)) {
          link.kind = DescribedField::kNodeLink;
          auto found = m_node_index.find(target);
          link.target = found != m_node_index.end() ? static_cast<long>(found->second) : -1;
          Fields(node, next.index).push_back(std::move(link));
          continue;
        }
        auto known = m_block_index.find(target);
        if (known != m_block_index.end()) {
          link.kind = DescribedField::kBlockLink;
          link.target = static_cast<long>(known->second);
          Fields(node, next.index).push_back(std::move(link));
          continue;
        }
        const std::size_t index = m_out.blocks.size();
        m_block_index.emplace(target, index);
        DescribedBlock block;
        block.segment = names[i];
        block.class_text = target->GetClassName() + " " + TypeText(target->GetBlockType());
        block.node = node;
        block.parent = next.index;
        DescribeBlockFields(*target, block);
        m_out.blocks.push_back(std::move(block));
        if (next.index < 0) {
          m_out.nodes[node].blocks.push_back(index);
        } else {
          m_out.blocks[static_cast<std::size_t>(next.index)].children.push_back(index);
        }
        added.push_back({target, static_cast<long>(index)});
      }
      for (std::size_t i = added.size(); i-- > 0;) stack.push_back(added[i]);
    }
  }

  std::vector<DescribedField>& Fields(std::size_t node, long block) {
    return block < 0 ? m_out.nodes[node].fields
                     : m_out.blocks[static_cast<std::size_t>(block)].fields;
  }

  SceneEngine& m_engine;
  SceneDescription m_out;
  // The block of each described node (the main scene for entry 0); not owning, and only
  // used while the engine's scene lives.
  std::vector<Block*> m_node_blocks;
  std::unordered_map<const Block*, std::size_t> m_node_index;
  std::unordered_map<const Block*, std::size_t> m_block_index;
};

}  // namespace

std::string EscapeSegment(const std::string& name) {
  std::string escaped;
  for (char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\\' || c == '/' || c == '#' || c == '[' || c == ']') {
      escaped += '\\';
      escaped += c;
    } else if (byte < 0x20 || byte == 0x7f) {
      char escape[8];
      std::snprintf(escape, sizeof(escape), "\\x%02x", byte);
      escaped += escape;
    } else {
      escaped += c;
    }
  }
  return escaped;
}

std::string NumberText(double value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
  char text[40];
  for (int precision = 1; precision <= 17; ++precision) {
    std::snprintf(text, sizeof(text), "%.*g", precision, value);
    if (std::strtod(text, nullptr) == value) break;
  }
  return text;
}

std::string SceneDescription::NodePath(std::size_t node) const {
  if (node == 0) return "/";
  std::vector<const std::string*> segments;
  for (long at = static_cast<long>(node); at > 0; at = nodes[static_cast<std::size_t>(at)].parent) {
    segments.push_back(&nodes[static_cast<std::size_t>(at)].segment);
  }
  std::string path;
  for (std::size_t i = segments.size(); i-- > 0;) path += "/" + *segments[i];
  return path;
}

std::string SceneDescription::BlockPath(std::size_t block) const {
  std::vector<const std::string*> segments;
  for (long at = static_cast<long>(block); at >= 0;
       at = blocks[static_cast<std::size_t>(at)].parent) {
    segments.push_back(&blocks[static_cast<std::size_t>(at)].segment);
  }
  std::string path;
  for (std::size_t i = segments.size(); i-- > 0;) {
    path += *segments[i];
    if (i != 0) path += "/";
  }
  return path;
}

std::string SceneDescription::LinkText(const DescribedField& field) const {
  if (field.kind == DescribedField::kNodeLink) {
    return field.target < 0 ? std::string("a node outside the hierarchy")
                            : "node " + NodePath(static_cast<std::size_t>(field.target));
  }
  if (field.kind == DescribedField::kBlockLink) {
    const DescribedBlock& target = blocks[static_cast<std::size_t>(field.target)];
    return "same block as " + NodePath(target.node) + " [" +
           BlockPath(static_cast<std::size_t>(field.target)) + "]";
  }
  return field.text;
}

SceneDescription DescribeScene(SceneEngine& engine) {
  assert(engine.GetMainScene() != nullptr && SceneEngine::GetScene() == &engine);
  return Describer(engine).Run();
}

}  // namespace Orlo::cli
