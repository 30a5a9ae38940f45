// The extraction unit's other faces: the listing rows, one entry by name, the usage text,
// makedir's walk, and the file operations the zip layer reads through.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "archive/archive_fixture.h"
#include "support/zip_extraction.h"
#include "support/zip_file_functions.h"

namespace vsm {
namespace {

using testing::PathExists;
using testing::ReadFileBytes;
using testing::WriteFileBytes;
using testing::ZipEntry;

class ZipUnitTest : public testing::ArchiveTest {
 protected:
  unzFile Open(const std::string& path) {
    zlib_filefunc64_def table;
    FillZipFileFunctions(&table);
    return unzOpen2_64(path.c_str(), &table);
  }
};

TEST_F(ZipUnitTest, ListingLeavesTheLastRow) {
  const std::string text = "hello hello hello hello";
  const std::pair<ZipEntry, std::string> rows[] = {
      {{"s.txt", "hello", 0},
       "      5  Stored       5 100%  07-14-21  09:26  3610a686   s.txt\r\n"},
      {{"n.txt", text, 6}, "     23  Defl:N      10  43%  07-14-21  09:26  8d3d51e3   n.txt\r\n"},
      {{"x.txt", text, 9}, "     23  Defl:X      10  43%  07-14-21  09:26  8d3d51e3   x.txt\r\n"},
      {{"f.txt", text, 2}, "     23  Defl:F      10  43%  07-14-21  09:26  8d3d51e3   f.txt\r\n"},
      {{"g.txt", text, 1}, "     23  Defl:F      10  43%  07-14-21  09:26  8d3d51e3   g.txt\r\n"},
      {{"e.txt", "hello", 0, {2021, 7, 14, 9, 26, 54}, "pw"},
       "      5  Stored*     17 340%  07-14-21  09:26  3610a686   e.txt\r\n"},
      {{"dir/z.txt", "", 0, {2009, 1, 2, 3, 4, 6}},
       "      0  Stored       0   0%  01-02-09  03:04  00000000   dir/z.txt\r\n"},
  };
  int round = 0;
  for (const auto& [entry, row] : rows) {
    unzFile file = Open(Zip({{"first.txt", "ignored"}, entry}, std::to_string(round++) + ".zip"));
    ASSERT_NE(file, nullptr);
    char context[kZipMessageSize] = {0};
    EXPECT_EQ(do_list(context, file), 0) << entry.name;
    EXPECT_EQ(std::string(context), row);
    unzClose(file);
  }
}

TEST_F(ZipUnitTest, OneEntryByName) {
  unzFile file = Open(Zip({{"a/b/c.txt", "abc"},
                           {"d.txt", "d"},
                           {"dir/", ""},
                           {"secret", "s", 0, {2021, 1, 1, 0, 0, 0}, "pw"}}));
  ASSERT_NE(file, nullptr);
  ASSERT_EQ(chdir(Folder("out").c_str()), 0);
  struct Case {
    const char* name;
    int withoutPath;
    int result;
    const char* message;
    const char* written;
  } cases[] = {
      {"a/b/c.txt", 0, 0, " extracting: a/b/c.txt\r\n", "a/b/c.txt"},
      {"a/b/c.txt", 1, 0, " extracting: c.txt\r\n", "c.txt"},
      {"missing.txt", 0, 2, "File missing.txt not found in the zipfile\r\n", nullptr},
      {"D.TXT", 0, 2, "File D.TXT not found in the zipfile\r\n", nullptr},
      {"dir/", 1, 0, "", nullptr},
      {"secret", 0, 1, "Error -105 with zipfile in CloseCurrentFile\r\n", nullptr},
  };
  for (const Case& c : cases) {
    char context[kZipMessageSize] = {0};
    EXPECT_EQ(do_extract_onefile(context, file, c.name, c.withoutPath, 0, nullptr), c.result)
        << c.name;
    EXPECT_STREQ(context, c.message) << c.name;
    if (c.written != nullptr) {
      EXPECT_TRUE(PathExists(Path("out/") + c.written)) << c.written;
    }
  }
  EXPECT_FALSE(PathExists(Path("out/dir")));  // no folders without paths
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

TEST_F(ZipUnitTest, MakedirWalksEverySeparator) {
  ASSERT_EQ(chdir(folder_.path().c_str()), 0);
  ASSERT_TRUE(WriteFileBytes(Path("plain"), "file"));
  struct Case {
    const char* path;
    int result;
    std::vector<std::string> folders;
  } cases[] = {
      {"", 0, {}},
      {"m1", 1, {"m1"}},
      {"m1", 1, {"m1"}},
      {"m2/a/b/", 1, {"m2", "m2/a", "m2/a/b"}},
      {"m3\\x/y", 1, {"m3", "m3\\x", "m3\\x/y"}},
      // A plain file in the way fails with an error other than the one the walk stops at.
      {"plain/x/y", 1, {}},
  };
  for (const Case& c : cases) {
    char context[kZipMessageSize] = {0};
    EXPECT_EQ(makedir(context, c.path), c.result) << c.path;
    EXPECT_STREQ(context, "");
    for (const std::string& folder : c.folders) {
      struct stat info;
      EXPECT_TRUE(stat(Path(folder).c_str(), &info) == 0 && S_ISDIR(info.st_mode)) << folder;
    }
  }
  EXPECT_EQ(ReadFileBytes(Path("plain")), "file");
}

TEST_F(ZipUnitTest, FileOperationsForTheZipLayer) {
  zlib_filefunc64_def t;
  FillZipFileFunctions(&t);
  const std::string digits = Path("digits");
  const std::string fresh = Path("fresh");
  const struct {
    const char* path;
    int mode;
    bool opens;
  } opens[] = {
      {"digits", ZLIB_FILEFUNC_MODE_READ, true},
      {"missing", ZLIB_FILEFUNC_MODE_READ | ZLIB_FILEFUNC_MODE_EXISTING, false},
      {"digits", ZLIB_FILEFUNC_MODE_EXISTING | ZLIB_FILEFUNC_MODE_WRITE, true},
      {"missing", ZLIB_FILEFUNC_MODE_EXISTING | ZLIB_FILEFUNC_MODE_WRITE, false},
      {"fresh", ZLIB_FILEFUNC_MODE_CREATE | ZLIB_FILEFUNC_MODE_WRITE, true},
      {"digits", ZLIB_FILEFUNC_MODE_WRITE, false},
      {"digits", 0, false},
      {nullptr, ZLIB_FILEFUNC_MODE_READ, false},
  };
  for (const auto& o : opens) {
    ASSERT_TRUE(WriteFileBytes(digits, "0123456789"));
    const std::string path = o.path == nullptr ? "" : Path(o.path);
    void* stream = t.zopen64_file(nullptr, o.path == nullptr ? nullptr : path.c_str(), o.mode);
    EXPECT_EQ(stream != nullptr, o.opens) << (o.path ? o.path : "null") << " mode " << o.mode;
    EXPECT_EQ(t.zclose_file(nullptr, stream), stream != nullptr ? 0 : -1);
  }
  EXPECT_TRUE(PathExists(fresh));
  EXPECT_FALSE(PathExists(Path("missing")));
  EXPECT_EQ(t.zerror_file(nullptr, nullptr), -1);

  void* stream = t.zopen64_file(nullptr, digits.c_str(), ZLIB_FILEFUNC_MODE_READ);
  char buffer[16] = {0};
  EXPECT_EQ(t.zread_file(nullptr, stream, buffer, 4), 4u);
  EXPECT_EQ(std::string(buffer, 4), "0123");
  EXPECT_EQ(t.ztell64_file(nullptr, stream), 4u);
  const struct {
    uint64_t offset;
    int origin;
    long result;
    uint64_t position;
  } seeks[] = {
      {8, ZLIB_FILEFUNC_SEEK_SET, 0, 8},
      {0, ZLIB_FILEFUNC_SEEK_END, 0, 10},
      {uint64_t(-3), ZLIB_FILEFUNC_SEEK_CUR, 0, 7},
      {1, 3, -1, 7},                                 // no such origin
      {0x80000000u, ZLIB_FILEFUNC_SEEK_SET, -1, 7},  // past 2 GiB
      {0x100000002u, ZLIB_FILEFUNC_SEEK_SET, 0, 2},  // offsets are 32 bits wide
  };
  for (const auto& s : seeks) {
    EXPECT_EQ(t.zseek64_file(nullptr, stream, s.offset, s.origin), s.result) << s.offset;
    EXPECT_EQ(t.ztell64_file(nullptr, stream), s.position) << s.offset;
  }
  EXPECT_EQ(t.zerror_file(nullptr, stream), EINVAL);                     // from the refused seek
  EXPECT_EQ(t.zread_file(nullptr, stream, buffer, sizeof(buffer)), 8u);  // a short read is fine
  EXPECT_EQ(t.zwrite_file(nullptr, stream, "x", 1), 0u);                 // read-only stream
  EXPECT_EQ(t.zerror_file(nullptr, stream), EBADF);
  EXPECT_EQ(t.zclose_file(nullptr, stream), 0);

  stream = t.zopen64_file(nullptr, digits.c_str(),
                          ZLIB_FILEFUNC_MODE_EXISTING | ZLIB_FILEFUNC_MODE_WRITE);
  EXPECT_EQ(t.zwrite_file(nullptr, stream, "ab", 2), 2u);
  EXPECT_EQ(t.zclose_file(nullptr, stream), 0);
  EXPECT_EQ(ReadFileBytes(digits), "ab23456789");
}

}  // namespace
}  // namespace vsm
