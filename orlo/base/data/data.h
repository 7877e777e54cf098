// Defines Data, the abstract base of the blocks that hold one typed parameter of another block.
//
// A data value is a small array of elements of one type (boolean, integer, double, point,
// colour or string), each addressed by an index, with the parameter's id inside its table, a
// name and a default value that fills new elements. Data values live in a DataTable, which
// owns them through the block graph; a block reaches them through its table.
//
// Every member accepts every getter and setter: one that does not fit the member's type
// either converts by fixed rules or does nothing (a getter into a reference leaves it
// untouched, a setter stores nothing and posts no event). The time argument is accepted
// everywhere and ignored. A setter that stores posts event code 3 with the element index.
#pragma once

#include <string>

#include <orlo/base/block/block.h>
#include <orlo/base/data/internal/shared_name.h>
#include <orlo/support/color.h>
#include <orlo/support/point3.h>
#include <orlo/support/time_interval.h>

namespace Orlo {

class Controller;

class Data : public Block {
 public:
  // Type codes returned by GetType.
  static constexpr int kTypeBool = 0;
  static constexpr int kTypeInt = 1;
  static constexpr int kTypeFloat = 2;
  static constexpr int kTypePoint3 = 3;
  static constexpr int kTypeColor = 4;
  static constexpr int kTypeString = 5;

  // The class id shared by every data value.
  static constexpr unsigned kClassID = 200;

  // The parameter's id inside its table; -1 for a value made by a factory. The table finds
  // its parameters by this id and keeps no copy of it.
  int GetParameterID() const { return m_parameter_id; }
  void SetParameterID(int id) { m_parameter_id = id; }

  // ---- The uniform interface, in the order of the class's virtual table ----
  // Requires (every operation with an index): 0 <= index < GetSize().

  virtual void GetValue(std::string& out, int time, int index) const = 0;
  virtual void GetValue(Color& out, int time, int index) const = 0;
  virtual void GetValue(Point3<int>& out, int time, int index) const = 0;
  virtual void GetValue(Point3<double>& out, int time, int index) const = 0;
  virtual void GetValue(bool& out, int time, int index) const = 0;
  virtual void GetValue(int& out, int time, int index) const = 0;
  virtual void GetValue(double& out, int time, int index) const = 0;
  virtual double GetFloat(int time, int index) const = 0;
  virtual int GetInt(int time, int index) const = 0;
  virtual bool GetBool(int time, int index) const = 0;
  virtual Point3<double> GetPoint3F(int time, int index) const = 0;
  virtual Point3<int> GetPoint3I(int time, int index) const = 0;
  virtual Color GetColor(int time, int index) const = 0;
  virtual std::string GetString(int time, int index) const = 0;
  virtual std::string GetName() const = 0;
  // The controller of element `index`; only DataFloat has any.
  virtual Controller* GetController(int index) const = 0;
  virtual void SetValue(const std::string& value, int time, int index) = 0;
  virtual void SetValue(Color value, int time, int index) = 0;
  virtual void SetValue(Point3<int> value, int time, int index) = 0;
  virtual void SetValue(Point3<double> value, int time, int index) = 0;
  virtual void SetValue(bool value, int time, int index) = 0;
  virtual void SetValue(int value, int time, int index) = 0;
  virtual void SetValue(double value, int time, int index) = 0;
  // One of the kType codes above.
  virtual int GetType() const = 0;
  virtual void SetName(const std::string& name) = 0;
  // Only DataFloat stores controllers; the other members ignore the call.
  virtual void SetController(Controller* controller, int index) = 0;
  // Resizes the value array; new elements take the default value. A negative size empties
  // the array. Posts nothing.
  virtual void SetSize(int size) = 0;
  // Removes element `index`; the following ones move down. Posts nothing.
  virtual void Erase(int index) = 0;
  virtual int GetSize() const = 0;
  // Narrows `interval` to the span over which the stored values stay valid.
  virtual void GetTimeInterval(TimeInterval& interval) const = 0;

  // A string literal would otherwise convert to bool and pick the bool setter.
  void SetValue(const char* value, int time, int index) {
    SetValue(std::string(value != nullptr ? value : ""), time, index);
  }

 protected:
  explicit Data(int id) : m_parameter_id(id) {}
  Data(const Data&) = default;
  Data& operator=(const Data&) = default;

  // Shared with every value of the same name: see SharedName.
  internal::SharedName m_name;
  // Last, so that a value class can keep its element count in the padding after it.
  int m_parameter_id;
};

}  // namespace Orlo
