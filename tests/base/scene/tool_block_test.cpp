#include <orlo/base/scene/tool_block.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

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
  ScopedBlock<TestImportTool> importer(new TestImportTool());
  ScopedBlock<TestExportTool> exporter(new TestExportTool());
  ImportTool* import_tool = importer.get();
  ExportTool* export_tool = exporter.get();
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

}  // namespace
}  // namespace Orlo
