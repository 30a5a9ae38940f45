#include "support/file_tree.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "support/atomic_file.h"
#include "support/clock.h"
#include "support/file_stream.h"
#include "support/module_path.h"
#include "support/whole_file.h"

namespace vsm {

namespace {

bool IsDotEntry(const char* name) {
  return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

// "<folder>/<name>" in a malloc block; null when memory runs out.
char* JoinInMallocBlock(const char* folder, const char* name) {
  size_t size = std::strlen(folder) + std::strlen(name) + 2;
  char* joined = static_cast<char*>(std::malloc(size));
  if (joined != nullptr) std::snprintf(joined, size, "%s/%s", folder, name);
  return joined;
}

// Copies `path` into a zeroed 1024-byte buffer; false when it doesn't fit.
bool CopyToPathBuffer(const char* path, char (&buffer)[kPathBufferSize]) {
  std::memset(buffer, 0, sizeof(buffer));
  size_t length = std::strlen(path);
  if (length >= kPathBufferSize) return false;
  std::memcpy(buffer, path, length);
  return true;
}

void StripTrailing(char* path, char trailing) {
  size_t length = std::strlen(path);
  while (length > 0 && path[length - 1] == trailing) path[--length] = '\0';
}

bool IsBeforeYesterday(const LocalSystemTime& now, const LocalSystemTime& then) {
  if (now.year != then.year) return now.year > then.year;
  if (now.month != then.month) return now.month > then.month;
  return now.day >= then.day + 2;
}

// Deep enough for any tree the module makes, shallow enough that the open folders of one walk
// stay far below the descriptor limit.
constexpr int kMaxTreeDepth = 256;

// The mode a numeric "chmod" leaves: folders keep their set-user-ID and set-group-ID bits.
mode_t ModeFor(const struct stat& info, mode_t mode) {
  return S_ISDIR(info.st_mode) ? (mode | (info.st_mode & (S_ISUID | S_ISGID))) : mode;
}

int OpenFolderNoFollow(int parent, const char* name) {
  return openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

bool ChangeEntryMode(int parent, const char* name, mode_t mode, int depth);

// The folder open at `descriptor`, which is closed here, and what it holds.
bool ChangeOpenFolderMode(int descriptor, mode_t mode, int depth) {
  struct stat info;
  bool changed = fstat(descriptor, &info) == 0 && fchmod(descriptor, ModeFor(info, mode)) == 0;
  DIR* folder = fdopendir(descriptor);
  if (folder == nullptr) {
    close(descriptor);
    return false;
  }
  while (struct dirent* entry = readdir(folder)) {
    if (IsDotEntry(entry->d_name)) continue;
    changed = ChangeEntryMode(dirfd(folder), entry->d_name, mode, depth + 1) && changed;
  }
  closedir(folder);
  return changed;
}

bool ChangeEntryMode(int parent, const char* name, mode_t mode, int depth) {
  struct stat info;
  if (fstatat(parent, name, &info, AT_SYMLINK_NOFOLLOW) != 0) return false;
  if (S_ISLNK(info.st_mode)) return true;
  if (!S_ISDIR(info.st_mode)) return fchmodat(parent, name, mode, AT_SYMLINK_NOFOLLOW) == 0;
  if (depth > kMaxTreeDepth) return false;
  int folder = OpenFolderNoFollow(parent, name);
  if (folder < 0 && errno == EACCES) {
    // A folder closed to its own owner opens once it has the new mode.
    if (fchmodat(parent, name, ModeFor(info, mode), AT_SYMLINK_NOFOLLOW) != 0) return false;
    folder = OpenFolderNoFollow(parent, name);
  }
  return folder >= 0 && ChangeOpenFolderMode(folder, mode, depth);
}

}  // namespace

int ChangeTreeMode(const char* path, mode_t mode) {
  if (path == nullptr || path[0] == '\0') return 0;
  std::string top(path);
  // A trailing '/' would make the kernel follow a link at the top.
  while (top.size() > 1 && top.back() == '/') top.pop_back();
  return ChangeEntryMode(AT_FDCWD, top.c_str(), mode, 0) ? 1 : 0;
}

int RemoveTree(const char* path) {
  if (path == nullptr) return 0;
  DIR* folder = opendir(path);
  if (folder == nullptr) return 0;
  while (struct dirent* entry = readdir(folder)) {
    if (IsDotEntry(entry->d_name)) continue;
    char* child = JoinInMallocBlock(path, entry->d_name);
    if (child == nullptr) {
      closedir(folder);
      return 0;
    }
    // -1: can't be examined or unlinked; 0: unlinked, or a sub-folder that stayed; 1: a
    // sub-folder that went. Only 0 goes on to the next entry.
    int value;
    struct stat info;
    if (stat(child, &info) != 0) {
      value = -1;
    } else if (S_ISDIR(info.st_mode)) {
      value = RemoveTree(child);
    } else {
      value = unlink(child) == 0 ? 0 : -1;
    }
    std::free(child);
    if (value != 0) {
      closedir(folder);
      return value == -1 ? 0 : 1;
    }
  }
  closedir(folder);
  return rmdir(path) == 0 ? 1 : 0;
}

int DeletePath(const char* path) {
  if (path == nullptr || path[0] == '\0') return 0;
  struct stat info;
  if (stat(path, &info) != 0) return 0;
  if (S_ISDIR(info.st_mode)) return RemoveTree(path);
  return unlink(path) == 0 ? 1 : 0;
}

int DeleteTree(const char* path, int removeSelf) {
  if (path == nullptr) return 0;
  char folderPath[kPathBufferSize];
  if (!CopyToPathBuffer(path, folderPath)) return 0;
  StripTrailing(folderPath, '\\');
  DIR* folder = opendir(folderPath);
  if (folder != nullptr) {
    // Deliberately kept across entries: an entry that lstat can't examine is handled as the
    // kind of the one before it.
    mode_t mode = 0;
    char child[4096];
    while (struct dirent* entry = readdir(folder)) {
      std::snprintf(child, sizeof(child), "%s/%s", folderPath, entry->d_name);
      struct stat info;
      if (lstat(child, &info) != 0) {
        std::perror(child);
      } else {
        mode = info.st_mode;
      }
      int deleted;
      if (S_ISDIR(mode)) {
        if (IsDotEntry(entry->d_name)) continue;
        std::printf("%s directory\n", child);
        deleted = DeleteTree(child, 1);
      } else {
        std::printf("%s file\n", child);
        SetFileAttributes(child, kFileAttributeNormal);
        deleted = DeleteFile(child);
      }
      if (!deleted) {
        closedir(folder);
        return 0;
      }
    }
    closedir(folder);
  }
  if (!removeSelf) return 1;
  return std::remove(path) == 0 ? 1 : 0;
}

int CopyFileLocked(const char* source, const char* target, int ignored) {
  if (target == nullptr) return 0;
  char* block = nullptr;
  size_t size = 0;
  if (!ReadWholeFile(source, &block, &size)) {
    std::free(block);
    return 1;
  }
  if (size == 0) {
    std::free(block);
    return 0;
  }
  // Through a temporary file renamed over the target rather than a truncation in place, so that
  // an interrupted copy leaves the old target whole. The lock only keeps other cooperating
  // copies out for the moment of the write; a target locked elsewhere is written all the same.
  bool copied = ReplaceFileContent(
      target,
      [block, size](int descriptor) {
        flock(descriptor, LOCK_EX | LOCK_NB);
        bool written = write(descriptor, block, size) == static_cast<ssize_t>(size);
        flock(descriptor, LOCK_UN | LOCK_NB);
        return written;
      },
      0777);
  std::free(block);
  return copied ? 1 : 0;
}

int CopyTree(const char* source, const char* target, int recurse) {
  if (source == nullptr || target == nullptr) return 0;
  char sourcePath[kPathBufferSize];
  char targetPath[kPathBufferSize];
  if (!CopyToPathBuffer(source, sourcePath) || !CopyToPathBuffer(target, targetPath)) return 0;
  StripTrailing(sourcePath, '/');
  StripTrailing(targetPath, '/');
  DIR* folder = opendir(sourcePath);
  if (folder == nullptr) return 1;
  int result = 1;
  while (struct dirent* entry = readdir(folder)) {
    if (IsDotEntry(entry->d_name)) continue;
    char* from = JoinInMallocBlock(sourcePath, entry->d_name);
    char* to = JoinInMallocBlock(targetPath, entry->d_name);
    struct stat info;
    bool usable = from != nullptr && to != nullptr && stat(from, &info) == 0;
    bool stop = false;
    if (usable && !S_ISDIR(info.st_mode)) {
      if (EnsureParentDirectories(to, nullptr)) {
        result = CopyFileLocked(from, to, 0);
      } else {
        stop = true;
      }
    } else if (usable && recurse) {
      stop = !EnsureParentDirectories(to, nullptr) || !CopyTree(from, to, recurse);
    }
    std::free(from);
    std::free(to);
    if (stop) {
      closedir(folder);
      return 0;
    }
  }
  closedir(folder);
  return result;
}

int PurgeOldSiblings(const char* path) {
  if (path == nullptr) return 0;
  char parent[kPathBufferSize];
  if (!CopyToPathBuffer(path, parent)) return 0;
  StripTrailing(parent, '/');
  char* slash = std::strrchr(parent, '/');
  if (slash == nullptr) return 0;
  *slash = '\0';
  LocalSystemTime now;
  GetLocalSystemTime(&now);
  DIR* folder = opendir(parent);
  if (folder == nullptr) return 1;
  while (struct dirent* entry = readdir(folder)) {
    if (IsDotEntry(entry->d_name)) continue;
    std::string child = std::string(parent) + "/" + entry->d_name;
    struct stat info;
    if (stat(child.c_str(), &info) != 0 || !S_ISDIR(info.st_mode) || info.st_mtime == 0) {
      continue;
    }
    LocalSystemTime then = {};
    SystemTimeFromUnixTime(&then, info.st_mtime);
    if (IsBeforeYesterday(now, then)) RemoveTree(child.c_str());
  }
  closedir(folder);
  return 1;
}

}  // namespace vsm
