#include "support/c_string.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace vsm {
namespace {

// One in-place edit: input, argument character, expected text.
struct EditCase {
  const char* input;
  char ch;
  const char* expected;
};

void ExpectEdits(void (*edit)(char*, char), const EditCase* cases, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    char buffer[64] = {};
    std::strcpy(buffer, cases[i].input);
    edit(buffer, cases[i].ch);
    EXPECT_STREQ(cases[i].expected, buffer) << "input \"" << cases[i].input << "\"";
  }
}

TEST(CStringTest, RemoveCharClosesGaps) {
  const EditCase cases[] = {
      {"16, 2, 6, 1212", ',', "16 2 6 1212"},
      {",,a,,", ',', "a"},
      {"abc", 'x', "abc"},
      {"", 'a', ""},
      {"aaa", 'a', ""},
  };
  ExpectEdits(RemoveChar, cases, std::size(cases));
}

TEST(CStringTest, TrimRightCharCutsOnlyTheTrailingRun) {
  const EditCase cases[] = {
      {"a//b//", '/', "a//b"},
      {"////", '/', ""},
      {"/a", '/', "/a"},
      {"", '/', ""},
  };
  ExpectEdits(TrimRightChar, cases, std::size(cases));
}

TEST(CStringTest, TrimBlanksAndSpaces) {
  const struct {
    const char* input;
    const char* blanks;
    const char* spaces;
  } cases[] = {
      {" \t a b \t ", "a b", " \t a b \t"},
      {"\t\t", "", "\t\t"},
      {"x", "x", "x"},
      {"", "", ""},
      {"a\n ", "a\n", "a\n"},
  };
  for (const auto& c : cases) {
    char blanks[32], spaces[32];
    std::strcpy(blanks, c.input);
    std::strcpy(spaces, c.input);
    TrimBlanks(blanks);
    TrimRightSpaces(spaces);
    EXPECT_STREQ(c.blanks, blanks) << c.input;
    EXPECT_STREQ(c.spaces, spaces) << c.input;
  }
  TrimBlanks(nullptr);
}

TEST(CStringTest, ReplaceCharReturnsTheLength) {
  char text[] = "a.b.c";
  EXPECT_EQ(5, ReplaceChar(text, '.', '/'));
  EXPECT_STREQ("a/b/c", text);
}

TEST(CStringTest, IndexSearches) {
  const char* text = "a/b/c";
  EXPECT_EQ(1, IndexOfChar(text, '/', 0));
  EXPECT_EQ(1, IndexOfChar(text, '/', 1));
  EXPECT_EQ(3, IndexOfChar(text, '/', 2));
  EXPECT_EQ(-1, IndexOfChar(text, '/', 4));
  EXPECT_EQ(-1, IndexOfChar(text, 'a', 5));  // at the end
  EXPECT_EQ(-1, IndexOfChar(text, 'a', 9));  // past it: not read
  EXPECT_EQ(-1, IndexOfChar(text, 'a', -1));
  EXPECT_EQ(-1, IndexOfChar(text, '\0', 0));
  EXPECT_EQ(3, ReverseFindChar(text, '/'));
  EXPECT_EQ(-1, ReverseFindChar(text, 'x'));
  EXPECT_EQ(-1, ReverseFindChar("", 'x'));
}

TEST(CStringTest, MidCopiesAtMostCount) {
  const struct {
    int32_t start, count;
    const char* expected;
  } cases[] = {{0, 3, "abc"}, {2, 10, "cdef"}, {6, 1, ""}, {9, 1, ""}, {1, 0, ""}, {-1, 2, ""}};
  for (const auto& c : cases) {
    char output[16];
    std::memset(output, 'x', sizeof(output));
    Mid("abcdef", c.start, c.count, output);
    EXPECT_STREQ(c.expected, output) << c.start << "," << c.count;
  }
}

TEST(CStringTest, SafeStringCopyAlwaysTerminates) {
  char target[4];
  std::memset(target, 'x', sizeof(target));
  SafeStringCopy(target, "abcdef", sizeof(target));
  EXPECT_STREQ("abc", target);
  SafeStringCopy(target, "z", sizeof(target));
  EXPECT_EQ(0, std::memcmp("z\0\0\0", target, 4));  // strncpy pads
  SafeStringCopy(target, "q", 0);                   // size 0 writes nothing
  EXPECT_STREQ("z", target);
}

TEST(CStringTest, ByteAndDigitTests) {
  EXPECT_EQ(1, BytesEqual("abc", "abd", 2));
  EXPECT_EQ(0, BytesEqual("abc", "abd", 3));
  EXPECT_EQ(1, BytesEqual("a", "b", 0));
  EXPECT_EQ(1, BytesEqual("a", "b", -5));
  EXPECT_EQ(0, IsAllDigits(nullptr, 3));
  EXPECT_EQ(1, IsAllDigits("x", 0));
  EXPECT_EQ(1, IsAllDigits("123x", 3));
  EXPECT_EQ(0, IsAllDigits("123x", 4));
  EXPECT_EQ(0, IsAllDigits("12", 8));  // stops at the zero
}

int32_t Length(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  int32_t length = FormatLength(format, arguments);
  va_end(arguments);
  return length;
}

TEST(CStringTest, NumbersFromText) {
  EXPECT_EQ(9, Length("%s-%05d", "abc", 7));
  EXPECT_EQ(0, Length(""));
  EXPECT_EQ(-9007199254740993LL, TextToInt64("-9007199254740993xyz"));
  EXPECT_EQ(0, TextToInt64("x1"));
  EXPECT_EQ(12, TextToInt64("  12"));
  EXPECT_FLOAT_EQ(0.1f, TextToFloat("0.1"));
  EXPECT_FLOAT_EQ(-2.5e3f, TextToFloat("-2.5e3 m"));
}

TEST(CStringTest, GetLoginNameReportsFailureWithoutTouchingTheTarget) {
  char target[1024];
  std::strcpy(target, "unchanged");
  ::testing::internal::CaptureStdout();
  GetLoginName(target);
  std::string printed = ::testing::internal::GetCapturedStdout();
  if (printed.empty()) {
    EXPECT_STRNE("unchanged", target);  // a login name was found
  } else {
    EXPECT_EQ("getlogin_r failed.\n", printed);
    EXPECT_STREQ("unchanged", target);
  }
}

}  // namespace
}  // namespace vsm
