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

using namespace testing;  // NOLINT: TempDir and the file helpers

template <size_t N>
std::string Bytes(const char (&bytes)[N]) {
  return std::string(bytes, N - 1);
}

// Pieces of lines, awkward on purpose: names that differ only in case or blanks, brackets that
// close early or never, NULs, bytes above 0x7F, blanks and carriage returns in odd places.
const std::vector<std::string>& SectionLines() {
  static const std::vector<std::string> lines = {
      "[VS]",       "[vs]",          "[ Vs\t]", "[VS] ",   "[VS]\t\t", "[abc] ", "[abc]]",
      "[]",         "[ ]",           "[V S]",   "[VS",     "VS]",      "[[VS]]", "[\xC4\xD6]",
      "[\xE4\xF6]", Bytes("[A\0B]"), "[a]",     "[ a ]\r", "[VS]\r\r"};
  return lines;
}

const std::vector<std::string>& KeyNames() {
  static const std::vector<std::string> names = {
      "LogLevel",    "loglevel", "LOGLEVEL", "Log Level", "k",  "K",    "\xC4", "\xE4",
      Bytes("a\0b"), "a",        "#c",       ";d",        "[x", "[a]b", "\r",   "key\r"};
  return names;
}

const std::vector<std::string>& Values() {
  static const std::vector<std::string> values = {"",     "14", " 6 ",           "a=b", "\xFF\xFE",
                                                  "x\ry", "\t", Bytes("1\0002"), "[S]", "v \t"};
  return values;
}

const std::vector<std::string>& OtherLines() {
  static const std::vector<std::string> lines = {
      "", "   ", "\t", "no equals here", "=v", " =v", "[unclosed", "\xFF", "=", "#k=v"};
  return lines;
}

template <typename T>
const T& Pick(std::mt19937& random, const std::vector<T>& from) {
  return from[std::uniform_int_distribution<size_t>(0, from.size() - 1)(random)];
}

std::string AwkwardFile(std::mt19937& random) {
  static const std::vector<std::string> blanks = {"", "", " ", "\t", " \t "};
  static const std::vector<std::string> endings = {"\n", "\n", "\r\n", "\r\r\n", "\r", "\n\n"};
  std::string file;
  const int lines = std::uniform_int_distribution<int>(0, 24)(random);
  for (int i = 0; i < lines; ++i) {
    const int kind = std::uniform_int_distribution<int>(0, 9)(random);
    file += Pick(random, blanks);
    if (kind < 2) {
      file += Pick(random, SectionLines());
    } else if (kind < 3) {
      file += Pick(random, OtherLines());
    } else {
      file += Pick(random, KeyNames()) + Pick(random, blanks) + "=" + Pick(random, blanks);
      // Now and then a line far longer than any buffer.
      file += kind == 9 && i % 7 == 0 ? std::string(70000, 'v') : Pick(random, Values());
    }
    file += Pick(random, blanks);
    // The last line often has no line end at all.
    if (i + 1 < lines || std::bernoulli_distribution(0.5)(random)) file += Pick(random, endings);
  }
  return file;
}

std::string Respelled(std::string name, int spelling) {
  for (char& c : name) {
    if (spelling == 1) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (spelling == 2) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return spelling == 3 ? " \t" + name + "\t " : name;
}

TEST(IniKeyReaderTest, GivesTheDocumentsValueForEveryNameOfGeneratedAwkwardFiles) {
  std::mt19937 random(20240307);
  int compared = 0;
  int found = 0;
  for (int round = 0; round < 1500; ++round) {
    const std::string file = AwkwardFile(random);
    std::istringstream in(file);
    CIniDocument document;
    document.Load(in);
    // The document's own names, and the pool's, which it may or may not hold.
    std::vector<std::string> sections = {"VS", "abc]", "", "A", "missing"};
    for (const auto& section : document.sections()) sections.push_back(section.second->name());
    for (const std::string& section : sections) {
      std::vector<std::string> keys = KeyNames();
      keys.push_back("");  // what a line "=v" would name, had it not been dropped
      if (const IniSection* held = document.GetSection(section)) {
        for (const auto& key : held->keys()) keys.push_back(key.second->name());
      }
      for (const std::string& key : keys) {
        for (int spelling = 0; spelling < 4; ++spelling) {
          // As C strings, the way both are handed names.
          const std::string s = Respelled(section, spelling).c_str();
          const std::string k = Respelled(key, spelling).c_str();
          const IniSection* held = document.GetSection(s);
          const bool expected = held != nullptr && held->GetKey(k) != nullptr;
          std::string_view value = "untouched";
          const bool actual = FindIniValue(file, s.c_str(), k.c_str(), &value);
          ASSERT_EQ(actual, expected)
              << "file " << ::testing::PrintToString(file) << " [" << s << "] " << k;
          if (expected) {
            ASSERT_EQ(std::string(value), document.GetValue(s, k))
                << ::testing::PrintToString(file);
          }
          ++compared;
          found += expected;
        }
      }
    }
  }
  // The generator must reach both outcomes often, or the comparison proves little.
  EXPECT_GT(found, compared / 20);
  EXPECT_GT(compared - found, compared / 20);
}

TEST(IniKeyReaderTest, ReadsFilesWholeOfAnySizeAndFindsNothingWhereNoTextCanBeRead) {
  TempDir dir;
  mkdir(dir.Join("folder").c_str(), 0755);
  const std::string padding(5000, 'p');
  // The file's bytes (null: no file), the key, whether it is found and its value.
  const struct {
    const char* name;
    const char* bytes;
    std::string padded;
    bool found;
    std::string value;
  } rows[] = {
      {"Missing", nullptr, "", false, ""},
      {"Empty", "", "", false, ""},
      {"Small", "[VS]\nLogLevel=14\n", "", true, "14"},
      {"KeyBehindTwoBuffers", "", "[VS]\nx=" + padding + "\nx=" + padding + "\nLogLevel=6", true,
       "6"},
      {"LastOfManyAssignments", "",
       "[VS]\n" + std::string(3000, '\n') + "LogLevel=1\n[vs]\n" + "loglevel=" + padding + "\n",
       true, padding},
  };
  for (const auto& row : rows) {
    const std::string path = dir.Join(row.name);
    if (row.bytes != nullptr) {
      ASSERT_TRUE(WriteFileBytes(path, row.bytes + row.padded));
    }
    std::string value = "default";
    EXPECT_EQ(ReadIniValue(path.c_str(), "VS", "LogLevel", &value), row.found) << row.name;
    EXPECT_EQ(value, row.found ? row.value : "default") << row.name;
  }
  std::string value;
  EXPECT_FALSE(ReadIniValue(dir.Join("folder").c_str(), "VS", "LogLevel", &value));
  EXPECT_FALSE(ReadIniValue(nullptr, "VS", "LogLevel", &value));
}

}  // namespace
}  // namespace vsm
