// Defines DataFloat, the data value of double elements, the only one that can be animated,
// and its factory DataFloatFactory.
//
// Each element has a controller slot; a controller set there becomes a dependency of the
// value (the value owns it through the block graph and hears its changes, which it posts on
// to its table). The number of controller slots is fixed when the value is constructed,
// cloned or loaded: SetSize and Erase change only the elements. Kept as is: a saved value's
// dependency record lists these slots, and existing scene files were written with this
// count. The stored element is what every getter returns, whatever the time; the controller
// does not override it.
// Owned by the DataTable it sits in; a factory-made value carries the id -1 and 0.0.
#pragma once

#include <string>
#include <vector>

#include <orlo/base/block/block_factory.h>
#include <orlo/base/block/internal/block_list.h>
#include <orlo/base/data/internal/data_array.h>

namespace Orlo {

class DataFloat : public internal::DataArray<double> {
 public:
  static constexpr BlockType m_block_type{200, 64, 64};

  // A size below 1 is taken as 1; every element starts at `default_value` and every
  // controller slot, one per element, is empty.
  DataFloat(int id, double default_value, int size);

  std::string GetClassName() const override;
  BlockType GetBlockType() const override;
  // One slot per controller, each named "float_animation_controller".
  int NumDependencies() const override;
  void SetDependency(int index, Block* block) override;
  Block* GetDependency(int index) const override;
  std::string GetDependencyName(int index) const override;
  // Same id, default, size, elements and name; each controller is cloned into the same slot
  // of the copy, as far as the copy has slots (one per element).
  Block* Clone() override;
  int GetType() const override;

  // The controller in slot `index`; null for an empty slot, a slot outside the controller
  // slots, or a slot that holds a block that is not a controller.
  Controller* GetController(int index) const override;
  // Links `controller` into slot `index` with MakeDependencyByID, releasing the one there;
  // null empties the slot. A slot outside the controller slots is left alone.
  void SetController(Controller* controller, int index) override;

  using DataArray::GetValue;
  using DataArray::SetValue;

  // Whether the value differs from 0.0 (NaN gives true).
  void GetValue(bool& out, int time, int index) const override;
  // Truncated toward zero; out of range and NaN give -2147483648.
  void GetValue(int& out, int time, int index) const override;
  void GetValue(double& out, int time, int index) const override;
  bool GetBool(int time, int index) const override;
  int GetInt(int time, int index) const override;
  double GetFloat(int time, int index) const override;

  // 1.0 or 0.0.
  void SetValue(bool value, int time, int index) override;
  void SetValue(int value, int time, int index) override;
  void SetValue(double value, int time, int index) override;

 protected:
  // A loaded element count also fixes the number of controller slots; slots dropped from the
  // end release what they held, new ones are empty.
  void ResizeForLoad(std::size_t count) override;

 private:
  // The controller slots. Kept as blocks: the scene reader may link any block here, and only
  // GetController looks for a controller.
  internal::BlockList m_controllers;  // one slot per element at construction
};

class DataFloatFactory : public BlockFactory {
 public:
  BlockType GetBlockType() const override;
  // A one-element value with the id -1 and 0.0, whatever the flag.
  Block* GetBlock(bool create_defaults) const override;
  std::string GetName() const override;
};

}  // namespace Orlo
