#include "protocol/styled_writer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "protocol/json_reader.h"

namespace vsm {
namespace {

// Written from a parse that keeps comments, as results added as JSON text are.
std::string Rewrite(const std::string& json) {
  Json::Value value;
  EXPECT_TRUE(ParseJsonText(json, &value, true)) << json;
  return StyledWrite(value);
}

TEST(StyledWriter, WritesExactBytes) {
  const std::pair<std::string, std::string> rows[] = {
      {"[null,true,-5,3000000000]", "[ null, true, -5, 3000000000 ]\n"},
      {"[-9223372036854775808,18446744073709551615]",
       "[ -9223372036854775808, 18446744073709551615 ]\n"},
      {"[[],{},null]", "[ [], {}, null ]\n"},
      {"[[1],2]", "[\n   [ 1 ],\n   2\n]\n"},
      // Members sort by bytes: upper case before "_" before lower case.
      {"{\"b\":1,\"a\":[],\"B\":2,\"_\":3}",
       "{\n   \"B\" : 2,\n   \"_\" : 3,\n   \"a\" : [],\n   \"b\" : 1\n}\n"},
      {"{\"a\":{\"b\":{}}}", "{\n   \"a\" : {\n      \"b\" : {}\n   }\n}\n"},
      {"{\"result\":[{\"a\":1},2]}",
       "{\n   \"result\" : [\n      {\n         \"a\" : 1\n      },\n      2\n   ]\n}\n"},
      {"\"a\\\"b\\\\c\\/d\\b\\f\\n\\r\\t\"", "\"a\\\"b\\\\c/d\\b\\f\\n\\r\\t\"\n"},
      {"\"\\u0001\\u001f\\u007f\"", "\"\\u0001\\u001F\x7f\"\n"},
      {"\"\\u00e9\\u4e2d\xff\xfe raw\"", "\"\xc3\xa9\xe4\xb8\xad\xff\xfe raw\"\n"},
      {"{\"a\\u0000b\":\"ab\\u0000cd\"}", "{\n   \"a\" : \"ab\"\n}\n"},
      // Reals keep one digit behind the last non-zero one; 16 digits before the point leave
      // nothing to cut, and the point stays.
      {"[1.5,2.0,0.1,3.25,-0.0,0.0,100.0]", "[ 1.50, 2.0, 0.10, 3.250, -0.0, 0.0, 100.0 ]\n"},
      {"[1e20,1e-5]", "[ 1.000000000000000e+20, 1.000000000000000e-05 ]\n"},
      {"[123456.789,1e15]", "[ 123456.7890, 1000000000000000. ]\n"},
      {"[0.3333333333333333,-2.5e-300]", "[ 0.3333333333333333, -2.500000000000000e-300 ]\n"},
      {"{\"a\":1 // same line\n}", "{\n   \"a\" : 1 // same line\n}\n"},
      {"// before\n[1]", "\n// before\n[ 1 ]\n"},
      // A comment spreads its array; one on the line of the element before belongs to it.
      {"[1, /* c */ 2]", "[\n   1, /* c */\n   2\n]\n"},
      // A line comment ends its line also when it ends in a blank or in " : ", which elsewhere
      // mean that the line is already indented.
      {"[1 // ends in a blank \n]", "[\n   1 // ends in a blank \n]\n"},
      {"{\"a\":1 // x : \n,\"b\":[2, // y \n3]}",
       "{\n   \"a\" : 1, // x : \n   \"b\" : [\n      2, // y \n      3\n   ]\n}\n"}};
  for (const auto& [json, expected] : rows) EXPECT_EQ(Rewrite(json), expected) << json;
  EXPECT_EQ(StyledWrite(Json::Value(std::string("x\0y", 3))), "\"x\"\n");
  Json::Value sparse;
  sparse[3] = 1;  // the indices it skips read as null
  EXPECT_EQ(StyledWrite(sparse), "[ null, null, null, 1 ]\n");
  EXPECT_EQ(FormatReal(INFINITY), "inf");
}

TEST(StyledWriter, SpreadsAnArrayThatReachesTheMargin) {
  std::string json = "[1", line = "[ 1", spread = "[\n   1";
  for (int i = 1; i < 23; ++i) json += ",1", line += ", 1", spread += ",\n   1";
  EXPECT_EQ(Rewrite(json + "]"), line + " ]\n");               // 71 characters
  EXPECT_EQ(Rewrite(json + ",1]"), spread + ",\n   1\n]\n");   // 74
  EXPECT_EQ(Rewrite(json + ",1,1]").substr(0, 6), "[\n   1");  // 25 elements
}

}  // namespace
}  // namespace vsm
