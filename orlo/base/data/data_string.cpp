#include <orlo/base/data/data_string.h>

#include <utility>

namespace Orlo {

DataString::DataString(int id, std::string default_value, int size)
    : DataArray(id, std::move(default_value), size) {}

std::string DataString::GetClassName() const { return "DataString"; }

BlockType DataString::GetBlockType() const { return m_block_type; }

Block* DataString::Clone() { return CloneAs<DataString>(); }

int DataString::GetType() const { return kTypeString; }

void DataString::GetValue(std::string& out, int, int index) const { out = At(index); }

std::string DataString::GetString(int, int index) const { return At(index); }

int DataString::GetInt(int, int) const { return 0; }

double DataString::GetFloat(int, int) const { return 0.0; }

void DataString::SetValue(const std::string& value, int, int index) { Store(index, value); }

void DataString::GetTimeInterval(TimeInterval&) const {}

BlockType DataStringFactory::GetBlockType() const { return DataString::m_block_type; }

Block* DataStringFactory::GetBlock(bool) const { return new DataString(-1, std::string(), 1); }

std::string DataStringFactory::GetName() const { return "DataString"; }

}  // namespace Orlo
