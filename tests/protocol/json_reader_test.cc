#include "protocol/json_reader.h"

#include <gtest/gtest.h>
#include <json/reader.h>

#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "protocol/styled_writer.h"

namespace vsm {
namespace {

TEST(JsonReader, ParsesUpToTheNestingLimitAndNoFurther) {
  // The chain counts the number too: kMaxJsonNesting - 1 containers reach the limit.
  auto arrays = [](int n) { return std::string(n, '[') + "1" + std::string(n, ']'); };
  auto objects = [](int n) {
    std::string text;
    for (int i = 0; i < n; ++i) text += "{\"a\":";
    return text + "1" + std::string(n, '}');
  };
  Json::Value root;
  EXPECT_TRUE(ParseJsonText(arrays(kMaxJsonNesting - 1), &root, false));
  EXPECT_TRUE(ParseJsonText(objects(kMaxJsonNesting - 1), &root, false));
  EXPECT_FALSE(ParseJsonText(arrays(kMaxJsonNesting), &root, false));
  EXPECT_TRUE(root.isNull());
  EXPECT_FALSE(ParseJsonText(objects(kMaxJsonNesting), &root, true));
  EXPECT_FALSE(ParseJsonText(arrays(100000), &root, false));
}

TEST(JsonReader, StoresTheProtocolsNumberTypes) {
  const Json::ValueType kInt = Json::intValue, kUInt = Json::uintValue, kReal = Json::realValue;
  // clang-format off
  const std::pair<const char*, Json::ValueType> rows[] = {
      {"2147483647", kInt}, {"2147483648", kUInt}, {"18446744073709551615", kUInt},
      {"18446744073709551616", kReal}, {"-9223372036854775808", kInt},
      {"-9223372036854775809", kReal}, {"2.0", kReal}, {"1e2", kReal}};
  // clang-format on
  for (const auto& [text, type] : rows) {
    Json::Value root;
    ASSERT_TRUE(ParseJsonText(text, &root, false)) << text;
    EXPECT_EQ(root.type(), type) << text;
  }
}

TEST(JsonReader, KeepsTheGrammarItAlwaysHad) {
  for (const char* text : {"", " ", "[1,]", "{\"a\":1,}", "\xEF\xBB\xBF[1]", "+1", "[1e400]",
                           "{'a':1}", "NaN", "[Infinity]", "{1:2}", "\"open", "[1 2]"}) {
    Json::Value root(5);
    EXPECT_FALSE(ParseJsonText(text, &root, false)) << text;
    EXPECT_TRUE(root.isNull()) << text;
  }
  // Any root, text after the first value, comments, and an empty name before a closing comma.
  for (const char* text :
       {"5", "\"s\"", "[1] tail", "{} {}", "/* c */ [1] // d", "{\"\":1,}", "01", "-"}) {
    Json::Value root;
    EXPECT_TRUE(ParseJsonText(text, &root, false)) << text;
  }
}

// Names were C strings in the classic library: a NUL byte, raw or escaped, ends a member name,
// and the writer, which writes names as C strings, then meets each name once.
TEST(JsonReader, CutsMemberNamesAtTheirFirstNulByte) {
  using namespace std::string_literals;
  const std::pair<std::string, std::string> rows[] = {
      {R"({"a\u0000b":1,"a\u0000c":2})", "{\n   \"a\" : 2\n}\n"},
      {"{\"id\":\"1\",\"cmdG\0\0{d\":\"1\",\"cmdG\0a\":[\"a\"]}"s,
       "{\n   \"cmdG\" : [ \"a\" ],\n   \"id\" : \"1\"\n}\n"},
      {R"({"\u0000x":{"k\u0000":1,"k":2}})", "{\n   \"\" : {\n      \"k\" : 2\n   }\n}\n"},
  };
  for (const auto& [text, styled] : rows) {
    Json::Value root;
    ASSERT_TRUE(ParseJsonText(text, &root, false)) << text;
    EXPECT_EQ(StyledWrite(root), styled) << text;
    Json::Value again;
    ASSERT_TRUE(ParseJsonText(styled, &again, false));
    EXPECT_EQ(StyledWrite(again), styled);
  }
}

// A random JSON text of tokens, blanks and comments, nested up to six levels; mostly well-formed.
std::string RandomValue(std::mt19937& random, int depth) {
  static const std::vector<std::string> kPieces = [] {
    std::istringstream text(
        "0 -0 12 -7 2147483647 2147483648 4294967296 -2147483649 9223372036854775808 "
        "18446744073709551616 -9223372036854775809 1.5 2.0 -3e2 1E-2 0.10 1e 01 true false null "
        "tru nul \"\" \"a\" \"\\n\\t\" \"\\u00e9\" \"\\ud800\" \"\\ud83d\\ude00\" \"\\x\""
        " \"\xc3\xa9\" \"\xc3\x28\xff\"");
    return std::vector<std::string>(std::istream_iterator<std::string>(text), {});
  }();
  static const char* const kBlanks[] = {" ", "\n", "// line\n", "/* block */", "", "", "", ""};
  auto pick = [&random](size_t n) { return random() % n; };
  auto blank = [&] { return std::string(kBlanks[pick(8)]); };
  const size_t choice = depth > 5 ? 2 : pick(5);
  if (choice > 1) return blank() + kPieces[pick(kPieces.size())] + blank();
  std::string text = blank() + (choice == 0 ? "[" : "{");
  for (size_t i = 0, n = pick(4); i < n; ++i) {
    if (i > 0) text += ",";
    if (choice == 1) text += blank() + "\"" + "abAB_"[pick(5)] + "\"" + blank() + ":";
    text += RandomValue(random, depth + 1);
  }
  return text + blank() + (choice == 0 ? "]" : "}") + blank();
}

// The stored types of a value and of all it holds, in document order.
std::string Types(const Json::Value& value) {
  std::string types(1, static_cast<char>('0' + value.type()));
  for (const Json::Value& member : value) types += Types(member);
  return types;
}

// The library's classic reader is the reference for everything but the nesting limit.
TEST(JsonReader, AgreesWithTheClassicReaderOnGeneratedTexts) {
  std::mt19937 random(20261121);
  int parsed = 0;
  for (int i = 0; i < 20000; ++i) {
    // A quarter of the texts get damaged at up to three bytes.
    std::string text = RandomValue(random, 0);
    for (size_t n = random() % 4 == 0 ? random() % 4 : 0; n > 0 && !text.empty(); --n) {
      const size_t at = random() % text.size(), kind = random() % 3;
      if (kind == 0) text.erase(at, 1);
      if (kind == 1) text.insert(at, 1, "0-129tfn\""[random() % 9]);
      if (kind == 2) text[at] = "{}[],:\"\\/*x0-e."[random() % 15];
    }
    const bool comments = (i % 2) == 0;
    Json::Value expected;
    Json::Value actual;
    const bool expectedOk = Json::Reader().parse(text, expected, comments);
    ASSERT_EQ(ParseJsonText(text, &actual, comments), expectedOk) << text;
    if (!expectedOk) continue;
    ++parsed;
    ASSERT_EQ(Types(actual), Types(expected)) << text;
    ASSERT_EQ(StyledWrite(actual), StyledWrite(expected)) << text;
  }
  EXPECT_GT(parsed, 5000);
}

}  // namespace
}  // namespace vsm
