// Block's attribute access: every block reaches its parameters by id through the table that
// GetDataTable returns.
#include <orlo/base/block/block.h>
#include <orlo/base/data/data_table.h>

namespace Orlo {

namespace {

constexpr char kGetAttribute[] = "Block::GetAttribute : This block doesn't support DataTable.";
constexpr char kSetAttribute[] = "Block::SetAttribute : This block doesn't support DataTable.";
constexpr char kGetFloatAttribute[] =
    "Block::GetFloatAttribute : This block doesn't support DataTable.";
constexpr char kGetIntegerAttribute[] =
    "Block::GetIntegerAttribute : This block doesn't support DataTable.";
constexpr char kGetBooleanAttribute[] =
    "Block::GetBooleanAttribute : This block doesn't support DataTable.";
constexpr char kGetColorAttribute[] =
    "Block::GetColorAttribute : This block doesn't support DataTable.";
constexpr char kGetStringAttribute[] =
    "Block::GetStringAttribute : This block doesn't support DataTable.";
// Kept as is: GetPoint3Attribute has never had a message of its own, and hosts match on the
// text they have always received.
constexpr const char* kGetPoint3Attribute = kGetColorAttribute;

// The status forms report success whenever the block has a table: the table's own answer is
// deliberately dropped, so an id the table rejects still reads as success here.
template <typename Value>
Status GetThroughTable(const Block& block, int id, Value& out, int time, int index) {
  DataTable* table = block.GetDataTable();
  if (table == nullptr) return Status(Status::kFailed, kGetAttribute);
  (void)table->GetValue(id, out, time, index);
  return Status();
}

template <typename Value>
Status SetThroughTable(const Block& block, int id, const Value& value, int time, int index) {
  DataTable* table = block.GetDataTable();
  if (table == nullptr) return Status(Status::kFailed, kSetAttribute);
  (void)table->SetValue(id, value, time, index);
  return Status();
}

// The value forms start from the zero of the type, which is also what an id the table
// rejects leaves.
template <typename Value>
Value ReadThroughTable(const Block& block, int id, int time, int index, Status* status,
                       const char* message) {
  Value value{};
  DataTable* table = block.GetDataTable();
  if (table == nullptr) {
    if (status != nullptr) status->Set(Status::kFailed, message);
    return value;
  }
  (void)table->GetValue(id, value, time, index);
  return value;
}

}  // namespace

Status Block::GetAttribute(int id, int& out, int time, int index) {
  return GetThroughTable(*this, id, out, time, index);
}

Status Block::GetAttribute(int id, double& out, int time, int index) {
  return GetThroughTable(*this, id, out, time, index);
}

Status Block::GetAttribute(int id, Point3<double>& out, int time, int index) {
  return GetThroughTable(*this, id, out, time, index);
}

Status Block::GetAttribute(int id, std::string& out, int time, int index) {
  return GetThroughTable(*this, id, out, time, index);
}

Status Block::GetAttribute(int id, Color& out, int time, int index) {
  return GetThroughTable(*this, id, out, time, index);
}

Status Block::GetAttribute(int id, bool& out, int time, int index) {
  return GetThroughTable(*this, id, out, time, index);
}

Status Block::SetAttribute(int id, int value, int time, int index) {
  return SetThroughTable(*this, id, value, time, index);
}

Status Block::SetAttribute(int id, double value, int time, int index) {
  return SetThroughTable(*this, id, value, time, index);
}

Status Block::SetAttribute(int id, const char* value, int time, int index) {
  return SetThroughTable(*this, id, std::string(value != nullptr ? value : ""), time, index);
}

Status Block::SetAttribute(int id, Point3<double> value, int time, int index) {
  return SetThroughTable(*this, id, value, time, index);
}

Status Block::SetAttribute(int id, const std::string& value, int time, int index) {
  return SetThroughTable(*this, id, value, time, index);
}

Status Block::SetAttribute(int id, Color value, int time, int index) {
  return SetThroughTable(*this, id, value, time, index);
}

Status Block::SetAttribute(int id, bool value, int time, int index) {
  return SetThroughTable(*this, id, value, time, index);
}

bool Block::GetBooleanAttribute(int id, int time, int index, Status* status) {
  return ReadThroughTable<bool>(*this, id, time, index, status, kGetBooleanAttribute);
}

int Block::GetIntegerAttribute(int id, int time, int index, Status* status) {
  return ReadThroughTable<int>(*this, id, time, index, status, kGetIntegerAttribute);
}

double Block::GetFloatAttribute(int id, int time, int index, Status* status) {
  return ReadThroughTable<double>(*this, id, time, index, status, kGetFloatAttribute);
}

Point3<double> Block::GetPoint3Attribute(int id, int time, int index, Status* status) {
  return ReadThroughTable<Point3<double>>(*this, id, time, index, status, kGetPoint3Attribute);
}

Color Block::GetColorAttribute(int id, int time, int index, Status* status) {
  return ReadThroughTable<Color>(*this, id, time, index, status, kGetColorAttribute);
}

std::string Block::GetStringAttribute(int id, int time, int index, Status* status) {
  return ReadThroughTable<std::string>(*this, id, time, index, status, kGetStringAttribute);
}

}  // namespace Orlo
