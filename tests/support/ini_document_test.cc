// CIniDocument and the profile calls on top of it. Large, binary and unreadable files, and the
// keys the configuration files hold, are tested through the configuration store.
#include "support/ini_document.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <stdexcept>
#include <string>

#include "support/profile_string.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

using namespace testing;  // NOLINT: TempDir and the file helpers

std::string SaveText(const CIniDocument& document) {
  std::ostringstream out;
  document.Save(out);
  return out.str();
}

std::string RoundTrip(const std::string& text) {
  std::istringstream in(text);
  CIniDocument document;
  document.Load(in);
  return SaveText(document);
}

TEST(IniDocumentTest, GrammarSavesExactTextNamesAreTrimmedAndCaselessLoadsMergeAndWideToo) {
  const char binary[] = "[S]\nk=\xff\0\x01\n\xff=\0\n";  // NULs and 0xFF, already in saved form
  // clang-format off
  const struct { const char* name; std::string in, out; } rows[] = {
      {"FirstSpellingLastValue", "[Main]\nA=1\na=2\n", "[Main]\nA=2\n"},
      {"SectionSpellingsMerge", "[Main]\nx=1\n[MAIN]\ny=2\n", "[Main]\nx=1\ny=2\n"},
      {"KeyBeforeSectionLost", "x=1\n[S]\ny=2\n", "[S]\ny=2\n"},
      {"CrLfAndBlanksAroundValue", "[S]\r\nkey = value \r\n", "[S]\nkey= value \n"},
      {"OnlyEndingCrsGo", "[S]\nk=v \t\r\r\nj=a\rb\n", "[S]\nj=a\rb\nk=v \t\n"},
      {"CrOnlyEndingsAreOneLine", "[S]\rk=v\r", ""},
      {"EqualsFirstDroppedEmptySectionKept", "[S]\n=v\n \t=w\n", "[S]\n"},
      {"EmptySectionName", "[]\nk=v\n[ \t]\nj=w\n", "[]\nj=w\nk=v\n"},
      {"CaseInsensitiveOrder", "[b]\nz=1\nA=2\n[A]\nk=v\n", "[A]\nk=v\n[b]\nA=2\nz=1\n"},
      {"NoCommentSyntax", "[S]\n# a=b\n; c=d\n#x\n", "[S]\n# a=b\n; c=d\n"},
      {"BlankAfterBracketQuirk", "[abc] \nk=v\n[abc]\t\t\nj=w\n", "[abc]]\nj=w\nk=v\n"},
      {"UnclosedBracketIsKeyLine", "[S]\n[x=1\n[y\n[a]b=c\n", "[S]\n[a]b=c\n[x=1\n"},
      {"LeadingBlanksAndEmptyLines", " \t[S]\n\n   \n\t\n  k=v", "[S]\nk=v\n"},
      {"ValueWithEquals", "[S]\nk=a=b\nj==\n", "[S]\nj==\nk=a=b\n"},
      {"BinaryBytes", {binary, sizeof(binary) - 1}, {binary, sizeof(binary) - 1}}};
  // clang-format on
  for (const auto& row : rows) {
    EXPECT_EQ(RoundTrip(row.in), row.out) << row.name;
    EXPECT_EQ(RoundTrip(row.out), row.out) << row.name << ": what was saved reads back to itself";
  }
  TempDir dir;
  ASSERT_TRUE(WriteFileBytes(dir.Join("a.ini"), "[Main]\nPort=1\nEmpty=\nSpaced = x \n"));
  ASSERT_TRUE(WriteFileBytes(dir.Join("b.ini"), "[MAIN]\nport=3\n[T]\nx=4\n"));
  CIniDocument document;
  document.Load(dir.Join("a.ini"));
  const char* values[][3] = {{"Main", "Port", "1"}, {" mAIN\t", "\tPORT ", "1"},
                             {"Main", "Empty", ""}, {"Main", "spaced", " x "},
                             {"Main", "None", "d"}, {"Other", "Port", "d"}};
  for (const auto& v : values) EXPECT_EQ(document.GetValue(v[0], v[1], "d"), v[2]) << v[1];
  document.Load(dir.Join("b.ini"), true);
  document.Load(dir.Join("missing.ini"), false);  // leaves the document untouched
  document.Save(dir.Join("saved.ini"));
  EXPECT_EQ(ReadFileBytes(dir.Join("saved.ini")), "[Main]\nEmpty=\nPort=3\nSpaced= x \n[T]\nx=4\n");
  document.Load(dir.Join("b.ini"), false);
  EXPECT_EQ(SaveText(document), "[MAIN]\nport=3\n[T]\nx=4\n");
  // A value with line feeds is saved up to the first: it can't add entries of its own.
  document.SetValue("T", "x", "4\r\n[VS]\nOnlyLoadVeldoraneSignedModule=FALSE\n");
  EXPECT_EQ(SaveText(document), "[MAIN]\nport=3\n[T]\nx=4\r\n");
  EXPECT_EQ(RoundTrip(SaveText(document)), "[MAIN]\nport=3\n[T]\nx=4\n");
  // The wide form, through a file; a rename takes the new place in the order, or is refused
  // when the name is taken in any case.
  std::wstring path = std::wstring(dir.path().begin(), dir.path().end()) + L"/b.ini";
  CIniDocumentW wide;
  wide.Load(path);
  EXPECT_EQ(wide.RenameSection(L"main", L"U"), 1);
  EXPECT_EQ(wide.RenameKey(L"t", L"X", L" Port\t"), 1);
  EXPECT_EQ(wide.RenameSection(L"u", L"t"), 0);
  wide.Save(path);
  EXPECT_EQ(ReadFileBytes(dir.Join("b.ini")), "[T]\nPort=4\n[U]\nport=3\n");
}

TEST(ProfileStringTest, CopyIsTwoShortResultIsFullLengthNullsDoNotCrashAndWritesKeepOtherKeys) {
  TempDir dir;
  std::string file = dir.Join("c.ini"), missing = dir.Join("none.ini"), written = dir.Join("new");
  ASSERT_TRUE(WriteFileBytes(file, "[VS]\nKey=abcdefghijklmnopqrst\n"));
  char output[64];
  std::memset(output, 'z', sizeof(output));
  EXPECT_EQ(GetProfileString("vs", "KEY", "", output, 8, file.c_str()), 20);
  EXPECT_EQ(std::string(output, 8), std::string("abcdef\0z", 8));
  EXPECT_EQ(GetProfileString("VS", "Key", "fallback", output, 64, missing.c_str()), 8);
  EXPECT_STREQ(output, "fallback");
  EXPECT_EQ(GetProfileString("VS", "Key", nullptr, output, 64, missing.c_str()), 0);
  EXPECT_EQ(GetProfileString(nullptr, nullptr, "d", output, 1, nullptr), 1);
  EXPECT_STREQ(output, "");
  EXPECT_EQ(GetProfileString("VS", "Key", "d", nullptr, 64, missing.c_str()), 1);
  EXPECT_EQ(GetProfileString("VS", "Key", "d", output, 0, missing.c_str()), 1);
  const char* f = written.c_str();
  EXPECT_EQ(WriteProfileString("VS", "Port", "1", f), 1);
  EXPECT_EQ(WriteProfileString("user", "ExitFlag", "TRUE", f), 1);
  // Null arguments throw before the file is touched.
  // clang-format off
  const char* nulls[][4] = {{nullptr, "k", "v", f}, {"VS", nullptr, "v", f},
                            {"VS", "k", nullptr, f}, {"VS", "k", "v", nullptr}};
  // clang-format on
  for (auto& a : nulls) EXPECT_THROW(WriteProfileString(a[0], a[1], a[2], a[3]), std::logic_error);
  EXPECT_EQ(ReadFileBytes(written), "[user]\nExitFlag=TRUE\n[VS]\nPort=1\n");
}

}  // namespace
}  // namespace vsm
