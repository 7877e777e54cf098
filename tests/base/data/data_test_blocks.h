// Blocks shared by the parameter tests: a scalar controller and a block that owns a parameter
// table. The plain test block and the recording listener come from tests/testing.
// Every block here is created with new and released through the graph like any other.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include <orlo/base/block/block.h>
#include <orlo/base/controllers/float_controller.h>
#include <orlo/base/data/data_table.h>

#include "tests/testing/test_blocks.h"

namespace Orlo {

// Readable failure messages for the value types.
template <typename T>
void PrintTo(const Point3<T>& point, std::ostream* out) {
  *out << "(" << point.x << ", " << point.y << ", " << point.z << ")";
}
inline void PrintTo(const Color& color, std::ostream* out) {
  *out << "rgb(" << color.r << ", " << color.g << ", " << color.b << ")";
}

}  // namespace Orlo

// Nested so that these doubles never share a name with doubles of other test folders: the
// suite is one program.
namespace Orlo::testing::data {

// Releases a block created with new that nothing depends on, through the graph.
inline void Release(Block* block) {
  if (block != nullptr) block->DeleteThisBlock(true);
}

// A scalar controller that holds one value. SetFloat posts code 3 like a keyed controller
// does. `live` counts the instances, so tests can see clones made and released.
class TestController : public FloatController {
 public:
  static inline int live = 0;

  explicit TestController(double value = 0.0) : m_value(value) { ++live; }
  TestController(const TestController&) = delete;
  TestController& operator=(const TestController&) = delete;
  ~TestController() override { --live; }

  std::string GetClassName() const override { return "TestController"; }
  BlockType GetBlockType() const override { return {300, 48, 0xF00}; }
  int NumDependencies() const override { return 0; }
  void SetDependency(int, Block*) override {}
  Block* GetDependency(int) const override { return nullptr; }
  std::string GetDependencyName(int) const override { return "no_dependency"; }
  Block* Clone() override { return new TestController(m_value); }
  int Save(SceneSave*) override { return 1; }
  int Load(SceneLoad*) override { return 1; }
  void DeleteThis() override { delete this; }

  double GetFloat(int) override { return m_value; }
  void SetFloat(int, double value) override {
    m_value = value;
    PostEvent(BlockEvent(this, 3, 0));
  }

 private:
  double m_value;
};

// A block with one slot, "data_table", whose table it offers through GetDataTable. Events
// from the table climb past it unchanged (the default ProcessEvent).
class TableOwner : public Block {
 public:
  TableOwner() = default;
  TableOwner(const TableOwner&) = delete;
  TableOwner& operator=(const TableOwner&) = delete;

  std::string GetClassName() const override { return "TableOwner"; }
  BlockType GetBlockType() const override { return {900, 1, 1}; }
  int NumDependencies() const override { return 1; }
  void SetDependency(int index, Block* block) override {
    if (index == 0) m_table = block;
  }
  Block* GetDependency(int index) const override { return index == 0 ? m_table : nullptr; }
  std::string GetDependencyName(int index) const override {
    return index == 0 ? "data_table" : "no_dependency";
  }
  DataTable* GetDataTable() const override { return dynamic_cast<DataTable*>(m_table); }
  Block* Clone() override { return new TableOwner; }
  int Save(SceneSave*) override { return 1; }
  int Load(SceneLoad*) override { return 1; }
  void DeleteThis() override { delete this; }

 private:
  Block* m_table = nullptr;
};

}  // namespace Orlo::testing::data
