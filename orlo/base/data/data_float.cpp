#include <orlo/base/data/data_float.h>

#include <algorithm>

#include <orlo/base/controllers/controller.h>
#include <orlo/base/data/internal/conversions.h>

namespace Orlo {

using internal::TruncateToInt;

DataFloat::DataFloat(int id, double default_value, int size)
    : DataArray(id, default_value, size), m_controllers(static_cast<std::size_t>(GetSize())) {}

std::string DataFloat::GetClassName() const { return "DataFloat"; }

BlockType DataFloat::GetBlockType() const { return m_block_type; }

int DataFloat::NumDependencies() const { return static_cast<int>(m_controllers.size()); }

void DataFloat::SetDependency(int index, Block* block) {
  if (index < 0 || index >= NumDependencies()) return;
  m_controllers.Set(static_cast<std::size_t>(index), block);
}

Block* DataFloat::GetDependency(int index) const {
  if (index < 0 || index >= NumDependencies()) return nullptr;
  return m_controllers[static_cast<std::size_t>(index)];
}

std::string DataFloat::GetDependencyName(int index) const {
  if (index < 0 || index >= NumDependencies()) return "no_dependency";
  return "float_animation_controller";
}

Block* DataFloat::Clone() {
  DataFloat* copy = CloneAs<DataFloat>();
  // The copy has one slot per element; a controller in a slot beyond that has nowhere to go.
  const int slots = std::min(NumDependencies(), copy->NumDependencies());
  for (int i = 0; i < slots; ++i) {
    Block* controller = GetDependency(i);
    if (controller == nullptr) continue;
    // A fresh copy cannot close a cycle, so the link cannot be refused.
    (void)copy->MakeDependencyByID(i, controller->Clone());
  }
  return copy;
}

int DataFloat::GetType() const { return kTypeFloat; }

Controller* DataFloat::GetController(int index) const {
  return dynamic_cast<Controller*>(GetDependency(index));
}

void DataFloat::SetController(Controller* controller, int index) {
  // A slot outside the controller slots is refused by MakeDependencyByID, which changes
  // nothing; there is nobody to report it to.
  (void)MakeDependencyByID(index, controller);
}

void DataFloat::GetValue(bool& out, int, int index) const { out = At(index) != 0.0; }

void DataFloat::GetValue(int& out, int, int index) const { out = TruncateToInt(At(index)); }

void DataFloat::GetValue(double& out, int, int index) const { out = At(index); }

bool DataFloat::GetBool(int, int index) const { return At(index) != 0.0; }

int DataFloat::GetInt(int, int index) const { return TruncateToInt(At(index)); }

double DataFloat::GetFloat(int, int index) const { return At(index); }

void DataFloat::SetValue(bool value, int, int index) { Store(index, value ? 1.0 : 0.0); }

void DataFloat::SetValue(int value, int, int index) { Store(index, static_cast<double>(value)); }

void DataFloat::SetValue(double value, int, int index) { Store(index, value); }

void DataFloat::ResizeForLoad(std::size_t count) {
  DataArray::ResizeForLoad(count);
  for (int i = NumDependencies() - 1; i >= static_cast<int>(count); --i) DeleteDependency(i);
  m_controllers.resize(count);
}

BlockType DataFloatFactory::GetBlockType() const { return DataFloat::m_block_type; }

Block* DataFloatFactory::GetBlock(bool) const { return new DataFloat(-1, 0.0, 1); }

std::string DataFloatFactory::GetName() const { return "DataFloat"; }

}  // namespace Orlo
