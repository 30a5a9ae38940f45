#include "support/text_search.h"

#include <gtest/gtest.h>

namespace vsm {
namespace {

TEST(TextSearchTest, FindTextNeverStepsBack) {
  const struct {
    const char *text, *pattern;
    bool caseSensitive;
    int32_t expected;
  } cases[] = {
      {"aaab", "aab", true, -1},   {"xAAB", "aab", false, 1},
      {"xAAB", "aab", true, -1},   {"abcabd", "abd", true, 3},
      {"ababc", "abc", true, 2},   {"hell", "hello", true, -1},
      {"abc", "", true, -1},       {"", "a", true, -1},
      {"\xC4", "\xE4", false, -1}, {"{}\r\n\r\r\n\r\nbody", "\r\n\r\n", false, 5},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.expected, FindText(c.text, c.pattern, c.caseSensitive)) << c.text;
  }
  EXPECT_EQ(-1, FindInRange("abXabX", "abX", 3, 5, true));  // would end past `end`
  EXPECT_EQ(3, FindInRange("abXabX", "abX", 1, 6, true));
  EXPECT_EQ(-1, FindInRange("abXabX", "ab", 4, 4, true));
}

TEST(TextSearchTest, CountTextBlocks) {
  const struct {
    const char* text;
    int32_t expected;
  } cases[] = {{"", 0},
               {"one", 1},
               {"one\r\n\r\ntwo", 2},
               {"one\r\n\r\n", 1},
               {"\r\n\r\n", 1},
               {"a\r\n\r\n\r\n\r\nb", 3},
               {"a\r\n\r\r\n\r\nb", 2},
               {"a\r\nb\r\n", 1}};
  for (const auto& c : cases) EXPECT_EQ(c.expected, CountTextBlocks(c.text)) << c.text;
}

}  // namespace
}  // namespace vsm
