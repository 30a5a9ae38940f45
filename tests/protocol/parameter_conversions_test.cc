#include "protocol/parameter_conversions.h"

#include <gtest/gtest.h>

#include <memory>
#include <tuple>
#include <vector>

#include "protocol/json_reader.h"

namespace vsm {
namespace {

// A parameter as a handler gets it: the value of a JSON text, or a null pointer for "none".
struct Arg {
  explicit Arg(const std::string& json) : none(json == "none") {
    EXPECT_TRUE(none || ParseJsonText(json, &value, false)) << json;
  }
  const Json::Value* get() const { return none ? nullptr : &value; }
  Json::Value value;
  const bool none;
};

TEST(ParameterConversions, ValueTextFormatsEachType) {
  // Only an object and no value at all have no text (and only they give an empty one here).
  // clang-format off
  const char* rows[][2] = {
      {"\"abc\"", "abc"}, {"true", "true"}, {"1.5", "1.500000"}, {"-3", "-3"},
      {"3000000000", "3000000000"}, {"5000000000", "705032704"}, {"null", "null\n"},
      {"[1,\"a\"]", "[ 1, \"a\" ]\n"}, {"\"a\\u0000b\"", "a"}, {"{\"a\":1}", ""}, {"none", ""}};
  // clang-format on
  for (const auto& [json, expected] : rows) {
    const Arg arg(json);
    const bool ok = *expected != '\0';
    std::string text = "unchanged", cstring = "unchanged";
    EXPECT_EQ(ValueText(arg.get(), &text), ok) << json;
    EXPECT_EQ(text, expected) << json;
    EXPECT_EQ(ValueString(arg.get()), expected) << json;
    EXPECT_EQ(ValueCString(arg.get(), &cstring), ok) << json;
    EXPECT_EQ(cstring, ok ? expected : "unchanged") << json;
  }
  Json::Value huge(1e300);  // longer than the number buffer
  EXPECT_EQ(ValueString(&huge).size(), 255u);
}

TEST(ParameterConversions, ReadIntTellsZeroFromAWord) {
  // clang-format off
  const struct { std::string json; bool ok; int32_t value; } rows[] = {
      {"\"0\"", true, 0}, {"\"00\"", false, -1}, {"\"x\"", false, -1}, {"\"12x\"", true, 12},
      {"\"-7\"", true, -7}, {"\" 5\"", true, 5}, {"\"\"", false, -1}, {"0", true, 0},
      {"18625", true, 18625}, {"2.9", true, 2}, {"-2.9", true, -2}, {"true", false, -1},
      {"null", false, -1}, {"[1]", false, -1}, {"{}", false, -1}, {"none", false, -1},
      {"3000000000", true, -1294967296}};
  // clang-format on
  for (const auto& row : rows) {
    int32_t out = 12345;
    EXPECT_EQ(ReadInt(Arg(row.json).get(), &out), row.ok) << row.json;
    EXPECT_EQ(out, row.value) << row.json;
  }
}

// Numbers narrow by cutting, never by undefined behaviour: reals out of range give what the
// hardware conversion gives.
TEST(ParameterConversions, ValueFormsConvertWithoutFailing) {
  const std::pair<std::string, std::tuple<int16_t, int32_t, uint32_t, int64_t, double, bool>>
      rows[] = {{"\"TRUE\"", {0, 0, 0u, 0, 0.0, true}},
                {"\"2.5x\"", {2, 2, 2u, 2, 2.5, false}},
                {"\"70000\"", {4464, 70000, 70000u, 70000, 70000.0, false}},
                {"true", {1, 1, 1u, 0, 1.0, true}},
                {"0.5", {0, 0, 0u, 0, 0.5, false}},
                {"-1.5", {-1, -1, 0xFFFFFFFFu, -1, -1.5, true}},
                {"65537", {1, 65537, 65537u, 65537, 65537.0, true}},
                {"3000000000", {24064, -1294967296, 3000000000u, 3000000000LL, 3e9, true}},
                {"-5000000000", {3584, -705032704, 3589934592u, -705032704, -5e9, true}},
                {"3e9", {0, INT32_MIN, 3000000000u, 3000000000LL, 3e9, true}},
                {"1e30", {0, INT32_MIN, 0u, INT64_MAX, 1e30, true}},
                {"2147483647.9", {-1, INT32_MAX, 2147483647u, 2147483647, 2147483647.9, true}},
                {"-2147483648.9", {0, INT32_MIN, 2147483648u, -2147483648LL, -2147483648.9, true}},
                {"null", {0, 0, 0u, 0, 0.0, false}},
                {"[7]", {0, 0, 0u, 0, 0.0, false}},
                {"none", {0, 0, 0u, 0, 0.0, false}}};
  for (const auto& [json, expected] : rows) {
    const Arg arg(json);
    const Json::Value* v = arg.get();
    EXPECT_EQ(std::make_tuple(ValueShort(v), ValueInt(v), ValueUInt(v), ValueInt64(v),
                              ValueDouble(v), ValueBool(v)),
              expected)
        << json;
    EXPECT_EQ(ValueFloat(v), static_cast<float>(std::get<4>(expected))) << json;
  }
}

// Each slot holds what a read returned and what it stored, starting from 9.
TEST(ParameterConversions, ReadFormsAcceptTheirTypes) {
  using Read = std::tuple<bool, uint16_t, bool, uint32_t, bool, double, bool, float, bool, char>;
  const std::pair<std::string, Read> rows[] = {
      {"\"65537\"", {true, 1, true, 65537u, true, 65537.0, true, 65537.0f, true, '6'}},
      {"\"\"", {true, 0, true, 0u, true, 0.0, true, 0.0f, true, '\0'}},
      {"true", {false, 65535, false, 0u, false, 0.0, false, 0.0f, false, '\0'}},
      {"2.7", {true, 2, true, 2u, true, 2.7, true, 2.7f, false, '\0'}},
      {"321", {true, 321, true, 321u, true, 321.0, true, 321.0f, true, 'A'}},
      {"[1]", {false, 65535, false, 0u, false, 0.0, false, 0.0f, false, '\0'}},
      {"none", {false, 65535, false, 0u, false, 0.0, false, 0.0f, false, '\0'}}};
  for (const auto& [json, expected] : rows) {
    const Arg arg(json);
    Read got(false, 9, false, 9, false, 9, false, 9, false, 9);
    auto& [shortOk, s, uintOk, u, doubleOk, d, floatOk, f, charOk, c] = got;
    shortOk = ReadShort(arg.get(), &s);
    uintOk = ReadUInt(arg.get(), &u);
    doubleOk = ReadDouble(arg.get(), &d);
    floatOk = ReadFloat(arg.get(), &f);
    charOk = ReadChar(arg.get(), &c);
    EXPECT_EQ(got, expected) << json;
  }
}

// Deliberately reports the comparison for a string without storing it: pages rely on that.
TEST(ParameterConversions, ReadBoolReportsStringsWithoutStoring) {
  // What ReadBool returns, and `out` before and after.
  // clang-format off
  const struct { std::string json; bool before, result, after; } rows[] = {
      {"\"TRUE\"", true, true, true}, {"\"no\"", true, false, true}, {"\"no\"", false, false, false},
      {"false", true, true, false}, {"0.4", true, true, false}, {"2", true, true, true},
      {"null", true, true, false}, {"[true]", true, false, true}, {"{}", true, false, true},
      {"none", true, false, true}};
  // clang-format on
  for (const auto& row : rows) {
    bool out = row.before;
    EXPECT_EQ(ReadBool(Arg(row.json).get(), &out), row.result) << row.json;
    EXPECT_EQ(out, row.after) << row.json;
  }
}

TEST(ParameterConversions, ReadIntArray) {
  // clang-format off
  const std::pair<std::string, std::pair<bool, std::vector<int32_t>>> rows[] = {
      {"\"12\"", {true, {12}}}, {"7", {true, {7}}}, {"3000000000", {true, {-1294967296}}},
      {"[1,\"2\",-3]", {true, {1, 2, -3}}}, {"[]", {true, {}}}, {"null", {true, {}}},
      {"[1,2.5,3]", {false, {1, 0, 0}}}, {"[4,3000000000]", {false, {4, 0}}},
      {"{\"a\":1}", {false, {}}}, {"true", {false, {}}}, {"none", {false, {}}}};
  // clang-format on
  for (const auto& [json, expected] : rows) {
    int32_t* array = nullptr;
    int32_t count = -1;
    const bool ok = ReadIntArray(Arg(json).get(), &array, &count);
    std::unique_ptr<int32_t[]> owned(array);
    // No array stands for no elements; the count then doesn't matter.
    EXPECT_EQ(std::make_pair(
                  ok, array ? std::vector<int32_t>(array, array + count) : std::vector<int32_t>()),
              expected)
        << json;
  }
  // A missing out-pointer is refused.
  Json::Value one(1);
  int32_t* array = nullptr;
  int32_t count = 0;
  EXPECT_FALSE(ReadIntArray(&one, nullptr, &count));
  EXPECT_FALSE(ReadIntArray(&one, &array, nullptr));
  EXPECT_FALSE(ReadInt(&one, nullptr));
  EXPECT_FALSE(ReadBool(&one, nullptr));
}

}  // namespace
}  // namespace vsm
