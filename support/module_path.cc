#include "support/module_path.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "support/file_stream.h"

namespace vsm {

namespace {

// Copies at most `count` bytes of `source` into a 1024-byte buffer, cutting to fit.
void CopyIntoPathBuffer(char* target, const char* source, size_t count) {
  if (count > kPathBufferSize - 1) count = kPathBufferSize - 1;
  std::memcpy(target, source, count);
  target[count] = '\0';
}

bool PathExists(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0;
}

// Where a platform names a folder for data shared by all users, this gives it; Linux has none.
const char* PlatformSharedDataFolder() { return ""; }

}  // namespace

void GetModulePath(char* output) {
  if (output == nullptr) return;
  // One byte more than the caller's buffer, so the link text is always NUL-terminated.
  char link[kPathBufferSize + 1];
  std::memset(link, 0, sizeof(link));
  if (readlink("/proc/self/exe", link, kPathBufferSize) < 0) link[0] = '\0';
  CopyIntoPathBuffer(output, link, std::strlen(link));
}

void GetModuleDirectory(char* output) {
  if (output == nullptr) return;
  std::memset(output, 0, kPathBufferSize);
  char program[kPathBufferSize];
  std::memset(program, 0, sizeof(program));
  GetModulePath(program);
  size_t cut = std::strlen(program);
  while (cut > 0 && program[cut - 1] != '/' && program[cut - 1] != '\\') --cut;
  if (cut == 0) return;
  // Drop the separator run before the file name, then put back exactly one '/'.
  while (cut > 0 && (program[cut - 1] == '/' || program[cut - 1] == '\\')) --cut;
  std::memcpy(output, program, cut);
  output[cut] = '/';
}

void SplitPath(const char* path, char* folderOut, char* fileOut) {
  if (path == nullptr || folderOut == nullptr || fileOut == nullptr) return;
  const char* slash = std::strrchr(path, '/');
  if (slash == nullptr) {
    CopyIntoPathBuffer(folderOut, path, std::strlen(path));
    fileOut[0] = '\0';
    return;
  }
  CopyIntoPathBuffer(folderOut, path, static_cast<size_t>(slash - path));
  CopyIntoPathBuffer(fileOut, slash + 1, std::strlen(slash + 1));
}

void TrimPathEnd(char* path) {
  if (path == nullptr) return;
  size_t length = std::strlen(path);
  for (char trailing : {' ', '\\', '/'}) {
    while (length > 0 && path[length - 1] == trailing) path[--length] = '\0';
  }
}

int EnsureParentDirectories(const char* path, void* ignored) {
  if (path == nullptr) return 0;
  const std::string whole(path);
  size_t last = whole.rfind('/');
  if (last == std::string::npos) return 1;
  const std::string folder = whole.substr(0, last);
  // An empty folder part means the root ("/name"), which always exists.
  if (folder.empty() || PathExists(folder)) return 1;
  for (size_t slash = folder.find('/', 1); slash != std::string::npos;
       slash = folder.find('/', slash + 1)) {
    const std::string prefix = folder.substr(0, slash);
    if (!PathExists(prefix) && !CreateDirectory(prefix.c_str())) return 0;
  }
  if (PathExists(folder)) return 1;
  return CreateDirectory(folder.c_str());
}

void GetSharedDataDirectory(char* output) {
  if (output == nullptr) return;
  std::snprintf(output, kPathBufferSize, "%s/Veldorane/", PlatformSharedDataFolder());
}

}  // namespace vsm
