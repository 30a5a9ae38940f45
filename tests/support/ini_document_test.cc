#include "support/ini_document.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string>

#include "test_support/temp_dir.h"

namespace vsm {
namespace {

using testing::ReadFileBytes;
using testing::TempDir;
using testing::WriteFileBytes;

std::string RoundTrip(const std::string& text) {
  std::istringstream in(text);
  CIniDocument document;
  document.Load(in);
  std::ostringstream out;
  document.Save(out);
  return out.str();
}

// NULs and 0xFF in values and names; already in saved form.
const char kBinary[] = "[S]\nk=\xff\0\x01\n\xff=\0\n";

struct GrammarRow {
  const char* name;
  std::string in;
  std::string out;
};

void PrintTo(const GrammarRow& row, std::ostream* os) { *os << row.name; }

class IniGrammarTest : public ::testing::TestWithParam<GrammarRow> {};

TEST_P(IniGrammarTest, SavesExactText) {
  EXPECT_EQ(RoundTrip(GetParam().in), GetParam().out);
  // What was saved reads back to itself.
  EXPECT_EQ(RoundTrip(GetParam().out), GetParam().out);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, IniGrammarTest,
    ::testing::Values(
        GrammarRow{"Empty", "", ""}, GrammarRow{"NoSections", "a=1\nb=2\n", ""},
        GrammarRow{"FirstSpellingLastValue", "[Main]\nA=1\na=2\n", "[Main]\nA=2\n"},
        GrammarRow{"SectionSpellingsMerge", "[Main]\nx=1\n[MAIN]\ny=2\n", "[Main]\nx=1\ny=2\n"},
        GrammarRow{"KeyBeforeSectionLost", "x=1\n[S]\ny=2\n", "[S]\ny=2\n"},
        GrammarRow{"CrLfAndBlanksAroundValue", "[S]\r\nkey = value \r\n", "[S]\nkey= value \n"},
        GrammarRow{"TrailingBlanksOfValueKept", "[S]\nk=v \t\r\r\n", "[S]\nk=v \t\n"},
        GrammarRow{"InnerCrKept", "[S]\nk=a\rb\n", "[S]\nk=a\rb\n"},
        GrammarRow{"CrOnlyEndingsAreOneLine", "[S]\rk=v\r", ""},
        GrammarRow{"EqualsFirstDropped", "[S]\n=v\n \t=w\n", "[S]\n"},
        GrammarRow{"EmptySectionKept", "[S]\n", "[S]\n"},
        GrammarRow{"EmptySectionName", "[]\nk=v\n[ \t]\nj=w\n", "[]\nj=w\nk=v\n"},
        GrammarRow{"CaseInsensitiveOrder", "[b]\nz=1\nA=2\n[A]\nk=v\n",
                   "[A]\nk=v\n[b]\nA=2\nz=1\n"},
        GrammarRow{"NoCommentSyntax", "[S]\n# a=b\n; c=d\n#x\n", "[S]\n# a=b\n; c=d\n"},
        GrammarRow{"BlankAfterBracketQuirk", "[abc] \nk=v\n[abc]\t\t\nj=w\n", "[abc]]\nj=w\nk=v\n"},
        GrammarRow{"UnclosedBracketIsKeyLine", "[S]\n[x=1\n[y\n", "[S]\n[x=1\n"},
        GrammarRow{"BracketNotLast", "[S]\n[a]b=c\n", "[S]\n[a]b=c\n"},
        GrammarRow{"LeadingBlanksAndEmptyLines", " \t[S]\n\n   \n\t\n  k=v", "[S]\nk=v\n"},
        GrammarRow{"ValueWithEquals", "[S]\nk=a=b\nj==\n", "[S]\nj==\nk=a=b\n"},
        GrammarRow{"BinaryBytes", std::string(kBinary, sizeof(kBinary) - 1),
                   std::string(kBinary, sizeof(kBinary) - 1)}),
    [](const ::testing::TestParamInfo<GrammarRow>& info) { return info.param.name; });

struct ValueRow {
  const char* name;
  const char* section;
  const char* key;
  const char* expected;
};

void PrintTo(const ValueRow& row, std::ostream* os) { *os << row.name; }

class IniGetValueTest : public ::testing::TestWithParam<ValueRow> {};

TEST_P(IniGetValueTest, FindsOrDefaults) {
  std::istringstream in("[Main]\nPort=18625\nEmpty=\nSpaced = x \n");
  CIniDocument document;
  document.Load(in);
  EXPECT_EQ(document.GetValue(GetParam().section, GetParam().key, "dflt"), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, IniGetValueTest,
    ::testing::Values(ValueRow{"Found", "Main", "Port", "18625"},
                      ValueRow{"NamesTrimmedAndCaseless", " mAIN\t", "\tPORT ", "18625"},
                      ValueRow{"EmptyValueIsNotMissing", "Main", "Empty", ""},
                      ValueRow{"ValueKeepsBlanks", "Main", "spaced", " x "},
                      ValueRow{"MissingKey", "Main", "Missing", "dflt"},
                      ValueRow{"MissingSection", "Other", "Port", "dflt"}),
    [](const ::testing::TestParamInfo<ValueRow>& info) { return info.param.name; });

TEST(IniDocumentTest, LargeFilesRoundTrip) {
  std::string big = "[S]\nk=" + std::string(1 << 20, 'x') + "\n";
  EXPECT_EQ(RoundTrip(big), big);

  std::string many = "[S]\n";
  char line[32];
  for (int i = 0; i < 10000; ++i) {
    snprintf(line, sizeof(line), "k%05d=%d\n", i, i);
    many += line;
  }
  EXPECT_EQ(RoundTrip(many), many);
}

TEST(IniDocumentTest, FileFormsMergeAndUnreadableFiles) {
  TempDir dir;
  ASSERT_TRUE(WriteFileBytes(dir.Join("a.ini"), "[S]\nk=1\nj=2\n"));
  ASSERT_TRUE(WriteFileBytes(dir.Join("b.ini"), "[S]\nK=3\n[T]\nx=4\n"));
  CIniDocument document;
  document.Load(dir.Join("a.ini"));
  document.Load(dir.Join("b.ini"), true);
  document.Save(dir.Join("merged.ini"));
  EXPECT_EQ(ReadFileBytes(dir.Join("merged.ini")), "[S]\nj=2\nk=3\n[T]\nx=4\n");

  // A missing file leaves the document untouched even without merging.
  document.Load(dir.Join("missing.ini"), false);
  EXPECT_EQ(document.GetValue("T", "x"), "4");
  document.Load(dir.Join("b.ini"), false);
  EXPECT_EQ(document.GetValue("S", "j", "gone"), "gone");

  // A folder reads as nothing and can't be written over.
  CIniDocument fromFolder;
  fromFolder.Load(dir.path());
  EXPECT_TRUE(fromFolder.sections().empty());
  document.Save(dir.path());
  EXPECT_TRUE(testing::PathExists(dir.Join("a.ini")));
}

TEST(IniDocumentTest, RenamesKeepOrderAndRefuseTakenNames) {
  std::istringstream in("[a]\nk=1\nm=2\n[b]\nx=3\n");
  CIniDocument document;
  document.Load(in);
  IniKey* key = document.GetSection("a")->GetKey("k");
  const std::string before = RoundTrip("[a]\nk=1\nm=2\n[b]\nx=3\n");

  EXPECT_EQ(document.RenameSection("a", " B "), 0);
  EXPECT_EQ(document.RenameKey("a", "k", "M"), 0);
  EXPECT_EQ(document.RenameKey("a", "missing", "q"), 0);
  EXPECT_EQ(document.RenameKey("missing", "k", "q"), 0);
  EXPECT_EQ(document.RenameSection("missing", "q"), 0);
  std::ostringstream unchanged;
  document.Save(unchanged);
  EXPECT_EQ(unchanged.str(), before);

  EXPECT_EQ(document.RenameKey("A", "K", " z\t"), 1);
  EXPECT_EQ(key->name(), "z");
  EXPECT_EQ(key->Rename("Z"), 1);  // own name in another case
  EXPECT_EQ(document.GetSection("b")->Rename("c"), 1);
  EXPECT_EQ(document.RenameSection("a", "d"), 1);
  document.GetSection("c")->DeleteKey("x");
  document.SetValue("e", "y", "5");
  document.DeleteSection("e");
  std::ostringstream out;
  document.Save(out);
  EXPECT_EQ(out.str(), "[c]\n[d]\nm=2\nZ=1\n");
  EXPECT_EQ(key->GetValue(), "1");
}

TEST(IniDocumentTest, WideFormReadsAndWritesFiles) {
  TempDir dir;
  ASSERT_TRUE(WriteFileBytes(dir.Join("w.ini"), "[VS]\r\nPort = 1\r\n"));
  std::string narrowPath = dir.Join("w.ini");
  std::wstring path(narrowPath.begin(), narrowPath.end());
  CIniDocumentW document;
  document.Load(path);
  EXPECT_EQ(document.GetValue(L"vs", L"port"), L" 1");
  document.SetValue(L"VS", L"Name", L"x");
  document.Save(path);
  EXPECT_EQ(ReadFileBytes(narrowPath), "[VS]\nName=x\nPort= 1\n");

  std::wistringstream in(L"[a]\nk=v\n");
  document.Load(in, true);
  std::wostringstream out;
  document.Save(out);
  EXPECT_EQ(out.str(), L"[a]\nk=v\n[VS]\nName=x\nPort= 1\n");
}

}  // namespace
}  // namespace vsm
