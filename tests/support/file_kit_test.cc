// The file layer: stream wrappers, paths, folder trees and whole files, and what the process
// knows of itself. Everything happens in a TempDir; names with blanks are on purpose.
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "support/file_stream.h"
#include "support/file_tree.h"
#include "support/library_loader.h"
#include "support/module_path.h"
#include "support/process_memory.h"
#include "support/tracked_heap.h"
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

// Results of calls made in order (a braced list is evaluated from left to right).
std::string Results(std::initializer_list<int64_t> values) {
  std::string joined;
  for (int64_t value : values) joined += (joined.empty() ? "" : " ") + std::to_string(value);
  return joined;
}

// Root ignores permissions: read-only folders stop only other users.
bool Unprivileged() { return geteuid() != 0; }

TEST(FileStreamTest, OpenFileExFollowsTheDispositionNeverAppendsAndReadsShort) {
  constexpr uint32_t kBoth = kGenericRead | kGenericWrite;
  // The file holds "old" beforehand when `exists`; "X" is written after opening; "-" means no
  // file afterwards.
  // clang-format off
  struct Row { uint32_t access, disposition; bool exists; const char* after; } rows[] = {
      {kBoth, kOpenExisting, false, "-"}, {kBoth, kOpenExisting, true, "Xld"},
      {kGenericRead, kOpenExisting, true, "old"}, {kBoth, kCreateAlways, true, "X"},
      {kGenericRead, kCreateAlways, true, ""}, {kBoth, kOpenAlways, false, "X"},
      {kBoth, kOpenAlways, true, "Xld"}, {kGenericRead, 99, false, ""}};
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    TempDir dir;
    std::string path = dir.Join("a file");
    ASSERT_TRUE(!row.exists || WriteFileBytes(path, "old"));
    FILE* file = OpenFileEx(path.c_str(), row.access, 0, nullptr, row.disposition, 0);
    ASSERT_EQ(file != nullptr, std::string(row.after) != "-");
    if (file != nullptr) {
      const int64_t written = (row.access & kGenericWrite) ? 1 : 0, size = std::strlen(row.after);
      char buffer[8] = {}, *whole = nullptr;
      uint32_t count = 0;
      size_t wholeSize = 0;
      // Opened at 0; GetFileSize keeps the position; a short read is no failure, but the error a
      // refused write left behind is; ReadStream rewinds and gives 0 for success.
      EXPECT_EQ(Results({ftell(file), WriteFile(file, "X", 1, nullptr), GetFileSize(file),
                         SetFilePointer(file, 0, nullptr, SEEK_CUR),
                         SetFilePointer(file, 0, nullptr, SEEK_SET),
                         ReadFile(file, buffer, sizeof(buffer), &count),
                         ReadStream(file, &whole, &wholeSize), CloseFile(file)}),
                Results({0, written, size, written, 0, written, 0, 1}));
      EXPECT_EQ(std::string(buffer, count) + "|" + std::string(whole, wholeSize),
                std::string(row.after) + "|" + row.after);
      std::free(whole);
    }
    EXPECT_EQ(PathExists(path) ? ReadFileBytes(path) : "-", row.after);
  }
}

TEST(FileStreamTest, FoldersFilesTheirKindsTheFoldersAboveAPathAndTheProgramsOwnPathsAndLibraries) {
  TempDir dir;
  std::string file = dir.Join("a file"), folder = dir.Join("new folder"), none = dir.Join("none");
  const char *f = file.c_str(), *d = folder.c_str(), *n = none.c_str();
  ASSERT_TRUE(WriteFileBytes(file, "x"));
  EXPECT_EQ(Results({CreateDirectory(d), CreateDirectory(d), CreateDirectory(f),
                     CreateDirectory((none + "/child").c_str())}),
            "1 0 0 0");
  // Attributes, then CheckPathKind wanting a file and wanting a folder.
  const char* missing = "4294967295 -3002 -3003";
  const std::pair<const char*, const char*> kinds[] = {
      {d, "16 -2418 0"}, {f, "0 0 -1017"}, {n, missing}, {"", missing}, {nullptr, missing}};
  for (auto [p, kind] : kinds) {
    EXPECT_EQ(Results({GetFileAttributesEx(p), CheckPathKind(p, 1), CheckPathKind(p, 0)}), kind);
  }
  EXPECT_EQ(Results({MapFileError(0), MapFileError(kFileErrorNotWritable)}), "0 -3022");
  // Only the folders above the last name are made, and only those missing.
  auto make = [](const std::string& p) { return EnsureParentDirectories(p.c_str(), nullptr); };
  EXPECT_EQ(Results({make("no slash"), make(dir.Join("x/y z/w/f")), make(folder + "/f")}), "1 1 1");
  EXPECT_EQ(Tree(dir), "a file new folder/ x/ x/y z/ x/y z/w/");
  std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
  char path[kPathBufferSize] = {}, directory[kPathBufferSize];
  GetModulePath(path);
  EXPECT_EQ(path, program.string());
  std::memset(directory, 'x', sizeof(directory));
  GetModuleDirectory(directory);
  EXPECT_EQ(directory, program.parent_path().string() + "/");
  EXPECT_EQ(directory[kPathBufferSize - 1], '\0');  // zeroed whole, not only behind the text
  uint64_t resident = GetResidentSetBytes();
  EXPECT_TRUE(resident > 0 && resident % 1024 == 0) << resident;
  void* library = LoadLibrary("libm.so.6");
  auto cosine = reinterpret_cast<double (*)(double)>(GetProcAddress(library, "cos"));
  ASSERT_TRUE(cosine != nullptr && cosine(0.0) == 1.0);
  EXPECT_TRUE(LoadLibrary("/no/such/library.so") == nullptr && !GetProcAddress(nullptr, "cos"));
  EXPECT_EQ(Results({FreeLibrary(library), FreeLibrary(nullptr)}), "1 0");
}

TEST(FileTreeTest, RemoveTreeStopsAfterTheFirstDeletedSubFolderPurgeGoesByDateNotByAge) {
  TempDir dir;
  Build(dir, {"root/", "root/sub/", "root/sub/inner", "root/file", "flat/", "flat/a", "flat/b c"});
  auto remove = [&](const char* name) { return RemoveTree(dir.Join(name).c_str()); };
  EXPECT_EQ(Results({remove("root"), remove("flat"), remove("missing")}), "1 1 0");
  // The file goes only if the scan met it before the sub-folder.
  EXPECT_TRUE(Tree(dir) == "root/" || Tree(dir) == "root/ root/file") << Tree(dir);
  EXPECT_EQ(DeletePath(dir.Join("root").c_str()), 1);
  EXPECT_EQ(Tree(dir), "");
  setenv("TZ", "UTC", 1);
  tzset();
  Build(dir, {"p/", "p/self/", "p/today/", "p/yesterday/", "p/before/", "p/month/", "p/old file"});
  time_t midnight = time(nullptr) / 86400 * 86400;
  int day = gmtime(&midnight)->tm_mday;
  auto age = [&](const char* name, time_t seconds) {
    struct timeval times[2] = {{seconds, 0}, {seconds, 0}};
    return utimes(dir.Join(name).c_str(), times) == 0;
  };
  // Today, yesterday's and the day before's last seconds, and noon of the last month's last day:
  // yesterday goes only across a month boundary, the day before always, less than 48 hours old.
  ASSERT_TRUE(age("p/today", midnight) && age("p/yesterday", midnight - 1) &&
              age("p/before", midnight - 86401) && age("p/month", midnight - day * 86400 + 43200) &&
              age("p/old file", 86400));
  EXPECT_EQ(PurgeOldSiblings(dir.Join("p/self/").c_str()), 1);
  EXPECT_EQ(Tree(dir), day == 1 ? "p/ p/old file p/self/ p/today/"
                                : "p/ p/old file p/self/ p/today/ p/yesterday/");
}

TEST(FileTreeTest, DeleteTreePrintsEachEntryAndStopsAtWhatItCannotDelete) {
  TempDir dir;
  Build(dir, {"r/", "r/sub dir/", "r/sub dir/b", "l/", "outside/", "outside/kept", "file", "ro/",
              "ro/sub/", "ro/sub/f"});
  ASSERT_EQ(symlink(dir.Join("outside").c_str(), dir.Join("l/link").c_str()), 0);
  ASSERT_EQ(chmod(dir.Join("ro/sub").c_str(), 0555), 0);
  auto remove = [&](const char* n, int self) { return DeleteTree(dir.Join(n).c_str(), self); };
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(Results({remove("r\\\\", 0), remove("l", 0)}), "1 1");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), dir.Join("r/sub dir directory\n") +
                                                          dir.Join("r/sub dir/b file\n") +
                                                          dir.Join("l/link file\n"));
  // Emptied and kept; the link went, not what it points at.
  EXPECT_EQ(Tree(dir), "file l/ outside/ outside/kept r/ ro/ ro/sub/ ro/sub/f");
  ::testing::internal::CaptureStdout();
  std::string results = Results({remove("r", 1), remove("file", 1), remove("ro", 1)});
  ::testing::internal::GetCapturedStdout();
  EXPECT_EQ(results, Unprivileged() ? "1 1 0" : "1 1 1");
  EXPECT_EQ(Tree(dir), Unprivileged() ? "l/ outside/ outside/kept ro/ ro/sub/ ro/sub/f"
                                      : "l/ outside/ outside/kept");
}

// "path mode" for every entry below `root`, links not followed, in sorted order.
std::string Modes(const std::string& root) {
  std::string lines;
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    names.push_back(entry.path().string());
  }
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) {
    struct stat info;
    lstat(name.c_str(), &info);
    lines += name.substr(root.size()) + " " + std::to_string(info.st_mode & 07777) + "\n";
  }
  return lines;
}

// The system's chmod is the oracle: the same tree given to it and to ChangeTreeMode ends with the
// same modes, set-id bits of files and folders, sticky bits and links included.
TEST(FileTreeTest, ChangeTreeModeLeavesTheModesOfChmodRecursiveAndFollowsNoLink) {
  TempDir dir;
  Build(dir, {"out/", "out/f", "out/d/", "out/d/g"});
  for (const std::string t : {"chmod/", "ours/"}) {
    Build(dir, {t, t + "f", t + "s", t + "g/", t + "g/f", t + "k/", t + "z/", t + "z/f", t + "a/",
                t + "a/b/", t + "a/b/f"});
    for (const auto& [name, mode] :
         {std::pair(t + "f", 0600), std::pair(t + "s", 06755), std::pair(t + "g/f", 0),
          std::pair(t + "g", 02750), std::pair(t + "k", 01700), std::pair(t + "z", 0)}) {
      ASSERT_EQ(chmod(dir.Join(name).c_str(), mode), 0);
    }
    ASSERT_EQ(symlink(dir.Join("out/f").c_str(), dir.Join(t + "to file").c_str()) +
                  symlink(dir.Join("out/d").c_str(), dir.Join(t + "a/to folder").c_str()),
              0);
  }
  ASSERT_EQ(chmod(dir.Join("out/f").c_str(), 0600) + chmod(dir.Join("out/d").c_str(), 0700), 0);
  const std::string outside = Modes(dir.Join("out"));
  ASSERT_EQ(std::system(("chmod 777 -R '" + dir.Join("chmod") + "'").c_str()), 0);
  EXPECT_EQ(ChangeTreeMode((dir.Join("ours") + "//").c_str(), 0777), 1);
  EXPECT_EQ(Modes(dir.Join("ours")), Modes(dir.Join("chmod")));
  // A link at the top is not followed either, unlike chmod's; missing paths fail.
  ASSERT_EQ(symlink(dir.Join("out").c_str(), dir.Join("top").c_str()), 0);
  EXPECT_EQ(Results({ChangeTreeMode(dir.Join("top/").c_str(), 0777),
                     ChangeTreeMode(dir.Join("none").c_str(), 0777), ChangeTreeMode("", 0777),
                     ChangeTreeMode(nullptr, 0777)}),
            "1 0 0 0");
  EXPECT_EQ(Modes(dir.Join("out")), outside);
}

TEST(FileTreeTest, CopiesCountUnreadableSourcesAsDoneAndEmptyFilesAsFailed) {
  TempDir dir;
  Build(dir, {"src/", "src/a", "src/sub dir/", "src/sub dir/b", "src/none/", "e/", "e/empty",
              "target", "blocker"});
  // CopyTree with `recurse` 0 or 1, CopyFileLocked without.
  auto copy = [&](const char* from, const char* to, int recurse = -1) {
    std::string source = dir.Join(from), target = dir.Join(to);
    return recurse < 0 ? CopyFileLocked(source.c_str(), target.c_str(), 0)
                       : CopyTree(source.c_str(), target.c_str(), recurse);
  };
  EXPECT_EQ(Results({copy("missing", "target"), copy("src", "target"), copy("e/empty", "target"),
                     copy("src/a", "no/t")}),
            "1 1 0 0");
  EXPECT_EQ(ReadFileBytes(dir.Join("target")), "target");
  // Empty source folders leave none behind; the result is that of the last file copied.
  EXPECT_EQ(Results({copy("src", "deep", 1), copy("src/", "flat/", 0), copy("e", "f", 1),
                     copy("missing", "m", 1), copy("src", "blocker/t", 0)}),
            "1 1 0 1 0");
  EXPECT_EQ(ReadFileBytes(dir.Join("deep/sub dir/b")), "src/sub dir/b");
  EXPECT_EQ(Tree(dir),
            "blocker deep/ deep/a deep/sub dir/ deep/sub dir/b e/ e/empty f/ flat/ flat/a src/ "
            "src/a src/none/ src/sub dir/ src/sub dir/b target");
}

TEST(WholeFileTest, ReadsFilesOfEverySizeWritesAtAnOffsetOnlyIntoFilesThatExistAndReportsByCode) {
  TempDir dir;
  char buffer[16] = {}, *block = nullptr;
  size_t read = 0;
  uint32_t length = 0;
  int error = -1;
  // Around the chunk threshold, and several chunks with a short last one.
  for (size_t size : {0, 1, 0xfffff, 0x100000, 3 * 0x100000 + 17}) {
    std::string path = dir.Join("file " + std::to_string(size)), bytes(size, '\0');
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 131 + i / 4099);
    ASSERT_TRUE(WriteFileBytes(path, bytes));
    ASSERT_EQ(ReadWholeFile(path.c_str(), &block, &read), 1);
    EXPECT_TRUE(std::string(block, read + 1) == bytes + '\0') << size;  // and a zero behind
    std::free(block);
  }
  std::string file = dir.Join("new dir/sub/out"), none = dir.Join("none");
  const char *f = file.c_str(), *n = none.c_str();
  // Offset 0 makes the folders and creates or truncates; another offset patches what exists.
  EXPECT_EQ(Results({WriteFileAt(f, "0123456789ab", 12, 0), WriteFileAt(f, "0123456789", 10, 0),
                     WriteFileAt(f, "ab", 2, 5), WriteFileAt(n, "x", 1, 3)}),
            "0 0 0 16");
  // ReadStream fails with 1; ReadFileInto also fails on a file that is too short.
  EXPECT_EQ(Results({ReadStream(nullptr, &block, &read), ReadFileInto(f, buffer, 11),
                     ReadFileInto(n, buffer, 1), ReadFileInto(f, buffer, 10)}),
            "1 16 16 0");
  EXPECT_STREQ(buffer, "01234ab789");
  char* tracked = static_cast<char*>(ReadFileAlloc(f, &length, &error));
  EXPECT_EQ(std::string(tracked, length) + std::to_string(error), "01234ab7890");
  TrackedFree(tracked);
  EXPECT_TRUE(ReadFileAlloc(n, &length, &error) == nullptr && error == kFileErrorAccess);
#ifndef __SANITIZE_ADDRESS__  // whose allocator aborts where malloc would give null
  rlimit saved, low;
  ASSERT_EQ(getrlimit(RLIMIT_AS, &saved) + truncate(f, 0xFFFFFFFF), 0);  // sparse, near 4 GiB
  low = {rlim_t{1} << 32, saved.rlim_max};
  setrlimit(RLIMIT_AS, &low);
  EXPECT_TRUE(ReadFileAlloc(f, &length, &error) == nullptr && error == kFileErrorNoMemory);
  setrlimit(RLIMIT_AS, &saved);
#endif
}

}  // namespace
}  // namespace vsm
