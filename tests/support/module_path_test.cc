#include "support/module_path.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "gtest/gtest.h"
#include "support/file_stream.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

TEST(ModulePathTest, ProgramPathAndFolder) {
  std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
  char path[kPathBufferSize] = {};
  GetModulePath(path);
  EXPECT_EQ(path, program.string());
  char folder[kPathBufferSize];
  std::memset(folder, 'x', sizeof(folder));
  GetModuleDirectory(folder);
  EXPECT_EQ(folder, program.parent_path().string() + "/");
  EXPECT_EQ(folder[kPathBufferSize - 1], '\0');  // zeroed whole, not only behind the text
}

TEST(ModulePathTest, SplitPathAndTrimPathEnd) {
  const char* splits[][3] = {{"a/b/c.txt", "a/b", "c.txt"},
                             {"no slash", "no slash", ""},
                             {"/top", "", "top"},
                             {"dir/", "dir", ""}};
  char folder[kPathBufferSize], file[kPathBufferSize];
  for (auto& row : splits) {
    SplitPath(row[0], folder, file);
    EXPECT_STREQ(folder, row[1]) << row[0];
    EXPECT_STREQ(file, row[2]) << row[0];
  }
  std::string longName(3000, 'n');
  SplitPath(longName.c_str(), folder, file);
  EXPECT_EQ(std::strlen(folder), kPathBufferSize - 1);

  // Blanks, then backslashes, then slashes, each once.
  const char* trims[][2] = {
      {"a/b/  ", "a/b"}, {"a/\\\\ ", "a"}, {"a\\/", "a\\"}, {"a/ \\", "a/ "}, {"  ", ""}};
  for (auto& row : trims) {
    std::strcpy(folder, row[0]);
    TrimPathEnd(folder);
    EXPECT_STREQ(folder, row[1]) << row[0];
  }
}

TEST(ModulePathTest, EnsureParentDirectoriesMakesAllButTheLastName) {
  testing::TempDir dir;
  EXPECT_EQ(EnsureParentDirectories("no slash", nullptr), 1);
  EXPECT_EQ(EnsureParentDirectories(dir.Join("x/y z/w/file").c_str(), nullptr), 1);
  EXPECT_EQ(GetFileAttributesEx(dir.Join("x/y z/w").c_str()), kFileAttributeDirectory);
  EXPECT_FALSE(testing::PathExists(dir.Join("x/y z/w/file")));
  EXPECT_EQ(EnsureParentDirectories(dir.Join("x/y z/new").c_str(), nullptr), 1);
  EXPECT_FALSE(testing::PathExists(dir.Join("x/y z/new")));

  ASSERT_TRUE(testing::WriteFileBytes(dir.Join("f"), "file in the way"));
  EXPECT_EQ(EnsureParentDirectories(dir.Join("f/g/h").c_str(), nullptr), 0);
  ASSERT_EQ(chmod(dir.Join("x").c_str(), 0555), 0);
  if (geteuid() != 0) {
    EXPECT_EQ(EnsureParentDirectories(dir.Join("x/new/file").c_str(), nullptr), 0);
  }
}

}  // namespace
}  // namespace vsm
