#include "support/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

namespace vsm {

namespace {

// As many links as the kernel itself follows before it gives up with ELOOP.
constexpr int kMaxLinkHops = 40;
constexpr size_t kLinkBufferSize = 4096;
// Temporary names are unique per process; a name left by a crashed process of the same number
// is passed over, a few times at most.
constexpr int kMaxNameAttempts = 64;

std::string FolderOf(const std::string& path) {
  size_t slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

// Follows `*path` through symlinks to the file they end at, which need not exist. False for a
// loop or a link that can't be read.
bool ResolveLinks(std::string* path) {
  for (int hop = 0; hop <= kMaxLinkHops; ++hop) {
    struct stat info;
    if (lstat(path->c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) return true;
    char link[kLinkBufferSize];
    ssize_t length = readlink(path->c_str(), link, sizeof(link));
    if (length <= 0 || static_cast<size_t>(length) >= sizeof(link)) return false;
    std::string next(link, static_cast<size_t>(length));
    *path = next[0] == '/' ? next : FolderOf(*path) + next;
  }
  errno = ELOOP;
  return false;
}

bool WriteAll(int descriptor, const void* data, size_t size) {
  if (data == nullptr && size > 0) return false;
  const char* next = static_cast<const char*>(data);
  while (size > 0) {
    ssize_t written = write(descriptor, next, size);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    next += written;
    size -= static_cast<size_t>(written);
  }
  return true;
}

// The plain rewrite, for the cases the atomic road can't serve (see the header).
bool RewriteInPlace(const std::string& target, const ContentWriter& writeContent, mode_t mode) {
  int descriptor = open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode);
  if (descriptor < 0) return false;
  bool written = writeContent(descriptor);
  fsync(descriptor);  // a pipe or a device can't be flushed, and needn't be
  return close(descriptor) == 0 && written;
}

int CreateTemporary(const std::string& target, mode_t mode, std::string* temporary) {
  static std::atomic<unsigned> counter{0};
  const std::string folder = FolderOf(target);
  const std::string prefix =
      folder + "." + target.substr(folder.size()) + "." + std::to_string(getpid()) + "-";
  for (int attempt = 0; attempt < kMaxNameAttempts; ++attempt) {
    *temporary = prefix + std::to_string(counter.fetch_add(1));
    int descriptor =
        open(temporary->c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
    if (descriptor >= 0 || errno != EEXIST) return descriptor;
  }
  return -1;
}

bool KeepOwnerAndMode(int descriptor, const struct stat& old) {
  struct stat made;
  if (fstat(descriptor, &made) != 0) return false;
  if ((made.st_uid != old.st_uid || made.st_gid != old.st_gid) &&
      fchown(descriptor, old.st_uid, old.st_gid) != 0) {
    return false;
  }
  // After the owner: a change of owner clears the set-id bits.
  return fchmod(descriptor, old.st_mode & 07777) == 0;
}

void SyncFolder(const std::string& folder) {
  int descriptor = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  fsync(descriptor);
  close(descriptor);
}

}  // namespace

bool ReplaceFileContent(const std::string& path, const ContentWriter& writeContent,
                        mode_t newFileMode) {
  std::string target = path;
  if (path.empty() || !ResolveLinks(&target)) return false;
  struct stat old;
  const bool exists = lstat(target.c_str(), &old) == 0;
  if (!exists && errno != ENOENT) return false;
  if (exists) {
    // A hard-linked file keeps its identity, so that its other names see the new content too.
    if (!S_ISREG(old.st_mode) || old.st_nlink > 1) {
      return RewriteInPlace(target, writeContent, newFileMode);
    }
    // Proves what a plain rewrite needed: a file this process may not write stays as it is.
    int probe = open(target.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (probe < 0) return false;
    bool known = fstat(probe, &old) == 0;
    close(probe);
    if (!known) return false;
  }
  std::string temporary;
  int descriptor = CreateTemporary(target, newFileMode, &temporary);
  if (descriptor < 0) {
    bool folderRefused = errno == EACCES || errno == EPERM || errno == ENAMETOOLONG;
    return folderRefused && RewriteInPlace(target, writeContent, newFileMode);
  }
  if (exists && !KeepOwnerAndMode(descriptor, old)) {
    close(descriptor);
    unlink(temporary.c_str());
    return RewriteInPlace(target, writeContent, newFileMode);
  }
  bool written = writeContent(descriptor) && fsync(descriptor) == 0;
  written = close(descriptor) == 0 && written;
  if (!written || rename(temporary.c_str(), target.c_str()) != 0) {
    int failure = errno;
    unlink(temporary.c_str());
    errno = failure;
    return false;
  }
  SyncFolder(FolderOf(target));
  return true;
}

bool ReplaceFileBytes(const std::string& path, const void* data, size_t size, mode_t newFileMode) {
  return ReplaceFileContent(
      path, [data, size](int descriptor) { return WriteAll(descriptor, data, size); }, newFileMode);
}

}  // namespace vsm
