#include "protocol/parameter_conversions.h"

#include <gtest/gtest.h>

#include <memory>

#include "protocol/json_reader.h"

namespace vsm {
namespace {

Json::Value Parse(const std::string& text) {
  Json::Value value;
  EXPECT_TRUE(ParseJsonText(text, &value, false)) << text;
  return value;
}

struct TextRow {
  std::string json;
  bool ok;
  std::string text;
};

class ValueTextTable : public ::testing::TestWithParam<TextRow> {};

TEST_P(ValueTextTable, FormatsEachType) {
  Json::Value value = Parse(GetParam().json);
  std::string text = "unchanged";
  EXPECT_EQ(ValueText(&value, &text), GetParam().ok) << GetParam().json;
  EXPECT_EQ(text, GetParam().text) << GetParam().json;
  EXPECT_EQ(ValueString(&value), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Values, ValueTextTable,
    ::testing::Values(TextRow{"\"abc\"", true, "abc"}, TextRow{"true", true, "true"},
                      TextRow{"1.5", true, "1.500000"}, TextRow{"-3", true, "-3"},
                      TextRow{"3000000000", true, "3000000000"},
                      TextRow{"5000000000", true, "705032704"},
                      TextRow{"[1,\"a\"]", true, "[ 1, \"a\" ]\n"}, TextRow{"null", true, "null\n"},
                      TextRow{"{\"a\":1}", false, ""}, TextRow{"\"a\\u0000b\"", true, "a"}));

TEST(ParameterConversions, NullPointersReadAsNothing) {
  std::string text = "x";
  EXPECT_FALSE(ValueText(nullptr, &text));
  EXPECT_EQ(text, "");
  EXPECT_FALSE(ValueCString(nullptr, &text));
  EXPECT_EQ(ValueInt(nullptr), 0);
  EXPECT_EQ(ValueInt64(nullptr), 0);
  EXPECT_FALSE(ValueBool(nullptr));
  int32_t number = 5;
  EXPECT_FALSE(ReadInt(nullptr, &number));
  EXPECT_EQ(number, -1);
  Json::Value value(1);
  EXPECT_FALSE(ReadInt(&value, nullptr));
  EXPECT_FALSE(ReadBool(&value, nullptr));
}

TEST(ParameterConversions, LongRealsAreCutAtTheBuffer) {
  Json::Value huge(1e300);
  EXPECT_EQ(ValueString(&huge).size(), 255u);
}

struct ReadIntRow {
  std::string json;
  bool ok;
  int32_t value;
};

class ReadIntTable : public ::testing::TestWithParam<ReadIntRow> {};

TEST_P(ReadIntTable, TellsZeroFromAWord) {
  Json::Value value = Parse(GetParam().json);
  int32_t out = 12345;
  EXPECT_EQ(ReadInt(&value, &out), GetParam().ok) << GetParam().json;
  EXPECT_EQ(out, GetParam().value) << GetParam().json;
}

INSTANTIATE_TEST_SUITE_P(
    Values, ReadIntTable,
    ::testing::Values(ReadIntRow{"\"0\"", true, 0}, ReadIntRow{"\"00\"", false, -1},
                      ReadIntRow{"\"x\"", false, -1}, ReadIntRow{"\"12x\"", true, 12},
                      ReadIntRow{"\"-7\"", true, -7}, ReadIntRow{"\" 5\"", true, 5},
                      ReadIntRow{"\"\"", false, -1}, ReadIntRow{"0", true, 0},
                      ReadIntRow{"18625", true, 18625}, ReadIntRow{"2.9", true, 2},
                      ReadIntRow{"-2.9", true, -2}, ReadIntRow{"3000000000", true, -1294967296},
                      ReadIntRow{"true", false, -1}, ReadIntRow{"null", false, -1},
                      ReadIntRow{"[1]", false, -1}, ReadIntRow{"{}", false, -1}));

struct NumberRow {
  std::string json;
  int16_t asShort;
  int32_t asInt;
  uint32_t asUInt;
  int64_t asInt64;
  double asDouble;
  bool asBool;
};

class ValueNumberTable : public ::testing::TestWithParam<NumberRow> {};

TEST_P(ValueNumberTable, ConvertsWithoutFailing) {
  const NumberRow& row = GetParam();
  Json::Value value = Parse(row.json);
  EXPECT_EQ(ValueShort(&value), row.asShort) << row.json;
  EXPECT_EQ(ValueInt(&value), row.asInt) << row.json;
  EXPECT_EQ(ValueUInt(&value), row.asUInt) << row.json;
  EXPECT_EQ(ValueInt64(&value), row.asInt64) << row.json;
  EXPECT_DOUBLE_EQ(ValueDouble(&value), row.asDouble) << row.json;
  EXPECT_FLOAT_EQ(ValueFloat(&value), static_cast<float>(row.asDouble)) << row.json;
  EXPECT_EQ(ValueBool(&value), row.asBool) << row.json;
}

INSTANTIATE_TEST_SUITE_P(
    Values, ValueNumberTable,
    ::testing::Values(
        NumberRow{"\"42\"", 42, 42, 42u, 42, 42.0, false},
        NumberRow{"\"TRUE\"", 0, 0, 0u, 0, 0.0, true},
        NumberRow{"\"2.5x\"", 2, 2, 2u, 2, 2.5, false},
        NumberRow{"\"70000\"", 4464, 70000, 70000u, 70000, 70000.0, false},
        NumberRow{"true", 1, 1, 1u, 0, 1.0, true}, NumberRow{"false", 0, 0, 0u, 0, 0.0, false},
        NumberRow{"0.5", 0, 0, 0u, 0, 0.5, false},
        NumberRow{"-1.5", -1, -1, 0xFFFFFFFFu, -1, -1.5, true},
        NumberRow{"65537", 1, 65537, 65537u, 65537, 65537.0, true},
        NumberRow{"3000000000", 24064, -1294967296, 3000000000u, 3000000000LL, 3e9, true},
        NumberRow{"null", 0, 0, 0u, 0, 0.0, false}, NumberRow{"[7]", 0, 0, 0u, 0, 0.0, false},
        NumberRow{"{\"a\":1}", 0, 0, 0u, 0, 0.0, false}));

TEST(ParameterConversions, ReadFormsAcceptTheirTypes) {
  struct Row {
    std::string json;
    bool shortOk;
    uint16_t shortValue;
    bool uintOk;
    uint32_t uintValue;
    bool doubleOk;
    double doubleValue;
    bool charOk;
    char charValue;
  };
  const Row rows[] = {
      {"\"65537\"", true, 1, true, 65537u, true, 65537.0, true, '6'},
      {"\"\"", true, 0, true, 0u, true, 0.0, true, '\0'},
      {"true", false, 65535, false, 0u, false, 0.0, false, '\0'},
      {"2.7", true, 2, true, 2u, true, 2.7, false, '\0'},
      {"321", true, 321, true, 321u, true, 321.0, true, 'A'},
      {"null", false, 65535, false, 0u, false, 0.0, false, '\0'},
      {"[1]", false, 65535, false, 0u, false, 0.0, false, '\0'},
  };
  for (const Row& row : rows) {
    Json::Value value = Parse(row.json);
    uint16_t s = 9;
    uint32_t u = 9;
    double d = 9;
    float f = 9;
    char c = 9;
    EXPECT_EQ(ReadShort(&value, &s), row.shortOk) << row.json;
    EXPECT_EQ(s, row.shortValue) << row.json;
    EXPECT_EQ(ReadUInt(&value, &u), row.uintOk) << row.json;
    EXPECT_EQ(u, row.uintValue) << row.json;
    EXPECT_EQ(ReadDouble(&value, &d), row.doubleOk) << row.json;
    EXPECT_DOUBLE_EQ(d, row.doubleValue) << row.json;
    EXPECT_EQ(ReadFloat(&value, &f), row.doubleOk) << row.json;
    EXPECT_FLOAT_EQ(f, static_cast<float>(row.doubleValue)) << row.json;
    EXPECT_EQ(ReadChar(&value, &c), row.charOk) << row.json;
    EXPECT_EQ(c, row.charValue) << row.json;
  }
}

TEST(ParameterConversions, ReadBoolReportsStringsWithoutStoring) {
  struct Row {
    std::string json;
    bool result;
    bool stored;  // what `out` holds afterwards, starting from true
  };
  const Row rows[] = {{"\"TRUE\"", true, true}, {"\"no\"", false, true}, {"false", true, false},
                      {"0.4", true, false},     {"2", true, true},       {"null", true, false},
                      {"[true]", false, true},  {"{}", false, true}};
  for (const Row& row : rows) {
    Json::Value value = Parse(row.json);
    bool out = true;
    EXPECT_EQ(ReadBool(&value, &out), row.result) << row.json;
    EXPECT_EQ(out, row.stored) << row.json;
  }
  Json::Value no = Parse("\"no\"");
  bool out = false;
  EXPECT_FALSE(ReadBool(&no, &out));
  EXPECT_FALSE(out);
}

TEST(ParameterConversions, ValueCStringEndsAtTheFirstNul) {
  Json::Value value = Parse("[\"a\\u0000b\"]");
  std::string text;
  ASSERT_TRUE(ValueCString(&value, &text));
  EXPECT_EQ(text, "[ \"a\" ]\n");
  Json::Value object = Parse("{}");
  EXPECT_FALSE(ValueCString(&object, &text));
}

TEST(ParameterConversions, ReadIntArray) {
  struct Row {
    std::string json;
    bool ok;
    std::vector<int32_t> values;
  };
  const Row rows[] = {{"\"12\"", true, {12}},
                      {"7", true, {7}},
                      {"3000000000", true, {-1294967296}},
                      {"[1,\"2\",-3]", true, {1, 2, -3}},
                      {"[]", true, {}},
                      {"null", true, {}},
                      {"[1,2.5,3]", false, {1, 0, 0}},
                      {"[4,3000000000]", false, {4, 0}},
                      {"{\"a\":1}", false, {}},
                      {"true", false, {}}};
  for (const Row& row : rows) {
    Json::Value value = Parse(row.json);
    int32_t* array = nullptr;
    int32_t count = -1;
    EXPECT_EQ(ReadIntArray(&value, &array, &count), row.ok) << row.json;
    std::unique_ptr<int32_t[]> owned(array);
    if (array != nullptr) {
      ASSERT_EQ(count, static_cast<int32_t>(row.values.size())) << row.json;
      for (int32_t i = 0; i < count; ++i) EXPECT_EQ(array[i], row.values[i]) << row.json;
    } else {
      EXPECT_TRUE(row.values.empty()) << row.json;
    }
  }
  Json::Value value(1);
  int32_t* array = nullptr;
  int32_t count = 0;
  EXPECT_FALSE(ReadIntArray(&value, nullptr, &count));
  EXPECT_FALSE(ReadIntArray(&value, &array, nullptr));
  EXPECT_FALSE(ReadIntArray(nullptr, &array, &count));
}

}  // namespace
}  // namespace vsm
