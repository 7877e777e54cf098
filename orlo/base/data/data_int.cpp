#include <orlo/base/data/data_int.h>

#include <orlo/base/data/internal/conversions.h>

namespace Orlo {

using internal::IntThroughFloat;
using internal::TruncateToInt;

DataInt::DataInt(int id, int default_value, int size) : DataArray(id, default_value, size) {}

std::string DataInt::GetClassName() const { return "DataInt"; }

BlockType DataInt::GetBlockType() const { return m_block_type; }

Block* DataInt::Clone() { return CloneAs<DataInt>(); }

int DataInt::GetType() const { return kTypeInt; }

void DataInt::GetValue(bool& out, int, int index) const { out = At(index) != 0; }

void DataInt::GetValue(int& out, int, int index) const { out = At(index); }

void DataInt::GetValue(double& out, int, int index) const { out = IntThroughFloat(At(index)); }

void DataInt::GetValue(Point3<int>& out, int, int index) const {
  const int value = At(index);
  out = Point3<int>(value, value, value);
}

void DataInt::GetValue(Point3<double>& out, int, int index) const {
  const double value = IntThroughFloat(At(index));
  out = Point3<double>(value, value, value);
}

void DataInt::GetValue(Color& out, int, int index) const {
  const auto value = static_cast<float>(At(index));
  out = Color(value, value, value);
}

bool DataInt::GetBool(int, int index) const { return At(index) != 0; }

int DataInt::GetInt(int, int index) const { return At(index); }

double DataInt::GetFloat(int, int index) const { return IntThroughFloat(At(index)); }

void DataInt::SetValue(bool value, int, int index) { Store(index, value ? 1 : 0); }

void DataInt::SetValue(int value, int, int index) { Store(index, value); }

void DataInt::SetValue(double value, int, int index) { Store(index, TruncateToInt(value)); }

BlockType DataIntFactory::GetBlockType() const { return DataInt::m_block_type; }

Block* DataIntFactory::GetBlock(bool) const { return new DataInt(-1, 0, 1); }

std::string DataIntFactory::GetName() const { return "DataInt"; }

}  // namespace Orlo
