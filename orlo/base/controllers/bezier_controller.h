// Defines BezierController, the keyed scalar controller, its key BezierKey and its factory
// BezierControllerFactory.
//
// A BezierController owns its keys by value and depends on no other block; like every block
// it is owned by the dependency graph (see Block). Despite the name it evaluates no curve:
// between keys it takes a midpoint of neighbouring values (see GetFloat).
//
//   auto* x = new BezierController(1.0, true);
//   x->SetFloat(10, 2.0);   // keys (0, 1.0), (10, 2.0); posts code 3
//   x->GetFloat(5);         // 1.5
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <orlo/base/block/block_factory.h>
#include <orlo/base/controllers/float_controller.h>

namespace Orlo {

class SceneLoad;
class SceneSave;

// One key: a value at a time.
struct BezierKey {
  std::int32_t time = 0;
  double value = 0.0;

  BezierKey() = default;
  BezierKey(std::int32_t key_time, double key_value) : time(key_time), value(key_value) {}

  // Writes the key chunk 0x0005 (time in 0x0010, value in 0x0015). Returns 1.
  // Requires: save is not null.
  int Save(SceneSave* save) const;
  // Reads one key chunk. Returns 0, reading nothing, when no chunk opens; a chunk that is
  // not a key chunk is closed again and gives 0. Otherwise 1, or 0 when the reader failed
  // inside the key.
  // Requires: load is not null.
  int Load(SceneLoad* load);

  bool operator==(const BezierKey& other) const {
    return time == other.time && value == other.value;
  }
  bool operator!=(const BezierKey& other) const { return !(*this == other); }
};

class BezierController : public FloatController {
 public:
  static constexpr BlockType m_block_type{300, 48, 16};

  // The flag is accepted and ignored: the controller has no sub-blocks to create.
  explicit BezierController(double default_value = 0.0, bool create_defaults = true);

  // "FloatController", the base class's name: kept as is, existing hosts rely on it.
  std::string GetClassName() const override;
  BlockType GetBlockType() const override;
  // No dependencies: every index reads as null and names "no_dependency".
  int NumDependencies() const override;
  void SetDependency(int index, Block* block) override;
  Block* GetDependency(int index) const override;
  std::string GetDependencyName(int index) const override;
  // A new controller with the same default value and the same keys in order.
  Block* Clone() override;
  // Chunk 0x0010: the key count, then one key chunk per key; chunk 0x0015: the default value.
  // Requires: save is not null.
  int Save(SceneSave* save) override;
  // Reads what Save wrote. A key count larger than its chunk can hold is reported as
  // corruption (returns 0) before anything is allocated.
  // Requires: load is not null.
  int Load(SceneLoad* load) override;
  void DeleteThis() override;

  // The value at `time`:
  //  - no keys: the default value at time 0, and 0.0 at any other time;
  //  - a key at exactly `time`: its value (the first such in the list);
  //  - otherwise (prev + next) / 2, where, over every key in list order, a key later than
  //    `time` sets next to its value and, when `time` is greater than the previous key's
  //    value, prev to that value. So a time after the last key gives 0.0.
  // Kept as is, comparison of a time with a value included: existing scenes are animated by
  // exactly this rule.
  double GetFloat(int time) override;
  // Sets the value at `time` and posts code 3: on an empty controller, time 0 sets the default
  // value, and any other time makes the keys (0, default value), (time, value).
  void SetFloat(int time, double value) override;

  // GetFloat with the times compared as unsigned numbers, and without its time-0 rule for an
  // empty controller (which gives 0.0 there too).
  double GetKey(unsigned int time) const;
  // Inserts or replaces a key, posting no event. On an empty controller a key at a non-zero
  // time also brings in the key (0, default value); a key at time 0 becomes the only key and
  // leaves the default value alone.
  void SetKey(BezierKey key);

  double GetDefaultValue() const { return m_default_value; }
  const std::vector<BezierKey>& GetKeys() const;

 private:
  // Creates the key list when the controller has none yet.
  std::vector<BezierKey>& MutableKeys();

  // Replaces the first key at the same time, inserts before the first later key, or appends.
  void InsertOrReplace(BezierKey key);

  double m_default_value = 0.0;
  // The setters keep one key per time in ascending order, except that the first key set on
  // an empty controller always follows the key (0, default value), even at a negative time.
  // A loaded list keeps the file's order. Most controllers never get a key, so the list is
  // only allocated with its first one; null means no keys.
  std::unique_ptr<std::vector<BezierKey>> m_keys;
};

class BezierControllerFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override;
  // A controller with default value 0.0 and no keys, whatever the flag.
  Block* GetBlock(bool create_defaults) const override;
  // "BezierKeysController", unlike the class name: both names are relied on as they are.
  std::string GetName() const override;
};

}  // namespace Orlo
