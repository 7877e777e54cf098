#include <orlo/base/data/data_bool.h>

namespace Orlo {

DataBool::DataBool(int id, bool default_value, int size) : DataArray(id, default_value, size) {}

std::string DataBool::GetClassName() const { return "DataBool"; }

BlockType DataBool::GetBlockType() const { return m_block_type; }

Block* DataBool::Clone() { return CloneAs<DataBool>(); }

int DataBool::GetType() const { return kTypeBool; }

void DataBool::GetValue(bool& out, int, int index) const { out = At(index); }

void DataBool::GetValue(int& out, int, int index) const { out = At(index) ? 1 : 0; }

void DataBool::GetValue(double& out, int, int index) const { out = At(index) ? 1.0 : 0.0; }

bool DataBool::GetBool(int, int index) const { return At(index); }

int DataBool::GetInt(int, int index) const { return At(index) ? 1 : 0; }

double DataBool::GetFloat(int, int index) const { return At(index) ? 1.0 : 0.0; }

void DataBool::SetValue(bool value, int, int index) { Store(index, value); }

void DataBool::SetValue(int value, int, int index) { Store(index, value != 0); }

void DataBool::SetValue(double value, int, int index) { Store(index, value != 0.0); }

BlockType DataBoolFactory::GetBlockType() const { return DataBool::m_block_type; }

Block* DataBoolFactory::GetBlock(bool) const { return new DataBool(-1, false, 1); }

std::string DataBoolFactory::GetName() const { return "DataBool"; }

}  // namespace Orlo
