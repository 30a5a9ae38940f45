#include "support/file_stream.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

namespace vsm {

FILE* OpenFileEx(const char* path, uint32_t access, uint32_t share, void* security,
                 uint32_t disposition, uint32_t flags) {
  if (path == nullptr) return nullptr;
  char mode[4] = {'w', 0, 0, 0};
  if (disposition == kOpenExisting) {
    mode[0] = 'r';
  } else if (disposition == kOpenAlways) {
    mode[0] = 'a';
  }
  bool writable = (access & kGenericWrite) != 0;
  if (writable) {
    mode[1] = '+';
    mode[2] = 'b';
  } else {
    mode[1] = 'b';
  }
  // The first open is only for its side effects: creating, truncating, or proving that the
  // file exists. The stream handed out is opened again without append mode, because callers
  // seek and write anywhere in it.
  FILE* probe = std::fopen(path, mode);
  if (probe == nullptr) return nullptr;
  std::fclose(probe);
  FILE* stream = std::fopen(path, writable ? "r+b" : "rb");
  if (stream != nullptr) std::fseek(stream, 0, SEEK_SET);
  return stream;
}

int CloseFile(FILE* stream) {
  if (stream == nullptr) return 1;
  return std::fclose(stream) == 0 ? 1 : 0;
}

int ReadFile(FILE* stream, void* buffer, uint32_t count, uint32_t* bytesRead) {
  if (bytesRead != nullptr) *bytesRead = 0;
  if (stream == nullptr || (buffer == nullptr && count > 0)) return 0;
  size_t read = count > 0 ? std::fread(buffer, 1, count, stream) : 0;
  if (bytesRead != nullptr) *bytesRead = static_cast<uint32_t>(read);
  return std::ferror(stream) ? 0 : 1;
}

int WriteFile(FILE* stream, const void* buffer, uint32_t count, uint32_t* bytesWritten) {
  if (bytesWritten != nullptr) *bytesWritten = 0;
  if (stream == nullptr || (buffer == nullptr && count > 0)) return 0;
  size_t written = count > 0 ? std::fwrite(buffer, 1, count, stream) : 0;
  if (bytesWritten != nullptr) *bytesWritten = static_cast<uint32_t>(written);
  return written == count ? 1 : 0;
}

int64_t SetFilePointer(FILE* stream, int32_t offset, int32_t* offsetHigh, int origin) {
  if (stream == nullptr) return -1;
  std::fseek(stream, offset, origin);
  return std::ftell(stream);
}

uint32_t GetFileSize(FILE* stream) {
  if (stream == nullptr) return 0;
  long position = std::ftell(stream);
  std::fseek(stream, 0, SEEK_END);
  long size = std::ftell(stream);
  std::fseek(stream, position, SEEK_SET);
  return static_cast<uint32_t>(size);
}

int DeleteFile(const char* path) {
  if (path == nullptr) return 0;
  return unlink(path) == 0 ? 1 : 0;
}

int SetFileAttributes(const char* path, uint32_t attributes) { return 1; }

int MakeWritable(const char* path) {
  if (path == nullptr) return 0;
  SetFileAttributes(path, kFileAttributeNormal);
  return 1;
}

int GetFileModifiedTime(const char* path, void* creationTime, void* accessTime, uint32_t* seconds) {
  // The result of stat is deliberately not looked at: callers treat the time as advisory.
  struct stat info;
  std::memset(&info, 0, sizeof(info));
  if (path != nullptr) stat(path, &info);
  if (seconds != nullptr) *seconds = static_cast<uint32_t>(info.st_mtime);
  return 1;
}

uint32_t GetFileAttributesEx(const char* path) {
  if (path == nullptr || path[0] == '\0') return kInvalidFileAttributes;
  struct stat info;
  if (stat(path, &info) != 0) return kInvalidFileAttributes;
  return S_ISDIR(info.st_mode) ? kFileAttributeDirectory : 0;
}

int CreateDirectory(const char* path) {
  if (path == nullptr) return 0;
  struct stat info;
  if (stat(path, &info) == 0) return 0;
  return mkdir(path, 0777) == 0 ? 1 : 0;
}

}  // namespace vsm
