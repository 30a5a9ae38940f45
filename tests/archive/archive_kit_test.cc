// The archive kit's faces that vsmkit doesn't reach (the oracle checks cover extraction and
// the zlib streams): null paths, the listing rows, one entry by name, makedir's walk, encrypted
// entries and the seek of the file operations the zip layer reads through.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "support/unzipper.h"
#include "support/zip_extraction.h"
#include "support/zip_file_functions.h"
#include "support/zlib_wrapper.h"
#include "test_support/temp_dir.h"
#include "test_support/zip_writer.h"

namespace vsm {
namespace {

using testing::PathExists;
using testing::ZipEntry;

// Extraction moves the working directory of the whole process; each test puts it back.
class ArchiveKitTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(getcwd(start_, sizeof(start_)), nullptr); }
  void TearDown() override { ASSERT_EQ(chdir(start_), 0); }
  std::string Path(const std::string& name) const { return folder_.Join(name); }
  unzFile Open(const std::vector<ZipEntry>& entries, const std::string& name) {
    EXPECT_TRUE(testing::WriteZip(Path(name), entries));
    zlib_filefunc64_def table;
    FillZipFileFunctions(&table);
    return unzOpen2_64(Path(name).c_str(), &table);
  }
  testing::TempDir folder_;
  char start_[4096] = {0};
};

TEST(ZlibWrapper, EveryFailureGivesNullAndSizeZero) {
  CZlibWrapper zlib;
  const uint8_t stream[] = {0x78, 0x9c, 0x4b, 0x04, 0x00, 0x00, 0x62, 0x00, 0x62};  // "a"
  const struct {
    const uint8_t* source;
    int64_t size;
    uint64_t capacity;
  } cases[] = {{nullptr, 9, 1},
               {stream, -1, 1},
               {stream, int64_t{1} << 32, 1},
               {stream, 9, uint64_t{1} << 32},
               {stream, 9, 0},
               {stream, 0, 1}};
  for (const auto& c : cases) {
    uint64_t size = 99;
    EXPECT_EQ(zlib.Uncompress(c.source, c.size, c.capacity, &size), nullptr) << c.size;
    EXPECT_EQ(size, 0u);
  }
  uint64_t size = 99;
  EXPECT_EQ(zlib.Compress(nullptr, 1, 6, &size), nullptr);
  EXPECT_EQ(zlib.Compress(stream, uint64_t{1} << 32, 6, &size), nullptr);
  EXPECT_EQ(zlib.Compress(stream, 9, 10, &size), nullptr);
  EXPECT_EQ(size, 0u);
  uint8_t* plain = zlib.Uncompress(stream, 9, 1, nullptr);  // no size wanted
  ASSERT_NE(plain, nullptr);
  EXPECT_EQ(plain[0], 'a');
  free(plain);
}

TEST_F(ArchiveKitTest, ListingLeavesTheLastRow) {
  const std::string text = "hello hello hello hello";
  const std::pair<ZipEntry, std::string> rows[] = {
      {{"s", "hello", 0}, "      5  Stored       5 100%  07-14-21  09:26  3610a686   s\r\n"},
      {{"n", text, 6}, "     23  Defl:N      10  43%  07-14-21  09:26  8d3d51e3   n\r\n"},
      {{"x", text, 9}, "     23  Defl:X      10  43%  07-14-21  09:26  8d3d51e3   x\r\n"},
      {{"f", text, 1}, "     23  Defl:F      10  43%  07-14-21  09:26  8d3d51e3   f\r\n"},
      {{"e", "hello", 0, {2021, 7, 14, 9, 26, 54}, "pw"},
       "      5  Stored*     17 340%  07-14-21  09:26  3610a686   e\r\n"},
      {{"d/z", "", 0, {2009, 1, 2, 3, 4, 6}},
       "      0  Stored       0   0%  01-02-09  03:04  00000000   d/z\r\n"},
  };
  for (const auto& [entry, row] : rows) {
    unzFile file =
        Open({{"first", "not the last row"}, entry}, entry.name[0] + std::string(".zip"));
    char context[kZipMessageSize] = {0};
    EXPECT_EQ(do_list(context, file), 0);
    EXPECT_EQ(context, row);
    unzClose(file);
  }
}

TEST_F(ArchiveKitTest, OneEntryByNameAndTheUsageText) {
  unzFile file =
      Open({{"a/b/c.txt", "abc"}, {"dir/", ""}, {"secret", "s", 0, {2021, 1, 1, 0, 0, 0}, "pw"}},
           "one.zip");
  ASSERT_EQ(mkdir(Path("out").c_str(), 0755), 0);
  ASSERT_EQ(chdir(Path("out").c_str()), 0);
  const struct {
    const char* name;
    int withoutPath, result;
    const char *message, *written;
  } cases[] = {
      {"a/b/c.txt", 0, 0, " extracting: a/b/c.txt\r\n", "a/b/c.txt"},
      {"a/b/c.txt", 1, 0, " extracting: c.txt\r\n", "c.txt"},
      {"A/B/C.TXT", 0, 2, "File A/B/C.TXT not found in the zipfile\r\n", nullptr},
      {"dir/", 1, 0, "", nullptr},  // no folders without paths
      {"secret", 0, 1, "Error -105 with zipfile in CloseCurrentFile\r\n", nullptr},
  };
  for (const auto& c : cases) {
    char context[kZipMessageSize] = {0};
    EXPECT_EQ(do_extract_onefile(context, file, c.name, c.withoutPath, 0, nullptr), c.result);
    EXPECT_STREQ(context, c.message) << c.name;
    EXPECT_TRUE(c.written == nullptr || PathExists(Path("out/") + c.written)) << c.name;
  }
  EXPECT_FALSE(PathExists(Path("out/dir")));
  unzClose(file);
  char context[kZipMessageSize] = {0};
  do_help(context);
  EXPECT_STREQ(context,
               "Usage : miniunz [-e] [-x] [-v] [-l] [-o] [-p password] file.zip [file_to_extr.] "
               "[-d extractdir]\n\n  -e  Extract without pathname (junk paths)\n  -x  Extract "
               "with pathname\n  -v  list files\n  -l  list files\n  -d  directory to extract "
               "into\n  -o  overwrite files without prompting\n  -p  extract crypted file using "
               "password\n\n");
}

TEST_F(ArchiveKitTest, EncryptedEntriesFailAndTheMessageStays) {
  unzClose(
      Open({{"plain", "p"}, {"secret", "hello", 0, {2021, 1, 1, 0, 0, 0}, "pw"}}, "locked.zip"));
  ASSERT_EQ(mkdir(Path("out").c_str(), 0755), 0);
  CUnzipper unzipper;
  EXPECT_EQ(unzipper.Extract(Path("locked.zip").c_str(), Path("out").c_str()), 0);
  EXPECT_STREQ(unzipper.GetMessage(), "Error -105 with zipfile in CloseCurrentFile\r\n");
  EXPECT_TRUE(PathExists(Path("out/plain")));
  const std::pair<std::string, std::string> folders[] = {
      {Path("none"), "Cannot find the specified folder \"" + Path("none") + "\""},
      {Path("locked.zip"), "\"" + Path("locked.zip") + "\" is not a folder"},
      {Path("out"), "\"" + Path("locked.zip") + "\" is not a folder"}};  // a folder passes
  for (const auto& [path, message] : folders) {
    EXPECT_EQ(unzipper.CheckFolder(path.c_str()), path == Path("out") ? 1 : 0);
    EXPECT_EQ(unzipper.GetMessage(), message);
  }
}

TEST_F(ArchiveKitTest, MakedirWalksEverySeparator) {
  ASSERT_EQ(chdir(folder_.path().c_str()), 0);
  ASSERT_TRUE(testing::WriteFileBytes(Path("plain"), "in the way"));
  const std::pair<const char*, int> cases[] = {{"", 0},        {"m1", 1},      {"m1", 1},
                                               {"m2/a/b/", 1}, {"m3\\x/y", 1}, {"plain/x/y", 1}};
  for (const auto& [path, result] : cases) {
    char context[kZipMessageSize] = {0};
    EXPECT_EQ(makedir(context, path), result) << path;
    EXPECT_STREQ(context, "");
  }
  for (const char* made : {"m1", "m2/a/b", "m3", "m3\\x/y"}) EXPECT_TRUE(PathExists(Path(made)));
}

TEST_F(ArchiveKitTest, TheZipLayerSeeksWith32BitOffsets) {
  zlib_filefunc64_def t;
  FillZipFileFunctions(&t);
  ASSERT_TRUE(testing::WriteFileBytes(Path("digits"), "0123456789"));
  void* stream = t.zopen64_file(nullptr, Path("digits").c_str(), ZLIB_FILEFUNC_MODE_READ);
  const struct {
    uint64_t offset;
    int origin;
    long result;
    uint64_t position;
  } seeks[] = {{8, 0, 0, 8},   {uint64_t(-3), 1, 0, 5},  {0, 2, 0, 10},
               {1, 3, -1, 10}, {0x80000000u, 0, -1, 10}, {0x100000002u, 0, 0, 2}};
  for (const auto& s : seeks) {
    EXPECT_EQ(t.zseek64_file(nullptr, stream, s.offset, s.origin), s.result) << s.offset;
    EXPECT_EQ(t.ztell64_file(nullptr, stream), s.position) << s.offset;
  }
  EXPECT_EQ(t.zerror_file(nullptr, stream), EINVAL);  // from the refused seek past 2 GiB
  EXPECT_EQ(t.zclose_file(nullptr, stream), 0);
  EXPECT_EQ(t.zopen64_file(nullptr, Path("digits").c_str(), ZLIB_FILEFUNC_MODE_WRITE), nullptr);
  EXPECT_EQ(t.zclose_file(nullptr, nullptr), -1);
}

}  // namespace
}  // namespace vsm
