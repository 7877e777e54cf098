#include <orlo/base/controllers/bezier_controller.h>

#include <cassert>
#include <cstddef>
#include <memory>

#include <orlo/support/internal/chunk_format.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

namespace Orlo {

namespace {

// Payload of a controller:
//   0x0010  key count (int32), then one key chunk 0x0005 per key, in list order
//   0x0015  default value (double)
// Payload of a key chunk 0x0005:
//   0x0010  time (int32)
//   0x0015  value (double)
// Format history, newest first:
//   1: the layout above.
constexpr unsigned kKeysChunk = 0x0010;
constexpr unsigned kDefaultValueChunk = 0x0015;
constexpr unsigned kKeyChunk = 0x0005;
constexpr unsigned kKeyTimeChunk = 0x0010;
constexpr unsigned kKeyValueChunk = 0x0015;

// The smallest key chunk a file can hold: a bare header (a key chunk whose sub-chunks are
// missing loads as the zeroed key). A key count is checked against it before the list grows,
// so the list never takes more memory than a small multiple of the file's own bytes.
constexpr std::uint64_t kSmallestKeyChunkBytes = internal::kChunkHeaderBytes;

constexpr char kNoDependency[] = "no_dependency";

}  // namespace

// ---- BezierKey ----

int BezierKey::Save(SceneSave* save) const {
  assert(save != nullptr);
  save->BeginChunk(kKeyChunk);
  save->BeginChunk(kKeyTimeChunk);
  save->WriteInt32(time);
  save->EndChunk();
  save->BeginChunk(kKeyValueChunk);
  save->WriteDouble(value);
  save->EndChunk();
  save->EndChunk();
  return 1;
}

int BezierKey::Load(SceneLoad* load) {
  assert(load != nullptr);
  if (load->OpenChunk() != SceneLoad::kChunkOpened) return 0;
  if (load->CurChunkID() != kKeyChunk) {
    // Closed again so that the caller's reader stays at the depth it expects.
    load->CloseChunk();
    return 0;
  }
  int result;
  while ((result = load->OpenChunk()) == SceneLoad::kChunkOpened) {
    switch (load->CurChunkID()) {
      case kKeyTimeChunk:
        load->ReadInt32(time);
        break;
      case kKeyValueChunk:
        load->ReadDouble(value);
        break;
      default:
        break;
    }
    load->CloseChunk();
  }
  load->CloseChunk();
  return result != SceneLoad::kError ? 1 : 0;
}

// ---- BezierController ----

BezierController::BezierController(double default_value, bool) : m_default_value(default_value) {}

std::string BezierController::GetClassName() const { return "FloatController"; }

BlockType BezierController::GetBlockType() const { return m_block_type; }

int BezierController::NumDependencies() const { return 0; }

void BezierController::SetDependency(int, Block*) {}

Block* BezierController::GetDependency(int) const { return nullptr; }

std::string BezierController::GetDependencyName(int) const { return kNoDependency; }

Block* BezierController::Clone() {
  auto* clone = new BezierController(m_default_value, true);
  if (m_keys != nullptr) clone->m_keys = std::make_unique<std::vector<BezierKey>>(*m_keys);
  return clone;
}

int BezierController::Save(SceneSave* save) {
  assert(save != nullptr);
  save->BeginChunk(kKeysChunk);
  const std::vector<BezierKey>& keys = GetKeys();
  save->WriteInt32(static_cast<std::int32_t>(keys.size()));
  for (const BezierKey& key : keys) key.Save(save);
  save->EndChunk();
  save->BeginChunk(kDefaultValueChunk);
  save->WriteDouble(m_default_value);
  save->EndChunk();
  return 1;
}

int BezierController::Load(SceneLoad* load) {
  assert(load != nullptr);
  int result;
  while ((result = load->OpenChunk()) == SceneLoad::kChunkOpened) {
    switch (load->CurChunkID()) {
      case kKeysChunk: {
        std::int32_t count = 0;
        load->ReadInt32(count);
        if (count > 0 &&
            static_cast<std::uint64_t>(count) > load->BytesLeftInChunk() / kSmallestKeyChunkBytes) {
          load->ReportCorruption("BezierController::Load : key count " + std::to_string(count) +
                                 " exceeds what its chunk can hold");
          load->CloseChunk();
          return 0;
        }
        // Kept as is: a negative count is widened with its sign, so the resize asks for an
        // impossible size and throws std::length_error, which callers already expect from
        // the containers.
        std::vector<BezierKey>& keys = MutableKeys();
        keys.resize(static_cast<std::size_t>(static_cast<std::ptrdiff_t>(count)));
        // A key chunk that is missing or of another kind leaves its key as it was.
        for (BezierKey& key : keys) (void)key.Load(load);
        break;
      }
      case kDefaultValueChunk:
        load->ReadDouble(m_default_value);
        break;
      default:
        break;
    }
    load->CloseChunk();
  }
  return result != SceneLoad::kError ? 1 : 0;
}

void BezierController::DeleteThis() { delete this; }

namespace {

// The value of a non-empty key list at `time`, with the times compared as `Time`.
// Kept as is, comparison of the time with the previous key's value included: existing scenes
// are animated by exactly this rule. The first key at the time gives its value; otherwise the
// mean of the last later key's value and, when the time exceeds the value of the key before
// that one, of that key's value.
template <typename Time>
double EvaluateKeys(const std::vector<BezierKey>& keys, Time time) {
  for (const BezierKey& key : keys) {
    if (static_cast<Time>(key.time) == time) return key.value;
  }
  double next = 0.0;
  double prev = 0.0;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (time < static_cast<Time>(keys[i].time)) {
      next = keys[i].value;
      if (i > 0 && static_cast<double>(time) > keys[i - 1].value) prev = keys[i - 1].value;
    }
  }
  return (prev + next) * 0.5;
}

}  // namespace

double BezierController::GetFloat(int time) {
  // Without keys only time 0 gives the default value; any other time gives 0.0.
  const std::vector<BezierKey>& keys = GetKeys();
  if (keys.empty()) return time == 0 ? m_default_value : 0.0;
  return EvaluateKeys<int>(keys, time);
}

double BezierController::GetKey(unsigned int time) const {
  const std::vector<BezierKey>& keys = GetKeys();
  if (keys.empty()) return 0.0;
  return EvaluateKeys<unsigned int>(keys, time);
}

void BezierController::SetFloat(int time, double value) {
  if (GetKeys().empty()) {
    if (time == 0) {
      m_default_value = value;
    } else {
      // The default value becomes the key at time 0.
      MutableKeys() = {BezierKey(0, m_default_value), BezierKey(time, value)};
    }
  } else {
    InsertOrReplace(BezierKey(time, value));
  }
  PostEvent(3, 0);
}

// Kept as is: unlike SetFloat, SetKey posts no event; callers that fill keys in bulk rely on
// it.
void BezierController::SetKey(BezierKey key) {
  if (GetKeys().empty() && key.time != 0) {
    // The same two keys as SetFloat makes; the second key is already in place.
    MutableKeys() = {BezierKey(0, m_default_value), key};
    return;
  }
  InsertOrReplace(key);
}

const std::vector<BezierKey>& BezierController::GetKeys() const {
  static const std::vector<BezierKey> kNoKeys;
  return m_keys != nullptr ? *m_keys : kNoKeys;
}

std::vector<BezierKey>& BezierController::MutableKeys() {
  if (m_keys == nullptr) m_keys = std::make_unique<std::vector<BezierKey>>();
  return *m_keys;
}

void BezierController::InsertOrReplace(BezierKey key) {
  std::vector<BezierKey>& keys = MutableKeys();
  for (auto it = keys.begin(); it != keys.end(); ++it) {
    if (it->time == key.time) {
      *it = key;
      return;
    }
    if (it->time > key.time) {
      keys.insert(it, key);
      return;
    }
  }
  keys.push_back(key);
}

// ---- BezierControllerFactory ----

BlockType BezierControllerFactory::GetBlockType() const { return BezierController::m_block_type; }

Block* BezierControllerFactory::GetBlock(bool) const { return new BezierController(0.0, true); }

std::string BezierControllerFactory::GetName() const { return "BezierKeysController"; }

}  // namespace Orlo
