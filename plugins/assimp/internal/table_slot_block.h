// Defines TableSlotBlock<Base>, the slot operations of a plug-in block whose only dependency
// is its parameter table: slot 0, "data_table", of type 205. The table is linked through the
// graph (and so owned by it); a block in the slot that is not a parameter table is kept as
// linked but reads as no table.
#pragma once

#include <string>

#include <orlo/base/block/block.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/scene_engine.h>
#include <orlo/support/status.h>

namespace orlo_assimp::internal {

template <typename Base>
class TableSlotBlock : public Base {
 public:
  int NumDependencies() const override { return 1; }
  void SetDependency(int index, Orlo::Block* block) override {
    if (index == 0) m_data_table = block;
  }
  Orlo::Block* GetDependency(int index) const override {
    return index == 0 ? m_data_table : nullptr;
  }
  std::string GetDependencyName(int index) const override {
    return index == 0 ? "data_table" : "no_dependency";
  }
  unsigned GetDependencyType(int index) const override { return index == 0 ? 205 : 0; }
  Orlo::DataTable* GetDataTable() const override {
    return Orlo::SceneEngine::IsDataTable(m_data_table)
               ? static_cast<Orlo::DataTable*>(m_data_table)
               : nullptr;
  }
  // A block that is not a parameter table gives code 3, "<class>::SetDataTable : The block
  // is not a valid data_table.".
  Orlo::Status SetDataTable(Orlo::DataTable* table) override {
    if (table != nullptr && !Orlo::SceneEngine::IsDataTable(table)) {
      return Orlo::Status(Orlo::Status::kInvalidArgument,
                          this->GetClassName() +
                              "::SetDataTable : The block is not a valid data_table.");
    }
    return this->MakeDependencyByID(0, table);
  }

 protected:
  // Links a fresh table into slot 0 and fills it; for the constructors' `create_defaults`.
  void CreateDataTable() {
    (void)SetDataTable(new Orlo::DataTable(true));  // a fresh table cannot be refused
    this->UpdateDataTable(true);
  }

 private:
  Orlo::Block* m_data_table = nullptr;
};

}  // namespace orlo_assimp::internal
