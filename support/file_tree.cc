#include "support/file_tree.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

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

}  // namespace

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
  int descriptor = open(target, O_RDWR | O_CREAT | O_TRUNC, 0777);
  if (descriptor < 0) {
    std::free(block);
    return 0;
  }
  // The lock only keeps other cooperating copies out for the moment of the write; a target that
  // is locked elsewhere is written all the same.
  flock(descriptor, LOCK_EX | LOCK_NB);
  ssize_t written = write(descriptor, block, size);
  (void)written;
  flock(descriptor, LOCK_UN | LOCK_NB);
  close(descriptor);
  std::free(block);
  return 1;
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
