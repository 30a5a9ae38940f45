#include "support/utf_convert.h"

#include <gtest/gtest.h>

#include <string>

namespace vsm {
namespace {

// utf_oracle.py checks both conversions against Python's codecs; these are the contract's
// corners that it doesn't reach.
TEST(UtfConvertTest, Utf8ToWideAppendsCleanTextButReplacesOtherwise) {
  std::wstring output = L"x";
  Utf8ToWide("ab\xF0\x9F\x98\x80", 6, output);
  EXPECT_EQ(L"xab\xD83D\xDE00", output);
  Utf8ToWide("\xC1\x81\xC0\x80", 4, output);  // overlong forms: the lenient result replaces
  EXPECT_EQ(std::wstring(L"A\0", 2), output);
  Utf8ToWide("\xED\xA0\x80", 3, output);  // refused by both: empty
  EXPECT_EQ(L"", output);
  output = L"keep";
  Utf8ToWide(nullptr, 4, output);
  Utf8ToWide("abc", 2, output);  // the length counts, not the zero
  EXPECT_EQ(L"keepab", output);
}

TEST(UtfConvertTest, WideToUtf8KeepsWhatCameBeforeTheBadUnit) {
  std::string output = "stale";
  WideToUtf8(
      L"a\xD83D\xDE00"
      L"b\xDE00"
      L"cd",
      output);
  EXPECT_EQ(
      "a\xF0\x9F\x98\x80"
      "b",
      output);
  WideToUtf8(std::wstring(1, wchar_t(0x10041)).c_str(), output);  // the low 16 bits count
  EXPECT_EQ("A", output);
  WideToUtf8(nullptr, output);
  EXPECT_EQ("", output);
}

}  // namespace
}  // namespace vsm
