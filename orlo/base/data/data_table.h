// Defines DataTable, the block that holds the parameters of another block, and its factory
// DataTableFactory.
//
// The table's dependency slots hold data values (Data), each found by its own parameter id
// through the id-to-index map. The owning block keeps the table in a slot named "data_table";
// the table owns its values through the block graph. A change reported by any of its values
// becomes one event of the table itself, code 3 with the parameter id, so the owner learns
// which parameter changed.
//
//   DataTable* table = new DataTable(true);
//   table->AddDataFloat(0, 1.0, 1);      // parameter 0: one double, 1.0
//   table->SetValue(0, 2.5, 0, 0);       // posts code 3, parameter 0, from the table
//   double value = table->GetFloat(0, 0, 0);
//
// A by-id operation fails (with the failure value it documents) for an id that is negative,
// beyond the map, or whose map entry is -1; it never reads outside the map or the slots.
#pragma once

#include <string>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/block/block_factory.h>
#include <orlo/base/block/internal/typed_slot.h>
#include <orlo/support/color.h>
#include <orlo/support/point3.h>
#include <orlo/support/status.h>
#include <orlo/support/time_interval.h>

namespace Orlo {

class Controller;
class Data;

class DataTable : public Block {
 public:
  static constexpr BlockType m_block_type{205, 64, 16};

  // An empty table; the flag is not used.
  explicit DataTable(bool create_defaults = true);

  // ---- Block ----

  std::string GetClassName() const override;
  BlockType GetBlockType() const override;
  int NumDependencies() const override;
  // Raw store into an existing slot; the map is not rebuilt (UpdateIDToIndex does that).
  void SetDependency(int index, Block* block) override;
  Block* GetDependency(int index) const override;
  // The class name of the block in the slot ("DataFloat", ...); "no_dependency" for an empty
  // slot or an index outside the slots.
  std::string GetDependencyName(int index) const override;
  // 200, the class id every data value has.
  unsigned GetDependencyType(int index) const override;
  // A table with as many slots, where the copy of the data with id k sits in slot k. Relies on
  // dense ids: a slot number that is no id of this table stays empty, and a data whose id is
  // not below the slot count is not copied.
  Block* Clone() override;
  // Chunk 0x15 with the number of slots; the values travel as the table's dependencies.
  // Requires: save is not null.
  int Save(SceneSave* save) override;
  // Reads the slot count (new slots empty, the scene reader fills them). The map is not
  // rebuilt: the owner calls UpdateIDToIndex once the slots are linked.
  // Requires: load is not null.
  int Load(SceneLoad* load) override;
  void DeleteThis() override;
  // Turns any event of one of its values into code 3 with that value's parameter id, posted
  // once for each slot that holds the value; every other event is dropped.
  void ProcessEvent(BlockEvent event) override;
  using Block::ProcessEvent;

  // ---- Adding parameters ----
  // Each adds a new value with (id, default, size) in a new last slot and links it, unless
  // some value of the table already has `id`: then it returns false and changes nothing.

  bool AddDataBool(int id, bool default_value, int size);
  bool AddDataInt(int id, int default_value, int size);
  bool AddDataFloat(int id, double default_value, int size);
  bool AddDataPoint3(int id, Point3<double> default_value, int size);
  bool AddDataColor(int id, Color default_value, int size);
  bool AddDataString(int id, const std::string& default_value, int size);

  // ---- The id-to-index map ----

  // Rebuilds the map from the ids of the values in the slots: as long as the largest id plus
  // one, -1 where no value has that id; of two values with one id the later slot wins.
  void UpdateIDToIndex();
  // Entry k is the slot of the value with id k, or -1.
  const std::vector<int>& GetIDToIndex() const { return m_id_to_index; }

  // ---- By id ----

  // The value with this id, or null.
  Data* GetData(int id) const;
  // The id of the value in `slot`, or -1 outside the slots or for a slot without a value.
  int GetDataID(int slot) const;
  int GetNumDatas() const;
  // The value's name, or "Error".
  std::string GetDataName(int id) const;
  bool SetDataName(int id, const std::string& name);
  // The value's type code, or -1.
  int GetDataType(int id) const;
  // The value's element count, or -1.
  int GetDataSize(int id) const;
  // Records the id as last changed, then resizes the value; false for a failing id.
  bool SetDataSize(int id, int size);
  // The controller of element `index` of the value, or null. The name is kept as it is: host
  // code calls it by this name.
  Controller* GetAnimationContoller(int id, int index) const;
  // Records the id as last changed, then sets the value's controller; false for a failing id.
  bool SetController(int id, Controller* controller, int index);
  // Removes element `index` of the value (the value stays in the table). Code 2,
  // "Invalid DataTable id." for a failing id.
  Status Erase(int id, int index);
  // The id last set through SetValue, SetDataSize or SetController, or last reported by a
  // value's event; -1 until then.
  int GetLastDataChanged() const { return m_last_data_changed; }
  // Forever, narrowed by every value of the table.
  void GetTimeInterval(TimeInterval& interval) const;

  // Typed reads through the value's GetValue of the same type, into a start of false, 0,
  // 0.0, (0, 0, 0), (0, 0, 0), (0, 0, 0) or "": a type the value ignores gives that start.
  // A failing id gives false, -1, -1.0, (-1, -1, -1) or "".
  bool GetBool(int id, int time, int index) const;
  int GetInt(int id, int time, int index) const;
  double GetFloat(int id, int time, int index) const;
  Point3<double> GetPoint3F(int id, int time, int index) const;
  Point3<int> GetPoint3I(int id, int time, int index) const;
  Color GetColor(int id, int time, int index) const;
  std::string GetString(int id, int time, int index) const;

  // Read through the value's GetValue; a failing id gives code 2,
  // "DataTable::GetValue : The id value is out of range." and leaves `out` untouched.
  Status GetValue(int id, int& out, int time, int index) const;
  Status GetValue(int id, double& out, int time, int index) const;
  Status GetValue(int id, Point3<int>& out, int time, int index) const;
  Status GetValue(int id, Point3<double>& out, int time, int index) const;
  Status GetValue(int id, std::string& out, int time, int index) const;
  Status GetValue(int id, Color& out, int time, int index) const;
  Status GetValue(int id, bool& out, int time, int index) const;

  // Records the id as last changed, then stores through the value's SetValue (which posts
  // the change when the value takes that type). Success even when the value ignores the
  // type. A failing id gives code 2, "DataTable::SetValue : The id value is out of range."
  // and records nothing.
  Status SetValue(int id, int value, int time, int index);
  Status SetValue(int id, double value, int time, int index);
  Status SetValue(int id, Point3<int> value, int time, int index);
  Status SetValue(int id, Point3<double> value, int time, int index);
  Status SetValue(int id, const std::string& value, int time, int index);
  Status SetValue(int id, Color value, int time, int index);
  Status SetValue(int id, bool value, int time, int index);
  // A string literal would otherwise convert to bool and pick the bool form.
  Status SetValue(int id, const char* value, int time, int index);

 private:
  // A slot holds any block the graph put there, seen as a data value when it is one (the
  // scene reader links whatever a file says).
  using Slot = internal::TypedSlot<Data>;

  template <typename Member, typename Value>
  bool AddData(int id, Value default_value, int size);
  template <typename Value>
  Status ReadValue(int id, Value& out, int time, int index) const;
  template <typename Value>
  Status StoreValue(int id, const Value& value, int time, int index);
  template <typename Value>
  Value ReadTyped(int id, int time, int index, Value start, Value failure) const;

  std::vector<Slot> m_slots;
  // Entry k is the slot of the value whose id is k, or -1; may be stale after raw slot stores
  // until UpdateIDToIndex, so every use checks the slot again.
  std::vector<int> m_id_to_index;
  int m_last_data_changed = -1;
};

class DataTableFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override;
  // An empty table, whatever the flag.
  Block* GetBlock(bool create_defaults) const override;
  std::string GetName() const override;
};

}  // namespace Orlo
