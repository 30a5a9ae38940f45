#include "support/text_search.h"

#include <gtest/gtest.h>

#include <cstring>

namespace vsm {
namespace {

// FindText: text, pattern, case-sensitive, expected index.
const struct {
  const char* text;
  const char* pattern;
  bool caseSensitive;
  int32_t expected;
} kFindCases[] = {
    {"aaab", "aab", true, -1},  // no step back after a partial match
    {"xAAB", "aab", false, 1},      {"xAAB", "aab", true, -1},
    {"abcabd", "abd", true, 3},  // the failed character starts the next try
    {"ababc", "abc", true, 2},      {"hello", "hello", true, 0},
    {"hell", "hello", true, -1},  // a partial match at the end
    {"abc", "", true, -1},          {"", "a", true, -1},
    {"\xC4\xE4", "\xE4", false, 1},  // only ASCII folds
    {"\xC4", "\xE4", false, -1},    {"{}\r\n\r\r\n\r\nbody", "\r\n\r\n", false, 5},
};

TEST(TextSearchTest, FindText) {
  for (const auto& c : kFindCases) {
    EXPECT_EQ(c.expected, FindText(c.text, c.pattern, c.caseSensitive))
        << "\"" << c.pattern << "\" in \"" << c.text << "\"";
  }
  EXPECT_EQ(-1, FindText(nullptr, "a", true));
  EXPECT_EQ(-1, FindText("a", nullptr, true));
}

TEST(TextSearchTest, FindInRangeKeepsToItsRange) {
  const char* text = "abXabXab";
  EXPECT_EQ(3, FindInRange(text, "ab", 1, 8, true));
  EXPECT_EQ(-1, FindInRange(text, "abX", 3, 5, true));  // would end past `end`
  EXPECT_EQ(3, FindInRange(text, "abX", 3, 6, true));
  EXPECT_EQ(-1, FindInRange(text, "ab", 4, 4, true));
  EXPECT_EQ(-1, FindInRange(text, "ab", 5, 2, true));
  EXPECT_EQ(-1, FindInRange(text, "ab", -1, 8, true));
}

TEST(TextSearchTest, CountTextBlocks) {
  const struct {
    const char* text;
    int32_t expected;
  } cases[] = {
      {"", 0},
      {"one", 1},
      {"one\r\n\r\ntwo", 2},
      {"one\r\n\r\n", 1},
      {"\r\n\r\n", 1},
      {"a\r\n\r\n\r\n\r\nb", 3},
      {"a\r\n\r\r\n\r\nb", 2},
      {"a\r\nb\r\n", 1},
  };
  for (const auto& c : cases) EXPECT_EQ(c.expected, CountTextBlocks(c.text)) << c.text;
  EXPECT_EQ(0, CountTextBlocks(nullptr));
}

}  // namespace
}  // namespace vsm
