// Whole-file replacement: what each kind of target keeps, where the plain rewrite takes over, and
// that a failed replacement leaves the old file and no temporary one.
#include "support/atomic_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>
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

long EntryCount(const TempDir& dir) {
  return std::distance(std::filesystem::recursive_directory_iterator(dir.path()),
                       std::filesystem::recursive_directory_iterator());
}

TEST(AtomicFileTest, TargetsKeepModeOwnerLinksAndIdentityWhereTheyMust) {
  const mode_t savedMask = umask(027);
  TempDir dir;
  const std::string tooLong(250, 'n');  // leaves no room for a temporary name beside it
  ASSERT_TRUE(WriteFileBytes(dir.Join("mode"), "old") && WriteFileBytes(dir.Join("real"), "old") &&
              WriteFileBytes(dir.Join("one"), "old") && WriteFileBytes(dir.Join(tooLong), "old"));
  ASSERT_EQ(chmod(dir.Join("mode").c_str(), 0604) + mkdir(dir.Join("sub").c_str(), 0755) +
                symlink("sub/second", dir.Join("first").c_str()) +
                symlink("../real", dir.Join("sub/second").c_str()) +
                symlink("made", dir.Join("dangling").c_str()) +
                link(dir.Join("one").c_str(), dir.Join("two").c_str()),
            0);
  // Saved through, received by, mode afterwards, rewritten in place (the inode stays).
  const struct Row {
    const char *path, *written;
    mode_t mode;
    bool inPlace;
  } rows[] = {{"new", "new", 0640, false},    {"mode", "mode", 0604, false},
              {"first", "real", 0640, false}, {"dangling", "made", 0640, false},
              {"one", "two", 0640, true},     {tooLong.c_str(), tooLong.c_str(), 0640, true}};
  for (const Row& row : rows) {
    const ino_t before = StatOf(dir.Join(row.written)).st_ino;
    const long entries = EntryCount(dir);
    ASSERT_TRUE(ReplaceFileBytes(dir.Join(row.path), "new", 3)) << row.path;
    EXPECT_EQ(ReadFileBytes(dir.Join(row.written)), "new") << row.path;
    EXPECT_EQ(StatOf(dir.Join(row.written)).st_mode & 07777, row.mode) << row.path;
    EXPECT_EQ(before != 0 && StatOf(dir.Join(row.written)).st_ino == before, row.inPlace)
        << row.path;
    EXPECT_EQ(EntryCount(dir), entries + (before == 0)) << row.path << ": a temporary file stayed";
  }
  umask(savedMask);
  EXPECT_EQ(std::filesystem::read_symlink(dir.Join("first")), "sub/second");
  // A device behind a link is written, not replaced by a file.
  ASSERT_EQ(symlink("/dev/null", dir.Join("null").c_str()), 0);
  EXPECT_TRUE(ReplaceFileBytes(dir.Join("null"), "x", 1) && S_ISCHR(StatOf("/dev/null").st_mode));
  if (geteuid() == 0) {  // only root can give a file away
    ASSERT_EQ(chown(dir.Join("mode").c_str(), 65534, 65534), 0);
    ASSERT_TRUE(ReplaceFileBytes(dir.Join("mode"), "newer", 5));
    EXPECT_TRUE(StatOf(dir.Join("mode")).st_uid == 65534 &&
                StatOf(dir.Join("mode")).st_gid == 65534);
  }
}

TEST(AtomicFileTest, FailuresLeaveTheOldFileWholeAndNoTemporaryOne) {
  TempDir dir;
  const std::string file = dir.Join("settings.ini");
  ASSERT_TRUE(WriteFileBytes(file, "old content"));
  ASSERT_EQ(symlink("loop", dir.Join("loop").c_str()), 0);
  const ino_t before = StatOf(file).st_ino;
  // A writer that gives up half-way, bytes that aren't there, a loop of links, a missing folder.
  EXPECT_FALSE(ReplaceFileContent(file, [](int fd) { return write(fd, "ne", 2) < 0; }));
  EXPECT_FALSE(ReplaceFileBytes(file, nullptr, 5) || ReplaceFileBytes(dir.Join("loop"), "x", 1) ||
               ReplaceFileBytes(dir.Join("none/f"), "x", 1) || ReplaceFileBytes("", "x", 1));
  EXPECT_EQ(ReadFileBytes(file), "old content");
  EXPECT_EQ(StatOf(file).st_ino, before);
  EXPECT_EQ(EntryCount(dir), 2);
}

}  // namespace
}  // namespace vsm
