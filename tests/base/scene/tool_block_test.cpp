#include <orlo/base/scene/tool_block.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <orlo/base/block/block_table.h>
#include <orlo/base/scene/export_tool.h>
#include <orlo/base/scene/import_tool.h>

#include "tests/base/scene/scene_test_blocks.h"
#include "tests/testing/scoped_block.h"

namespace Orlo {
namespace {

using testing::ScopedBlock;
using testing::TestExportTool;
using testing::TestImportTool;
using testing::TestTool;

TEST(ToolBlockTest, CarriesANameEmptyByDefault) {
  ScopedBlock<TestTool> tool(new TestTool());
  EXPECT_EQ(tool->GetName(), "");
  tool->SetName("Align");
  EXPECT_EQ(tool->GetName(), "Align");
  EXPECT_EQ(tool->GetBlockType().class_id, ToolBlock::kClassID);
  EXPECT_EQ(ToolBlock::kClassID, 100000u);
}

TEST(ToolBlockTest, CopiesAreMemberwise) {
  TestTool tool;
  tool.SetName("Mirror");
  TestTool copy(tool);
  EXPECT_EQ(copy.GetName(), "Mirror");
}

TEST(ToolBlockTest, ImportAndExportToolsReportTheirClassIdsAndOperations) {
  EXPECT_EQ(ImportTool::kClassID, 100005u);
  EXPECT_EQ(ExportTool::kClassID, 100010u);
  // Held, as the scene holds the tools it keeps: a tool that nothing holds releases itself at
  // the end of its Execute.
  ScopedBlock<BlockTable> holder(new BlockTable(true));
  auto* importer = new TestImportTool();
  auto* exporter = new TestExportTool();
  holder->PushBack(importer);
  holder->PushBack(exporter);
  ImportTool* import_tool = importer;
  ExportTool* export_tool = exporter;
  EXPECT_EQ(import_tool->GetBlockType().class_id, 100005u);
  EXPECT_EQ(export_tool->GetBlockType().class_id, 100010u);
  EXPECT_EQ(import_tool->GetExtensions(), std::vector<std::string>({".abc"}));
  EXPECT_EQ(export_tool->GetExtensions(), std::vector<std::string>({".xyz", ".XYW"}));
  EXPECT_TRUE(import_tool->Execute(nullptr, "scene.abc").IsOk());
  EXPECT_EQ(importer->last_path, "scene.abc");
  const Status status = export_tool->Execute(nullptr, "scene.xyz");
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(), "TestExportTool::Execute : nothing to write.");
  import_tool->SetName("importer");
  EXPECT_EQ(import_tool->GetName(), "importer");
}

// A tool double that counts its releases.
template <typename Tool>
class CountedTool : public Tool {
 public:
  explicit CountedTool(int* released) : m_released(released) {}
  void DeleteThis() override {
    ++*m_released;
    delete this;
  }

 private:
  int* m_released;
};

TEST(ToolBlockTest, AToolThatNothingHoldsReleasesItselfAtTheEndOfItsExecute) {
  // The engine never deletes the tool it runs, so a tool that is not kept anywhere must go by
  // itself; the test tools do, as every tool must.
  int released = 0;
  ImportTool* import_tool = new CountedTool<TestImportTool>(&released);
  EXPECT_TRUE(import_tool->Execute(nullptr, "scene.abc").IsOk());
  EXPECT_EQ(released, 1);
  ExportTool* export_tool = new CountedTool<TestExportTool>(&released);
  EXPECT_EQ(export_tool->Execute(nullptr, "scene.xyz").GetCode(), 2);
  EXPECT_EQ(released, 2);
}

}  // namespace
}  // namespace Orlo
