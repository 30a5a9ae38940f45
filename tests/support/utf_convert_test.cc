#include "support/utf_convert.h"

#include <gtest/gtest.h>

#include <string>

namespace vsm {
namespace {

// UTF-8 bytes and the units they must give; an empty `units` means a rejection.
const struct {
  const char* name;
  std::string bytes;
  std::wstring units;
} kDecodeCases[] = {
    {"ascii", "abc", L"abc"},
    {"two bytes", "\xC3\xA9", L"\x00E9"},
    {"three bytes", "\xE2\x82\xAC", L"\x20AC"},
    {"astral becomes a pair", "\xF0\x9F\x98\x80", L"\xD83D\xDE00"},
    {"highest code point", "\xF4\x8F\xBF\xBF", L"\xDBFF\xDFFF"},
    {"nul inside", std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
    {"overlong nul", "\xC0\x80", std::wstring(1, L'\0')},
    {"overlong A", "x\xC1\x81", L"xA"},
    {"overlong three", "\xE0\x81\x81", L"A"},
    {"overlong four", "\xF0\x8F\xBF\xBD", L"\xFFFD"},
    {"lone high surrogate", "\xED\xA0\x80", L""},
    {"lone low surrogate", "a\xED\xB0\x80", L""},
    {"overlong surrogate", "\xF0\x8D\xA0\x80", L""},
    {"above 0x10FFFF", "\xF4\x90\x80\x80", L""},
    {"lead 0xF5", "\xF5\x80\x80\x80", L""},
    {"lead 0xF8", "\xF8\x88\x80\x80\x80", L""},
    {"lead 0xFF", "\xFF", L""},
    {"truncated two", "a\xC3", L""},
    {"truncated four", "\xF0\x9F\x98", L""},
    {"truncated overlong", "\xC0", L""},
    {"bad continuation", "\xE2\x28\xA1", L""},
    {"stray continuation",
     "a\x80"
     "b",
     L""},
    {"overlong then stray", "\xC0\x80\x80", L""},
};

TEST(UtfConvertTest, Utf8ToWide) {
  for (const auto& c : kDecodeCases) {
    std::wstring output;
    Utf8ToWide(c.bytes.data(), c.bytes.size(), output);
    EXPECT_EQ(c.units, output) << c.name;
  }
}

TEST(UtfConvertTest, Utf8ToWideAppendsCleanTextButReplacesOtherwise) {
  std::wstring output = L"x";
  Utf8ToWide("ab", 2, output);
  EXPECT_EQ(L"xab", output);
  Utf8ToWide("\xC1\x81", 2, output);  // overlong: the lenient result replaces
  EXPECT_EQ(L"A", output);
  Utf8ToWide("\x80", 1, output);
  EXPECT_EQ(L"", output);
  output = L"keep";
  Utf8ToWide(nullptr, 4, output);
  Utf8ToWide("abc", 0, output);
  EXPECT_EQ(L"keep", output);
  Utf8ToWide("abc", 2, output);  // the length counts, not the zero
  EXPECT_EQ(L"keepab", output);
}

TEST(UtfConvertTest, WideToUtf8StopsAtTheBadUnit) {
  const struct {
    const char* name;
    std::wstring units;
    std::string bytes;
  } cases[] = {
      {"bmp", L"a\x00E9\x20AC", "a\xC3\xA9\xE2\x82\xAC"},
      {"pair", L"\xD83D\xDE00!", "\xF0\x9F\x98\x80!"},
      {"high at the end", L"ab\xD83D", "ab"},
      {"high before a letter", L"a\xD83Dxyz", "a"},
      {"lone low",
       L"ab\xDE00"
       L"cd",
       "ab"},
      {"reversed pair", L"\xDE00\xD83D", ""},
      {"only the low 16 bits count", std::wstring(1, wchar_t(0x10041)), "A"},
      {"empty", L"", ""},
  };
  for (const auto& c : cases) {
    std::string output = "stale";
    WideToUtf8(c.units.c_str(), output);
    EXPECT_EQ(c.bytes, output) << c.name;
  }
  std::string output = "stale";
  WideToUtf8(nullptr, output);
  EXPECT_EQ("", output);
}

}  // namespace
}  // namespace vsm
