#include "support/c_string.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "support/tracked_heap.h"

namespace vsm {
namespace {

// The text after an in-place edit of a copy of `input`.
template <typename Edit>
std::string Edited(const char* input, Edit edit) {
  char buffer[64];
  std::strcpy(buffer, input);
  edit(buffer);
  return buffer;
}

TEST(CStringTest, InPlaceEdits) {
  EXPECT_EQ("16 2 6 1212", Edited("16, 2, 6, 1212", [](char* t) { RemoveChar(t, ','); }));
  EXPECT_EQ("a//b", Edited("a//b//", [](char* t) { TrimRightChar(t, '/'); }));
  EXPECT_EQ(" \ta \t", Edited(" \ta \t  ", TrimRightSpaces));
  EXPECT_EQ("a b", Edited(" \t a b \t ", TrimBlanks));
  EXPECT_EQ("", Edited("\t \t", TrimBlanks));
  EXPECT_EQ("a/b/c", Edited("a.b.c", [](char* t) { EXPECT_EQ(5, ReplaceChar(t, '.', '/')); }));
}

TEST(CStringTest, SearchesStayInsideTheText) {
  EXPECT_EQ(3, IndexOfChar("a/b/c", '/', 2));
  EXPECT_EQ(-1, IndexOfChar("a/b/c", 'a', 5));  // at the end
  EXPECT_EQ(-1, IndexOfChar("a/b/c", 'a', 9));  // past it, not read
  EXPECT_EQ(-1, IndexOfChar("a/b/c", '\0', 0));
  EXPECT_EQ(3, ReverseFindChar("a/b/c", '/'));
  EXPECT_EQ("cdef", Edited("", [](char* out) { Mid("abcdef", 2, 10, out); }));
  EXPECT_EQ("", Edited("x", [](char* out) { Mid("abcdef", 9, 1, out); }));
}

TEST(CStringTest, CopiesAndTests) {
  char target[4];
  SafeStringCopy(target, "abcdef", sizeof(target));
  EXPECT_STREQ("abc", target);
  SafeStringCopy(target, "q", 0);
  EXPECT_STREQ("abc", target);
  char* copy = DuplicateString("abc");
  EXPECT_STREQ("abc", copy);
  EXPECT_EQ(4u, TrackedSize(copy));
  TrackedFree(copy);
  EXPECT_EQ(1, BytesEqual("a", "b", -5));
  EXPECT_EQ(1, IsAllDigits("x", 0));
  EXPECT_EQ(0, IsAllDigits("12", 8));  // stops at the zero
}

TEST(CStringTest, GetLoginNameLeavesTheTargetAloneOnFailure) {
  char target[1024] = "unchanged";
  ::testing::internal::CaptureStdout();
  GetLoginName(target);
  std::string printed = ::testing::internal::GetCapturedStdout();
  if (!printed.empty()) {
    EXPECT_EQ("getlogin_r failed.\n", printed);
  }
  EXPECT_EQ(printed.empty(), std::strcmp("unchanged", target) != 0);
}

}  // namespace
}  // namespace vsm
