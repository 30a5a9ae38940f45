#include "protocol/styled_writer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "protocol/json_reader.h"

namespace vsm {
namespace {

Json::Value Parse(const std::string& text, bool comments = false) {
  Json::Value value;
  EXPECT_TRUE(ParseJsonText(text, &value, comments)) << text;
  return value;
}

std::string Ones(int count) {
  std::string text = "[";
  for (int i = 0; i < count; ++i) text += i ? ",1" : "1";
  return text + "]";
}

struct WriterRow {
  std::string json;
  std::string expected;
};

class StyledWriterTable : public ::testing::TestWithParam<WriterRow> {};

TEST_P(StyledWriterTable, WritesExactBytes) {
  EXPECT_EQ(StyledWrite(Parse(GetParam().json)), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Layout, StyledWriterTable,
    ::testing::Values(
        WriterRow{"null", "null\n"}, WriterRow{"true", "true\n"}, WriterRow{"-5", "-5\n"},
        WriterRow{"3000000000", "3000000000\n"},
        WriterRow{"-9223372036854775808", "-9223372036854775808\n"},
        WriterRow{"18446744073709551615", "18446744073709551615\n"}, WriterRow{"[]", "[]\n"},
        WriterRow{"{}", "{}\n"}, WriterRow{"[1,2]", "[ 1, 2 ]\n"}, WriterRow{"[{}]", "[ {} ]\n"},
        WriterRow{"[[],null]", "[ [], null ]\n"},
        WriterRow{"{\"b\":1,\"a\":[]}", "{\n   \"a\" : [],\n   \"b\" : 1\n}\n"},
        WriterRow{"{\"a\":{\"b\":{}}}", "{\n   \"a\" : {\n      \"b\" : {}\n   }\n}\n"},
        WriterRow{"[[1],2]", "[\n   [ 1 ],\n   2\n]\n"},
        WriterRow{
            "{\"result\":[{\"a\":1},2]}",
            "{\n   \"result\" : [\n      {\n         \"a\" : 1\n      },\n      2\n   ]\n}\n"},
        // Members sort by bytes: upper case before lower case, "B" before "a".
        WriterRow{"{\"a\":1,\"B\":2,\"_\":3}",
                  "{\n   \"B\" : 2,\n   \"_\" : 3,\n   \"a\" : 1\n}\n"},
        // Five texts of 12 characters make a line of 72: one line. Of 13: 77, spread.
        WriterRow{"[\"0123456789\",\"0123456789\",\"0123456789\",\"0123456789\",\"0123456789\"]",
                  "[ \"0123456789\", \"0123456789\", \"0123456789\", \"0123456789\", "
                  "\"0123456789\" ]\n"},
        WriterRow{
            "[\"01234567890\",\"01234567890\",\"01234567890\",\"01234567890\",\"01234567890\"]",
            "[\n   \"01234567890\",\n   \"01234567890\",\n   \"01234567890\",\n"
            "   \"01234567890\",\n   \"01234567890\"\n]\n"},
        WriterRow{"[\"a\\\"b\\\\c\\/d\"]", "[ \"a\\\"b\\\\c/d\" ]\n"},
        WriterRow{"\"\\b\\f\\n\\r\\t\"", "\"\\b\\f\\n\\r\\t\"\n"},
        WriterRow{"\"\\u0001\\u001f\\u007f\"", "\"\\u0001\\u001F\x7f\"\n"},
        WriterRow{"\"\\u00e9\\u4e2d\"", "\"\xc3\xa9\xe4\xb8\xad\"\n"},
        WriterRow{"\"\xff\xfe raw\"", "\"\xff\xfe raw\"\n"},
        WriterRow{"\"ab\\u0000cd\"", "\"ab\"\n"},
        WriterRow{"{\"a\\u0000b\":1}", "{\n   \"a\" : 1\n}\n"}));

// 23 ones fit one line (71 characters), 24 reach the margin (74), 25 fail 3 * size < 74.
TEST(StyledWriter, LineLengthDecidesSpreading) {
  std::string line23 = "[ ";
  for (int i = 0; i < 23; ++i) line23 += i ? ", 1" : "1";
  line23 += " ]\n";
  EXPECT_EQ(StyledWrite(Parse(Ones(23))), line23);
  std::string spread24 = "[\n";
  for (int i = 0; i < 24; ++i) spread24 += std::string("   1") + (i < 23 ? ",\n" : "\n");
  spread24 += "]\n";
  EXPECT_EQ(StyledWrite(Parse(Ones(24))), spread24);
  EXPECT_EQ(StyledWrite(Parse(Ones(25))).substr(0, 6), "[\n   1");
}

struct RealRow {
  double value;
  std::string expected;
};

class FormatRealTable : public ::testing::TestWithParam<RealRow> {};

TEST_P(FormatRealTable, CutsTrailingZeros) {
  EXPECT_EQ(FormatReal(GetParam().value), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Reals, FormatRealTable,
    ::testing::Values(RealRow{1.5, "1.50"}, RealRow{2.0, "2.0"}, RealRow{0.1, "0.10"},
                      RealRow{3.25, "3.250"}, RealRow{-0.0, "-0.0"}, RealRow{0.0, "0.0"},
                      RealRow{100.0, "100.0"}, RealRow{1e20, "1.000000000000000e+20"},
                      RealRow{1e-5, "1.000000000000000e-05"}, RealRow{123456.789, "123456.7890"},
                      // 16 digits before the point leave nothing to cut, and the point stays.
                      RealRow{1e15, "1000000000000000."}, RealRow{1.0 / 3.0, "0.3333333333333333"},
                      RealRow{-2.5e-300, "-2.500000000000000e-300"}, RealRow{INFINITY, "inf"}));

TEST(StyledWriter, WritesRealsInsideDocuments) {
  EXPECT_EQ(StyledWrite(Parse("[1.5,2.0,1e20]")), "[ 1.50, 2.0, 1.000000000000000e+20 ]\n");
}

TEST(StyledWriter, QuotesCStringsOnly) {
  EXPECT_EQ(QuoteCString(""), "\"\"");
  EXPECT_EQ(QuoteCString("tab\there"), "\"tab\\there\"");
  Json::Value withNul(std::string("x\0y", 3));
  EXPECT_EQ(StyledWrite(withNul), "\"x\"\n");
}

TEST(StyledWriter, KeepsCollectedComments) {
  EXPECT_EQ(StyledWrite(Parse("{\"a\":1 // same line\n}", true)),
            "{\n   \"a\" : 1 // same line\n}\n");
  EXPECT_EQ(StyledWrite(Parse("// before\n[1]", true)), "\n// before\n[ 1 ]\n");
  // A comment on an element spreads its array; one on the same line as the element before it
  // belongs to that element.
  EXPECT_EQ(StyledWrite(Parse("[1, /* c */ 2]", true)), "[\n   1, /* c */\n   2\n]\n");
}

}  // namespace
}  // namespace vsm
