// Attribute access on every block: forwarding to the block's parameter table, and the fixed
// answers of a block that has none.
#include <orlo/base/block/block.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <orlo/base/data/data.h>
#include <orlo/base/data/data_table.h>

#include "tests/base/data/data_test_blocks.h"

namespace Orlo {
namespace {

using testing::TestBlock;
using testing::data::Release;
using testing::data::TableOwner;

const char kGetMessage[] = "Block::GetAttribute : This block doesn't support DataTable.";
const char kSetMessage[] = "Block::SetAttribute : This block doesn't support DataTable.";

void ExpectFailure(const Status& status, const std::string& message) {
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(), message);
}

// An owner whose table holds one parameter of each kind: 0 bool, 1 int, 2 float, 3 point,
// 4 colour, 5 string.
class AttributeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    m_owner = new TableOwner;
    m_table = new DataTable(true);
    ASSERT_TRUE(m_owner->MakeDependencyByID(0, m_table).IsOk());
    m_table->AddDataBool(0, true, 1);
    m_table->AddDataInt(1, 7, 1);
    m_table->AddDataFloat(2, 2.5, 1);
    m_table->AddDataPoint3(3, {1.0, 2.0, 3.0}, 1);
    m_table->AddDataColor(4, {0.5f, 0.25f, 0.125f}, 1);
    m_table->AddDataString(5, "five", 1);
    m_bare = new TestBlock("bare", 1);
  }
  void TearDown() override {
    Release(m_owner);
    Release(m_bare);
  }

  TableOwner* m_owner = nullptr;
  DataTable* m_table = nullptr;
  TestBlock* m_bare = nullptr;
};

TEST_F(AttributeTest, TheBaseBlockHasNoTableAndRefusesOne) {
  EXPECT_EQ(m_bare->GetDataTable(), nullptr);
  const Status status = m_bare->SetDataTable(m_table);
  EXPECT_EQ(status.GetCode(), 1);
  EXPECT_EQ(status.GetMessage(), "This Block has no DataTables.");
  m_bare->UpdateDataTable(true);
  EXPECT_EQ(m_bare->GetDependency(0), nullptr);
}

TEST_F(AttributeTest, EveryGetAttributeOnABlockWithoutATableFailsAndLeavesTheOutput) {
  int as_int = 4;
  ExpectFailure(m_bare->GetAttribute(1, as_int, 0, 0), kGetMessage);
  EXPECT_EQ(as_int, 4);
  double as_double = 4.5;
  ExpectFailure(m_bare->GetAttribute(2, as_double, 0, 0), kGetMessage);
  EXPECT_EQ(as_double, 4.5);
  Point3<double> as_point(1.0, 1.0, 1.0);
  ExpectFailure(m_bare->GetAttribute(3, as_point, 0, 0), kGetMessage);
  EXPECT_EQ(as_point, Point3<double>(1.0, 1.0, 1.0));
  std::string as_string = "kept";
  ExpectFailure(m_bare->GetAttribute(5, as_string, 0, 0), kGetMessage);
  EXPECT_EQ(as_string, "kept");
  Color as_color(1.0f, 1.0f, 1.0f);
  ExpectFailure(m_bare->GetAttribute(4, as_color, 0, 0), kGetMessage);
  EXPECT_EQ(as_color, Color(1.0f, 1.0f, 1.0f));
  bool as_bool = true;
  ExpectFailure(m_bare->GetAttribute(0, as_bool, 0, 0), kGetMessage);
  EXPECT_TRUE(as_bool);
}

TEST_F(AttributeTest, EverySetAttributeOnABlockWithoutATableFails) {
  ExpectFailure(m_bare->SetAttribute(1, 3, 0, 0), kSetMessage);
  ExpectFailure(m_bare->SetAttribute(2, 3.5, 0, 0), kSetMessage);
  ExpectFailure(m_bare->SetAttribute(5, "text", 0, 0), kSetMessage);
  ExpectFailure(m_bare->SetAttribute(3, Point3<double>(1, 2, 3), 0, 0), kSetMessage);
  ExpectFailure(m_bare->SetAttribute(5, std::string("text"), 0, 0), kSetMessage);
  ExpectFailure(m_bare->SetAttribute(4, Color(1, 1, 1), 0, 0), kSetMessage);
  ExpectFailure(m_bare->SetAttribute(0, false, 0, 0), kSetMessage);
}

TEST_F(AttributeTest, EveryValueFormOnABlockWithoutATableGivesZeroAndItsMessage) {
  Status status;
  EXPECT_FALSE(m_bare->GetBooleanAttribute(0, 0, 0, &status));
  ExpectFailure(status, "Block::GetBooleanAttribute : This block doesn't support DataTable.");
  status = Status();
  EXPECT_EQ(m_bare->GetIntegerAttribute(1, 0, 0, &status), 0);
  ExpectFailure(status, "Block::GetIntegerAttribute : This block doesn't support DataTable.");
  status = Status();
  EXPECT_EQ(m_bare->GetFloatAttribute(2, 0, 0, &status), 0.0);
  ExpectFailure(status, "Block::GetFloatAttribute : This block doesn't support DataTable.");
  status = Status();
  EXPECT_EQ(m_bare->GetColorAttribute(4, 0, 0, &status), Color());
  ExpectFailure(status, "Block::GetColorAttribute : This block doesn't support DataTable.");
  status = Status();
  EXPECT_EQ(m_bare->GetStringAttribute(5, 0, 0, &status), "");
  ExpectFailure(status, "Block::GetStringAttribute : This block doesn't support DataTable.");
}

TEST_F(AttributeTest, GetPoint3AttributeReportsTheMessageOfGetColorAttribute) {
  Status status;
  EXPECT_EQ(m_bare->GetPoint3Attribute(3, 0, 0, &status), Point3<double>());
  ExpectFailure(status, "Block::GetColorAttribute : This block doesn't support DataTable.");
}

TEST_F(AttributeTest, ValueFormsAcceptANullStatus) {
  EXPECT_EQ(m_bare->GetFloatAttribute(2, 0, 0, nullptr), 0.0);
  EXPECT_EQ(m_bare->GetIntegerAttribute(1, 0, 0, nullptr), 0);
  EXPECT_FALSE(m_bare->GetBooleanAttribute(0, 0, 0, nullptr));
  EXPECT_EQ(m_bare->GetPoint3Attribute(3, 0, 0, nullptr), Point3<double>());
  EXPECT_EQ(m_bare->GetColorAttribute(4, 0, 0, nullptr), Color());
  EXPECT_EQ(m_bare->GetStringAttribute(5, 0, 0, nullptr), "");
  EXPECT_EQ(m_owner->GetFloatAttribute(2, 0, 0, nullptr), 2.5);
}

TEST_F(AttributeTest, GetAttributeReadsThroughTheTable) {
  int as_int = 0;
  EXPECT_TRUE(m_owner->GetAttribute(1, as_int, 0, 0).IsOk());
  EXPECT_EQ(as_int, 7);
  double as_double = 0.0;
  EXPECT_TRUE(m_owner->GetAttribute(2, as_double, 0, 0).IsOk());
  EXPECT_EQ(as_double, 2.5);
  Point3<double> as_point;
  EXPECT_TRUE(m_owner->GetAttribute(3, as_point, 0, 0).IsOk());
  EXPECT_EQ(as_point, Point3<double>(1.0, 2.0, 3.0));
  std::string as_string;
  EXPECT_TRUE(m_owner->GetAttribute(5, as_string, 0, 0).IsOk());
  EXPECT_EQ(as_string, "five");
  Color as_color;
  EXPECT_TRUE(m_owner->GetAttribute(4, as_color, 0, 0).IsOk());
  EXPECT_EQ(as_color, Color(0.5f, 0.25f, 0.125f));
  bool as_bool = false;
  EXPECT_TRUE(m_owner->GetAttribute(0, as_bool, 0, 0).IsOk());
  EXPECT_TRUE(as_bool);
}

TEST_F(AttributeTest, GetAttributeWithAnIdTheTableRejectsStillSucceedsAndLeavesTheOutput) {
  double value = 8.5;
  const Status status = m_owner->GetAttribute(42, value, 0, 0);
  EXPECT_TRUE(status.IsOk());
  EXPECT_EQ(status.GetMessage(), "");
  EXPECT_EQ(value, 8.5);
}

TEST_F(AttributeTest, GetAttributeOfEveryTypeWithAnIdTheTableRejectsSucceedsAndLeavesTheOutput) {
  for (int id : {6, -1, 1000}) {
    SCOPED_TRACE(id);
    int as_int = 4;
    EXPECT_TRUE(m_owner->GetAttribute(id, as_int, 0, 0).IsOk());
    EXPECT_EQ(as_int, 4);
    double as_double = 4.5;
    EXPECT_TRUE(m_owner->GetAttribute(id, as_double, 0, 0).IsOk());
    EXPECT_EQ(as_double, 4.5);
    Point3<double> as_point(1.0, 1.0, 1.0);
    EXPECT_TRUE(m_owner->GetAttribute(id, as_point, 0, 0).IsOk());
    EXPECT_EQ(as_point, Point3<double>(1.0, 1.0, 1.0));
    std::string as_string = "kept";
    EXPECT_TRUE(m_owner->GetAttribute(id, as_string, 0, 0).IsOk());
    EXPECT_EQ(as_string, "kept");
    Color as_color(1.0f, 1.0f, 1.0f);
    EXPECT_TRUE(m_owner->GetAttribute(id, as_color, 0, 0).IsOk());
    EXPECT_EQ(as_color, Color(1.0f, 1.0f, 1.0f));
    bool as_bool = true;
    EXPECT_TRUE(m_owner->GetAttribute(id, as_bool, 0, 0).IsOk());
    EXPECT_TRUE(as_bool);
  }
}

TEST_F(AttributeTest, SetAttributeOfEveryTypeWithAnIdTheTableRejectsSucceedsAndChangesNothing) {
  testing::RecordingListener listener;
  m_owner->AddBlockListener(&listener);
  for (int id : {6, -1, 1000}) {
    SCOPED_TRACE(id);
    EXPECT_TRUE(m_owner->SetAttribute(id, 3, 0, 0).IsOk());
    EXPECT_TRUE(m_owner->SetAttribute(id, 3.5, 0, 0).IsOk());
    EXPECT_TRUE(m_owner->SetAttribute(id, "text", 0, 0).IsOk());
    EXPECT_TRUE(m_owner->SetAttribute(id, Point3<double>(9, 9, 9), 0, 0).IsOk());
    EXPECT_TRUE(m_owner->SetAttribute(id, std::string("text"), 0, 0).IsOk());
    EXPECT_TRUE(m_owner->SetAttribute(id, Color(0, 1, 0), 0, 0).IsOk());
    EXPECT_TRUE(m_owner->SetAttribute(id, false, 0, 0).IsOk());
  }
  EXPECT_EQ(m_table->GetLastDataChanged(), -1);
  EXPECT_TRUE(m_table->GetBool(0, 0, 0));
  EXPECT_EQ(m_table->GetInt(1, 0, 0), 7);
  EXPECT_EQ(m_table->GetFloat(2, 0, 0), 2.5);
  EXPECT_EQ(m_table->GetPoint3F(3, 0, 0), Point3<double>(1.0, 2.0, 3.0));
  EXPECT_EQ(m_table->GetColor(4, 0, 0), Color(0.5f, 0.25f, 0.125f));
  EXPECT_EQ(m_table->GetString(5, 0, 0), "five");
  EXPECT_TRUE(listener.events.empty());
  m_owner->RemoveBlockListener(&listener);
}

TEST_F(AttributeTest, ATableAndADataValueHaveNoTableOfTheirOwn) {
  Data* value = m_table->GetData(2);
  for (Block* block : std::vector<Block*>{m_table, value}) {
    SCOPED_TRACE(block->GetClassName());
    double as_double = 1.5;
    ExpectFailure(block->GetAttribute(2, as_double, 0, 0), kGetMessage);
    EXPECT_EQ(as_double, 1.5);
    ExpectFailure(block->SetAttribute(2, 9.0, 0, 0), kSetMessage);
    Status status;
    EXPECT_EQ(block->GetFloatAttribute(2, 0, 0, &status), 0.0);
    ExpectFailure(status, "Block::GetFloatAttribute : This block doesn't support DataTable.");
  }
  EXPECT_EQ(m_table->GetFloat(2, 0, 0), 2.5);
}

TEST_F(AttributeTest, AChangeMadeThroughAnAttributeReachesTheOwnerAsCode3WithTheId) {
  testing::RecordingListener listener;
  m_owner->AddBlockListener(&listener);
  EXPECT_TRUE(m_owner->SetAttribute(3, Point3<double>(0, 0, 1), 0, 0).IsOk());
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].block, m_owner);
  EXPECT_EQ(listener.events[0].code, 3);
  EXPECT_EQ(listener.events[0].param, 3);
  m_owner->RemoveBlockListener(&listener);
}

TEST_F(AttributeTest, SetAttributeWritesThroughTheTable) {
  EXPECT_TRUE(m_owner->SetAttribute(1, 11, 0, 0).IsOk());
  EXPECT_EQ(m_table->GetInt(1, 0, 0), 11);
  EXPECT_TRUE(m_owner->SetAttribute(2, 6.25, 0, 0).IsOk());
  EXPECT_EQ(m_table->GetFloat(2, 0, 0), 6.25);
  EXPECT_TRUE(m_owner->SetAttribute(3, Point3<double>(4, 5, 6), 0, 0).IsOk());
  EXPECT_EQ(m_table->GetPoint3F(3, 0, 0), Point3<double>(4, 5, 6));
  EXPECT_TRUE(m_owner->SetAttribute(5, std::string("std"), 0, 0).IsOk());
  EXPECT_EQ(m_table->GetString(5, 0, 0), "std");
  EXPECT_TRUE(m_owner->SetAttribute(4, Color(1, 0, 1), 0, 0).IsOk());
  EXPECT_EQ(m_table->GetColor(4, 0, 0), Color(1, 0, 1));
  EXPECT_TRUE(m_owner->SetAttribute(0, false, 0, 0).IsOk());
  EXPECT_FALSE(m_table->GetBool(0, 0, 0));
  EXPECT_EQ(m_table->GetLastDataChanged(), 0);
}

TEST_F(AttributeTest, SetAttributeOfATextLiteralStoresTheTextInAStringParameter) {
  EXPECT_TRUE(m_owner->SetAttribute(5, "text", 0, 0).IsOk());
  EXPECT_EQ(m_table->GetString(5, 0, 0), "text");
  // Not the boolean form: the boolean parameter is untouched.
  EXPECT_TRUE(m_owner->SetAttribute(0, "text", 0, 0).IsOk());
  EXPECT_TRUE(m_table->GetBool(0, 0, 0));
}

TEST_F(AttributeTest, SetAttributeWithAnIdTheTableDoesNotHaveSucceedsAndChangesNothing) {
  testing::RecordingListener listener;
  m_owner->AddBlockListener(&listener);
  const Status status = m_owner->SetAttribute(42, 1.0, 0, 0);
  EXPECT_TRUE(status.IsOk());
  EXPECT_EQ(m_table->GetLastDataChanged(), -1);
  EXPECT_EQ(m_table->GetFloat(2, 0, 0), 2.5);
  EXPECT_TRUE(listener.events.empty());
  m_owner->RemoveBlockListener(&listener);
}

TEST_F(AttributeTest, ValueFormsReadThroughTheTableAndLeaveTheStatusAlone) {
  Status status(Status::kInvalidArgument, "left alone");
  EXPECT_TRUE(m_owner->GetBooleanAttribute(0, 0, 0, &status));
  EXPECT_EQ(m_owner->GetIntegerAttribute(1, 0, 0, &status), 7);
  EXPECT_EQ(m_owner->GetFloatAttribute(2, 0, 0, &status), 2.5);
  EXPECT_EQ(m_owner->GetPoint3Attribute(3, 0, 0, &status), Point3<double>(1, 2, 3));
  EXPECT_EQ(m_owner->GetColorAttribute(4, 0, 0, &status), Color(0.5f, 0.25f, 0.125f));
  EXPECT_EQ(m_owner->GetStringAttribute(5, 0, 0, &status), "five");
  // Through GetValue: an integer parameter read as a point is broadcast.
  EXPECT_EQ(m_owner->GetPoint3Attribute(1, 0, 0, &status), Point3<double>(7, 7, 7));
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_EQ(status.GetMessage(), "left alone");
}

TEST_F(AttributeTest, ValueFormsWithAnIdTheTableRejectsGiveTheZeroStart) {
  Status status;
  EXPECT_FALSE(m_owner->GetBooleanAttribute(42, 0, 0, &status));
  EXPECT_EQ(m_owner->GetIntegerAttribute(42, 0, 0, &status), 0);
  EXPECT_EQ(m_owner->GetFloatAttribute(42, 0, 0, &status), 0.0);
  EXPECT_EQ(m_owner->GetPoint3Attribute(-1, 0, 0, &status), Point3<double>());
  EXPECT_EQ(m_owner->GetColorAttribute(42, 0, 0, &status), Color());
  EXPECT_EQ(m_owner->GetStringAttribute(42, 0, 0, &status), "");
  EXPECT_TRUE(status.IsOk());
}

}  // namespace
}  // namespace Orlo
