// Defines SceneFile, a scene file's chunk structure as the orlo tool inspects it, and
// ReadSceneFile, which reads it without creating a single block.
//
// A SceneFile owns a copy of the file's bytes and one BlockRecord per block chunk: the block's
// identity, where its payload lies and the numbers in its dependency chunk. Everything the
// reader finds wrong on the way (framing, chunks out of place) is kept as a FileProblem with
// the offset of the chunk it is about, and reading goes on wherever the framing allows, so
// that a damaged file still shows everything before the damage.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_type.h>
#include <orlo/support/status.h>

namespace Orlo::cli {

// One thing wrong with a file. `offset` is that of the header of the chunk concerned (0 for
// the file as a whole); `check` names the kind of check that found it.
struct FileProblem {
  std::uint64_t offset = 0;
  std::string check;
  std::string message;
};

// Kinds of checks, as they appear in FileProblem::check and in the tool's JSON output.
inline constexpr const char* kCheckFraming = "framing";
inline constexpr const char* kCheckHeader = "header";
inline constexpr const char* kCheckStructure = "structure";
inline constexpr const char* kCheckBlockNumber = "block_number";
inline constexpr const char* kCheckDependency = "dependency";
inline constexpr const char* kCheckCycle = "cycle";
inline constexpr const char* kCheckFactory = "factory";
inline constexpr const char* kCheckLoad = "load";

// One block chunk (0x15) of the scene chunk, in file order.
struct BlockRecord {
  // Offset of the block chunk's header, and where its content starts and ends.
  std::uint64_t offset = 0;
  std::uint64_t content_begin = 0;
  std::uint64_t content_end = 0;
  // The block-info chunk (0x05): the type and the saved number. Unset without one.
  bool has_info = false;
  BlockType type;
  std::uint32_t number = Block::kNoID;
  // The block-data chunk (0x20): where its content lies in the file.
  bool has_data = false;
  std::uint64_t data_begin = 0;
  std::uint64_t data_size = 0;
  // The dependency chunk (0x10): the number held in each slot, -1 for an empty one.
  bool has_dependencies = false;
  std::vector<std::int32_t> dependencies;
};

struct SceneFile {
  std::string path;
  std::vector<std::uint8_t> bytes;
  // The scene chunk (0x05) and its header chunk (0x10) with the block count.
  bool has_scene_chunk = false;
  bool has_header = false;
  std::uint32_t header_count = 0;
  std::vector<BlockRecord> blocks;
  // What the structure itself shows to be wrong, in file order.
  std::vector<FileProblem> problems;
  // Whether the chunk framing was intact to the end of the file: when false, `blocks` holds
  // only what came before the damage.
  bool framing_intact = true;
};

// Reads the file at `path`. Code 2 with "cannot read the file: <reason>" when it cannot be
// read at all; a file whose content is damaged reads successfully, with its problems listed.
[[nodiscard]] Status ReadSceneFile(const std::string& path, SceneFile* out);

// Reads a file's bytes already in memory; `path` only names it.
SceneFile ParseSceneFile(std::string path, std::vector<std::uint8_t> bytes);

// "chunk 0x0015 at offset 184", as the chunk reader names chunks in its messages.
std::string ChunkPlace(std::uint32_t id, std::uint64_t offset);

}  // namespace Orlo::cli
