#include "protocol/json_reader.h"

#include <gtest/gtest.h>
#include <json/reader.h>

#include <random>
#include <string>

#include "protocol/styled_writer.h"

namespace vsm {
namespace {

// Values nested `levels` deep: `levels` arrays around one number.
std::string NestedArrays(int levels) {
  return std::string(levels, '[') + "1" + std::string(levels, ']');
}

std::string NestedObjects(int levels) {
  std::string text;
  for (int i = 0; i < levels; ++i) text += "{\"a\":";
  text += "1";
  return text + std::string(levels, '}');
}

TEST(JsonReader, ParsesUpToTheNestingLimitAndNoFurther) {
  Json::Value root;
  // The chain counts the number too: kMaxJsonNesting - 1 containers reach the limit.
  EXPECT_TRUE(ParseJsonText(NestedArrays(kMaxJsonNesting - 1), &root, false));
  EXPECT_TRUE(ParseJsonText(NestedObjects(kMaxJsonNesting - 1), &root, false));
  EXPECT_FALSE(ParseJsonText(NestedArrays(kMaxJsonNesting), &root, false));
  EXPECT_TRUE(root.isNull());
  EXPECT_FALSE(ParseJsonText(NestedObjects(kMaxJsonNesting), &root, true));
  EXPECT_FALSE(ParseJsonText(NestedArrays(100000), &root, false));
}

TEST(JsonReader, ParsesCommandsNestedFarBeyondTheLibraryDefault) {
  Json::Value root;
  ASSERT_TRUE(
      ParseJsonText("{\"method\":\"x\",\"parameter\":[" + NestedArrays(1500) + "]}", &root, false));
  const Json::Value* inner = &root["parameter"];
  int depth = 0;
  while (inner->isArray()) {
    inner = &(*inner)[0];
    ++depth;
  }
  EXPECT_EQ(depth, 1501);
  EXPECT_EQ(inner->asInt(), 1);
}

struct NumberRow {
  std::string text;
  Json::ValueType type;
};

class NumberTypes : public ::testing::TestWithParam<NumberRow> {};

TEST_P(NumberTypes, StoresTheProtocolsType) {
  Json::Value root;
  ASSERT_TRUE(ParseJsonText(GetParam().text, &root, false));
  EXPECT_EQ(root.type(), GetParam().type) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, NumberTypes,
    ::testing::Values(NumberRow{"0", Json::intValue}, NumberRow{"2147483647", Json::intValue},
                      NumberRow{"2147483648", Json::uintValue},
                      NumberRow{"9223372036854775807", Json::uintValue},
                      NumberRow{"18446744073709551615", Json::uintValue},
                      NumberRow{"18446744073709551616", Json::realValue},
                      NumberRow{"123456789012345678901234567890", Json::realValue},
                      NumberRow{"-1", Json::intValue},
                      NumberRow{"-9223372036854775808", Json::intValue},
                      NumberRow{"-9223372036854775809", Json::realValue},
                      NumberRow{"2.0", Json::realValue}, NumberRow{"1e2", Json::realValue}));

TEST(JsonReader, RejectsWhatTheProtocolNeverAccepted) {
  for (const char* text : {"", " ", "[1,]", "{\"a\":1,}", "\xEF\xBB\xBF[1]", "+1", "[1e400]",
                           "{'a':1}", "NaN", "[Infinity]", "{1:2}", "\"open", "[1 2]"}) {
    Json::Value root(5);
    EXPECT_FALSE(ParseJsonText(text, &root, false)) << text;
    EXPECT_TRUE(root.isNull()) << text;
  }
}

TEST(JsonReader, AcceptsWhatItAlwaysAccepted) {
  // Any root, text after the first value, comments, and an empty name before a closing comma.
  for (const char* text :
       {"5", "\"s\"", "[1] tail", "{} {}", "/* c */ [1] // d", "{\"\":1,}", "01", "-"}) {
    Json::Value root;
    EXPECT_TRUE(ParseJsonText(text, &root, false)) << text;
  }
}

TEST(JsonReader, HandlesHugeAndOddTexts) {
  Json::Value root;
  std::string big = "[\"" + std::string(10 * 1024 * 1024, 'x') + "\"]";
  ASSERT_TRUE(ParseJsonText(big, &root, false));
  EXPECT_EQ(root[0].asString().size(), 10u * 1024 * 1024);
  ASSERT_TRUE(ParseJsonText("[\"\xC3\x28\xFF\"]", &root, false));  // invalid UTF-8 stays bytes
  EXPECT_EQ(root[0].asString(), "\xC3\x28\xFF");
  ASSERT_TRUE(ParseJsonText("[\"a\\u0000b\"]", &root, false));
  EXPECT_EQ(root[0].asString(), std::string("a\0b", 3));
  ASSERT_TRUE(ParseJsonText("[\"\\ud83d\\ude00\"]", &root, false));
  EXPECT_EQ(root[0].asString(), "\xF0\x9F\x98\x80");
}

// Texts of JSON tokens with random damage: mostly well-formed, often not.
class TextGenerator {
 public:
  explicit TextGenerator(unsigned seed) : random_(seed) {}

  std::string Next() {
    std::string text = Value(0);
    int damage = Pick(4) == 0 ? Pick(4) : 0;
    for (int i = 0; i < damage && !text.empty(); ++i) {
      size_t at = Pick(static_cast<int>(text.size()));
      switch (Pick(3)) {
        case 0:
          text.erase(at, 1);
          break;
        case 1:
          text.insert(at, 1, Pieces()[Pick(Pieces().size())][0]);
          break;
        default:
          text[at] = "{}[],:\"\\/*x0-e."[Pick(15)];
          break;
      }
    }
    return text;
  }

 private:
  static const std::vector<std::string>& Pieces() {
    static const std::vector<std::string> pieces = {
        "0",          "-0",           "12",
        "-7",         "2147483647",   "2147483648",
        "4294967296", "-2147483649",  "9223372036854775808",
        "1.5",        "2.0",          "-3e2",
        "1E-2",       "0.10",         "1e",
        "01",         "true",         "false",
        "null",       "\"\"",         "\"a\"",
        "\"\\n\\t\"", "\"\\u00e9\"",  "\"\\ud800\"",
        "\"\\x\"",    "\"\xc3\xa9\"", "tru",
        "nul"};
    return pieces;
  }

  int Pick(size_t n) { return static_cast<int>(random_() % n); }

  std::string Blank() {
    switch (Pick(8)) {
      case 0:
        return " ";
      case 1:
        return "\n";
      case 2:
        return "// line\n";
      case 3:
        return "/* block */";
      default:
        return "";
    }
  }

  std::string Value(int depth) {
    int choice = depth > 5 ? 2 : Pick(5);
    std::string text = Blank();
    if (choice == 0) {
      text += "[";
      int n = Pick(4);
      for (int i = 0; i < n; ++i) text += (i ? "," : "") + Value(depth + 1);
      text += Blank() + "]";
    } else if (choice == 1) {
      text += "{";
      int n = Pick(4);
      for (int i = 0; i < n; ++i) {
        text += (i ? "," : "") + Blank() + "\"" + std::string(1, "abAB_"[Pick(5)]) + "\"" +
                Blank() + ":" + Value(depth + 1);
      }
      text += Blank() + "}";
    } else {
      text += Pieces()[Pick(Pieces().size())];
    }
    return text + Blank();
  }

  std::mt19937 random_;
};

bool SameTypes(const Json::Value& a, const Json::Value& b) {
  if (a.type() != b.type() || a.size() != b.size()) return false;
  if (a.isArray()) {
    for (Json::ArrayIndex i = 0; i < a.size(); ++i) {
      if (!SameTypes(a[i], b[i])) return false;
    }
  }
  if (a.isObject()) {
    for (const std::string& name : a.getMemberNames()) {
      if (!b.isMember(name) || !SameTypes(a[name], b[name])) return false;
    }
  }
  return true;
}

// The library's classic reader is the reference for everything but the nesting limit.
TEST(JsonReader, AgreesWithTheClassicReaderOnGeneratedTexts) {
  TextGenerator generator(20261121);
  int parsed = 0;
  for (int i = 0; i < 20000; ++i) {
    std::string text = generator.Next();
    bool comments = (i % 2) == 0;
    Json::Value expected;
    Json::Reader classic;
    bool expectedOk = classic.parse(text, expected, comments);
    Json::Value actual;
    bool actualOk = ParseJsonText(text, &actual, comments);
    ASSERT_EQ(actualOk, expectedOk) << text;
    if (!expectedOk) continue;
    ++parsed;
    ASSERT_TRUE(SameTypes(actual, expected)) << text;
    ASSERT_EQ(StyledWrite(actual), StyledWrite(expected)) << text;
  }
  EXPECT_GT(parsed, 5000);
}

}  // namespace
}  // namespace vsm
