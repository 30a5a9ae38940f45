#include "support/file_tree.h"

#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <sstream>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

using testing::PathExists;
using testing::ReadFileBytes;

// Makes folders (names ending in '/') and files holding their own name (or nothing, for names
// with "empty") below `root`.
void Build(const testing::TempDir& root, std::vector<std::string> names) {
  for (const std::string& name : names) {
    bool empty = name.find("empty") != std::string::npos;
    ASSERT_TRUE(name.back() == '/' ? mkdir(root.Join(name).c_str(), 0777) == 0
                                   : testing::WriteFileBytes(root.Join(name), empty ? "" : name));
  }
}

TEST(FileTreeTest, RemoveTreeStopsAfterTheFirstDeletedSubFolder) {
  testing::TempDir dir;
  Build(dir, {"root/", "root/sub/", "root/sub/inner", "root/file", "flat/", "flat/a", "flat/b c"});
  EXPECT_EQ(RemoveTree(dir.Join("root").c_str()), 1);
  EXPECT_FALSE(PathExists(dir.Join("root/sub")));
  EXPECT_TRUE(PathExists(dir.Join("root")));
  EXPECT_EQ(RemoveTree(dir.Join("flat").c_str()), 1);
  EXPECT_FALSE(PathExists(dir.Join("flat")));
  EXPECT_EQ(RemoveTree(dir.Join("missing").c_str()), 0);
  EXPECT_EQ(DeletePath(dir.Join("root/sub").c_str()), 0);
  EXPECT_EQ(DeletePath(dir.Join("root").c_str()), 1);
  EXPECT_FALSE(PathExists(dir.Join("root")));
}

TEST(FileTreeTest, DeleteTreePrintsEachEntryAndStopsAtWhatItCannotDelete) {
  testing::TempDir dir;
  Build(dir, {"r/", "r/a", "r/sub dir/", "r/sub dir/b", "outside/", "outside/kept", "file", "ro/",
              "ro/sub/", "ro/sub/f"});
  std::string r = dir.Join("r");
  ASSERT_EQ(symlink(dir.Join("outside").c_str(), (r + "/link").c_str()), 0);
  ASSERT_EQ(chmod(dir.Join("ro/sub").c_str(), 0555), 0);
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(DeleteTree((r + "\\\\").c_str(), 0), 1);
  std::vector<std::string> lines;
  std::istringstream printed(::testing::internal::GetCapturedStdout());
  for (std::string line; std::getline(printed, line);) lines.push_back(line);
  std::sort(lines.begin(), lines.end());
  EXPECT_EQ(lines, (std::vector<std::string>{r + "/a file", r + "/link file",
                                             r + "/sub dir directory", r + "/sub dir/b file"}));
  EXPECT_TRUE(PathExists(r) && !PathExists(r + "/a") && !PathExists(r + "/sub dir"));
  EXPECT_TRUE(PathExists(dir.Join("outside/kept")));  // links are not followed

  ::testing::internal::CaptureStdout();
  EXPECT_EQ(DeleteTree(r.c_str(), 1), 1);
  EXPECT_EQ(DeleteTree(dir.Join("file").c_str(), 1), 1);
  EXPECT_EQ(DeleteTree(dir.Join("missing").c_str(), 0), 1);
  EXPECT_EQ(DeleteTree(dir.Join("missing").c_str(), 1), 0);
  int readOnly = DeleteTree(dir.Join("ro").c_str(), 1);
  ::testing::internal::GetCapturedStdout();
  EXPECT_FALSE(PathExists(r) || PathExists(dir.Join("file")));
  if (geteuid() != 0) {
    EXPECT_EQ(readOnly, 0);
    EXPECT_TRUE(PathExists(dir.Join("ro/sub/f")));
  }
}

TEST(FileTreeTest, CopiesCountUnreadableSourcesAsDoneAndEmptyFilesAsFailed) {
  testing::TempDir dir;
  Build(dir, {"src/", "src/a", "src/sub dir/", "src/sub dir/b", "src/none/", "src/e/",
              "src/e/empty", "target", "blocker"});
  std::string target = dir.Join("target");
  EXPECT_EQ(CopyFileLocked(dir.Join("missing").c_str(), target.c_str(), 0), 1);
  EXPECT_EQ(CopyFileLocked(dir.Join("src/e/empty").c_str(), target.c_str(), 0), 0);
  EXPECT_EQ(ReadFileBytes(target), "target");
  EXPECT_EQ(CopyFileLocked(dir.Join("src/a").c_str(), target.c_str(), 0), 1);
  EXPECT_EQ(ReadFileBytes(target), "src/a");
  EXPECT_EQ(CopyFileLocked(dir.Join("src/a").c_str(), dir.Join("no/t").c_str(), 0), 0);

  EXPECT_EQ(CopyTree(dir.Join("src/").c_str(), dir.Join("flat/").c_str(), 0), 1);
  EXPECT_EQ(ReadFileBytes(dir.Join("flat/a")), "src/a");
  EXPECT_FALSE(PathExists(dir.Join("flat/sub dir")));
  // The result is that of the last file copied, here an empty one.
  EXPECT_EQ(CopyTree(dir.Join("src/e").c_str(), dir.Join("e").c_str(), 1), 0);
  ASSERT_EQ(unlink(dir.Join("src/e/empty").c_str()), 0);
  EXPECT_EQ(CopyTree(dir.Join("src").c_str(), dir.Join("deep").c_str(), 1), 1);
  EXPECT_EQ(ReadFileBytes(dir.Join("deep/sub dir/b")), "src/sub dir/b");
  EXPECT_FALSE(PathExists(dir.Join("deep/none")) || PathExists(dir.Join("deep/e")));
  EXPECT_EQ(CopyTree(dir.Join("missing").c_str(), dir.Join("m").c_str(), 1), 1);
  EXPECT_EQ(CopyTree(dir.Join("src").c_str(), dir.Join("blocker/t").c_str(), 0), 0);
}

TEST(FileTreeTest, PurgeOldSiblingsRemovesFoldersOfEarlierDates) {
  testing::TempDir dir;
  Build(dir, {"p/", "p/self/", "p/old/", "p/old/x", "p/zero/", "p/old file", "p/two/", "p/one/"});
  time_t now = time(nullptr);
  struct tm today;
  localtime_r(&now, &today);
  // Back from noon in whole days, so that summer time can't move a date.
  time_t noon = now + (12 - today.tm_hour) * 3600;
  auto age = [&](const char* name, time_t seconds) {
    struct timeval times[2] = {{seconds, 0}, {seconds, 0}};
    return utimes(dir.Join(name).c_str(), times) == 0;
  };
  ASSERT_TRUE(age("p/old", noon - 400 * 86400) && age("p/old file", 86400) && age("p/zero", 0) &&
              age("p/two", noon - 2 * 86400) && age("p/one", noon - 86400));
  EXPECT_EQ(PurgeOldSiblings(dir.Join("p/self/").c_str()), 1);
  EXPECT_FALSE(PathExists(dir.Join("p/old")));
  EXPECT_TRUE(PathExists(dir.Join("p/self")) && PathExists(dir.Join("p/zero")));
  EXPECT_TRUE(PathExists(dir.Join("p/old file")));
  // Two days back is always gone; one day back only across a month boundary.
  EXPECT_FALSE(PathExists(dir.Join("p/two")));
  EXPECT_EQ(PathExists(dir.Join("p/one")), today.tm_mday >= 2);
  EXPECT_EQ(PurgeOldSiblings("no slash"), 0);
  EXPECT_EQ(PurgeOldSiblings(dir.Join("missing/child").c_str()), 1);
}

}  // namespace
}  // namespace vsm
