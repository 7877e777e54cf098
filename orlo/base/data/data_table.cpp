#include <orlo/base/data/data_table.h>

#include <cassert>
#include <cstdint>

#include <orlo/base/block/internal/saved_slots.h>
#include <orlo/base/data/data.h>
#include <orlo/base/data/data_bool.h>
#include <orlo/base/data/data_color.h>
#include <orlo/base/data/data_float.h>
#include <orlo/base/data/data_int.h>
#include <orlo/base/data/data_point3.h>
#include <orlo/base/data/data_string.h>
#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

namespace Orlo {

namespace {

// Payload of a table. Format history, newest first:
//   v1: chunk 0x15 with the number of slots.
constexpr unsigned kSlotCountChunk = 0x15;

constexpr char kGetValueOutOfRange[] = "DataTable::GetValue : The id value is out of range.";
constexpr char kSetValueOutOfRange[] = "DataTable::SetValue : The id value is out of range.";
constexpr char kEraseInvalidID[] = "Invalid DataTable id.";

}  // namespace

DataTable::DataTable(bool) {}

// ---- Block ----

std::string DataTable::GetClassName() const { return "DataTable"; }

BlockType DataTable::GetBlockType() const { return m_block_type; }

int DataTable::NumDependencies() const { return static_cast<int>(m_slots.size()); }

void DataTable::SetDependency(int index, Block* block) {
  if (index < 0 || index >= NumDependencies()) return;
  // The one place a slot learns what it holds: a block that is not a data value stays in its
  // slot, so the graph can release it, but no by-id operation ever sees it.
  m_slots[static_cast<std::size_t>(index)].Set(block);
}

Block* DataTable::GetDependency(int index) const {
  if (index < 0 || index >= NumDependencies()) return nullptr;
  return m_slots[static_cast<std::size_t>(index)].Raw();
}

std::string DataTable::GetDependencyName(int index) const {
  Block* block = GetDependency(index);
  return block != nullptr ? block->GetClassName() : "no_dependency";
}

unsigned DataTable::GetDependencyType(int) const { return 200; }

Block* DataTable::Clone() {
  auto* copy = new DataTable(true);
  copy->m_slots.resize(m_slots.size());
  for (int k = 0; k < NumDependencies(); ++k) {
    Data* source = GetData(k);
    if (source == nullptr) continue;
    // The copy's slots are fresh: the link cannot close a cycle.
    (void)copy->MakeDependencyByID(k, source->Clone());
  }
  copy->UpdateIDToIndex();
  return copy;
}

int DataTable::Save(SceneSave* save) {
  assert(save != nullptr);
  save->BeginChunk(kSlotCountChunk);
  save->WriteInt32(NumDependencies());
  save->EndChunk();
  return 1;
}

int DataTable::Load(SceneLoad* load) {
  assert(load != nullptr);
  int opened = SceneLoad::kError;
  while ((opened = load->OpenChunk()) == SceneLoad::kChunkOpened) {
    if (load->CurChunkID() == kSlotCountChunk) {
      std::size_t count = 0;
      if (!internal::ReadListSlotCount(load, "DataTable slot", count)) {
        load->CloseChunk();
        return 0;
      }
      // Slots dropped from the end release what they held, so nothing is left half-linked.
      for (int i = NumDependencies() - 1; i >= static_cast<int>(count); --i) DeleteDependency(i);
      m_slots.resize(count);
    }
    load->CloseChunk();
  }
  return opened == SceneLoad::kError ? 0 : 1;
}

void DataTable::DeleteThis() { delete this; }

void DataTable::ProcessEvent(BlockEvent event) {
  if (event.block == nullptr) return;
  // Indexed and re-read: a listener may change the table while the event travels.
  for (std::size_t s = 0; s < m_slots.size(); ++s) {
    const Slot& slot = m_slots[s];
    const Data* data = slot.Get();
    if (data == nullptr || slot.Raw() != event.block) continue;
    const int id = data->GetParameterID();
    m_last_data_changed = id;
    PostEvent(BlockEvent(this, 3, id));
  }
}

// ---- Adding parameters ----

template <typename Member, typename Value>
bool DataTable::AddData(int id, Value default_value, int size) {
  // Refreshing a table asks for every id it holds again: the id map usually finds the holder
  // at once. It may be stale (it is rebuilt only on request), so its answer is checked, and
  // only a found holder spares the search.
  if (const Data* mapped = GetData(id); mapped != nullptr && mapped->GetParameterID() == id) {
    return false;
  }
  for (const Slot& slot : m_slots) {
    if (slot.Get() != nullptr && slot.Get()->GetParameterID() == id) return false;
  }
  const int index = NumDependencies();
  m_slots.emplace_back();
  // A new block cannot close a cycle, so the link cannot be refused.
  (void)MakeDependencyByID(index, new Member(id, std::move(default_value), size));
  UpdateIDToIndex();
  return true;
}

bool DataTable::AddDataBool(int id, bool default_value, int size) {
  return AddData<DataBool>(id, default_value, size);
}

bool DataTable::AddDataInt(int id, int default_value, int size) {
  return AddData<DataInt>(id, default_value, size);
}

bool DataTable::AddDataFloat(int id, double default_value, int size) {
  return AddData<DataFloat>(id, default_value, size);
}

bool DataTable::AddDataPoint3(int id, Point3<double> default_value, int size) {
  return AddData<DataPoint3>(id, default_value, size);
}

bool DataTable::AddDataColor(int id, Color default_value, int size) {
  return AddData<DataColor>(id, default_value, size);
}

bool DataTable::AddDataString(int id, const std::string& default_value, int size) {
  return AddData<DataString>(id, default_value, size);
}

// ---- The id-to-index map ----

void DataTable::UpdateIDToIndex() {
  int largest = -1;
  for (const Slot& slot : m_slots) {
    if (slot.Get() != nullptr && slot.Get()->GetParameterID() > largest) {
      largest = slot.Get()->GetParameterID();
    }
  }
  m_id_to_index.assign(static_cast<std::size_t>(largest) + 1, -1);
  for (std::size_t s = 0; s < m_slots.size(); ++s) {
    const Data* data = m_slots[s].Get();
    if (data == nullptr || data->GetParameterID() < 0) continue;
    m_id_to_index[static_cast<std::size_t>(data->GetParameterID())] = static_cast<int>(s);
  }
}

// ---- By id ----

Data* DataTable::GetData(int id) const {
  if (id < 0 || static_cast<std::size_t>(id) >= m_id_to_index.size()) return nullptr;
  const int slot = m_id_to_index[static_cast<std::size_t>(id)];
  if (slot < 0 || slot >= NumDependencies()) return nullptr;
  return m_slots[static_cast<std::size_t>(slot)].Get();
}

int DataTable::GetDataID(int slot) const {
  if (slot < 0 || slot >= NumDependencies()) return -1;
  const Data* data = m_slots[static_cast<std::size_t>(slot)].Get();
  return data != nullptr ? data->GetParameterID() : -1;
}

int DataTable::GetNumDatas() const { return NumDependencies(); }

std::string DataTable::GetDataName(int id) const {
  const Data* data = GetData(id);
  return data != nullptr ? data->GetName() : "Error";
}

bool DataTable::SetDataName(int id, const std::string& name) {
  Data* data = GetData(id);
  if (data == nullptr) return false;
  data->SetName(name);
  return true;
}

int DataTable::GetDataType(int id) const {
  const Data* data = GetData(id);
  return data != nullptr ? data->GetType() : -1;
}

int DataTable::GetDataSize(int id) const {
  const Data* data = GetData(id);
  return data != nullptr ? data->GetSize() : -1;
}

bool DataTable::SetDataSize(int id, int size) {
  Data* data = GetData(id);
  if (data == nullptr) return false;
  m_last_data_changed = id;
  data->SetSize(size);
  return true;
}

Controller* DataTable::GetAnimationContoller(int id, int index) const {
  const Data* data = GetData(id);
  return data != nullptr ? data->GetController(index) : nullptr;
}

bool DataTable::SetController(int id, Controller* controller, int index) {
  Data* data = GetData(id);
  if (data == nullptr) return false;
  m_last_data_changed = id;
  data->SetController(controller, index);
  return true;
}

Status DataTable::Erase(int id, int index) {
  Data* data = GetData(id);
  if (data == nullptr) return Status(Status::kFailed, kEraseInvalidID);
  data->Erase(index);
  return Status();
}

void DataTable::GetTimeInterval(TimeInterval& interval) const {
  interval = TimeInterval::Forever();
  for (const Slot& slot : m_slots) {
    if (slot.Get() != nullptr) slot.Get()->GetTimeInterval(interval);
  }
}

// ---- Typed reads ----

template <typename Value>
Value DataTable::ReadTyped(int id, int time, int index, Value start, Value failure) const {
  const Data* data = GetData(id);
  if (data == nullptr) return failure;
  data->GetValue(start, time, index);
  return start;
}

bool DataTable::GetBool(int id, int time, int index) const {
  return ReadTyped<bool>(id, time, index, false, false);
}

int DataTable::GetInt(int id, int time, int index) const {
  return ReadTyped<int>(id, time, index, 0, -1);
}

double DataTable::GetFloat(int id, int time, int index) const {
  return ReadTyped<double>(id, time, index, 0.0, -1.0);
}

Point3<double> DataTable::GetPoint3F(int id, int time, int index) const {
  return ReadTyped<Point3<double>>(id, time, index, {}, {-1.0, -1.0, -1.0});
}

Point3<int> DataTable::GetPoint3I(int id, int time, int index) const {
  return ReadTyped<Point3<int>>(id, time, index, {}, {-1, -1, -1});
}

Color DataTable::GetColor(int id, int time, int index) const {
  return ReadTyped<Color>(id, time, index, {}, {-1.0f, -1.0f, -1.0f});
}

std::string DataTable::GetString(int id, int time, int index) const {
  return ReadTyped<std::string>(id, time, index, {}, {});
}

// ---- Status forms ----

template <typename Value>
Status DataTable::ReadValue(int id, Value& out, int time, int index) const {
  const Data* data = GetData(id);
  if (data == nullptr) return Status(Status::kFailed, kGetValueOutOfRange);
  data->GetValue(out, time, index);
  return Status();
}

template <typename Value>
Status DataTable::StoreValue(int id, const Value& value, int time, int index) {
  Data* data = GetData(id);
  if (data == nullptr) return Status(Status::kFailed, kSetValueOutOfRange);
  m_last_data_changed = id;
  data->SetValue(value, time, index);
  return Status();
}

Status DataTable::GetValue(int id, int& out, int time, int index) const {
  return ReadValue(id, out, time, index);
}

Status DataTable::GetValue(int id, double& out, int time, int index) const {
  return ReadValue(id, out, time, index);
}

Status DataTable::GetValue(int id, Point3<int>& out, int time, int index) const {
  return ReadValue(id, out, time, index);
}

Status DataTable::GetValue(int id, Point3<double>& out, int time, int index) const {
  return ReadValue(id, out, time, index);
}

Status DataTable::GetValue(int id, std::string& out, int time, int index) const {
  return ReadValue(id, out, time, index);
}

Status DataTable::GetValue(int id, Color& out, int time, int index) const {
  return ReadValue(id, out, time, index);
}

Status DataTable::GetValue(int id, bool& out, int time, int index) const {
  return ReadValue(id, out, time, index);
}

Status DataTable::SetValue(int id, int value, int time, int index) {
  return StoreValue(id, value, time, index);
}

Status DataTable::SetValue(int id, double value, int time, int index) {
  return StoreValue(id, value, time, index);
}

Status DataTable::SetValue(int id, Point3<int> value, int time, int index) {
  return StoreValue(id, value, time, index);
}

Status DataTable::SetValue(int id, Point3<double> value, int time, int index) {
  return StoreValue(id, value, time, index);
}

Status DataTable::SetValue(int id, const std::string& value, int time, int index) {
  return StoreValue(id, value, time, index);
}

Status DataTable::SetValue(int id, Color value, int time, int index) {
  return StoreValue(id, value, time, index);
}

Status DataTable::SetValue(int id, bool value, int time, int index) {
  return StoreValue(id, value, time, index);
}

Status DataTable::SetValue(int id, const char* value, int time, int index) {
  return StoreValue(id, std::string(value != nullptr ? value : ""), time, index);
}

// ---- Factory ----

BlockType DataTableFactory::GetBlockType() const { return DataTable::m_block_type; }

Block* DataTableFactory::GetBlock(bool) const { return new DataTable(true); }

std::string DataTableFactory::GetName() const { return "DataTable"; }

}  // namespace Orlo
