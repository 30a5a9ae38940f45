// The single-pass key reader against CIniDocument: over generated awkward files, every name the
// document holds, in other spellings, and names it doesn't hold, give the same answer both ways.
#include "support/ini_key_reader.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cctype>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "support/ini_document.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

using namespace std::string_literals;
using Pool = std::vector<std::string>;

// Pieces of lines, awkward on purpose: names that differ only in case or blanks, brackets that
// close early or never, NULs, bytes above 0x7F, blanks and carriage returns in odd places.
// clang-format off
const Pool kSections = {"[VS]", "[vs]", "[ Vs\t]", "[VS] ", "[VS]\t\t", "[abc] ", "[abc]]", "[]",
                        "[ ]", "[V S]", "[VS", "VS]", "[[VS]]", "[\xC4\xD6]", "[\xE4\xF6]",
                        "[A\0B]"s, "[ a ]\r"};
const Pool kKeys = {"LogLevel", "loglevel", "LOGLEVEL", "Log Level", "k", "K", "\xC4", "\xE4",
                    "a\0b"s, "a", "#c", "[x", "[a]b", "\r", "key\r", ""};
const Pool kValues = {"", "14", " 6 ", "a=b", "\xFF\xFE", "x\ry", "\t", "1\0002"s, "[S]", "v \t"};
const Pool kOthers = {"", "   ", "no equals", "=v", "[unclosed", "\xFF", "="};
const Pool kBlanks = {"", "", " ", "\t", " \t "};
const Pool kEndings = {"\n", "\n", "\r\n", "\r\r\n", "\r", "\n\n"};
// clang-format on

std::string AwkwardFile(std::mt19937& random) {
  auto pick = [&](const Pool& pool) -> const std::string& { return pool[random() % pool.size()]; };
  std::string file;
  for (unsigned line = 0, lines = random() % 25; line < lines; ++line) {
    const unsigned kind = random() % 10;
    file += pick(kBlanks);
    if (kind < 2) {
      file += pick(kSections);
    } else if (kind < 3) {
      file += pick(kOthers);
    } else {  // now and then a value far longer than any read buffer
      file += pick(kKeys) + pick(kBlanks) + "=" + pick(kBlanks) +
              (kind == 9 && line % 7 == 0 ? std::string(70000, 'v') : pick(kValues));
    }
    file += pick(kBlanks);
    if (line + 1 < lines || random() % 2) file += pick(kEndings);  // the last often has none
  }
  return file;
}

// The name as is, in upper or lower case, or between blanks; as a C string, which is how both
// are handed names.
std::string Respelled(std::string name, int spelling) {
  for (char& c : name) {
    if (spelling == 1) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (spelling == 2) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return (spelling == 3 ? " \t" + name + "\t " : name).c_str();
}

TEST(IniKeyReaderTest, GivesTheDocumentsValueForEveryNameOfGeneratedAwkwardFiles) {
  std::mt19937 random(20240307);
  int compared = 0, found = 0;
  for (int round = 0; round < 1500; ++round) {
    const std::string file = AwkwardFile(random);
    std::istringstream in(file);
    CIniDocument document;
    document.Load(in);
    Pool sections = {"VS", "abc]", "", "A", "missing"};
    for (const auto& section : document.sections()) sections.push_back(section.first);
    for (const std::string& section : sections) {
      Pool keys = kKeys;
      if (const IniSection* held = document.GetSection(section)) {
        for (const auto& key : held->keys()) keys.push_back(key.first);
      }
      for (const std::string& key : keys) {
        for (int spelling = 0; spelling < 4; ++spelling, ++compared) {
          const std::string s = Respelled(section, spelling), k = Respelled(key, spelling);
          const IniSection* held = document.GetSection(s);
          const bool expected = held != nullptr && held->GetKey(k) != nullptr;
          std::string_view value;
          ASSERT_EQ(FindIniValue(file, s.c_str(), k.c_str(), &value), expected)
              << ::testing::PrintToString(file) << " [" << s << "] " << k;
          found += expected;
          ASSERT_EQ(std::string(value), expected ? document.GetValue(s, k) : "") << file;
        }
      }
    }
  }
  // The generator must reach both outcomes often, or the comparison proves little.
  EXPECT_TRUE(found > compared / 20 && compared - found > compared / 20) << found;
}

TEST(IniKeyReaderTest, ReadsFilesWholeOfAnySizeAndFindsNothingWhereNoTextCanBeRead) {
  testing::TempDir dir;
  mkdir(dir.Join("folder").c_str(), 0755);
  const std::string big(5000, 'p'), file = dir.Join("file.ini");
  // A file's bytes and the value read from it ("-": none).
  const std::pair<std::string, std::string> rows[] = {
      {"", "-"},
      {"[VS]\nLogLevel=14\n", "14"},
      {"[VS]\nx=" + big + "\nx=" + big + "\nLogLevel=6", "6"},  // behind two read buffers
      {"[VS]\nLogLevel=1\n[vs]\nloglevel=" + big + "\n", big}};
  for (const auto& [bytes, expected] : rows) {
    ASSERT_TRUE(testing::WriteFileBytes(file, bytes));
    std::string value = "-";
    EXPECT_EQ(ReadIniValue(file.c_str(), "VS", "LogLevel", &value), expected != "-");
    EXPECT_EQ(value, expected);
  }
  std::string value;
  for (const std::string& path : {dir.Join("folder"), dir.Join("missing")}) {
    EXPECT_FALSE(ReadIniValue(path.c_str(), "VS", "LogLevel", &value)) << path;
  }
  EXPECT_FALSE(ReadIniValue(nullptr, "VS", "LogLevel", &value));
}

}  // namespace
}  // namespace vsm
