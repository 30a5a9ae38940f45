#include "support/whole_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "gtest/gtest.h"
#include "support/file_stream.h"
#include "support/tracked_heap.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

using testing::ReadFileBytes;
using testing::WriteFileBytes;

TEST(WholeFileTest, ReadsWholeFilesOfEverySize) {
  testing::TempDir dir;
  // Around the chunk threshold, and several chunks with a short last one.
  for (size_t size : {0, 1, 0xfffff, 0x100000, 3 * 0x100000 + 17}) {
    std::string path = dir.Join("file " + std::to_string(size)), bytes(size, '\0');
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 131 + i / 4099);
    ASSERT_TRUE(WriteFileBytes(path, bytes));
    char* block = nullptr;
    size_t read = 0;
    ASSERT_EQ(ReadWholeFile(path.c_str(), &block, &read), 1);
    EXPECT_TRUE(std::string(block, read) == bytes) << size;
    EXPECT_EQ(block[read], '\0');
    std::free(block);
  }
}

TEST(WholeFileTest, ReadersRewindReadExactlyAndRefuseFolders) {
  testing::TempDir dir;
  std::string path = dir.Join("data");
  ASSERT_TRUE(WriteFileBytes(path, "0123456789"));
  FILE* stream = OpenFileEx(path.c_str(), kGenericRead, 0, nullptr, kOpenExisting, 0);
  ASSERT_EQ(fseek(stream, 4, SEEK_SET), 0);
  char* block = nullptr;
  size_t size = 0;
  EXPECT_EQ(ReadStream(stream, &block, &size), 0);  // 0 is success here
  EXPECT_EQ(std::string(block, size), "0123456789");
  std::free(block);
  CloseFile(stream);
  char buffer[16] = {};
  EXPECT_EQ(ReadFileInto(path.c_str(), buffer, 4), kFileErrorNone);
  EXPECT_STREQ(buffer, "0123");
  EXPECT_EQ(ReadFileInto(path.c_str(), buffer, 11), kFileErrorAccess);
  uint32_t length = 0;
  int error = -1;
  void* tracked = ReadFileAlloc(path.c_str(), &length, &error);
  ASSERT_EQ(error, kFileErrorNone);
  EXPECT_EQ(std::string(static_cast<char*>(tracked), length), "0123456789");
  TrackedFree(tracked);

  for (const std::string& bad : {dir.Join("missing"), dir.path()}) {
    EXPECT_EQ(ReadWholeFile(bad.c_str(), &block, &size), 0);
    EXPECT_EQ(ReadFileInto(bad.c_str(), buffer, 1), kFileErrorAccess);
    EXPECT_EQ(ReadFileAlloc(bad.c_str(), &length, &error), nullptr);
    EXPECT_EQ(error, kFileErrorAccess);
  }
}

TEST(WholeFileTest, WriteFileAtCreatesTruncatesAndPatches) {
  testing::TempDir dir;
  std::string path = dir.Join("new dir/sub/out file");
  EXPECT_EQ(WriteFileAt(path.c_str(), "0123456789", 10, 0), kFileErrorNone);
  EXPECT_EQ(WriteFileAt(path.c_str(), "ab", 2, 5), kFileErrorNone);
  EXPECT_EQ(WriteFileAt(path.c_str(), "z", 1, 12), kFileErrorNone);
  EXPECT_EQ(ReadFileBytes(path), std::string("01234ab789\0\0z", 13));
  EXPECT_EQ(WriteFileAt(path.c_str(), "xy", 2, 0), kFileErrorNone);
  EXPECT_EQ(ReadFileBytes(path), "xy");

  EXPECT_EQ(WriteFileAt(dir.Join("missing").c_str(), "x", 1, 3), kFileErrorAccess);
  EXPECT_FALSE(testing::PathExists(dir.Join("missing")));
  EXPECT_EQ(WriteFileAt(nullptr, "x", 1, 0), kFileErrorNotWritable);
  EXPECT_EQ(WriteFileAt(dir.path().c_str(), "x", 1, 0), kFileErrorAccess);
  ASSERT_EQ(mkdir(dir.Join("locked").c_str(), 0555), 0);
  if (geteuid() != 0) {
    EXPECT_EQ(WriteFileAt(dir.Join("locked/f").c_str(), "x", 1, 0), kFileErrorAccess);
  }
}

TEST(WholeFileTest, ErrorCodesAndPathKinds) {
  EXPECT_EQ(MapFileError(0), 0);
  EXPECT_EQ(MapFileError(kFileErrorAccess), -3016);
  EXPECT_EQ(MapFileError(kFileErrorNotWritable), -3022);

  testing::TempDir dir;
  std::string file = dir.Join("a file"), missing = dir.Join("missing");
  ASSERT_TRUE(WriteFileBytes(file, ""));
  EXPECT_EQ(CheckPathKind(nullptr, 1), -3002);
  EXPECT_EQ(CheckPathKind(missing.c_str(), 1), -3002);
  EXPECT_EQ(CheckPathKind(missing.c_str(), 0), -3003);
  EXPECT_EQ(CheckPathKind(dir.path().c_str(), 1), -2418);
  EXPECT_EQ(CheckPathKind(dir.path().c_str(), 0), 0);
  EXPECT_EQ(CheckPathKind(file.c_str(), 1), 0);
  EXPECT_EQ(CheckPathKind(file.c_str(), 0), -1017);
}

}  // namespace
}  // namespace vsm
