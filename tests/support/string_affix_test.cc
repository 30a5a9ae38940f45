#include "support/string_affix.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace vsm {
namespace {

// text, other, ends-with, starts-with; every row is checked in all three forms of `other`.
const struct {
  std::string text;
  std::string other;
  bool ends;
  bool starts;
} kCases[] = {
    {"index.html", ".html", true, false},
    {"index.html", "index", false, true},
    {"abc", "abc", true, true},
    {"abc", "", true, true},
    {"", "", true, true},
    {"bc", "abc", false, false},  // longer than the text
    {"ABC", "c", false, false},   // bytes, not case-folded
    {std::string("a\0b", 3), std::string("\0b", 2), true, false},
};

TEST(StringAffixTest, AllThreeFormsAgree) {
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.text + " / " + c.other);
    EXPECT_EQ(c.ends, EndsWith(c.text, c.other));
    EXPECT_EQ(c.ends, EndsWith(c.text, c.other.data(), c.other.size()));
    EXPECT_EQ(c.starts, StartsWith(c.text, c.other));
    EXPECT_EQ(c.starts, StartsWith(c.text, c.other.data(), c.other.size()));
    if (std::strlen(c.other.c_str()) == c.other.size()) {
      EXPECT_EQ(c.ends, EndsWith(c.text, c.other.c_str()));
      EXPECT_EQ(c.starts, StartsWith(c.text, c.other.c_str()));
    }
  }
  EXPECT_FALSE(EndsWith("abc", nullptr));
  EXPECT_FALSE(StartsWith("abc", nullptr, 0));
}

TEST(StringAffixTest, NarrowWideRoundTripKeepsTheElementCount) {
  EXPECT_EQ(L"Host-1.example", NarrowToWide("Host-1.example"));
  EXPECT_EQ("Host-1.example", WideToNarrow(L"Host-1.example"));
  EXPECT_EQ(L"", NarrowToWide(""));
  // A failed conversion keeps the size and gives zeros.
  EXPECT_EQ(std::string(2, '\0'), WideToNarrow(std::wstring{wchar_t(0xD800), L'a'}));
}

}  // namespace
}  // namespace vsm
