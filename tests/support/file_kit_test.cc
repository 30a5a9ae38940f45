// The file layer: stream wrappers, paths, folder trees and whole files. Everything happens in a
// TempDir; names with blanks are on purpose.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "support/file_stream.h"
#include "support/file_tree.h"
#include "support/module_path.h"
#include "support/whole_file.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

using namespace testing;  // NOLINT: TempDir and the file helpers

// Makes folders (names ending in '/') and files holding their own name (or nothing, for names
// with "empty") below `root`.
void Build(const TempDir& root, std::vector<std::string> names) {
  for (const std::string& name : names) {
    bool empty = name.find("empty") != std::string::npos;
    ASSERT_TRUE(name.back() == '/' ? mkdir(root.Join(name).c_str(), 0777) == 0
                                   : WriteFileBytes(root.Join(name), empty ? "" : name));
  }
}

// Every path below `root`, sorted, folders with a '/' behind, links not followed.
std::string Tree(const TempDir& root) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root.path())) {
    names.push_back(entry.path().string().substr(root.path().size() + 1) +
                    (entry.is_directory() && !entry.is_symlink() ? "/" : ""));
  }
  std::sort(names.begin(), names.end());
  std::string joined;
  for (const std::string& name : names) joined += (joined.empty() ? "" : " ") + name;
  return joined;
}

// Root ignores permissions: read-only folders stop only other users.
bool Unprivileged() { return geteuid() != 0; }

TEST(FileStreamTest, OpenFileExFollowsTheDispositionNeverAppendsAndReadsShort) {
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
    ASSERT_TRUE(!row.exists || WriteFileBytes(path, "old"));
    FILE* stream = OpenFileEx(path.c_str(), row.access, 0, nullptr, row.disposition, 0);
    ASSERT_EQ(stream != nullptr, std::string(row.after) != "-");
    if (stream != nullptr) {
      const int written = (row.access & kGenericWrite) ? 1 : 0;
      EXPECT_EQ(ftell(stream), 0);
      EXPECT_EQ(WriteFile(stream, "X", 1, nullptr), written);
      EXPECT_EQ(GetFileSize(stream), std::strlen(row.after));
      EXPECT_EQ(SetFilePointer(stream, 0, nullptr, SEEK_CUR), written);  // kept by GetFileSize
      char buffer[8] = {};
      uint32_t count = 0;
      EXPECT_EQ(SetFilePointer(stream, 0, nullptr, SEEK_SET), 0);
      // A short read is no failure, but the error a refused write left behind is.
      EXPECT_EQ(ReadFile(stream, buffer, sizeof(buffer), &count), written);
      EXPECT_EQ(std::string(buffer, count), row.after);
      EXPECT_EQ(CloseFile(stream), 1);
    }
    EXPECT_EQ(PathExists(path) ? ReadFileBytes(path) : "-", row.after);
  }
}

TEST(FileStreamTest, FoldersFilesAndAttributes) {
  TempDir dir;
  std::string file = dir.Join("a file"), folder = dir.Join("new folder");
  ASSERT_TRUE(WriteFileBytes(file, "x"));
  EXPECT_EQ(CreateDirectory(folder.c_str()), 1);
  EXPECT_EQ(CreateDirectory(folder.c_str()), 0);
  EXPECT_EQ(CreateDirectory(file.c_str()), 0);
  EXPECT_EQ(GetFileAttributesEx(folder.c_str()), kFileAttributeDirectory);
  EXPECT_EQ(GetFileAttributesEx(file.c_str()), 0u);
  EXPECT_EQ(GetFileAttributesEx(dir.Join("missing").c_str()), kInvalidFileAttributes);
  EXPECT_EQ(GetFileAttributesEx(""), kInvalidFileAttributes);
  ASSERT_EQ(chmod(folder.c_str(), 0555), 0);
  EXPECT_EQ(CreateDirectory((folder + "/child").c_str()), Unprivileged() ? 0 : 1);
}

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

TEST(FileTreeTest, RemoveTreeStopsAfterTheFirstDeletedSubFolder) {
  TempDir dir;
  Build(dir, {"root/", "root/sub/", "root/sub/inner", "root/file", "flat/", "flat/a", "flat/b c"});
  EXPECT_EQ(RemoveTree(dir.Join("root").c_str()), 1);
  EXPECT_EQ(RemoveTree(dir.Join("flat").c_str()), 1);
  EXPECT_EQ(RemoveTree(dir.Join("missing").c_str()), 0);
  // The file goes only if the scan met it before the sub-folder.
  EXPECT_TRUE(Tree(dir) == "root/" || Tree(dir) == "root/ root/file") << Tree(dir);
  EXPECT_EQ(DeletePath(dir.Join("root").c_str()), 1);
  EXPECT_EQ(Tree(dir), "");
}

TEST(FileTreeTest, DeleteTreePrintsEachEntryAndStopsAtWhatItCannotDelete) {
  TempDir dir;
  Build(dir, {"r/", "r/sub dir/", "r/sub dir/b", "l/", "outside/", "outside/kept", "file", "ro/",
              "ro/sub/", "ro/sub/f"});
  ASSERT_EQ(symlink(dir.Join("outside").c_str(), dir.Join("l/link").c_str()), 0);
  ASSERT_EQ(chmod(dir.Join("ro/sub").c_str(), 0555), 0);
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(DeleteTree(dir.Join("r\\\\").c_str(), 0), 1);
  EXPECT_EQ(DeleteTree(dir.Join("l").c_str(), 0), 1);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), dir.Join("r/sub dir directory\n") +
                                                          dir.Join("r/sub dir/b file\n") +
                                                          dir.Join("l/link file\n"));
  // Emptied and kept; the link went, not what it points at.
  EXPECT_EQ(Tree(dir), "file l/ outside/ outside/kept r/ ro/ ro/sub/ ro/sub/f");
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(DeleteTree(dir.Join("r").c_str(), 1), 1);
  EXPECT_EQ(DeleteTree(dir.Join("file").c_str(), 1), 1);
  int readOnly = DeleteTree(dir.Join("ro").c_str(), 1);
  ::testing::internal::GetCapturedStdout();
  EXPECT_EQ(readOnly, Unprivileged() ? 0 : 1);
  EXPECT_EQ(Tree(dir), Unprivileged() ? "l/ outside/ outside/kept ro/ ro/sub/ ro/sub/f"
                                      : "l/ outside/ outside/kept");
}

TEST(FileTreeTest, CopiesCountUnreadableSourcesAsDoneAndEmptyFilesAsFailed) {
  TempDir dir;
  Build(dir, {"src/", "src/a", "src/sub dir/", "src/sub dir/b", "src/none/", "e/", "e/empty",
              "target", "blocker"});
  auto copy = [&](const char* from, const char* to) {
    return CopyFileLocked(dir.Join(from).c_str(), dir.Join(to).c_str(), 0);
  };
  EXPECT_EQ(copy("missing", "target"), 1);
  EXPECT_EQ(copy("src", "target"), 1);
  EXPECT_EQ(copy("e/empty", "target"), 0);
  EXPECT_EQ(ReadFileBytes(dir.Join("target")), "target");
  EXPECT_EQ(copy("src/a", "no/t"), 0);
  // Empty source folders leave none behind; the result is that of the last file copied.
  EXPECT_EQ(CopyTree(dir.Join("src").c_str(), dir.Join("deep").c_str(), 1), 1);
  EXPECT_EQ(ReadFileBytes(dir.Join("deep/sub dir/b")), "src/sub dir/b");
  EXPECT_EQ(CopyTree(dir.Join("src/").c_str(), dir.Join("flat/").c_str(), 0), 1);
  EXPECT_EQ(CopyTree(dir.Join("e").c_str(), dir.Join("f").c_str(), 1), 0);
  EXPECT_EQ(CopyTree(dir.Join("missing").c_str(), dir.Join("m").c_str(), 1), 1);
  EXPECT_EQ(CopyTree(dir.Join("src").c_str(), dir.Join("blocker/t").c_str(), 0), 0);
  EXPECT_EQ(Tree(dir),
            "blocker deep/ deep/a deep/sub dir/ deep/sub dir/b e/ e/empty f/ flat/ flat/a src/ "
            "src/a src/none/ src/sub dir/ src/sub dir/b target");
}

TEST(WholeFileTest, ReadsFilesOfEverySize) {
  TempDir dir;
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

}  // namespace
}  // namespace vsm
