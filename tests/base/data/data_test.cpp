// The uniform interface of the six data values: every cell of the three conversion tables
// (by-value getters, getters into a reference, setters), the events of the setters, and
// what all members share (sizes, names, slots, time, cloning, factories).
#include <orlo/base/data/data.h>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include <orlo/base/data/data_bool.h>
#include <orlo/base/data/data_color.h>
#include <orlo/base/data/data_float.h>
#include <orlo/base/data/data_int.h>
#include <orlo/base/data/data_point3.h>
#include <orlo/base/data/data_string.h>
#include <orlo/base/data/data_table.h>
#include <orlo/base/engine/base_library.h>
#include <orlo/base/engine/scene_engine.h>

#include "tests/base/data/data_test_blocks.h"

namespace Orlo {
namespace {

using testing::RecordingListener;
using testing::data::Release;
using testing::data::TestController;

constexpr int kIntMin = std::numeric_limits<int>::min();
const double kNaN = std::numeric_limits<double>::quiet_NaN();

// A member of each class, made with `make`, whose element 1 holds the sample value of the
// row (element 0 keeps the default, so reading the wrong element shows).
using MakeData = std::function<Data*()>;

template <typename Member, typename Value>
MakeData Holding(Value value) {
  return [value] {
    auto* data = new Member(3, Value{}, 2);
    data->SetValue(value, 0, 1);
    return data;
  };
}

// ---- Getters returning by value ----

struct ByValueRow {
  const char* label;
  MakeData make;
  bool get_bool;
  int get_int;
  double get_float;
  Point3<double> get_point3f;
  Point3<int> get_point3i;
  Color get_color;
  std::string get_string;
};

const Point3<double> kNoPoint3F(-1.0, -1.0, -1.0);
const Point3<int> kNoPoint3I(-1, -1, -1);
const Point3<double> kSamplePoint(1.5, -2.5, 3.25);
const Color kSampleColor(0.25f, 0.5f, 0.75f);

std::vector<ByValueRow> ByValueRows() {
  return {
      {"DataBool true", Holding<DataBool>(true), true, 1, 1.0, kNoPoint3F, kNoPoint3I, {}, ""},
      {"DataBool false", Holding<DataBool>(false), false, 0, 0.0, kNoPoint3F, kNoPoint3I, {}, ""},
      {"DataInt 7", Holding<DataInt>(7), true, 7, 7.0, kNoPoint3F, kNoPoint3I, {}, ""},
      {"DataInt 0", Holding<DataInt>(0), false, 0, 0.0, kNoPoint3F, kNoPoint3I, {}, ""},
      {"DataInt -5", Holding<DataInt>(-5), true, -5, -5.0, kNoPoint3F, kNoPoint3I, {}, ""},
      {"DataInt 16777217",
       Holding<DataInt>(16777217),
       true,
       16777217,
       16777216.0,
       kNoPoint3F,
       kNoPoint3I,
       {},
       ""},
      {"DataFloat 2.9", Holding<DataFloat>(2.9), true, 2, 2.9, kNoPoint3F, kNoPoint3I, {}, ""},
      {"DataFloat -2.9", Holding<DataFloat>(-2.9), true, -2, -2.9, kNoPoint3F, kNoPoint3I, {}, ""},
      {"DataFloat 0.0", Holding<DataFloat>(0.0), false, 0, 0.0, kNoPoint3F, kNoPoint3I, {}, ""},
      {"DataFloat 3.0e10",
       Holding<DataFloat>(3.0e10),
       true,
       kIntMin,
       3.0e10,
       kNoPoint3F,
       kNoPoint3I,
       {},
       ""},
      {"DataPoint3",
       Holding<DataPoint3>(kSamplePoint),
       false,
       -1,
       -1.0,
       kSamplePoint,
       kNoPoint3I,
       {},
       ""},
      {"DataColor", Holding<DataColor>(kSampleColor), false, -1, -1.0, kNoPoint3F, kNoPoint3I,
       kSampleColor, ""},
      {"DataString",
       Holding<DataString>(std::string("abc")),
       false,
       0,
       0.0,
       kNoPoint3F,
       kNoPoint3I,
       {},
       "abc"},
  };
}

TEST(DataConversionTest, EveryByValueGetterGivesTheCellOfItsMember) {
  for (const ByValueRow& row : ByValueRows()) {
    SCOPED_TRACE(row.label);
    Data* data = row.make();
    // The time is ignored: any time reads the stored element.
    for (int time : {0, 160, -4800}) {
      EXPECT_EQ(data->GetBool(time, 1), row.get_bool);
      EXPECT_EQ(data->GetInt(time, 1), row.get_int);
      EXPECT_EQ(data->GetFloat(time, 1), row.get_float);
      EXPECT_EQ(data->GetPoint3F(time, 1), row.get_point3f);
      EXPECT_EQ(data->GetPoint3I(time, 1), row.get_point3i);
      EXPECT_EQ(data->GetColor(time, 1), row.get_color);
      EXPECT_EQ(data->GetString(time, 1), row.get_string);
    }
    Release(data);
  }
}

TEST(DataConversionTest, ByValueGettersOfDataFloatHoldingNaNGiveTrueAndTheTruncationFailure) {
  auto* data = new DataFloat(0, kNaN, 1);
  EXPECT_TRUE(data->GetBool(0, 0));
  EXPECT_EQ(data->GetInt(0, 0), kIntMin);
  EXPECT_TRUE(std::isnan(data->GetFloat(0, 0)));
  Release(data);
}

// ---- Getters into a reference ----

// nullopt: the getter leaves its output untouched.
struct ByReferenceRow {
  const char* label;
  MakeData make;
  std::optional<bool> as_bool;
  std::optional<int> as_int;
  std::optional<double> as_double;
  std::optional<Point3<int>> as_point3i;
  std::optional<Point3<double>> as_point3f;
  std::optional<Color> as_color;
  std::optional<std::string> as_string;
};

std::vector<ByReferenceRow> ByReferenceRows() {
  const auto none = std::nullopt;
  return {
      {"DataBool true", Holding<DataBool>(true), true, 1, 1.0, none, none, none, none},
      {"DataBool false", Holding<DataBool>(false), false, 0, 0.0, none, none, none, none},
      {"DataInt 7", Holding<DataInt>(7), true, 7, 7.0, Point3<int>(7, 7, 7),
       Point3<double>(7.0, 7.0, 7.0), Color(7.0f, 7.0f, 7.0f), none},
      {"DataInt 0", Holding<DataInt>(0), false, 0, 0.0, Point3<int>(0, 0, 0),
       Point3<double>(0.0, 0.0, 0.0), Color(0.0f, 0.0f, 0.0f), none},
      {"DataInt 16777217", Holding<DataInt>(16777217), true, 16777217, 16777216.0,
       Point3<int>(16777217, 16777217, 16777217),
       Point3<double>(16777216.0, 16777216.0, 16777216.0),
       Color(16777216.0f, 16777216.0f, 16777216.0f), none},
      {"DataFloat 2.9", Holding<DataFloat>(2.9), true, 2, 2.9, none, none, none, none},
      {"DataFloat -2.9", Holding<DataFloat>(-2.9), true, -2, -2.9, none, none, none, none},
      {"DataFloat 0.0", Holding<DataFloat>(0.0), false, 0, 0.0, none, none, none, none},
      {"DataFloat -3.0e10", Holding<DataFloat>(-3.0e10), true, kIntMin, -3.0e10, none, none, none,
       none},
      {"DataPoint3", Holding<DataPoint3>(kSamplePoint), none, none, none, none, kSamplePoint, none,
       none},
      {"DataColor", Holding<DataColor>(kSampleColor), none, none, none, none, none, kSampleColor,
       none},
      {"DataString", Holding<DataString>(std::string("abc")), none, none, none, none, none, none,
       std::string("abc")},
  };
}

// Reads element 1 into two different starting values, so that a getter that does nothing
// cannot pass by luck.
template <typename T>
void ExpectReadInto(const Data& data, const std::optional<T>& expected, const T& first_start,
                    const T& second_start, const char* type) {
  SCOPED_TRACE(type);
  for (const T& start : {first_start, second_start}) {
    T out = start;
    data.GetValue(out, 0, 1);
    if (expected.has_value()) {
      EXPECT_EQ(out, *expected);
    } else {
      EXPECT_EQ(out, start) << "expected no change";
    }
  }
}

TEST(DataConversionTest, EveryGetterIntoAReferenceGivesTheCellOfItsMember) {
  for (const ByReferenceRow& row : ByReferenceRows()) {
    SCOPED_TRACE(row.label);
    Data* data = row.make();
    ExpectReadInto<bool>(*data, row.as_bool, false, true, "bool");
    ExpectReadInto<int>(*data, row.as_int, 12345, -678, "int");
    ExpectReadInto<double>(*data, row.as_double, 123.25, -0.5, "double");
    ExpectReadInto<Point3<int>>(*data, row.as_point3i, {9, 8, 7}, {-9, -8, -7}, "Point3<int>");
    ExpectReadInto<Point3<double>>(*data, row.as_point3f, {9.5, 8.5, 7.5}, {-9.5, 0.0, 1.0},
                                   "Point3<double>");
    ExpectReadInto<Color>(*data, row.as_color, {0.125f, 0.5f, 1.0f}, {0.0f, 0.0f, 0.0f}, "Color");
    ExpectReadInto<std::string>(*data, row.as_string, "start", "", "string");
    Release(data);
  }
}

TEST(DataConversionTest, GettersIntoAReferenceOfDataFloatHoldingNaNGiveTrueAndTheFailure) {
  auto* data = new DataFloat(0, kNaN, 1);
  bool as_bool = false;
  data->GetValue(as_bool, 0, 0);
  EXPECT_TRUE(as_bool);
  int as_int = 0;
  data->GetValue(as_int, 0, 0);
  EXPECT_EQ(as_int, kIntMin);
  Release(data);
}

// ---- Setters ----

using Natural = std::variant<bool, int, double, Point3<double>, Color, std::string>;

// An element (element 1 unless told otherwise) read through the member's own type.
Natural ReadNatural(const Data& data, int index = 1) {
  switch (data.GetType()) {
    case Data::kTypeBool:
      return data.GetBool(0, index);
    case Data::kTypeInt:
      return data.GetInt(0, index);
    case Data::kTypeFloat:
      return data.GetFloat(0, index);
    case Data::kTypePoint3:
      return data.GetPoint3F(0, index);
    case Data::kTypeColor:
      return data.GetColor(0, index);
    default:
      return data.GetString(0, index);
  }
}

struct Setter {
  const char* label;
  std::function<void(Data&)> apply;
};

// The samples given to the seven setters, in the order of the columns below.
std::vector<Setter> Setters() {
  return {
      {"bool true", [](Data& d) { d.SetValue(true, 0, 1); }},
      {"int -7", [](Data& d) { d.SetValue(-7, 0, 1); }},
      {"double -2.9", [](Data& d) { d.SetValue(-2.9, 0, 1); }},
      {"Point3<int> (1, 2, 3)", [](Data& d) { d.SetValue(Point3<int>(1, 2, 3), 0, 1); }},
      {"Point3<double> (4.5, 5.5, 6.5)",
       [](Data& d) { d.SetValue(Point3<double>(4.5, 5.5, 6.5), 0, 1); }},
      {"Color (0.125, 0.25, 0.375)",
       [](Data& d) { d.SetValue(Color(0.125f, 0.25f, 0.375f), 0, 1); }},
      {"string xyz", [](Data& d) { d.SetValue(std::string("xyz"), 0, 1); }},
  };
}

struct SetterRow {
  const char* label;
  std::function<Data*()> make;
  // What element 1 holds after each setter; nullopt: nothing stored and no event.
  std::vector<std::optional<Natural>> stored;
};

std::vector<SetterRow> SetterRows() {
  const std::optional<Natural> none;
  return {
      {"DataBool",
       [] { return new DataBool(3, false, 2); },
       {true, true, true, none, none, none, none}},
      {"DataInt", [] { return new DataInt(3, 0, 2); }, {1, -7, -2, none, none, none, none}},
      {"DataFloat",
       [] { return new DataFloat(3, 0.0, 2); },
       {1.0, -7.0, -2.9, none, none, none, none}},
      {"DataPoint3",
       [] { return new DataPoint3(3, {}, 2); },
       {none, none, none, none, Point3<double>(4.5, 5.5, 6.5), none, none}},
      {"DataColor",
       [] { return new DataColor(3, {}, 2); },
       {none, none, none, none, none, Color(0.125f, 0.25f, 0.375f), none}},
      {"DataString",
       [] { return new DataString(3, "", 2); },
       {none, none, none, none, none, none, std::string("xyz")}},
  };
}

TEST(DataConversionTest, EverySetterStoresItsCellAndPostsCode3OnlyWhenItStores) {
  const std::vector<Setter> setters = Setters();
  for (const SetterRow& row : SetterRows()) {
    ASSERT_EQ(row.stored.size(), setters.size());
    for (std::size_t column = 0; column < setters.size(); ++column) {
      SCOPED_TRACE(std::string(row.label) + " <- " + setters[column].label);
      Data* data = row.make();
      RecordingListener listener;
      data->AddBlockListener(&listener);
      const Natural before = ReadNatural(*data);
      setters[column].apply(*data);
      if (row.stored[column].has_value()) {
        EXPECT_EQ(ReadNatural(*data), *row.stored[column]);
        ASSERT_EQ(listener.events.size(), 1u);
        EXPECT_EQ(listener.events[0].block, data);
        EXPECT_EQ(listener.events[0].code, 3);
        EXPECT_EQ(listener.events[0].param, 1);
      } else {
        EXPECT_EQ(ReadNatural(*data), before);
        EXPECT_TRUE(listener.events.empty());
      }
      data->RemoveBlockListener(&listener);
      Release(data);
    }
  }
}

TEST(DataConversionTest, DataBoolStoresWhetherANumberDiffersFromZero) {
  auto* data = new DataBool(0, true, 1);
  data->SetValue(0, 0, 0);
  EXPECT_FALSE(data->GetBool(0, 0));
  data->SetValue(true, 0, 0);
  data->SetValue(0.0, 0, 0);
  EXPECT_FALSE(data->GetBool(0, 0));
  data->SetValue(kNaN, 0, 0);
  EXPECT_TRUE(data->GetBool(0, 0));
  data->SetValue(false, 0, 0);
  EXPECT_FALSE(data->GetBool(0, 0));
  Release(data);
}

TEST(DataConversionTest, DataIntStoresBooleansAsOneOrZeroAndTruncatesDoubles) {
  auto* data = new DataInt(0, 9, 1);
  data->SetValue(false, 0, 0);
  EXPECT_EQ(data->GetInt(0, 0), 0);
  data->SetValue(2.9, 0, 0);
  EXPECT_EQ(data->GetInt(0, 0), 2);
  data->SetValue(3.0e10, 0, 0);
  EXPECT_EQ(data->GetInt(0, 0), kIntMin);
  data->SetValue(kNaN, 0, 0);
  EXPECT_EQ(data->GetInt(0, 0), kIntMin);
  Release(data);
}

TEST(DataConversionTest, DataFloatStoresIntegersExactlyAndBooleansAsOneOrZero) {
  auto* data = new DataFloat(0, 9.0, 1);
  data->SetValue(16777217, 0, 0);
  EXPECT_EQ(data->GetFloat(0, 0), 16777217.0);
  data->SetValue(std::numeric_limits<int>::max(), 0, 0);
  EXPECT_EQ(data->GetFloat(0, 0), 2147483647.0);
  data->SetValue(false, 0, 0);
  EXPECT_EQ(data->GetFloat(0, 0), 0.0);
  Release(data);
}

TEST(DataConversionTest, AStringLiteralGoesToTheStringSetterNotTheBooleanOne) {
  auto* text = new DataString(0, "", 1);
  text->SetValue("literal", 0, 0);
  EXPECT_EQ(text->GetString(0, 0), "literal");
  auto* flag = new DataBool(0, false, 1);
  flag->SetValue("literal", 0, 0);
  EXPECT_FALSE(flag->GetBool(0, 0));
  Release(text);
  Release(flag);
}

// ---- What every member shares ----

struct MemberRow {
  const char* class_name;
  MakeData make;  // id 3, size 2
  BlockType type;
  int type_code;
};

std::vector<MemberRow> Members() {
  return {
      {"DataBool", [] { return new DataBool(3, true, 2); }, {200, 64, 32}, 0},
      {"DataInt", [] { return new DataInt(3, 5, 2); }, {200, 64, 48}, 1},
      {"DataFloat", [] { return new DataFloat(3, 0.5, 2); }, {200, 64, 64}, 2},
      {"DataPoint3",
       [] {
         return new DataPoint3(3, {1.0, 2.0, 3.0}, 2);
       },
       {200, 64, 80},
       3},
      {"DataColor",
       [] {
         return new DataColor(3, {0.5f, 0.25f, 1.0f}, 2);
       },
       {200, 64, 96},
       4},
      {"DataString", [] { return new DataString(3, "dflt", 2); }, {200, 64, 112}, 5},
  };
}

void ExpectSameType(const BlockType& actual, const BlockType& expected) {
  EXPECT_EQ(actual.class_id, expected.class_id);
  EXPECT_EQ(actual.super_class_id, expected.super_class_id);
  EXPECT_EQ(actual.sub_id, expected.sub_id);
}

TEST(DataTest, EachMemberReportsItsClassNameTypeAndTypeCode) {
  for (const MemberRow& row : Members()) {
    SCOPED_TRACE(row.class_name);
    Data* data = row.make();
    EXPECT_EQ(data->GetClassName(), row.class_name);
    ExpectSameType(data->GetBlockType(), row.type);
    EXPECT_EQ(data->GetType(), row.type_code);
    EXPECT_EQ(data->GetParameterID(), 3);
    EXPECT_EQ(data->GetName(), "");
    EXPECT_EQ(data->GetSize(), 2);
    EXPECT_EQ(data->GetDataTable(), nullptr);
    EXPECT_EQ(data->GetDependencyType(0), 0u);
    Release(data);
  }
}

TEST(DataTest, EachMemberSizeOfZeroOrLessAtConstructionGivesOneElement) {
  for (int size : {0, -3}) {
    SCOPED_TRACE(size);
    std::vector<Data*> made = {new DataBool(0, true, size), new DataInt(0, 4, size),
                               new DataFloat(0, 1.5, size), new DataPoint3(0, {}, size),
                               new DataColor(0, {}, size),  new DataString(0, "s", size)};
    for (Data* data : made) {
      EXPECT_EQ(data->GetSize(), 1) << data->GetClassName();
      Release(data);
    }
  }
  auto* data_float = new DataFloat(0, 1.5, 0);
  EXPECT_EQ(data_float->NumDependencies(), 1);
  EXPECT_EQ(data_float->GetFloat(0, 0), 1.5);
  Release(data_float);
}

TEST(DataTest, SetSizeFillsNewElementsWithTheDefaultNotTheLastElement) {
  auto* data = new DataInt(0, 5, 2);
  data->SetValue(9, 0, 1);
  RecordingListener listener;
  data->AddBlockListener(&listener);
  data->SetSize(4);
  EXPECT_EQ(data->GetSize(), 4);
  EXPECT_EQ(data->GetInt(0, 1), 9);
  EXPECT_EQ(data->GetInt(0, 2), 5);
  EXPECT_EQ(data->GetInt(0, 3), 5);
  data->SetSize(1);
  EXPECT_EQ(data->GetSize(), 1);
  EXPECT_EQ(data->GetInt(0, 0), 5);
  EXPECT_TRUE(listener.events.empty());
  data->RemoveBlockListener(&listener);
  Release(data);
}

TEST(DataTest, SetSizeFillsWithTheDefaultForEveryMember) {
  auto* flags = new DataBool(0, true, 1);
  flags->SetValue(false, 0, 0);
  flags->SetSize(3);
  EXPECT_FALSE(flags->GetBool(0, 0));
  EXPECT_TRUE(flags->GetBool(0, 2));
  auto* text = new DataString(0, "dflt", 1);
  text->SetValue("other", 0, 0);
  text->SetSize(2);
  EXPECT_EQ(text->GetString(0, 1), "dflt");
  auto* points = new DataPoint3(0, {1.0, 2.0, 3.0}, 1);
  points->SetSize(2);
  EXPECT_EQ(points->GetPoint3F(0, 1), Point3<double>(1.0, 2.0, 3.0));
  auto* colors = new DataColor(0, {0.5f, 0.5f, 0.5f}, 1);
  colors->SetSize(2);
  EXPECT_EQ(colors->GetColor(0, 1), Color(0.5f, 0.5f, 0.5f));
  for (Data* data : std::vector<Data*>{flags, text, points, colors}) Release(data);
}

TEST(DataTest, SetSizeWithANegativeSizeEmptiesTheValue) {
  auto* data = new DataFloat(0, 1.0, 3);
  data->SetSize(-2);
  EXPECT_EQ(data->GetSize(), 0);
  EXPECT_EQ(data->NumDependencies(), 3);
  Release(data);
}

TEST(DataTest, EraseRemovesOneElementMovesTheRestDownAndPostsNothing) {
  auto* data = new DataString(0, "", 4);
  for (int i = 0; i < 4; ++i) data->SetValue(std::string(1, static_cast<char>('a' + i)), 0, i);
  RecordingListener listener;
  data->AddBlockListener(&listener);
  data->Erase(1);
  ASSERT_EQ(data->GetSize(), 3);
  EXPECT_EQ(data->GetString(0, 0), "a");
  EXPECT_EQ(data->GetString(0, 1), "c");
  EXPECT_EQ(data->GetString(0, 2), "d");
  EXPECT_TRUE(listener.events.empty());
  data->RemoveBlockListener(&listener);
  Release(data);
}

// One element is kept in the value itself and longer arrays on the heap; the elements come
// through every change between the two forms, in both directions.
TEST(DataTest, ElementsSurviveEveryResizeAndEraseBetweenOneAndManyElements) {
  auto* data = new DataString(0, "d", 1);
  auto elements = [data] {
    std::vector<std::string> out;
    for (int i = 0; i < data->GetSize(); ++i) out.push_back(data->GetString(0, i));
    return out;
  };
  data->SetValue("a", 0, 0);
  data->SetSize(3);
  data->SetValue("b", 0, 1);
  EXPECT_EQ(elements(), (std::vector<std::string>{"a", "b", "d"}));
  data->Erase(0);
  EXPECT_EQ(elements(), (std::vector<std::string>{"b", "d"}));
  data->Erase(1);
  EXPECT_EQ(elements(), (std::vector<std::string>{"b"}));
  data->SetSize(2);
  data->Erase(0);
  EXPECT_EQ(elements(), (std::vector<std::string>{"d"}));
  data->Erase(0);
  EXPECT_EQ(data->GetSize(), 0);
  data->SetSize(1);
  EXPECT_EQ(elements(), (std::vector<std::string>{"d"}));
  data->SetSize(0);
  data->SetSize(4);
  EXPECT_EQ(elements(), (std::vector<std::string>(4, "d")));
  data->SetValue(std::string(100, 'x'), 0, 3);
  Block* copy = data->Clone();
  data->SetSize(1);
  EXPECT_EQ(elements(), (std::vector<std::string>{"d"}));
  auto* copied = static_cast<DataString*>(copy);
  ASSERT_EQ(copied->GetSize(), 4);
  EXPECT_EQ(copied->GetString(0, 3), std::string(100, 'x'));
  Release(data);
  Release(copied);
}

TEST(DataTest, NameIsEmptyByDefaultAndKeepsWhatIsSet) {
  auto* data = new DataColor(0, {}, 1);
  data->SetName("diffuse_color");
  EXPECT_EQ(data->GetName(), "diffuse_color");
  Release(data);
}

TEST(DataTest, MembersOtherThanDataFloatHaveNoSlotsAndNoControllers) {
  for (const MemberRow& row : Members()) {
    if (row.type_code == Data::kTypeFloat) continue;
    SCOPED_TRACE(row.class_name);
    Data* data = row.make();
    auto* controller = new TestController(1.0);
    EXPECT_EQ(data->NumDependencies(), 0);
    for (int index : {-1, 0, 1, 2}) {
      EXPECT_EQ(data->GetDependency(index), nullptr);
      EXPECT_EQ(data->GetDependencyName(index), "no_dependency");
      EXPECT_EQ(data->GetController(index), nullptr);
    }
    data->SetDependency(0, controller);
    EXPECT_EQ(data->GetDependency(0), nullptr);
    data->SetController(controller, 0);
    EXPECT_EQ(data->GetController(0), nullptr);
    EXPECT_EQ(controller->GetParentBlock(), nullptr);
    Release(controller);
    Release(data);
  }
}

TEST(DataTest, EveryMemberLeavesAFiniteIntervalAsItIsAndNarrowsForeverToForever) {
  for (const MemberRow& row : Members()) {
    SCOPED_TRACE(row.class_name);
    Data* data = row.make();
    TimeInterval interval(-20, 300);
    data->GetTimeInterval(interval);
    EXPECT_EQ(interval, TimeInterval(-20, 300));
    TimeInterval forever = TimeInterval::Forever();
    data->GetTimeInterval(forever);
    EXPECT_EQ(forever, TimeInterval::Forever());
    Release(data);
  }
}

TEST(DataTest, CloneCopiesClassIdDefaultSizeElementsAndNameButNotListeners) {
  for (const MemberRow& row : Members()) {
    SCOPED_TRACE(row.class_name);
    Data* data = row.make();
    data->SetName("param");
    data->SetValue(true, 0, 1);
    data->SetValue(42, 0, 1);
    data->SetValue(Point3<double>(7.0, 8.0, 9.0), 0, 1);
    data->SetValue(Color(0.1f, 0.2f, 0.3f), 0, 1);
    data->SetValue(std::string("copied"), 0, 1);
    RecordingListener listener;
    data->AddBlockListener(&listener);

    auto* copy = dynamic_cast<Data*>(data->Clone());
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy, data);
    EXPECT_EQ(copy->GetClassName(), data->GetClassName());
    EXPECT_EQ(copy->GetParameterID(), 3);
    EXPECT_EQ(copy->GetName(), "param");
    ASSERT_EQ(copy->GetSize(), 2);
    EXPECT_EQ(ReadNatural(*copy), ReadNatural(*data));
    EXPECT_EQ(copy->GetString(0, 0), data->GetString(0, 0));
    EXPECT_EQ(copy->GetInt(0, 0), data->GetInt(0, 0));
    // The default came along: a grown copy fills like its source.
    copy->SetSize(3);
    data->SetSize(3);
    EXPECT_EQ(copy->GetFloat(0, 2), data->GetFloat(0, 2));
    EXPECT_EQ(copy->GetString(0, 2), data->GetString(0, 2));
    EXPECT_EQ(copy->GetPoint3F(0, 2), data->GetPoint3F(0, 2));
    EXPECT_EQ(copy->GetColor(0, 2), data->GetColor(0, 2));
    EXPECT_EQ(copy->GetBool(0, 2), data->GetBool(0, 2));
    // The copy is independent and nobody listens to it.
    copy->SetValue(std::string("changed"), 0, 1);
    copy->SetValue(-1, 0, 1);
    EXPECT_TRUE(listener.events.empty());
    data->RemoveBlockListener(&listener);
    Release(copy);
    Release(data);
  }
}

TEST(DataTest, EverySetterStoresWhateverTheTime) {
  for (int time : {-4800, 0, 160}) {
    SCOPED_TRACE(time);
    auto* data = new DataFloat(0, 0.0, 2);
    data->SetValue(3.5, time, 1);
    EXPECT_EQ(data->GetFloat(0, 1), 3.5);
    data->SetValue(7, time, 0);
    EXPECT_EQ(data->GetFloat(0, 0), 7.0);
    auto* text = new DataString(0, "", 1);
    text->SetValue(std::string("at any time"), time, 0);
    EXPECT_EQ(text->GetString(0, 0), "at any time");
    Release(text);
    Release(data);
  }
}

TEST(DataTest, HooksAndTableOperationsOfAValueDoNothing) {
  for (const MemberRow& row : Members()) {
    SCOPED_TRACE(row.class_name);
    Data* data = row.make();
    RecordingListener listener;
    data->AddBlockListener(&listener);
    const Natural before = ReadNatural(*data);
    data->UpdateDataTable(true);
    data->Update(10);
    data->ActionBegin(1, 2);
    data->ActionEnd(1, 2);
    EXPECT_EQ(data->GetDataTable(), nullptr);
    const Status status = data->SetDataTable(nullptr);
    EXPECT_EQ(status.GetCode(), 1);
    EXPECT_EQ(status.GetMessage(), "This Block has no DataTables.");
    EXPECT_EQ(ReadNatural(*data), before);
    EXPECT_EQ(data->GetSize(), 2);
    EXPECT_TRUE(listener.events.empty());
    data->RemoveBlockListener(&listener);
    Release(data);
  }
}

TEST(DataTest, ProcessEventStampsTheValueAndPostsTheEventOn) {
  auto* data = new DataPoint3(0, {}, 1);
  RecordingListener listener;
  data->AddBlockListener(&listener);
  data->ProcessEvent(BlockEvent(nullptr, 7, 11));
  ASSERT_EQ(listener.events.size(), 1u);
  EXPECT_EQ(listener.events[0].block, data);
  EXPECT_EQ(listener.events[0].code, 7);
  EXPECT_EQ(listener.events[0].param, 11);
  data->RemoveBlockListener(&listener);
  Release(data);
}

TEST(DataTest, AMutedValueStoresButPostsNothing) {
  auto* data = new DataInt(0, 0, 1);
  RecordingListener listener;
  data->AddBlockListener(&listener);
  data->SetSendEvents(false);
  data->SetValue(4, 0, 0);
  EXPECT_EQ(data->GetInt(0, 0), 4);
  EXPECT_TRUE(listener.events.empty());
  data->RemoveBlockListener(&listener);
  Release(data);
}

// ---- An index outside the elements ----

// Stores into element `index` a sample of the member's own type that differs from the
// defaults of Members().
void StoreNatural(Data& data, int index) {
  switch (data.GetType()) {
    case Data::kTypeBool:
      data.SetValue(false, 0, index);
      break;
    case Data::kTypeInt:
      data.SetValue(-9, 0, index);
      break;
    case Data::kTypeFloat:
      data.SetValue(-9.5, 0, index);
      break;
    case Data::kTypePoint3:
      data.SetValue(Point3<double>(-9.0, -9.0, -9.0), 0, index);
      break;
    case Data::kTypeColor:
      data.SetValue(Color(0.0f, 0.0f, 0.0f), 0, index);
      break;
    default:
      data.SetValue(std::string("stored"), 0, index);
      break;
  }
}

// Reads element `index` through the member's GetValue of its own type, into a start that
// differs from the defaults of Members().
Natural ReadNaturalByReference(const Data& data, int index) {
  switch (data.GetType()) {
    case Data::kTypeBool: {
      bool out = false;
      data.GetValue(out, 0, index);
      return out;
    }
    case Data::kTypeInt: {
      int out = -77;
      data.GetValue(out, 0, index);
      return out;
    }
    case Data::kTypeFloat: {
      double out = -77.5;
      data.GetValue(out, 0, index);
      return out;
    }
    case Data::kTypePoint3: {
      Point3<double> out(-77.0, -77.0, -77.0);
      data.GetValue(out, 0, index);
      return out;
    }
    case Data::kTypeColor: {
      Color out(0.75f, 0.75f, 0.75f);
      data.GetValue(out, 0, index);
      return out;
    }
    default: {
      std::string out = "start";
      data.GetValue(out, 0, index);
      return out;
    }
  }
}

// The suite name ends in DeathTest so that GoogleTest runs it before any other.
TEST(DataIndexDeathTest, AnIndexOutsideTheElementsAssertsInDebugAndIsHarmlessInRelease) {
  for (const MemberRow& row : Members()) {
    for (int index : {-1, 2}) {
      SCOPED_TRACE(std::string(row.class_name) + " index " + std::to_string(index));
      Data* data = row.make();  // two elements, both holding the default
      const Natural default_value = ReadNatural(*data, 0);
      RecordingListener listener;
      data->AddBlockListener(&listener);

      std::optional<Natural> by_value;
      std::optional<Natural> by_reference;
      EXPECT_DEBUG_DEATH(StoreNatural(*data, index), "index");
      EXPECT_DEBUG_DEATH(data->Erase(index), "index");
      EXPECT_DEBUG_DEATH(by_value = ReadNatural(*data, index), "index");
      EXPECT_DEBUG_DEATH(by_reference = ReadNaturalByReference(*data, index), "index");
#ifdef NDEBUG
      // A release build reads the default value, and stores, erases and posts nothing.
      EXPECT_EQ(by_value, default_value);
      EXPECT_EQ(by_reference, default_value);
#endif
      ASSERT_EQ(data->GetSize(), 2);
      EXPECT_EQ(ReadNatural(*data, 0), default_value);
      EXPECT_EQ(ReadNatural(*data, 1), default_value);
      EXPECT_TRUE(listener.events.empty());
      data->RemoveBlockListener(&listener);
      Release(data);
    }
  }
}

TEST(DataTest, ANullTextPointerStoresTheEmptyString) {
  auto* data = new DataString(0, "dflt", 1);
  RecordingListener listener;
  data->AddBlockListener(&listener);
  data->SetValue(static_cast<const char*>(nullptr), 0, 0);
  EXPECT_EQ(data->GetString(0, 0), "");
  EXPECT_EQ(listener.events.size(), 1u);
  data->RemoveBlockListener(&listener);
  Release(data);
}

// ---- Factories ----

struct FactoryRow {
  const char* name;
  std::function<BlockFactory*()> make;
  BlockType type;
};

TEST(DataFactoryTest, EachFactoryMakesAOneElementValueWithIdMinusOneAndAZeroDefault) {
  const std::vector<FactoryRow> rows = {
      {"DataBool", [] { return new DataBoolFactory; }, {200, 64, 32}},
      {"DataInt", [] { return new DataIntFactory; }, {200, 64, 48}},
      {"DataFloat", [] { return new DataFloatFactory; }, {200, 64, 64}},
      {"DataPoint3", [] { return new DataPoint3Factory; }, {200, 64, 80}},
      {"DataColor", [] { return new DataColorFactory; }, {200, 64, 96}},
      {"DataString", [] { return new DataStringFactory; }, {200, 64, 112}},
  };
  for (const FactoryRow& row : rows) {
    SCOPED_TRACE(row.name);
    std::unique_ptr<BlockFactory> factory(row.make());
    EXPECT_EQ(factory->GetName(), row.name);
    ExpectSameType(factory->GetBlockType(), row.type);
    for (bool create_defaults : {true, false}) {
      auto* data = dynamic_cast<Data*>(factory->GetBlock(create_defaults));
      ASSERT_NE(data, nullptr);
      EXPECT_EQ(data->GetClassName(), row.name);
      ExpectSameType(data->GetBlockType(), row.type);
      EXPECT_EQ(data->GetParameterID(), -1);
      EXPECT_EQ(data->GetSize(), 1);
      EXPECT_FALSE(data->GetBool(0, 0));
      EXPECT_EQ(
          data->GetInt(0, 0),
          data->GetType() >= Data::kTypePoint3 && data->GetType() != Data::kTypeString ? -1 : 0);
      EXPECT_EQ(data->GetString(0, 0), "");
      EXPECT_EQ(data->GetColor(0, 0), Color());
      if (data->GetType() == Data::kTypePoint3) {
        EXPECT_EQ(data->GetPoint3F(0, 0), Point3<double>(0.0, 0.0, 0.0));
      }
      Release(data);
    }
  }
}

class BaseLibraryParametersTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SceneEngine::DestroyFactories();
    SceneEngine::SetScene(nullptr);
  }
  void TearDown() override { SceneEngine::DestroyFactories(); }
};

TEST_F(BaseLibraryParametersTest, RegistersTheParameterFactoriesLastInTheirFixedOrder) {
  RegisterBaseLibrary();
  const std::vector<std::pair<std::string, BlockType>> expected = {
      {"DataFloat", {200, 64, 64}},  {"DataInt", {200, 64, 48}},   {"DataBool", {200, 64, 32}},
      {"DataPoint3", {200, 64, 80}}, {"DataColor", {200, 64, 96}}, {"DataString", {200, 64, 112}},
      {"DataTable", {205, 64, 16}},
  };
  const unsigned count = SceneEngine::GetNumBlockFactories();
  ASSERT_GE(count, expected.size() + 1);
  EXPECT_EQ(SceneEngine::GetBlockFactory(0)->GetName(), "BlockTable");
  const unsigned first = count - static_cast<unsigned>(expected.size());
  for (unsigned i = 0; i < expected.size(); ++i) {
    BlockFactory* factory = SceneEngine::GetBlockFactory(first + i);
    ASSERT_NE(factory, nullptr);
    EXPECT_EQ(factory->GetName(), expected[i].first);
    ExpectSameType(factory->GetBlockType(), expected[i].second);
  }
  // A second registration adds nothing: every type is present already.
  RegisterBaseLibrary();
  EXPECT_EQ(SceneEngine::GetNumBlockFactories(), count);
}

}  // namespace
}  // namespace Orlo
