#include "tools/orlo/scene_diff.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace Orlo::cli {

namespace {

// Payloads up to this size are printed whole, as hex; longer ones by their start and size.
constexpr std::size_t kShownPayloadBytes = 32;

std::string PayloadText(const std::vector<std::uint8_t>& bytes) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  const std::size_t shown = std::min(bytes.size(), kShownPayloadBytes);
  for (std::size_t i = 0; i < shown; ++i) {
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 0xf];
  }
  if (bytes.size() > shown) text += "... (" + std::to_string(bytes.size()) + " bytes)";
  if (bytes.empty()) text = "(0 bytes)";
  return text;
}

std::string FieldText(const SceneDescription& scene, const DescribedField& field) {
  if (field.kind == DescribedField::kBytes) return PayloadText(field.bytes);
  return scene.LinkText(field);
}

bool SameValue(const SceneDescription& a, const DescribedField& x, const SceneDescription& b,
               const DescribedField& y) {
  if (x.kind == DescribedField::kBytes && y.kind == DescribedField::kBytes) {
    return x.bytes == y.bytes;
  }
  if (x.kind == DescribedField::kText && y.kind == DescribedField::kText) return x.text == y.text;
  return FieldText(a, x) == FieldText(b, y);
}

std::string KeyText(const BezierKey& key) {
  return "time " + std::to_string(key.time) + ", value " + NumberText(key.value);
}

// Matches the entries of two lists of children by segment: `matched` gets the pairs in the
// first list's order, `only_a` and `only_b` the rest, in order.
template <typename SegmentA, typename SegmentB>
void MatchBySegment(const std::vector<std::size_t>& a, const std::vector<std::size_t>& b,
                    SegmentA segment_a, SegmentB segment_b,
                    std::vector<std::pair<std::size_t, std::size_t>>& matched,
                    std::vector<std::size_t>& only_a, std::vector<std::size_t>& only_b) {
  std::unordered_map<std::string, std::size_t> by_segment;
  for (std::size_t i = 0; i < b.size(); ++i) by_segment.emplace(segment_b(b[i]), i);
  std::vector<bool> used(b.size(), false);
  for (std::size_t index : a) {
    auto found = by_segment.find(segment_a(index));
    if (found != by_segment.end() && !used[found->second]) {
      used[found->second] = true;
      matched.emplace_back(index, b[found->second]);
    } else {
      only_a.push_back(index);
    }
  }
  for (std::size_t i = 0; i < b.size(); ++i) {
    if (!used[i]) only_b.push_back(b[i]);
  }
}

class Differ {
 public:
  Differ(const SceneDescription& a, const SceneDescription& b) : m_a(a), m_b(b) {}

  std::vector<Difference> Run() {
    if (m_a.nodes.empty() || m_b.nodes.empty()) return std::move(m_out);
    enum Step { kPair, kRemoved, kAdded };
    struct Pending {
      Step step;
      std::size_t a;
      std::size_t b;
    };
    std::vector<Pending> stack{{kPair, 0, 0}};
    while (!stack.empty()) {
      const Pending next = stack.back();
      stack.pop_back();
      if (next.step == kRemoved) {
        AddNodeDifference(Difference::kNodeRemoved, m_a, next.a);
        continue;
      }
      if (next.step == kAdded) {
        AddNodeDifference(Difference::kNodeAdded, m_b, next.b);
        continue;
      }
      const DescribedNode& node_a = m_a.nodes[next.a];
      const DescribedNode& node_b = m_b.nodes[next.b];
      // Computed once per node, and only when the node has a difference.
      std::string path;
      auto node_path = [&]() -> const std::string& {
        if (path.empty()) path = m_a.NodePath(next.a);
        return path;
      };
      CompareFields(node_a.fields, node_b.fields, node_path, nullptr);
      CompareBlocks(node_a.blocks, node_b.blocks, node_path);

      std::vector<std::pair<std::size_t, std::size_t>> matched;
      std::vector<std::size_t> only_a;
      std::vector<std::size_t> only_b;
      MatchBySegment(
          node_a.children, node_b.children, [this](std::size_t i) { return m_a.nodes[i].segment; },
          [this](std::size_t i) { return m_b.nodes[i].segment; }, matched, only_a, only_b);
      // The children in the first scene's order, removed ones in their place, then the added
      // ones; pushed in reverse so that they come off the stack in that order.
      std::vector<Pending> children;
      std::size_t next_match = 0;
      for (std::size_t child : node_a.children) {
        if (next_match < matched.size() && matched[next_match].first == child) {
          children.push_back({kPair, child, matched[next_match].second});
          ++next_match;
        } else {
          children.push_back({kRemoved, child, 0});
        }
      }
      for (std::size_t child : only_b) children.push_back({kAdded, 0, child});
      for (std::size_t i = children.size(); i-- > 0;) stack.push_back(children[i]);
    }
    return std::move(m_out);
  }

 private:
  template <typename NodePath>
  void CompareBlocks(const std::vector<std::size_t>& a, const std::vector<std::size_t>& b,
                     NodePath& node_path) {
    enum Step { kPair, kRemoved, kAdded };
    struct Pending {
      Step step;
      std::size_t a;
      std::size_t b;
    };
    std::vector<Pending> stack;
    auto push_children = [&](const std::vector<std::size_t>& children_a,
                             const std::vector<std::size_t>& children_b) {
      std::vector<std::pair<std::size_t, std::size_t>> matched;
      std::vector<std::size_t> only_a;
      std::vector<std::size_t> only_b;
      MatchBySegment(
          children_a, children_b, [this](std::size_t i) { return m_a.blocks[i].segment; },
          [this](std::size_t i) { return m_b.blocks[i].segment; }, matched, only_a, only_b);
      std::vector<Pending> pending;
      std::size_t next_match = 0;
      for (std::size_t child : children_a) {
        if (next_match < matched.size() && matched[next_match].first == child) {
          pending.push_back({kPair, child, matched[next_match].second});
          ++next_match;
        } else {
          pending.push_back({kRemoved, child, 0});
        }
      }
      for (std::size_t child : only_b) pending.push_back({kAdded, 0, child});
      for (std::size_t i = pending.size(); i-- > 0;) stack.push_back(pending[i]);
    };
    push_children(a, b);
    while (!stack.empty()) {
      const Pending next = stack.back();
      stack.pop_back();
      if (next.step == kRemoved) {
        Difference difference = At(node_path(), m_a.BlockPath(next.a));
        difference.kind = Difference::kBlockRemoved;
        difference.before = m_a.blocks[next.a].class_text;
        m_out.push_back(std::move(difference));
        continue;
      }
      if (next.step == kAdded) {
        Difference difference = At(node_path(), m_b.BlockPath(next.b));
        difference.kind = Difference::kBlockAdded;
        difference.after = m_b.blocks[next.b].class_text;
        m_out.push_back(std::move(difference));
        continue;
      }
      const DescribedBlock& block_a = m_a.blocks[next.a];
      const DescribedBlock& block_b = m_b.blocks[next.b];
      if (block_a.class_text != block_b.class_text) {
        // Everything below a block of another class differs: the class says it all.
        Difference difference = At(node_path(), m_a.BlockPath(next.a));
        difference.kind = Difference::kClassChanged;
        difference.before = block_a.class_text;
        difference.after = block_b.class_text;
        m_out.push_back(std::move(difference));
        continue;
      }
      CompareFields(block_a.fields, block_b.fields, node_path, &next.a);
      CompareKeys(block_a, block_b, node_path, next.a);
      push_children(block_a.children, block_b.children);
    }
  }

  template <typename NodePath>
  void CompareFields(const std::vector<DescribedField>& a, const std::vector<DescribedField>& b,
                     NodePath& node_path, const std::size_t* block) {
    std::vector<bool> used(b.size(), false);
    auto block_path = [&]() { return block != nullptr ? m_a.BlockPath(*block) : std::string(); };
    for (const DescribedField& field : a) {
      std::size_t match = b.size();
      for (std::size_t i = 0; i < b.size(); ++i) {
        if (!used[i] && b[i].name == field.name) {
          match = i;
          break;
        }
      }
      if (match == b.size()) {
        Difference difference = At(node_path(), block_path());
        difference.kind = Difference::kRemoved;
        difference.field = field.name;
        difference.before = FieldText(m_a, field);
        m_out.push_back(std::move(difference));
        continue;
      }
      used[match] = true;
      if (SameValue(m_a, field, m_b, b[match])) continue;
      Difference difference = At(node_path(), block_path());
      difference.field = field.name;
      difference.before = FieldText(m_a, field);
      difference.after = FieldText(m_b, b[match]);
      m_out.push_back(std::move(difference));
    }
    for (std::size_t i = 0; i < b.size(); ++i) {
      if (used[i]) continue;
      Difference difference = At(node_path(), block_path());
      difference.kind = Difference::kAdded;
      difference.field = b[i].name;
      difference.after = FieldText(m_b, b[i]);
      m_out.push_back(std::move(difference));
    }
  }

  template <typename NodePath>
  void CompareKeys(const DescribedBlock& a, const DescribedBlock& b, NodePath& node_path,
                   std::size_t block) {
    const std::size_t common = std::min(a.keys.size(), b.keys.size());
    for (std::size_t i = 0; i < common; ++i) {
      const std::string key = "key " + std::to_string(i);
      if (a.keys[i].time != b.keys[i].time) {
        Difference difference = At(node_path(), m_a.BlockPath(block));
        difference.field = key + " time";
        difference.before = std::to_string(a.keys[i].time);
        difference.after = std::to_string(b.keys[i].time);
        m_out.push_back(std::move(difference));
      }
      // Compared as text, so that two NaNs read as equal, as they print.
      if (NumberText(a.keys[i].value) != NumberText(b.keys[i].value)) {
        Difference difference = At(node_path(), m_a.BlockPath(block));
        difference.field = key + " value";
        difference.before = NumberText(a.keys[i].value);
        difference.after = NumberText(b.keys[i].value);
        m_out.push_back(std::move(difference));
      }
    }
    for (std::size_t i = common; i < a.keys.size(); ++i) {
      Difference difference = At(node_path(), m_a.BlockPath(block));
      difference.kind = Difference::kRemoved;
      difference.field = "key " + std::to_string(i);
      difference.before = KeyText(a.keys[i]);
      m_out.push_back(std::move(difference));
    }
    for (std::size_t i = common; i < b.keys.size(); ++i) {
      Difference difference = At(node_path(), m_a.BlockPath(block));
      difference.kind = Difference::kAdded;
      difference.field = "key " + std::to_string(i);
      difference.after = KeyText(b.keys[i]);
      m_out.push_back(std::move(difference));
    }
  }

  void AddNodeDifference(Difference::Kind kind, const SceneDescription& scene, std::size_t node) {
    Difference difference = At(scene.NodePath(node), "");
    difference.kind = kind;
    // Counted with a stack: the subtree may be a chain of any length.
    std::vector<std::size_t> stack(scene.nodes[node].children);
    while (!stack.empty()) {
      const std::size_t next = stack.back();
      stack.pop_back();
      ++difference.nodes_below;
      const std::vector<std::size_t>& children = scene.nodes[next].children;
      stack.insert(stack.end(), children.begin(), children.end());
    }
    m_out.push_back(std::move(difference));
  }

  static Difference At(const std::string& node, std::string block) {
    Difference difference;
    difference.node = node;
    difference.block = std::move(block);
    return difference;
  }

  const SceneDescription& m_a;
  const SceneDescription& m_b;
  std::vector<Difference> m_out;
};

}  // namespace

const char* KindName(Difference::Kind kind) {
  switch (kind) {
    case Difference::kNodeAdded:
      return "node_added";
    case Difference::kNodeRemoved:
      return "node_removed";
    case Difference::kBlockAdded:
      return "block_added";
    case Difference::kBlockRemoved:
      return "block_removed";
    case Difference::kClassChanged:
      return "class_changed";
    case Difference::kChanged:
      return "changed";
    case Difference::kAdded:
      return "added";
    case Difference::kRemoved:
      return "removed";
  }
  return "";
}

std::vector<Difference> DiffScenes(const SceneDescription& a, const SceneDescription& b) {
  return Differ(a, b).Run();
}

std::string FormatDifference(const Difference& difference) {
  if (difference.kind == Difference::kNodeAdded || difference.kind == Difference::kNodeRemoved) {
    std::string line =
        difference.node +
        (difference.kind == Difference::kNodeAdded ? ": node added" : ": node removed");
    if (difference.nodes_below != 0) {
      line += ", with " + std::to_string(difference.nodes_below) +
              (difference.nodes_below == 1 ? " node below" : " nodes below");
    }
    return line;
  }
  std::string line = difference.block.empty() ? difference.node + ":"
                                              : difference.node + " [" + difference.block + "]";
  const std::string field = difference.field.empty() ? "value" : difference.field;
  switch (difference.kind) {
    case Difference::kBlockAdded:
      return line + " added: " + difference.after;
    case Difference::kBlockRemoved:
      return line + " removed: " + difference.before;
    case Difference::kClassChanged:
      return line + " class " + difference.before + " -> " + difference.after;
    case Difference::kAdded:
      return line + " " + field + " added: " + difference.after;
    case Difference::kRemoved:
      return line + " " + field + " removed: " + difference.before;
    default:
      break;
  }
  if (!difference.field.empty()) line += " " + difference.field;
  return line + " " + difference.before + " -> " + difference.after;
}

}  // namespace Orlo::cli
