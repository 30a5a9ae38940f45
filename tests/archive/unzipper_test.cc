// CUnzipper and the extraction unit on good, odd and broken archives: what lands on disk, the
// result, and the one message that survives.
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstring>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include "archive/archive_fixture.h"
#include "support/unzipper.h"
#include "support/zip_extraction.h"

namespace vsm {
namespace {

using testing::PathExists;
using testing::ReadFileBytes;
using testing::WriteFileBytes;
using testing::ZipEntry;

time_t LocalTime(const int (&date)[6]) {
  struct tm local = {};
  local.tm_year = date[0] - 1900;
  local.tm_mon = date[1] - 1;
  local.tm_mday = date[2];
  local.tm_hour = date[3];
  local.tm_min = date[4];
  local.tm_sec = date[5];
  local.tm_isdst = -1;
  return mktime(&local);
}

time_t ModifiedTime(const std::string& path) {
  struct stat info = {};
  stat(path.c_str(), &info);
  return info.st_mtime;
}

bool IsFolder(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

std::string WorkingDirectory() {
  char path[PATH_MAX] = {0};
  return getcwd(path, sizeof(path)) != nullptr ? path : "";
}

// Offset of the `index`th local header (0-based) in a zip's bytes.
size_t LocalHeader(const std::string& zip, int index) {
  size_t at = 0;
  for (int i = 0; i <= index; ++i) at = zip.find(std::string("PK\3\4", 4), i == 0 ? 0 : at + 4);
  return at;
}

size_t EntryData(const std::string& zip, int index) {
  const size_t header = LocalHeader(zip, index);
  auto u16 = [&](size_t at) {
    return size_t(uint8_t(zip[at])) | size_t(uint8_t(zip[at + 1])) << 8;
  };
  return header + 30 + u16(header + 26) + u16(header + 28);
}

using ArchiveTest = testing::ArchiveTest;

TEST_F(ArchiveTest, ExtractWritesEveryEntryWithItsPathAndDate) {
  std::vector<ZipEntry> entries = {{"top.txt", "hello", 0, {2001, 2, 3, 4, 5, 6}},
                                   {"a/b/deep.txt", std::string(5000, 'x'), 9},
                                   {"empty/", ""},
                                   {"a/", ""},
                                   {"zero.bin", "", 6, {1999, 12, 31, 23, 59, 58}}};
  const std::string zip = Zip(entries);
  const std::string out = Folder("out");
  CUnzipper unzipper;
  ASSERT_EQ(unzipper.Extract(zip.c_str(), (out + "/").c_str()), 1) << unzipper.GetMessage();
  EXPECT_STREQ(unzipper.GetMessage(), "");
  EXPECT_EQ(WorkingDirectory(), out);  // and the process stays there
  for (const ZipEntry& entry : entries) {
    const std::string path = out + "/" + entry.name;
    if (entry.name.back() == '/') {
      EXPECT_TRUE(IsFolder(path)) << entry.name;
      continue;
    }
    EXPECT_EQ(ReadFileBytes(path), entry.data) << entry.name;
    EXPECT_EQ(ModifiedTime(path), LocalTime(entry.date)) << entry.name;
  }
}

struct Outcome {
  const char* name;
  std::vector<ZipEntry> entries;
  std::vector<std::string> foldersBefore;  // made in the target before extracting
  int result;
  std::string message;
  std::vector<std::string> present;  // below the target
};

TEST_F(ArchiveTest, EntriesThatCannotBeWrittenArePassedOver) {
  const std::string outside = Path("outside");
  const Outcome outcomes[] = {
      {"last file blocked by a folder",
       {{"ok.txt", "ok"}, {"busy", "x"}},
       {"busy"},
       1,
       "Error opening busy\r\n",
       {"ok.txt"}},
      {"file below a plain file",
       {{"plain", "p"}, {"plain/x.txt", "x"}, {"after", "a"}},
       {},
       1,
       " extracting: after\r\n",
       {"plain", "after"}},
      {"names outside the folder",
       {{"../escape.txt", "e"},
        {"a/../../escape.txt", "e"},
        {"..\\escape.txt", "e"},
        {outside + "/abs.txt", "e"},
        {"in..side/x..y.txt", "kept"},
        {"../up/", ""}},
       {},
       1,
       "Error opening ../up/\r\n",
       {"in..side/x..y.txt"}},
      {"folder entries",
       {{"dir/", ""}, {"dir/sub/", ""}},
       {},
       1,
       "Creating directory: dir/sub/\r\n",
       {"dir/sub"}},
      {"names cut to 255 characters",
       {{std::string(300, 'n'), "long"}},
       {},
       1,
       " extracting: " + std::string(255, 'n') + "\r\n",
       {std::string(255, 'n')}},
      {"missing folders made for a file",
       {{"p/q/r.txt", "r"}},
       {},
       1,
       " extracting: p/q/r.txt\r\n",
       {"p/q/r.txt"}},
      {"encrypted entry",
       {{"plain.txt", "p"}, {"secret.txt", "hello", 0, {2021, 1, 1, 0, 0, 0}, "pw"}},
       {},
       0,
       "Error -105 with zipfile in CloseCurrentFile\r\n",
       {"plain.txt"}},
  };
  int round = 0;
  for (const Outcome& o : outcomes) {
    const std::string target = Folder("t" + std::to_string(round));
    const std::string zip = Zip(o.entries, "z" + std::to_string(round++) + ".zip");
    for (const std::string& folder : o.foldersBefore) mkdir((target + "/" + folder).c_str(), 0755);
    char context[kZipMessageSize] = {0};
    EXPECT_EQ(MiniunzExtract(context, zip.c_str(), target.c_str()), o.result) << o.name;
    EXPECT_EQ(std::string(context), o.message) << o.name;
    for (const std::string& name : o.present) {
      EXPECT_TRUE(PathExists(target + "/" + name)) << o.name << ": " << name;
    }
  }
  for (const char* escaped : {"escape.txt", "up", "outside"})
    EXPECT_FALSE(PathExists(Path(escaped)));
  EXPECT_EQ(ReadFileBytes(Path("t2/in..side/x..y.txt")), "kept");
}

TEST_F(ArchiveTest, BrokenArchivesFailWithTheLastMessage) {
  const std::vector<ZipEntry> entries = {{"one.txt", "first entry", 0},
                                         {"two.txt", std::string(300, 'y'), 6}};
  const std::string good = ReadFileBytes(Zip(entries, "good.zip"));
  // Each case damages a copy of the good archive.
  struct Case {
    const char* name;
    std::function<std::string(std::string)> damage;
    int result;
    std::string message;  // "%Z" stands for the archive's path
  } cases[] = {
      {"empty file", [](std::string) { return std::string(); }, 0, "Cannot open %Z or %Z.zip"},
      {"plain text", [](std::string) { return std::string("not a zip at all"); }, 0,
       "Cannot open %Z or %Z.zip"},
      {"cut in half", [](std::string z) { return z.substr(0, z.size() / 2); }, 0,
       "Cannot open %Z or %Z.zip"},
      {"end record cut", [](std::string z) { return z.substr(0, z.size() - 22); }, 0,
       "Cannot open %Z or %Z.zip"},
      // The zip layer finds no end record at offset 0, so an archive without entries is none.
      {"no entries", [](std::string) { return std::string("PK\5\6") + std::string(18, '\0'); }, 0,
       "Cannot open %Z or %Z.zip"},
      {"entry count raised",
       [](std::string z) {
         z[z.size() - 12] = 9;
         return z;
       },
       0, "Cannot open %Z or %Z.zip"},
      {"second local header lost",
       [](std::string z) {
         z[LocalHeader(z, 1)] = 'X';
         return z;
       },
       0, "Error -103 with zipfile in OpenCurrentFilePassword\r\n"},
      {"invalid deflate block",
       [](std::string z) {
         z[EntryData(z, 1)] = '\xff';
         return z;
       },
       0, "Error -3 with zipfile in ReadCurrentFile\r\n"},
      {"stored byte changed",
       [](std::string z) {
         z[EntryData(z, 0)] ^= 1;
         return z;
       },
       0, "Error -105 with zipfile in CloseCurrentFile\r\n"},
  };
  int round = 0;
  for (const Case& c : cases) {
    const std::string zip = Path("broken" + std::to_string(round) + ".zip");
    ASSERT_TRUE(WriteFileBytes(zip, c.damage(good)));
    std::string message = c.message;
    for (size_t at; (at = message.find("%Z")) != std::string::npos;) message.replace(at, 2, zip);
    CUnzipper unzipper;
    EXPECT_EQ(unzipper.Extract(zip.c_str(), Folder("b" + std::to_string(round++)).c_str()),
              c.result)
        << c.name;
    EXPECT_EQ(std::string(unzipper.GetMessage()), message) << c.name;
  }
  // A folder is no archive either, and a missing target folder is no place to extract into.
  const std::string zip = Path("good.zip");
  char context[kZipMessageSize] = {0};
  EXPECT_EQ(MiniunzExtract(context, Path("b0").c_str(), Path("b1").c_str()), 0);
  EXPECT_EQ(std::string(context), "Cannot open " + Path("b0") + " or " + Path("b0") + ".zip");
  EXPECT_EQ(MiniunzExtract(context, zip.c_str(), Path("none").c_str()), 0);
  EXPECT_EQ(std::string(context), "Error changing into " + Path("none"));
}

TEST_F(ArchiveTest, ExtractChecksItsPathsFirst) {
  Zip({{"inside.txt", "x"}}, "x.zip");
  CUnzipper unzipper;
  // "x" is tried as "x.zip" by the unit, but Extract wants "x" itself to exist.
  EXPECT_EQ(unzipper.Extract(Path("x").c_str(), Folder("out").c_str()), 0);
  EXPECT_EQ(std::string(unzipper.GetMessage()),
            "Cannot find the specified file \"" + Path("x") + "\"");
  char context[kZipMessageSize] = {0};
  EXPECT_EQ(MiniunzExtract(context, Path("x").c_str(), Path("out").c_str()), 1);
  EXPECT_EQ(ReadFileBytes(Path("out/inside.txt")), "x");
  Folder("x");
  EXPECT_EQ(unzipper.Extract(Path("x").c_str(), Folder("out2").c_str()), 1);
  EXPECT_TRUE(PathExists(Path("out2/inside.txt")));

  // The folders above the target are made, the target itself is the caller's.
  const std::string deep = Path("p/q/target/");
  EXPECT_EQ(unzipper.Extract(Path("x.zip").c_str(), deep.c_str()), 0);
  EXPECT_EQ(std::string(unzipper.GetMessage()), "Error changing into " + deep);
  EXPECT_TRUE(IsFolder(Path("p/q")));
  EXPECT_FALSE(PathExists(Path("p/q/target")));

  // A message never runs past its buffer.
  const std::string longPath = Path(std::string(1500, 'L'));
  EXPECT_EQ(unzipper.Extract(longPath.c_str(), Path("out").c_str()), 0);
  EXPECT_EQ(std::string(unzipper.GetMessage()),
            ("Cannot find the specified file \"" + longPath).substr(0, 1023));
  EXPECT_EQ(unzipper.Extract(nullptr, nullptr), 0);
  EXPECT_STREQ(unzipper.GetMessage(), "Cannot find the specified file \"\"");

  // A folder passes and leaves the message as it was.
  const std::string before = "Cannot find the specified file \"" + Path("none") + "\"";
  const std::pair<std::string, std::string> folders[] = {
      {Path("missing"), "Cannot find the specified folder \"" + Path("missing") + "\""},
      {Path("x.zip"), "\"" + Path("x.zip") + "\" is not a folder"},
      {Path("out"), before}};
  for (const auto& [path, message] : folders) {
    EXPECT_EQ(unzipper.CheckFile(Path("none").c_str()), 0);
    EXPECT_EQ(unzipper.CheckFolder(path.c_str()), message == before ? 1 : 0) << path;
    EXPECT_EQ(std::string(unzipper.GetMessage()), message);
  }
}

TEST_F(ArchiveTest, TenThousandEntriesAllArrive) {
  std::vector<ZipEntry> entries;
  char name[32];
  for (int i = 0; i < 10000; ++i) {
    std::snprintf(name, sizeof(name), "many/%05d.txt", i);
    entries.push_back({name, name, i % 2 == 0 ? 0 : 1});
  }
  const std::string zip = Zip(entries);
  CUnzipper unzipper;
  ASSERT_EQ(unzipper.Extract(zip.c_str(), Folder("out").c_str()), 1) << unzipper.GetMessage();
  int count = 0;
  DIR* folder = opendir(Path("out/many").c_str());
  ASSERT_NE(folder, nullptr);
  while (dirent* entry = readdir(folder)) count += entry->d_name[0] != '.';
  closedir(folder);
  EXPECT_EQ(count, 10000);
  EXPECT_EQ(ReadFileBytes(Path("out/many/09999.txt")), "many/09999.txt");
}

}  // namespace
}  // namespace vsm
