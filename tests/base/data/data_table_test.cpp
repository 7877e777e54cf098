// DataTable: parameters by id, the id-to-index map, failure values and messages, the
// translation of its values' events, cloning and the payload.
#include <orlo/base/data/data_table.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <orlo/base/data/data.h>
#include <orlo/base/data/data_bool.h>
#include <orlo/base/data/data_float.h>
#include <orlo/base/data/data_int.h>

#include "tests/base/data/data_test_blocks.h"
#include "tests/base/data/payload_bytes.h"

namespace Orlo {
namespace {

using testing::RecordingListener;
using testing::TestBlock;
using testing::data::Bytes;
using testing::data::LoadOutcome;
using testing::data::LoadPayload;
using testing::data::PayloadChunks;
using testing::data::PayloadFile;
using testing::data::RawChunk;
using testing::data::Release;
using testing::data::SavePayload;
using testing::data::TableOwner;
using testing::data::TestController;

const Point3<double> kSamplePoint(1.5, -2.5, 3.25);
const Color kSampleColor(0.25f, 0.5f, 0.75f);

// A table with one parameter of each kind: ids 0 to 5, each holding a sample in element 1.
DataTable* TableOfEveryKind() {
  auto* table = new DataTable(true);
  EXPECT_TRUE(table->AddDataBool(0, false, 2));
  EXPECT_TRUE(table->AddDataInt(1, 0, 2));
  EXPECT_TRUE(table->AddDataFloat(2, 0.0, 2));
  EXPECT_TRUE(table->AddDataPoint3(3, {}, 2));
  EXPECT_TRUE(table->AddDataColor(4, {}, 2));
  EXPECT_TRUE(table->AddDataString(5, "", 2));
  EXPECT_TRUE(table->SetValue(0, true, 0, 1).IsOk());
  EXPECT_TRUE(table->SetValue(1, 7, 0, 1).IsOk());
  EXPECT_TRUE(table->SetValue(2, 2.5, 0, 1).IsOk());
  EXPECT_TRUE(table->SetValue(3, kSamplePoint, 0, 1).IsOk());
  EXPECT_TRUE(table->SetValue(4, kSampleColor, 0, 1).IsOk());
  EXPECT_TRUE(table->SetValue(5, "abc", 0, 1).IsOk());
  return table;
}

// ---- Construction and adding ----

TEST(DataTableTest, ANewTableIsEmptyAndEveryLookupFails) {
  auto* table = new DataTable(true);
  EXPECT_EQ(table->GetClassName(), "DataTable");
  EXPECT_EQ(table->GetBlockType().class_id, 205u);
  EXPECT_EQ(table->GetBlockType().super_class_id, 64u);
  EXPECT_EQ(table->GetBlockType().sub_id, 16u);
  EXPECT_EQ(table->GetNumDatas(), 0);
  EXPECT_EQ(table->NumDependencies(), 0);
  EXPECT_TRUE(table->GetIDToIndex().empty());
  EXPECT_EQ(table->GetLastDataChanged(), -1);
  EXPECT_EQ(table->GetDataTable(), nullptr);
  EXPECT_EQ(table->GetData(0), nullptr);
  EXPECT_EQ(table->GetFloat(0, 0, 0), -1.0);
  EXPECT_EQ(table->GetDataName(0), "Error");
  Release(table);
}

TEST(DataTableTest, FactoryMakesAnEmptyTableWhateverTheFlag) {
  DataTableFactory factory;
  EXPECT_EQ(factory.GetName(), "DataTable");
  EXPECT_EQ(factory.GetBlockType().class_id, 205u);
  EXPECT_EQ(factory.GetBlockType().super_class_id, 64u);
  EXPECT_EQ(factory.GetBlockType().sub_id, 16u);
  for (bool create_defaults : {true, false}) {
    auto* table = dynamic_cast<DataTable*>(factory.GetBlock(create_defaults));
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->GetNumDatas(), 0);
    Release(table);
  }
}

TEST(DataTableTest, EachAddMakesAValueOfItsKindInANewLinkedSlot) {
  DataTable* table = TableOfEveryKind();
  const std::vector<std::string> names = {"DataBool",   "DataInt",   "DataFloat",
                                          "DataPoint3", "DataColor", "DataString"};
  ASSERT_EQ(table->GetNumDatas(), 6);
  for (int slot = 0; slot < 6; ++slot) {
    SCOPED_TRACE(slot);
    EXPECT_EQ(table->GetDependencyName(slot), names[static_cast<std::size_t>(slot)]);
    EXPECT_EQ(table->GetDependencyType(slot), 200u);
    EXPECT_EQ(table->GetDataID(slot), slot);
    EXPECT_EQ(table->GetDataType(slot), slot);
    EXPECT_EQ(table->GetDataSize(slot), 2);
    Data* data = table->GetData(slot);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(table->GetDependency(slot), data);
    EXPECT_EQ(data->GetParentBlock(), table);
  }
  EXPECT_EQ(table->GetIDToIndex(), (std::vector<int>{0, 1, 2, 3, 4, 5}));
  Release(table);
}

TEST(DataTableTest, AddingAParameterWithAnExistingIdReturnsFalseAndChangesNothing) {
  auto* table = new DataTable(true);
  ASSERT_TRUE(table->AddDataFloat(3, 1.0, 1));
  EXPECT_FALSE(table->AddDataInt(3, 5, 1));
  EXPECT_FALSE(table->AddDataFloat(3, 2.0, 4));
  EXPECT_FALSE(table->AddDataString(3, "x", 1));
  EXPECT_EQ(table->GetNumDatas(), 1);
  EXPECT_EQ(table->GetDataType(3), Data::kTypeFloat);
  EXPECT_EQ(table->GetFloat(3, 0, 0), 1.0);
  EXPECT_EQ(table->GetIDToIndex(), (std::vector<int>{-1, -1, -1, 0}));
  Release(table);
}

TEST(DataTableTest, IdsZeroOneAndFiveGiveAMapOfSixWithHoles) {
  auto* table = new DataTable(true);
  table->AddDataInt(0, 0, 1);
  table->AddDataInt(1, 0, 1);
  table->AddDataInt(5, 0, 1);
  EXPECT_EQ(table->GetIDToIndex(), (std::vector<int>{0, 1, -1, -1, -1, 2}));
  EXPECT_EQ(table->GetData(2), nullptr);
  EXPECT_EQ(table->GetData(5), table->GetDependency(2));
  Release(table);
}

TEST(DataTableTest, ANegativeIdMayBeAddedButNoLookupFindsIt) {
  auto* table = new DataTable(true);
  EXPECT_TRUE(table->AddDataInt(-1, 4, 1));
  EXPECT_FALSE(table->AddDataInt(-1, 4, 1));
  EXPECT_EQ(table->GetNumDatas(), 1);
  EXPECT_TRUE(table->GetIDToIndex().empty());
  EXPECT_EQ(table->GetDataID(0), -1);
  EXPECT_EQ(table->GetInt(-1, 0, 0), -1);
  Release(table);
}

// ---- Failing ids ----

// Ids that fail on a table holding ids 0, 1 and 5: beyond the map, negative, and a hole.
const std::vector<int> kFailingIds = {6, 1000, -1, -7, 2, 4};

DataTable* TableWithHoles() {
  auto* table = new DataTable(true);
  table->AddDataFloat(0, 1.0, 2);
  table->AddDataInt(1, 2, 2);
  table->AddDataString(5, "five", 2);
  return table;
}

TEST(DataTableTest, EveryByIdOperationGivesItsFailureValueForAFailingId) {
  DataTable* table = TableWithHoles();
  auto* controller = new TestController(1.0);
  RecordingListener listener;
  table->AddBlockListener(&listener);
  for (int id : kFailingIds) {
    SCOPED_TRACE(id);
    EXPECT_EQ(table->GetData(id), nullptr);
    EXPECT_EQ(table->GetDataName(id), "Error");
    EXPECT_FALSE(table->SetDataName(id, "name"));
    EXPECT_EQ(table->GetDataType(id), -1);
    EXPECT_EQ(table->GetDataSize(id), -1);
    EXPECT_FALSE(table->SetDataSize(id, 9));
    EXPECT_EQ(table->GetAnimationContoller(id, 0), nullptr);
    EXPECT_FALSE(table->SetController(id, controller, 0));
    const Status erased = table->Erase(id, 0);
    EXPECT_EQ(erased.GetCode(), 2);
    EXPECT_EQ(erased.GetMessage(), "Invalid DataTable id.");

    EXPECT_EQ(table->GetBool(id, 0, 0), false);
    EXPECT_EQ(table->GetInt(id, 0, 0), -1);
    EXPECT_EQ(table->GetFloat(id, 0, 0), -1.0);
    EXPECT_EQ(table->GetPoint3F(id, 0, 0), Point3<double>(-1.0, -1.0, -1.0));
    EXPECT_EQ(table->GetPoint3I(id, 0, 0), Point3<int>(-1, -1, -1));
    EXPECT_EQ(table->GetColor(id, 0, 0), Color(-1.0f, -1.0f, -1.0f));
    EXPECT_EQ(table->GetString(id, 0, 0), "");
    EXPECT_EQ(table->GetLastDataChanged(), -1);
  }
  EXPECT_TRUE(listener.events.empty());
  EXPECT_EQ(controller->GetParentBlock(), nullptr);
  table->RemoveBlockListener(&listener);
  Release(controller);
  Release(table);
}

void ExpectGetValueFailure(const Status& status) {
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(), "DataTable::GetValue : The id value is out of range.");
}

void ExpectSetValueFailure(const Status& status) {
  EXPECT_EQ(status.GetCode(), 2);
  EXPECT_EQ(status.GetMessage(), "DataTable::SetValue : The id value is out of range.");
}

TEST(DataTableTest, GetValueWithAFailingIdReportsOutOfRangeAndLeavesTheOutputUntouched) {
  DataTable* table = TableWithHoles();
  for (int id : kFailingIds) {
    SCOPED_TRACE(id);
    int as_int = 12;
    ExpectGetValueFailure(table->GetValue(id, as_int, 0, 0));
    EXPECT_EQ(as_int, 12);
    double as_double = 1.25;
    ExpectGetValueFailure(table->GetValue(id, as_double, 0, 0));
    EXPECT_EQ(as_double, 1.25);
    Point3<int> as_point3i(1, 2, 3);
    ExpectGetValueFailure(table->GetValue(id, as_point3i, 0, 0));
    EXPECT_EQ(as_point3i, Point3<int>(1, 2, 3));
    Point3<double> as_point3f(1.5, 2.5, 3.5);
    ExpectGetValueFailure(table->GetValue(id, as_point3f, 0, 0));
    EXPECT_EQ(as_point3f, Point3<double>(1.5, 2.5, 3.5));
    std::string as_string = "kept";
    ExpectGetValueFailure(table->GetValue(id, as_string, 0, 0));
    EXPECT_EQ(as_string, "kept");
    Color as_color(0.5f, 0.5f, 0.5f);
    ExpectGetValueFailure(table->GetValue(id, as_color, 0, 0));
    EXPECT_EQ(as_color, Color(0.5f, 0.5f, 0.5f));
    bool as_bool = true;
    ExpectGetValueFailure(table->GetValue(id, as_bool, 0, 0));
    EXPECT_TRUE(as_bool);
  }
  Release(table);
}

TEST(DataTableTest, OnAnEmptyTableEveryByIdOperationFailsEvenForIdZero) {
  auto* table = new DataTable(true);
  auto* controller = new TestController(1.0);
  RecordingListener listener;
  table->AddBlockListener(&listener);
  for (int id : {0, 1, -1}) {
    SCOPED_TRACE(id);
    EXPECT_EQ(table->GetData(id), nullptr);
    EXPECT_EQ(table->GetDataName(id), "Error");
    EXPECT_FALSE(table->SetDataName(id, "name"));
    EXPECT_EQ(table->GetDataType(id), -1);
    EXPECT_EQ(table->GetDataSize(id), -1);
    EXPECT_FALSE(table->SetDataSize(id, 2));
    EXPECT_EQ(table->GetAnimationContoller(id, 0), nullptr);
    EXPECT_FALSE(table->SetController(id, controller, 0));
    const Status erased = table->Erase(id, 0);
    EXPECT_EQ(erased.GetCode(), 2);
    EXPECT_EQ(erased.GetMessage(), "Invalid DataTable id.");
    EXPECT_FALSE(table->GetBool(id, 0, 0));
    EXPECT_EQ(table->GetInt(id, 0, 0), -1);
    EXPECT_EQ(table->GetFloat(id, 0, 0), -1.0);
    EXPECT_EQ(table->GetPoint3F(id, 0, 0), Point3<double>(-1.0, -1.0, -1.0));
    EXPECT_EQ(table->GetPoint3I(id, 0, 0), Point3<int>(-1, -1, -1));
    EXPECT_EQ(table->GetColor(id, 0, 0), Color(-1.0f, -1.0f, -1.0f));
    EXPECT_EQ(table->GetString(id, 0, 0), "");
    double out = 4.5;
    ExpectGetValueFailure(table->GetValue(id, out, 0, 0));
    EXPECT_EQ(out, 4.5);
    ExpectSetValueFailure(table->SetValue(id, 1.0, 0, 0));
    EXPECT_EQ(table->GetLastDataChanged(), -1);
  }
  EXPECT_EQ(table->GetDataID(0), -1);
  EXPECT_TRUE(table->GetIDToIndex().empty());
  EXPECT_TRUE(listener.events.empty());
  EXPECT_EQ(controller->GetParentBlock(), nullptr);
  table->RemoveBlockListener(&listener);
  Release(controller);
  Release(table);
}

TEST(DataTableTest, SetValueWithAFailingIdReportsOutOfRangeAndLeavesLastChangedAsItWas) {
  DataTable* table = TableWithHoles();
  ASSERT_TRUE(table->SetValue(1, 3, 0, 0).IsOk());
  RecordingListener listener;
  table->AddBlockListener(&listener);
  for (int id : kFailingIds) {
    SCOPED_TRACE(id);
    ExpectSetValueFailure(table->SetValue(id, 1, 0, 0));
    ExpectSetValueFailure(table->SetValue(id, 1.0, 0, 0));
    ExpectSetValueFailure(table->SetValue(id, Point3<int>(1, 1, 1), 0, 0));
    ExpectSetValueFailure(table->SetValue(id, Point3<double>(1, 1, 1), 0, 0));
    ExpectSetValueFailure(table->SetValue(id, std::string("s"), 0, 0));
    ExpectSetValueFailure(table->SetValue(id, "s", 0, 0));
    ExpectSetValueFailure(table->SetValue(id, Color(1, 1, 1), 0, 0));
    ExpectSetValueFailure(table->SetValue(id, true, 0, 0));
    EXPECT_EQ(table->GetLastDataChanged(), 1);
  }
  EXPECT_TRUE(listener.events.empty());
  table->RemoveBlockListener(&listener);
  Release(table);
}

TEST(DataTableTest, AStaleMapEntryWhoseSlotWasEmptiedFailsLikeAnUnknownId) {
  DataTable* table = TableWithHoles();
  table->DeleteDependency(1);
  ASSERT_EQ(table->GetIDToIndex()[1], 1);
  EXPECT_EQ(table->GetData(1), nullptr);
  EXPECT_EQ(table->GetInt(1, 0, 0), -1);
  ExpectSetValueFailure(table->SetValue(1, 5, 0, 0));
  EXPECT_EQ(table->GetDependencyName(1), "no_dependency");
  EXPECT_EQ(table->GetDataID(1), -1);
  table->UpdateIDToIndex();
  EXPECT_EQ(table->GetIDToIndex(), (std::vector<int>{0, -1, -1, -1, -1, 2}));
  Release(table);
}

TEST(DataTableTest, AddingAnIdSearchesTheSlotsWhenTheMapIsStale) {
  // The map still sends id 3 to the slot whose parameter now has id 7.
  auto* table = new DataTable(true);
  ASSERT_TRUE(table->AddDataInt(3, 0, 1));
  table->GetData(3)->SetParameterID(7);
  ASSERT_EQ(table->GetIDToIndex(), (std::vector<int>{-1, -1, -1, 0}));
  EXPECT_FALSE(table->AddDataFloat(7, 1.0, 1));  // held, though the map does not know it
  EXPECT_TRUE(table->AddDataFloat(3, 1.0, 1));   // the map's holder holds another id now
  EXPECT_EQ(table->NumDependencies(), 2);
  EXPECT_FALSE(table->AddDataFloat(3, 2.0, 1));  // the map was rebuilt by the add
  EXPECT_EQ(table->GetFloat(3, 0, 0), 1.0);
  Release(table);
}

// ---- Slots ----

TEST(DataTableTest, SlotsOutsideTheTableReadAsNullAndAreIgnoredByTheRawStore) {
  DataTable* table = TableWithHoles();
  auto* stray = new DataInt(9, 0, 1);
  for (int outside : {-1, 3, 50}) {
    SCOPED_TRACE(outside);
    EXPECT_EQ(table->GetDependency(outside), nullptr);
    EXPECT_EQ(table->GetDependencyName(outside), "no_dependency");
    EXPECT_EQ(table->GetDataID(outside), -1);
    table->SetDependency(outside, stray);
  }
  EXPECT_EQ(table->NumDependencies(), 3);
  table->UpdateIDToIndex();
  EXPECT_EQ(table->GetData(9), nullptr);
  Release(stray);
  Release(table);
}

TEST(DataTableTest, TwoValuesWithOneIdMapToTheLaterSlot) {
  auto* table = new DataTable(true);
  table->AddDataInt(0, 10, 1);
  table->AddDataInt(1, 11, 1);
  auto* twin = new DataInt(0, 12, 1);
  ASSERT_TRUE(table->MakeDependencyByID(1, twin).IsOk());
  table->UpdateIDToIndex();
  EXPECT_EQ(table->GetIDToIndex(), (std::vector<int>{1}));
  EXPECT_EQ(table->GetInt(0, 0, 0), 12);
  Release(table);
}

TEST(DataTableTest, ASlotHoldingABlockThatIsNoDataValueIsSkippedByEveryLookup) {
  auto* table = new DataTable(true);
  table->AddDataInt(0, 1, 1);
  auto* other = new TestBlock("other", 0);
  ASSERT_TRUE(table->MakeDependencyByID(0, other).IsOk());
  table->UpdateIDToIndex();
  EXPECT_EQ(table->GetDependency(0), other);
  EXPECT_EQ(table->GetDependencyName(0), "TestBlock");
  EXPECT_EQ(table->GetDataID(0), -1);
  EXPECT_TRUE(table->GetIDToIndex().empty());
  EXPECT_EQ(table->GetData(0), nullptr);
  // Its events are not parameter changes.
  RecordingListener listener;
  table->AddBlockListener(&listener);
  other->PostEvent(3, 0);
  EXPECT_TRUE(listener.events.empty());
  table->RemoveBlockListener(&listener);
  // The graph still releases it with the table.
  Release(table);
}

// ---- Reading and writing by id ----

struct TypedReadRow {
  int id;
  bool get_bool;
  int get_int;
  double get_float;
  Point3<double> get_point3f;
  Point3<int> get_point3i;
  Color get_color;
  std::string get_string;
};

TEST(DataTableTest, TypedGettersReadThroughGetValueFromAZeroStart) {
  DataTable* table = TableOfEveryKind();
  const Point3<double> zero_f;
  const Point3<int> zero_i;
  const Color zero_c;
  const std::vector<TypedReadRow> rows = {
      {0, true, 1, 1.0, zero_f, zero_i, zero_c, ""},
      {1, true, 7, 7.0, {7.0, 7.0, 7.0}, {7, 7, 7}, {7.0f, 7.0f, 7.0f}, ""},
      {2, true, 2, 2.5, zero_f, zero_i, zero_c, ""},
      {3, false, 0, 0.0, kSamplePoint, zero_i, zero_c, ""},
      {4, false, 0, 0.0, zero_f, zero_i, kSampleColor, ""},
      {5, false, 0, 0.0, zero_f, zero_i, zero_c, "abc"},
  };
  for (const TypedReadRow& row : rows) {
    SCOPED_TRACE(table->GetDependencyName(row.id));
    EXPECT_EQ(table->GetBool(row.id, 0, 1), row.get_bool);
    EXPECT_EQ(table->GetInt(row.id, 0, 1), row.get_int);
    EXPECT_EQ(table->GetFloat(row.id, 0, 1), row.get_float);
    EXPECT_EQ(table->GetPoint3F(row.id, 0, 1), row.get_point3f);
    EXPECT_EQ(table->GetPoint3I(row.id, 0, 1), row.get_point3i);
    EXPECT_EQ(table->GetColor(row.id, 0, 1), row.get_color);
    EXPECT_EQ(table->GetString(row.id, 0, 1), row.get_string);
  }
  // Unlike the member's own getter, which gives its fixed -1.0.
  EXPECT_EQ(table->GetData(4)->GetFloat(0, 1), -1.0);
  EXPECT_EQ(table->GetFloat(4, 0, 1), 0.0);
  Release(table);
}

// Reads element 1 of parameter `id` through the table's GetValue of type T and through the
// member's own GetValue, both from `start`, and expects the same answer and a success.
template <typename T>
void ExpectTableReadsLikeTheMember(DataTable& table, int id, const T& start, const char* type) {
  SCOPED_TRACE(type);
  T through_table = start;
  const Status status = table.GetValue(id, through_table, 0, 1);
  EXPECT_EQ(status.GetCode(), 0);
  EXPECT_EQ(status.GetMessage(), "");
  T from_member = start;
  table.GetData(id)->GetValue(from_member, 0, 1);
  EXPECT_EQ(through_table, from_member);
}

TEST(DataTableTest, GetValueOfEveryTypeOnEveryKindAnswersAsTheMembersOverload) {
  DataTable* table = TableOfEveryKind();
  for (int id = 0; id < 6; ++id) {
    SCOPED_TRACE(table->GetDependencyName(id));
    // Two starts per type, so that a member that leaves the output alone shows.
    for (int pass = 0; pass < 2; ++pass) {
      const bool first = pass == 0;
      ExpectTableReadsLikeTheMember<int>(*table, id, first ? 12345 : -6, "int");
      ExpectTableReadsLikeTheMember<double>(*table, id, first ? 9.25 : -0.5, "double");
      ExpectTableReadsLikeTheMember<Point3<int>>(
          *table, id, first ? Point3<int>(9, 8, 7) : Point3<int>(-1, 0, 1), "Point3<int>");
      ExpectTableReadsLikeTheMember<Point3<double>>(
          *table, id, first ? Point3<double>(9.5, 8.5, 7.5) : Point3<double>(), "Point3<double>");
      ExpectTableReadsLikeTheMember<std::string>(*table, id, first ? "start" : "", "string");
      ExpectTableReadsLikeTheMember<Color>(*table, id, first ? Color(0.125f, 0.5f, 1.0f) : Color(),
                                           "Color");
      ExpectTableReadsLikeTheMember<bool>(*table, id, first, "bool");
    }
  }
  Release(table);
}

struct TableSetter {
  const char* label;
  std::function<Status(DataTable&, int id)> through_table;
  std::function<void(Data&)> on_member;
};

// The eight setters of the table, each with the member setter it must reach, on element 1.
std::vector<TableSetter> TableSetters() {
  return {
      {"int", [](DataTable& t, int id) { return t.SetValue(id, -7, 0, 1); },
       [](Data& d) { d.SetValue(-7, 0, 1); }},
      {"double", [](DataTable& t, int id) { return t.SetValue(id, -2.9, 0, 1); },
       [](Data& d) { d.SetValue(-2.9, 0, 1); }},
      {"Point3<int>",
       [](DataTable& t, int id) { return t.SetValue(id, Point3<int>(4, 5, 6), 0, 1); },
       [](Data& d) { d.SetValue(Point3<int>(4, 5, 6), 0, 1); }},
      {"Point3<double>",
       [](DataTable& t, int id) { return t.SetValue(id, Point3<double>(4.5, 5.5, 6.5), 0, 1); },
       [](Data& d) { d.SetValue(Point3<double>(4.5, 5.5, 6.5), 0, 1); }},
      {"string", [](DataTable& t, int id) { return t.SetValue(id, std::string("xyz"), 0, 1); },
       [](Data& d) { d.SetValue(std::string("xyz"), 0, 1); }},
      {"text literal", [](DataTable& t, int id) { return t.SetValue(id, "lit", 0, 1); },
       [](Data& d) { d.SetValue(std::string("lit"), 0, 1); }},
      {"Color", [](DataTable& t, int id) { return t.SetValue(id, Color(0.5f, 0.0f, 1.0f), 0, 1); },
       [](Data& d) { d.SetValue(Color(0.5f, 0.0f, 1.0f), 0, 1); }},
      {"bool", [](DataTable& t, int id) { return t.SetValue(id, false, 0, 1); },
       [](Data& d) { d.SetValue(false, 0, 1); }},
  };
}

void ExpectSameElements(const Data& actual, const Data& expected) {
  ASSERT_EQ(actual.GetSize(), expected.GetSize());
  for (int e = 0; e < expected.GetSize(); ++e) {
    EXPECT_EQ(actual.GetBool(0, e), expected.GetBool(0, e));
    EXPECT_EQ(actual.GetInt(0, e), expected.GetInt(0, e));
    EXPECT_EQ(actual.GetFloat(0, e), expected.GetFloat(0, e));
    EXPECT_EQ(actual.GetPoint3F(0, e), expected.GetPoint3F(0, e));
    EXPECT_EQ(actual.GetColor(0, e), expected.GetColor(0, e));
    EXPECT_EQ(actual.GetString(0, e), expected.GetString(0, e));
  }
}

TEST(DataTableTest, SetValueOfEveryTypeOnEveryKindStoresAsTheMembersOverloadAndSucceeds) {
  for (const TableSetter& setter : TableSetters()) {
    for (int id = 0; id < 6; ++id) {
      DataTable* table = TableOfEveryKind();
      SCOPED_TRACE(table->GetDependencyName(id) + " <- " + setter.label);
      // A twin of the parameter takes the member's setter directly.
      auto* twin = dynamic_cast<Data*>(table->GetData(id)->Clone());
      ASSERT_NE(twin, nullptr);
      RecordingListener twin_listener;
      twin->AddBlockListener(&twin_listener);
      setter.on_member(*twin);
      RecordingListener listener;
      table->AddBlockListener(&listener);

      const Status status = setter.through_table(*table, id);

      EXPECT_EQ(status.GetCode(), 0);
      EXPECT_EQ(status.GetMessage(), "");
      EXPECT_EQ(table->GetLastDataChanged(), id);
      ExpectSameElements(*table->GetData(id), *twin);
      // The table reports exactly when the member stored.
      ASSERT_EQ(listener.events.size(), twin_listener.events.size());
      for (const BlockEvent& event : listener.events) {
        EXPECT_EQ(event.block, table);
        EXPECT_EQ(event.code, 3);
        EXPECT_EQ(event.param, id);
      }
      table->RemoveBlockListener(&listener);
      twin->RemoveBlockListener(&twin_listener);
      Release(twin);
      Release(table);
    }
  }
}

TEST(DataTableTest, SetValueOfANullTextPointerStoresTheEmptyString) {
  DataTable* table = TableOfEveryKind();
  EXPECT_TRUE(table->SetValue(5, static_cast<const char*>(nullptr), 0, 1).IsOk());
  EXPECT_EQ(table->GetString(5, 0, 1), "");
  Release(table);
}

TEST(DataTableTest, GetValueReadsThroughTheMembersOverloadAndSucceeds) {
  DataTable* table = TableOfEveryKind();
  Point3<double> point(9.0, 9.0, 9.0);
  EXPECT_TRUE(table->GetValue(1, point, 0, 1).IsOk());
  EXPECT_EQ(point, Point3<double>(7.0, 7.0, 7.0));
  // A type the member ignores succeeds and leaves the output as it was.
  std::string text = "kept";
  const Status status = table->GetValue(2, text, 0, 1);
  EXPECT_TRUE(status.IsOk());
  EXPECT_EQ(status.GetMessage(), "");
  EXPECT_EQ(text, "kept");
  int number = 0;
  EXPECT_TRUE(table->GetValue(2, number, 0, 1).IsOk());
  EXPECT_EQ(number, 2);
  Release(table);
}

TEST(DataTableTest, SetValueRecordsTheIdStoresAndPostsTheChangeAsTheParameterId) {
  DataTable* table = TableOfEveryKind();
  RecordingListener listener;
  table->AddBlockListener(&listener);
  EXPECT_TRUE(table->SetValue(4, Color(1.0f, 0.0f, 0.0f), 0, 0).IsOk());
  EXPECT_EQ(table->GetLastDataChanged(), 4);
  EXPECT_EQ(table->GetColor(4, 0, 0), Color(1.0f, 0.0f, 0.0f));
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].block, table);
  EXPECT_EQ(listener.events[0].code, 3);
  EXPECT_EQ(listener.events[0].param, 4);
  table->RemoveBlockListener(&listener);
  Release(table);
}

TEST(DataTableTest, SetValueOfATypeTheMemberIgnoresStillRecordsTheIdAndSucceeds) {
  DataTable* table = TableOfEveryKind();
  RecordingListener listener;
  table->AddBlockListener(&listener);
  const Status status = table->SetValue(3, "text", 0, 0);
  EXPECT_TRUE(status.IsOk());
  EXPECT_EQ(table->GetLastDataChanged(), 3);
  EXPECT_EQ(table->GetPoint3F(3, 0, 0), Point3<double>());
  EXPECT_TRUE(listener.events.empty());
  table->RemoveBlockListener(&listener);
  Release(table);
}

TEST(DataTableTest, SetValueOfEachTypeReachesTheMember) {
  DataTable* table = TableOfEveryKind();
  EXPECT_TRUE(table->SetValue(0, 0, 0, 1).IsOk());
  EXPECT_FALSE(table->GetBool(0, 0, 1));
  EXPECT_TRUE(table->SetValue(1, -3.7, 0, 1).IsOk());
  EXPECT_EQ(table->GetInt(1, 0, 1), -3);
  EXPECT_TRUE(table->SetValue(2, true, 0, 1).IsOk());
  EXPECT_EQ(table->GetFloat(2, 0, 1), 1.0);
  EXPECT_TRUE(table->SetValue(3, Point3<int>(1, 2, 3), 0, 1).IsOk());
  EXPECT_EQ(table->GetPoint3F(3, 0, 1), kSamplePoint);
  EXPECT_TRUE(table->SetValue(5, std::string("str"), 0, 1).IsOk());
  EXPECT_EQ(table->GetString(5, 0, 1), "str");
  EXPECT_EQ(table->GetLastDataChanged(), 5);
  Release(table);
}

TEST(DataTableTest, NamesAndSizesByIdReachTheMember) {
  DataTable* table = TableOfEveryKind();
  EXPECT_TRUE(table->SetDataName(2, "radius"));
  EXPECT_EQ(table->GetDataName(2), "radius");
  EXPECT_EQ(table->GetData(2)->GetName(), "radius");
  RecordingListener listener;
  table->AddBlockListener(&listener);
  EXPECT_TRUE(table->SetDataSize(3, 5));
  EXPECT_EQ(table->GetDataSize(3), 5);
  EXPECT_EQ(table->GetLastDataChanged(), 3);
  EXPECT_TRUE(listener.events.empty());
  table->RemoveBlockListener(&listener);
  Release(table);
}

TEST(DataTableTest, EraseByIdRemovesOneElementAndKeepsTheValueInTheTable) {
  auto* table = new DataTable(true);
  table->AddDataInt(0, 0, 3);
  table->SetValue(0, 10, 0, 0);
  table->SetValue(0, 11, 0, 1);
  table->SetValue(0, 12, 0, 2);
  const Status status = table->Erase(0, 1);
  EXPECT_TRUE(status.IsOk());
  EXPECT_EQ(table->GetNumDatas(), 1);
  ASSERT_EQ(table->GetDataSize(0), 2);
  EXPECT_EQ(table->GetInt(0, 0, 0), 10);
  EXPECT_EQ(table->GetInt(0, 0, 1), 12);
  Release(table);
}

TEST(DataTableTest, SetControllerByIdRecordsTheIdAndLinksTheController) {
  TestController::live = 0;
  DataTable* table = TableOfEveryKind();
  auto* controller = new TestController(1.0);
  EXPECT_TRUE(table->SetController(2, controller, 1));
  EXPECT_EQ(table->GetLastDataChanged(), 2);
  EXPECT_EQ(table->GetAnimationContoller(2, 1), controller);
  EXPECT_EQ(table->GetAnimationContoller(2, 0), nullptr);
  EXPECT_EQ(controller->GetParentBlock(), table->GetData(2));
  // A member without controller slots takes the call and stores nothing.
  auto* unused = new TestController(2.0);
  EXPECT_TRUE(table->SetController(1, unused, 0));
  EXPECT_EQ(table->GetLastDataChanged(), 1);
  EXPECT_EQ(table->GetAnimationContoller(1, 0), nullptr);
  Release(unused);
  Release(table);
  EXPECT_EQ(TestController::live, 0);
}

TEST(DataTableTest, HooksAndTableOperationsOfATableDoNothing) {
  DataTable* table = TableWithHoles();
  RecordingListener listener;
  table->AddBlockListener(&listener);
  table->UpdateDataTable(true);
  table->Update(10);
  table->ActionBegin(1, 2);
  table->ActionEnd(1, 2);
  EXPECT_EQ(table->GetDataTable(), nullptr);
  const Status status = table->SetDataTable(table);
  EXPECT_EQ(status.GetCode(), 1);
  EXPECT_EQ(status.GetMessage(), "This Block has no DataTables.");
  EXPECT_EQ(table->NumDependencies(), 3);
  EXPECT_EQ(table->GetIDToIndex(), (std::vector<int>{0, 1, -1, -1, -1, 2}));
  EXPECT_EQ(table->GetString(5, 0, 0), "five");
  EXPECT_TRUE(listener.events.empty());
  table->RemoveBlockListener(&listener);
  Release(table);
}

TEST(DataTableTest, GetTimeIntervalStartsFromForeverWhateverIsPassedIn) {
  DataTable* table = TableOfEveryKind();
  TimeInterval interval(5, 6);
  table->GetTimeInterval(interval);
  EXPECT_EQ(interval, TimeInterval::Forever());
  Release(table);
}

// ---- Events ----

TEST(DataTableTest, AChangeOfParameterFourAtElementTwoReachesTheOwnerAsOneCode3WithId4) {
  auto* owner = new TableOwner;
  auto* table = new DataTable(true);
  ASSERT_TRUE(owner->MakeDependencyByID(0, table).IsOk());
  for (int id = 0; id < 5; ++id) table->AddDataFloat(id, 0.0, 3);
  RecordingListener owner_listener;
  RecordingListener table_listener;
  owner->AddBlockListener(&owner_listener);
  table->AddBlockListener(&table_listener);

  table->GetData(4)->SetValue(2.0, 0, 2);

  ASSERT_EQ(table_listener.events.size(), 1u);
  EXPECT_EQ(table_listener.events[0].block, table);
  EXPECT_EQ(table_listener.events[0].code, 3);
  EXPECT_EQ(table_listener.events[0].param, 4);
  ASSERT_EQ(owner_listener.events.size(), 1u);
  EXPECT_EQ(owner_listener.events[0].block, owner);
  EXPECT_EQ(owner_listener.events[0].code, 3);
  EXPECT_EQ(owner_listener.events[0].param, 4);
  EXPECT_EQ(table->GetLastDataChanged(), 4);
  owner->RemoveBlockListener(&owner_listener);
  table->RemoveBlockListener(&table_listener);
  Release(owner);
}

TEST(DataTableTest, AControllerChangeTravelsThroughItsValueAndTableToTheOwner) {
  TestController::live = 0;
  auto* owner = new TableOwner;
  auto* table = new DataTable(true);
  ASSERT_TRUE(owner->MakeDependencyByID(0, table).IsOk());
  table->AddDataFloat(0, 0.0, 1);
  table->AddDataFloat(1, 0.0, 1);
  auto* controller = new TestController(0.0);
  table->SetController(1, controller, 0);
  RecordingListener listener;
  owner->AddBlockListener(&listener);
  controller->SetFloat(0, 3.0);
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].code, 3);
  EXPECT_EQ(listener.events[0].param, 1);
  owner->RemoveBlockListener(&listener);
  Release(owner);
  EXPECT_EQ(TestController::live, 0);
}

TEST(DataTableTest, LinkingAControllerByIdReachesTheOwnerAsCode3WithTheId) {
  TestController::live = 0;
  auto* owner = new TableOwner;
  auto* table = new DataTable(true);
  ASSERT_TRUE(owner->MakeDependencyByID(0, table).IsOk());
  table->AddDataFloat(0, 0.0, 2);
  table->AddDataFloat(1, 0.0, 2);
  RecordingListener listener;
  owner->AddBlockListener(&listener);
  // The value reports its slot change (code 2, slot 1); the table turns any report of one of
  // its values into code 3 with the parameter id.
  ASSERT_TRUE(table->SetController(1, new TestController(2.0), 1));
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].block, owner);
  EXPECT_EQ(listener.events[0].code, 3);
  EXPECT_EQ(listener.events[0].param, 1);
  // Emptying the slot is reported the same way.
  ASSERT_TRUE(table->SetController(1, nullptr, 1));
  ASSERT_EQ(listener.events.size(), 2u);
  EXPECT_EQ(listener.events[1].code, 3);
  EXPECT_EQ(listener.events[1].param, 1);
  EXPECT_EQ(TestController::live, 0);
  owner->RemoveBlockListener(&listener);
  Release(owner);
}

TEST(DataTableTest, NamingErasingAndResizingByIdPostNothing) {
  auto* owner = new TableOwner;
  auto* table = new DataTable(true);
  ASSERT_TRUE(owner->MakeDependencyByID(0, table).IsOk());
  table->AddDataInt(0, 0, 3);
  RecordingListener listener;
  owner->AddBlockListener(&listener);
  table->AddBlockListener(&listener);
  EXPECT_TRUE(table->SetDataName(0, "count"));
  EXPECT_TRUE(table->Erase(0, 2).IsOk());
  EXPECT_TRUE(table->SetDataSize(0, 5));
  EXPECT_EQ(table->GetDataSize(0), 5);
  EXPECT_TRUE(listener.events.empty());
  owner->RemoveBlockListener(&listener);
  table->RemoveBlockListener(&listener);
  Release(owner);
}

TEST(DataTableTest, AValueInTwoSlotsIsReportedOncePerSlot) {
  auto* table = new DataTable(true);
  table->AddDataInt(0, 0, 1);
  table->AddDataInt(1, 0, 1);
  Data* shared = table->GetData(0);
  ASSERT_TRUE(table->MakeDependencyByID(1, shared).IsOk());
  RecordingListener listener;
  table->AddBlockListener(&listener);
  shared->SetValue(5, 0, 0);
  // The value lists the table as a dependant twice, so the table hears the change twice, and
  // each time reports it once for each of the two slots.
  ASSERT_EQ(listener.events.size(), 4u);
  for (const BlockEvent& event : listener.events) {
    EXPECT_EQ(event.block, table);
    EXPECT_EQ(event.code, 3);
    EXPECT_EQ(event.param, 0);
  }
  table->RemoveBlockListener(&listener);
  Release(table);
}

TEST(DataTableTest, OneDeliveryFromAValueInTwoSlotsIsReportedForEachSlot) {
  auto* table = new DataTable(true);
  table->AddDataInt(0, 0, 1);
  table->AddDataInt(1, 0, 1);
  Data* shared = table->GetData(0);
  Data* replaced = table->GetData(1);
  // A raw store: the value keeps a single back reference, so it delivers the change once.
  table->SetDependency(1, shared);
  RecordingListener listener;
  table->AddBlockListener(&listener);
  shared->SetValue(5, 0, 0);
  ASSERT_EQ(listener.events.size(), 2u);
  EXPECT_EQ(listener.events[0].param, 0);
  EXPECT_EQ(listener.events[1].param, 0);
  EXPECT_EQ(table->GetLastDataChanged(), 0);
  table->RemoveBlockListener(&listener);
  // Put the linked value back so that the release matches the links.
  table->SetDependency(1, replaced);
  Release(table);
}

TEST(DataTableTest, EventsWithoutASenderOrFromBlocksThatAreNotItsValuesAreDropped) {
  auto* owner = new TableOwner;
  auto* table = new DataTable(true);
  ASSERT_TRUE(owner->MakeDependencyByID(0, table).IsOk());
  RecordingListener listener;
  owner->AddBlockListener(&listener);
  table->AddBlockListener(&listener);
  // Linking a new value delivers code 2 to the table, which forwards nothing.
  table->AddDataInt(0, 0, 1);
  table->ProcessEvent(BlockEvent(nullptr, 3, 0));
  table->ProcessEvent(BlockEvent(owner, 3, 0));
  table->ProcessEvent(3, 0);
  EXPECT_TRUE(listener.events.empty());
  EXPECT_EQ(table->GetLastDataChanged(), -1);
  owner->RemoveBlockListener(&listener);
  table->RemoveBlockListener(&listener);
  Release(owner);
}

TEST(DataTableTest, AMutedTableLetsAChangeReachNeitherItsListenersNorItsOwner) {
  auto* owner = new TableOwner;
  auto* table = new DataTable(true);
  ASSERT_TRUE(owner->MakeDependencyByID(0, table).IsOk());
  table->AddDataInt(0, 0, 1);
  RecordingListener owner_listener;
  RecordingListener table_listener;
  owner->AddBlockListener(&owner_listener);
  table->AddBlockListener(&table_listener);
  table->SetSendEvents(false);
  EXPECT_TRUE(table->SetValue(0, 8, 0, 0).IsOk());
  EXPECT_EQ(table->GetInt(0, 0, 0), 8);
  EXPECT_TRUE(owner_listener.events.empty());
  EXPECT_TRUE(table_listener.events.empty());
  owner->RemoveBlockListener(&owner_listener);
  table->RemoveBlockListener(&table_listener);
  Release(owner);
}

// ---- Clone ----

TEST(DataTableTest, CloneCopiesEveryValueDeeplyIntoTheSlotOfItsId) {
  TestController::live = 0;
  auto* table = new DataTable(true);
  // Slot order differs from id order: the copy puts id k in slot k.
  table->AddDataString(1, "one", 1);
  table->AddDataFloat(0, 0.5, 2);
  table->SetDataName(1, "label");
  table->SetController(0, new TestController(2.0), 1);
  table->SetValue(0, 4.0, 0, 0);

  auto* copy = dynamic_cast<DataTable*>(table->Clone());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->GetNumDatas(), 2);
  EXPECT_EQ(copy->GetDependencyName(0), "DataFloat");
  EXPECT_EQ(copy->GetDependencyName(1), "DataString");
  EXPECT_EQ(copy->GetIDToIndex(), (std::vector<int>{0, 1}));
  EXPECT_EQ(copy->GetLastDataChanged(), -1);
  EXPECT_NE(copy->GetData(0), table->GetData(0));
  EXPECT_EQ(copy->GetData(0)->GetParentBlock(), copy);
  EXPECT_EQ(copy->GetFloat(0, 0, 0), 4.0);
  EXPECT_EQ(copy->GetString(1, 0, 0), "one");
  EXPECT_EQ(copy->GetDataName(1), "label");
  Controller* cloned = copy->GetAnimationContoller(0, 1);
  ASSERT_NE(cloned, nullptr);
  EXPECT_NE(cloned, table->GetAnimationContoller(0, 1));
  EXPECT_EQ(TestController::live, 2);
  // The copy is independent of its source.
  copy->SetValue(0, 9.0, 0, 0);
  EXPECT_EQ(table->GetFloat(0, 0, 0), 4.0);
  Release(copy);
  Release(table);
  EXPECT_EQ(TestController::live, 0);
}

TEST(DataTableTest, CloneOfATableWithSparseIdsLeavesTheSlotsOfMissingIdsEmpty) {
  DataTable* table = TableWithHoles();  // ids 0, 1, 5 in three slots
  auto* copy = dynamic_cast<DataTable*>(table->Clone());
  ASSERT_NE(copy, nullptr);
  ASSERT_EQ(copy->NumDependencies(), 3);
  EXPECT_NE(copy->GetDependency(0), nullptr);
  EXPECT_NE(copy->GetDependency(1), nullptr);
  // Slot 2 is no id of the source; the value with id 5 has no slot to go to.
  EXPECT_EQ(copy->GetDependency(2), nullptr);
  EXPECT_EQ(copy->GetIDToIndex(), (std::vector<int>{0, 1}));
  EXPECT_EQ(copy->GetData(5), nullptr);
  Release(copy);
  Release(table);
}

// ---- Payload ----

TEST(DataTableTest, SaveWritesTheSlotCountInChunk0x15) {
  DataTable* table = TableWithHoles();
  const std::vector<RawChunk> chunks = PayloadChunks(SavePayload(*table));
  ASSERT_EQ(chunks.size(), 1u);
  EXPECT_EQ(chunks[0].id, 0x15u);
  EXPECT_EQ(chunks[0].bytes, Bytes().I32(3).Get());
  Release(table);
}

// A file whose payload chunk holds `payload`, followed by `trailing` bytes of padding in a
// chunk of their own, standing for the rest of the file the count is checked against.
std::vector<std::uint8_t> TableFile(const std::vector<std::uint8_t>& payload,
                                    std::size_t trailing) {
  SceneSave save;
  save.BeginChunk(testing::data::kPayloadChunk);
  save.BeginChunk(0x15);
  unsigned written = 0;
  save.Write(payload.data(), static_cast<unsigned>(payload.size()), written);
  save.EndChunk();
  save.EndChunk();
  save.BeginChunk(0x10);
  const std::vector<std::uint8_t> padding(trailing, 0);
  save.Write(padding.data(), static_cast<unsigned>(padding.size()), written);
  save.EndChunk();
  return save.TakeBytes();
}

TEST(DataTableTest, LoadSetsTheSlotCountWithEmptySlotsAndLeavesTheMapAlone) {
  auto* table = new DataTable(false);
  const LoadOutcome outcome = LoadPayload(*table, TableFile(Bytes().I32(4).Get(), 64));
  EXPECT_EQ(outcome.result, 1);
  EXPECT_FALSE(outcome.reader_error) << outcome.message;
  ASSERT_EQ(table->NumDependencies(), 4);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(table->GetDependency(i), nullptr);
  EXPECT_TRUE(table->GetIDToIndex().empty());
  Release(table);
}

TEST(DataTableTest, LoadSkipsChunksItDoesNotKnow) {
  auto* table = new DataTable(false);
  const LoadOutcome outcome = LoadPayload(
      *table, PayloadFile({{0x05, Bytes().I32(99).Get()}, {0x15, Bytes().I32(0).Get()}}));
  EXPECT_EQ(outcome.result, 1);
  EXPECT_EQ(table->NumDependencies(), 0);
  Release(table);
}

TEST(DataTableTest, LoadingFewerSlotsReleasesTheValuesOfTheDroppedOnes) {
  DataTable* table = TableWithHoles();
  Data* first = table->GetData(0);
  const LoadOutcome outcome = LoadPayload(*table, TableFile(Bytes().I32(1).Get(), 16));
  EXPECT_EQ(outcome.result, 1);
  ASSERT_EQ(table->NumDependencies(), 1);
  EXPECT_EQ(table->GetDependency(0), first);
  Release(table);
}

TEST(DataTableTest, ASlotCountTheRestOfTheFileCannotFillIsAnError) {
  // Each slot comes back through a 4-byte number later in the file.
  for (std::int32_t count : {0x7fffffff, 1000, -1}) {
    SCOPED_TRACE(count);
    auto* table = new DataTable(false);
    const LoadOutcome outcome = LoadPayload(*table, TableFile(Bytes().I32(count).Get(), 64));
    EXPECT_EQ(outcome.result, 0);
    EXPECT_TRUE(outcome.reader_error);
    EXPECT_EQ(table->NumDependencies(), 0);
    Release(table);
  }
}

TEST(DataTableTest, ASlotCountCutShortIsAnErrorAndKeepsTheSlots) {
  DataTable* table = TableWithHoles();
  const LoadOutcome outcome = LoadPayload(*table, PayloadFile({{0x15, Bytes().U8(1).Get()}}));
  EXPECT_EQ(outcome.result, 0);
  EXPECT_TRUE(outcome.reader_error);
  EXPECT_EQ(table->NumDependencies(), 3);
  EXPECT_NE(table->GetData(5), nullptr);
  Release(table);
}

}  // namespace
}  // namespace Orlo
