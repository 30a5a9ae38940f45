#include "support/file_stream.h"

#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "gtest/gtest.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

using testing::PathExists;
using testing::ReadFileBytes;
using testing::TempDir;

TEST(FileStreamTest, OpenFileExFollowsTheDispositionAndNeverAppends) {
  constexpr uint32_t kBoth = kGenericRead | kGenericWrite;
  // The file holds "old" beforehand when `exists`; "X" is written after opening; "-" means no
  // file afterwards.
  struct Row {
    uint32_t access, disposition;
    bool exists;
    const char* after;
  } rows[] = {{kBoth, kOpenExisting, false, "-"},         {kBoth, kOpenExisting, true, "Xld"},
              {kGenericRead, kOpenExisting, true, "old"}, {kBoth, kCreateAlways, true, "X"},
              {kGenericRead, kCreateAlways, true, ""},    {kBoth, kOpenAlways, false, "X"},
              {kBoth, kOpenAlways, true, "Xld"},          {kGenericRead, 99, false, ""}};
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    TempDir dir;
    std::string path = dir.Join("a file");
    ASSERT_TRUE(!row.exists || testing::WriteFileBytes(path, "old"));
    FILE* stream = OpenFileEx(path.c_str(), row.access, 0, nullptr, row.disposition, 0);
    ASSERT_EQ(stream != nullptr, std::string(row.after) != "-");
    if (stream != nullptr) {
      EXPECT_EQ(ftell(stream), 0);
      EXPECT_EQ(WriteFile(stream, "X", 1, nullptr), (row.access & kGenericWrite) ? 1 : 0);
      EXPECT_EQ(CloseFile(stream), 1);
    }
    EXPECT_EQ(PathExists(path) ? ReadFileBytes(path) : "-", row.after);
  }
}

TEST(FileStreamTest, ShortReadsSucceedAndGetFileSizeKeepsThePosition) {
  TempDir dir;
  FILE* stream = OpenFileEx(dir.Join("f").c_str(), kGenericWrite, 0, nullptr, kCreateAlways, 0);
  ASSERT_NE(stream, nullptr);
  uint32_t count = 0;
  EXPECT_EQ(WriteFile(stream, "0123456789", 10, &count), 1);
  EXPECT_EQ(count, 10u);
  EXPECT_EQ(SetFilePointer(stream, 3, nullptr, SEEK_SET), 3);
  EXPECT_EQ(GetFileSize(stream), 10u);
  EXPECT_EQ(SetFilePointer(stream, 2, nullptr, SEEK_CUR), 5);
  EXPECT_EQ(SetFilePointer(stream, -2, nullptr, SEEK_END), 8);
  char buffer[16] = {};
  EXPECT_EQ(ReadFile(stream, buffer, sizeof(buffer), &count), 1);
  EXPECT_EQ(std::string(buffer, count), "89");
  EXPECT_EQ(CloseFile(stream), 1);
}

TEST(FileStreamTest, FoldersFilesAndAttributes) {
  TempDir dir;
  std::string file = dir.Join("a file"), folder = dir.Join("new folder");
  ASSERT_TRUE(testing::WriteFileBytes(file, "x"));
  EXPECT_EQ(CreateDirectory(folder.c_str()), 1);
  EXPECT_EQ(CreateDirectory(folder.c_str()), 0);
  EXPECT_EQ(CreateDirectory(file.c_str()), 0);
  EXPECT_EQ(GetFileAttributesEx(folder.c_str()), kFileAttributeDirectory);
  EXPECT_EQ(GetFileAttributesEx(file.c_str()), 0u);
  EXPECT_EQ(GetFileAttributesEx(dir.Join("missing").c_str()), kInvalidFileAttributes);
  EXPECT_EQ(GetFileAttributesEx(""), kInvalidFileAttributes);
  EXPECT_EQ(DeleteFile(folder.c_str()), 0);
  EXPECT_EQ(DeleteFile(file.c_str()), 1);
  EXPECT_EQ(DeleteFile(file.c_str()), 0);
  ASSERT_EQ(chmod(folder.c_str(), 0555), 0);
  if (geteuid() != 0) {
    EXPECT_EQ(CreateDirectory((folder + "/child").c_str()), 0);
  }
}

}  // namespace
}  // namespace vsm
