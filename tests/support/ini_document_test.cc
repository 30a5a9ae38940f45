#include "support/ini_document.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "test_support/temp_dir.h"

namespace vsm {
namespace {

using testing::ReadFileBytes;
using testing::TempDir;
using testing::WriteFileBytes;

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

TEST(IniDocumentTest, GetValueFindsOrDefaults) {
  std::istringstream in("[Main]\nPort=18625\nEmpty=\nSpaced = x \n");
  CIniDocument document;
  document.Load(in);
  const char* rows[][3] = {
      {"Main", "Port", "18625"},      {" mAIN\t", "\tPORT ", "18625"},  // trimmed, caseless
      {"Main", "Empty", ""},          {"Main", "spaced", " x "},
      {"Main", "Missing", "default"}, {"Other", "Port", "default"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(document.GetValue(row[0], row[1], "default"), row[2]) << row[0] << "/" << row[1];
  }
  EXPECT_EQ(document.GetValue("Other", "Port"), "");
}

TEST(IniDocumentTest, LargeFilesRoundTrip) {
  std::string big = "[S]\nk=" + std::string(1 << 20, 'x') + "\n";
  EXPECT_EQ(RoundTrip(big), big);

  std::string many = "[S]\n";
  for (int i = 10000; i < 20000; ++i) many += "k" + std::to_string(i) + "=v\n";
  EXPECT_EQ(RoundTrip(many), many);
}

TEST(IniDocumentTest, FileFormsMergeAndUnreadableFiles) {
  TempDir dir;
  ASSERT_TRUE(WriteFileBytes(dir.Join("a.ini"), "[S]\nk=1\nj=2\n"));
  ASSERT_TRUE(WriteFileBytes(dir.Join("b.ini"), "[S]\nK=3\n[T]\nx=4\n"));
  CIniDocument document;
  document.Load(dir.Join("a.ini"));
  document.Load(dir.Join("b.ini"), true);
  document.Load(dir.Join("missing.ini"), false);  // leaves the document untouched
  document.Save(dir.Join("merged.ini"));
  EXPECT_EQ(ReadFileBytes(dir.Join("merged.ini")), "[S]\nj=2\nk=3\n[T]\nx=4\n");
  document.Load(dir.Join("b.ini"), false);
  EXPECT_EQ(SaveText(document), "[S]\nK=3\n[T]\nx=4\n");

  // A folder reads as nothing and is not written over.
  document.Load(dir.path());
  EXPECT_TRUE(document.sections().empty());
  document.Save(dir.path());
  EXPECT_TRUE(testing::PathExists(dir.Join("a.ini")));
}

TEST(IniDocumentTest, RenamesKeepOrderAndRefuseTakenNames) {
  const std::string text = "[a]\nk=1\nm=2\n[b]\nx=3\n";
  std::istringstream in(text);
  CIniDocument document;
  document.Load(in);
  IniKey* key = document.GetSection("a")->GetKey("k");
  EXPECT_EQ(document.RenameSection("a", " B "), 0);
  EXPECT_EQ(document.RenameKey("a", "k", "M"), 0);
  EXPECT_EQ(document.RenameKey("a", "missing", "q"), 0);
  EXPECT_EQ(document.RenameKey("missing", "k", "q"), 0);
  EXPECT_EQ(SaveText(document), text);

  EXPECT_EQ(document.RenameKey("A", "K", " z\t"), 1);
  EXPECT_EQ(key->Rename("Z"), 1);  // its own name in another case
  EXPECT_EQ(document.GetSection("b")->Rename("c"), 1);
  EXPECT_EQ(document.RenameSection("a", "d"), 1);
  document.GetSection("c")->DeleteKey("x");
  document.SetValue("e", "y", "5");
  document.DeleteSection("e");
  EXPECT_EQ(SaveText(document), "[c]\n[d]\nm=2\nZ=1\n");
  EXPECT_EQ(key->name() + key->GetValue(), "Z1");
}

TEST(IniDocumentTest, WideFormReadsAndWritesFilesAndStreams) {
  TempDir dir;
  std::string narrowPath = dir.Join("w.ini");
  ASSERT_TRUE(WriteFileBytes(narrowPath, "[VS]\r\nPort = 1\r\n"));
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
