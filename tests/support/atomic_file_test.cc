// Whole-file replacement: what each kind of target keeps, where the plain rewrite takes over, and
// that a failed replacement leaves the old file and no temporary one.
#include "support/atomic_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>

#include "test_support/temp_dir.h"

namespace vsm {
namespace {

using namespace testing;  // NOLINT: TempDir and the file helpers

struct stat StatOf(const std::string& path) {
  struct stat info = {};
  stat(path.c_str(), &info);
  return info;
}

size_t EntryCount(const TempDir& dir) {
  size_t count = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(dir.path())) {
    (void)entry;
    ++count;
  }
  return count;
}

TEST(AtomicFileTest, TargetsKeepModeOwnerLinksAndIdentityWhereTheyMust) {
  const std::string longName(250, 'n');  // leaves no room for a temporary name beside it
  struct Row {
    const char* name;
    // Prepares the folder and gives the path to save to and the file that must receive the bytes.
    std::function<std::pair<std::string, std::string>(const TempDir&)> prepare;
    mode_t mode;     // of the written file afterwards
    bool sameInode;  // rewritten in place rather than replaced
  } rows[] = {
      {"Missing", [](const TempDir& d) { return std::make_pair(d.Join("new"), d.Join("new")); },
       0640, false},
      {"ExistingKeepsItsMode",
       [](const TempDir& d) {
         WriteFileBytes(d.Join("f"), "old content");
         chmod(d.Join("f").c_str(), 0604);
         return std::make_pair(d.Join("f"), d.Join("f"));
       },
       0604, false},
      {"RelativeLinkChainStaysAndItsEndIsWritten",
       [](const TempDir& d) {
         mkdir(d.Join("sub").c_str(), 0755);
         WriteFileBytes(d.Join("real"), "old");
         symlink("sub/second", d.Join("first").c_str());
         symlink("../real", d.Join("sub/second").c_str());
         return std::make_pair(d.Join("first"), d.Join("real"));
       },
       0640, false},
      {"DanglingLinkCreatesItsTarget",
       [](const TempDir& d) {
         symlink("made", d.Join("link").c_str());
         return std::make_pair(d.Join("link"), d.Join("made"));
       },
       0640, false},
      {"HardLinkedFileKeepsItsIdentity",
       [](const TempDir& d) {
         WriteFileBytes(d.Join("one"), "old");
         link(d.Join("one").c_str(), d.Join("two").c_str());
         return std::make_pair(d.Join("one"), d.Join("two"));
       },
       0640, true},
      {"NameTooLongForATemporaryIsRewrittenInPlace",
       [&longName](const TempDir& d) {
         WriteFileBytes(d.Join(longName), "old");
         return std::make_pair(d.Join(longName), d.Join(longName));
       },
       0640, true},
  };
  const mode_t savedMask = umask(027);
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    TempDir dir;
    auto [path, written] = row.prepare(dir);
    const ino_t before = StatOf(written).st_ino;
    const size_t entries = EntryCount(dir);
    ASSERT_TRUE(ReplaceFileBytes(path, "new", 3));
    EXPECT_EQ(ReadFileBytes(written), "new");
    EXPECT_EQ(StatOf(written).st_mode & 07777, row.mode);
    if (before != 0) {
      EXPECT_EQ(StatOf(written).st_ino == before, row.sameInode);
    }
    EXPECT_EQ(EntryCount(dir), entries + (before == 0 ? 1 : 0)) << "a temporary file stayed";
  }
  umask(savedMask);
  // A device behind a link is written, not replaced by a file.
  TempDir dir;
  ASSERT_EQ(symlink("/dev/null", dir.Join("null").c_str()), 0);
  EXPECT_TRUE(ReplaceFileBytes(dir.Join("null"), "x", 1));
  EXPECT_TRUE(S_ISCHR(StatOf("/dev/null").st_mode));
  if (geteuid() == 0) {  // only root can give a file away
    ASSERT_TRUE(WriteFileBytes(dir.Join("theirs"), "old"));
    ASSERT_EQ(chown(dir.Join("theirs").c_str(), 65534, 65534), 0);
    ASSERT_TRUE(ReplaceFileBytes(dir.Join("theirs"), "new", 3));
    EXPECT_EQ(StatOf(dir.Join("theirs")).st_uid, 65534u);
    EXPECT_EQ(StatOf(dir.Join("theirs")).st_gid, 65534u);
  }
}

TEST(AtomicFileTest, FailuresLeaveTheOldFileWholeAndNoTemporaryOne) {
  TempDir dir;
  const std::string file = dir.Join("settings.ini");
  ASSERT_TRUE(WriteFileBytes(file, "old content"));
  const ino_t before = StatOf(file).st_ino;
  // A writer that gives up half-way, bytes that aren't there, a loop of links, a missing folder.
  auto halfThenFail = [](int descriptor) { return write(descriptor, "ne", 2) < 0; };
  ASSERT_EQ(symlink("loop", dir.Join("loop").c_str()), 0);
  EXPECT_FALSE(ReplaceFileContent(file, halfThenFail));
  EXPECT_FALSE(ReplaceFileBytes(file, nullptr, 5));
  EXPECT_FALSE(ReplaceFileBytes(dir.Join("loop"), "x", 1));
  EXPECT_FALSE(ReplaceFileBytes(dir.Join("none/f"), "x", 1));
  EXPECT_FALSE(ReplaceFileBytes("", "x", 1));
  EXPECT_EQ(ReadFileBytes(file), "old content");
  EXPECT_EQ(StatOf(file).st_ino, before);
  EXPECT_EQ(EntryCount(dir), 2u);
}

}  // namespace
}  // namespace vsm
