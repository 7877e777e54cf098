#include "tools/orlo/scene_checks.h"

#include <map>
#include <string>
#include <tuple>

namespace Orlo::cli {

namespace {

void Add(std::vector<FileProblem>& problems, std::uint64_t offset, const char* check,
         std::string message) {
  problems.push_back(FileProblem{offset, check, std::move(message)});
}

std::string BlockPlace(const BlockRecord& record, std::size_t index) {
  return "block " + std::to_string(index) + " (" + ChunkPlace(0x15, record.offset) + ")";
}

bool InRange(std::int32_t number, std::size_t count) {
  return number >= 0 && static_cast<std::size_t>(number) < count;
}

// A loader links slot by slot, in file order, and refuses a link that would close a cycle.
// Each such link is found here as an edge back to a block on the current path of a
// depth-first walk from every block in file order, slots in order.
void CheckCycles(const SceneFile& file, BlockCatalog& catalog, std::vector<FileProblem>& problems) {
  const std::size_t count = file.blocks.size();
  enum class Mark { kNew, kOnPath, kDone };
  std::vector<Mark> marks(count, Mark::kNew);
  struct Frame {
    std::size_t block;
    std::size_t next_slot;
  };
  for (std::size_t root = 0; root < count; ++root) {
    if (marks[root] != Mark::kNew) continue;
    std::vector<Frame> stack{{root, 0}};
    marks[root] = Mark::kOnPath;
    while (!stack.empty()) {
      Frame& frame = stack.back();
      const std::vector<std::int32_t>& slots = file.blocks[frame.block].dependencies;
      if (frame.next_slot >= slots.size()) {
        marks[frame.block] = Mark::kDone;
        stack.pop_back();
        continue;
      }
      const std::size_t slot = frame.next_slot++;
      const std::int32_t target = slots[slot];
      if (!InRange(target, count)) continue;
      const auto next = static_cast<std::size_t>(target);
      if (marks[next] == Mark::kOnPath) {
        const std::string slot_name = catalog.SlotNames(file, frame.block)[slot];
        Add(problems, file.blocks[frame.block].offset, kCheckCycle,
            BlockPlace(file.blocks[frame.block], frame.block) + ": slot " + slot_name +
                " links block " + std::to_string(next) +
                ", which would close a cycle; a loader refuses the link");
      } else if (marks[next] == Mark::kNew) {
        marks[next] = Mark::kOnPath;
        stack.push_back({next, 0});
      }
    }
  }
}

}  // namespace

std::vector<FileProblem> CheckSceneFile(const SceneFile& file, BlockCatalog& catalog) {
  std::vector<FileProblem> problems = file.problems;
  const std::size_t count = file.blocks.size();

  if (file.has_header && file.header_count == 0) {
    Add(problems, 0, kCheckHeader, "the header counts no block: a loader reads none");
  } else if (file.has_header && file.header_count != count && file.framing_intact) {
    Add(problems, 0, kCheckHeader,
        "the header counts " + std::to_string(file.header_count) +
            " blocks but the scene chunk holds " + std::to_string(count));
  }

  // A loader sizes its tables by the header's count; in a file cut short, links to the blocks
  // lost with the rest of the file are the cut's problem, already reported, not theirs.
  const std::size_t blocks_counted = file.has_header ? file.header_count : count;
  for (std::size_t i = 0; i < count; ++i) {
    const BlockRecord& record = file.blocks[i];
    if (record.has_info && record.number != i) {
      // A loader links blocks by their position in the file, and files its blocks by number.
      Add(problems, record.offset, kCheckBlockNumber,
          BlockPlace(record, i) + ": holds block number " + std::to_string(record.number) +
              "; the block at position " + std::to_string(i) + " must be numbered " +
              std::to_string(i));
    }
    const std::vector<std::string> slots = catalog.SlotNames(file, i);
    for (std::size_t slot = 0; slot < record.dependencies.size(); ++slot) {
      const std::int32_t target = record.dependencies[slot];
      if (target != -1 && !InRange(target, blocks_counted)) {
        Add(problems, record.offset, kCheckDependency,
            BlockPlace(record, i) + ": slot " + slots[slot] + " holds block number " +
                std::to_string(target) + ", outside the file's " + std::to_string(blocks_counted) +
                " blocks");
      }
    }
  }

  CheckCycles(file, catalog, problems);

  // One problem per class, at its first block.
  struct Missing {
    std::size_t first = 0;
    std::size_t blocks = 0;
  };
  std::map<std::tuple<unsigned, unsigned, unsigned>, Missing> missing;
  std::vector<std::tuple<unsigned, unsigned, unsigned>> order;
  for (std::size_t i = 0; i < count; ++i) {
    const BlockRecord& record = file.blocks[i];
    if (!record.has_info || BlockCatalog::FindFactory(record.type) != nullptr) continue;
    const auto key =
        std::make_tuple(record.type.class_id, record.type.super_class_id, record.type.sub_id);
    auto [entry, added] = missing.emplace(key, Missing{i, 0});
    if (added) order.push_back(key);
    ++entry->second.blocks;
  }
  for (const auto& key : order) {
    const Missing& entry = missing[key];
    const BlockRecord& record = file.blocks[entry.first];
    Add(problems, record.offset, kCheckFactory,
        "no factory registered for class " + TypeText(record.type) + " (" +
            std::to_string(entry.blocks) +
            (entry.blocks == 1 ? " block, first " : " blocks, first ") +
            BlockPlace(record, entry.first) + ")");
  }
  return problems;
}

}  // namespace Orlo::cli
