#include "protocol/json_value_access.h"

#include <gtest/gtest.h>

#include <cmath>

#include "protocol/json_reader.h"

namespace vsm {
namespace {

Json::Value Parse(const std::string& text) {
  Json::Value value;
  EXPECT_TRUE(ParseJsonText(text, &value, false)) << text;
  return value;
}

// The library answers these by range; the protocol answers by stored type.
TEST(JsonValueAccess, TypesAreStoredTypes) {
  Json::Value two = Parse("2.0");
  EXPECT_TRUE(two.isInt());  // the library's reading, which the protocol must not use
  EXPECT_TRUE(IsRealValue(two));
  EXPECT_FALSE(IsIntValue(two));
  EXPECT_TRUE(IsUIntValue(Parse("3000000000")));
  EXPECT_FALSE(IsIntValue(Parse("3000000000")));
  EXPECT_TRUE(IsArrayOrNull(Json::Value()));
  EXPECT_TRUE(IsArrayOrNull(Parse("[]")));
  EXPECT_FALSE(IsArrayOrNull(Parse("{}")));
  EXPECT_FALSE(IsObjectValue(Json::Value()));
}

struct StringRow {
  std::string json;
  std::string text;
};

class StrictStringTable : public ::testing::TestWithParam<StringRow> {};

TEST_P(StrictStringTable, GivesTextOfStringsAndBooleansOnly) {
  EXPECT_EQ(StrictString(Parse(GetParam().json)), GetParam().text) << GetParam().json;
}

INSTANTIATE_TEST_SUITE_P(Values, StrictStringTable,
                         ::testing::Values(StringRow{"\"abc\"", "abc"}, StringRow{"\"\"", ""},
                                           StringRow{"\"a\\u0000b\"", "a"},
                                           StringRow{"true", "true"}, StringRow{"false", "false"},
                                           StringRow{"5", ""}, StringRow{"-5", ""},
                                           StringRow{"1.5", ""}, StringRow{"3000000000", ""},
                                           StringRow{"null", ""}, StringRow{"[\"a\"]", ""},
                                           StringRow{"{\"a\":\"b\"}", ""}));

TEST(JsonValueAccess, MemberNamesOfNonObjectsAreNone) {
  EXPECT_TRUE(MemberNames(Parse("[1,2]")).empty());
  EXPECT_TRUE(MemberNames(Parse("\"s\"")).empty());
  EXPECT_TRUE(MemberNames(Json::Value()).empty());
  EXPECT_EQ(MemberNames(Parse("{\"b\":1,\"a\":2,\"B\":3}")),
            (std::vector<std::string>{"B", "a", "b"}));
  EXPECT_EQ(FindMember(Parse("[1]"), "a"), nullptr);
  EXPECT_EQ(FindMember(Parse("{\"ab\":1}"), "a"), nullptr);
  ASSERT_NE(FindMember(Parse("{\"a\":7}"), "a"), nullptr);
}

struct NumberRow {
  std::string json;
  int64_t asInt64;
  int32_t asInt32;
  uint32_t asUInt32;
};

class NumberNarrowing : public ::testing::TestWithParam<NumberRow> {};

TEST_P(NumberNarrowing, CutsWithoutThrowing) {
  Json::Value value = Parse(GetParam().json);
  EXPECT_EQ(NumberAsInt64(value), GetParam().asInt64) << GetParam().json;
  EXPECT_EQ(NumberAsInt32(value), GetParam().asInt32) << GetParam().json;
  EXPECT_EQ(NumberAsUInt32(value), GetParam().asUInt32) << GetParam().json;
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, NumberNarrowing,
    ::testing::Values(NumberRow{"7", 7, 7, 7u}, NumberRow{"-7", -7, -7, 0xFFFFFFF9u},
                      NumberRow{"3000000000", 3000000000LL, -1294967296, 3000000000u},
                      NumberRow{"5000000000", 5000000000LL, 705032704, 705032704u},
                      NumberRow{"-5000000000", -5000000000LL, -705032704, 3589934592u},
                      NumberRow{"2.9", 2, 2, 2u}, NumberRow{"-2.9", -2, -2, 0xFFFFFFFEu},
                      NumberRow{"3e9", 3000000000LL, INT32_MIN, 3000000000u},
                      NumberRow{"1e30", INT64_MIN, INT32_MIN, 0u}, NumberRow{"\"5\"", 0, 0, 0u},
                      NumberRow{"true", 0, 0, 0u}, NumberRow{"null", 0, 0, 0u}));

TEST(JsonValueAccess, CutsNonFiniteRealsSafely) {
  EXPECT_EQ(CutToInt32(NAN), INT32_MIN);
  EXPECT_EQ(CutToInt32(INFINITY), INT32_MIN);
  EXPECT_EQ(CutToUInt32(-INFINITY), 0u);
  EXPECT_EQ(CutToInt32(-2147483648.9), INT32_MIN);
  EXPECT_EQ(CutToInt32(2147483647.9), INT32_MAX);
}

}  // namespace
}  // namespace vsm
