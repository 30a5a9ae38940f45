#include "support/string_affix.h"

#include <gtest/gtest.h>

#include <string>

namespace vsm {
namespace {

TEST(StringAffixTest, AllThreeFormsCompareBytes) {
  const struct {
    std::string text, other;
    bool ends, starts;
  } cases[] = {
      {"index.html", ".html", true, false},
      {"index.html", "index", false, true},
      {"abc", "", true, true},
      {"bc", "abc", false, false},
      {"ABC", "c", false, false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.ends, EndsWith(c.text, c.other)) << c.other;
    EXPECT_EQ(c.ends, EndsWith(c.text, c.other.data(), c.other.size())) << c.other;
    EXPECT_EQ(c.ends, EndsWith(c.text, c.other.c_str())) << c.other;
    EXPECT_EQ(c.starts, StartsWith(c.text, c.other)) << c.other;
    EXPECT_EQ(c.starts, StartsWith(c.text, c.other.data(), c.other.size())) << c.other;
    EXPECT_EQ(c.starts, StartsWith(c.text, c.other.c_str())) << c.other;
  }
  EXPECT_TRUE(EndsWith(std::string("a\0b", 3), "\0b", 2));
  EXPECT_FALSE(EndsWith("abc", nullptr));
}

TEST(StringAffixTest, NarrowAndWideKeepTheSourceSize) {
  EXPECT_EQ(L"Host-1", NarrowToWide("Host-1"));
  EXPECT_EQ("Host-1", WideToNarrow(L"Host-1"));
  EXPECT_EQ(std::string(2, '\0'), WideToNarrow(std::wstring{wchar_t(0xD800), L'a'}));
}

}  // namespace
}  // namespace vsm
