#include "support/whole_file.h"

#include <sys/stat.h>

#include <cstdlib>
#include <cstring>

#include "support/atomic_file.h"
#include "support/file_stream.h"
#include "support/module_path.h"
#include "support/tracked_heap.h"

namespace vsm {

namespace {

constexpr size_t kChunkThreshold = 0xfffff;
constexpr size_t kChunkSize = 0x100000;

bool IsFolderStream(FILE* stream) {
  struct stat info;
  return fstat(fileno(stream), &info) == 0 && S_ISDIR(info.st_mode);
}

// fopen succeeds on a folder for reading; its "size" is then whatever the file system says,
// so a folder is refused here as a file that can't be opened.
FILE* OpenFileForReading(const char* path) {
  FILE* stream = OpenFileEx(path, kGenericRead, 1, nullptr, kOpenExisting, 0);
  if (stream != nullptr && IsFolderStream(stream)) {
    CloseFile(stream);
    return nullptr;
  }
  return stream;
}

}  // namespace

int ReadStream(FILE* stream, char** block, size_t* size) {
  if (block != nullptr) *block = nullptr;
  if (size != nullptr) *size = 0;
  if (stream == nullptr || block == nullptr || size == nullptr) return 1;
  if (IsFolderStream(stream)) return 1;
  std::fseek(stream, 0, SEEK_END);
  long end = std::ftell(stream);
  std::rewind(stream);
  if (end < 0) return 1;
  size_t length = static_cast<size_t>(end);
  char* data = static_cast<char*>(std::malloc(length + 1));
  if (data == nullptr) return 1;
  data[length] = '\0';
  size_t done = 0;
  if (length > kChunkThreshold) {
    while (done < length) {
      size_t want = length - done < kChunkSize ? length - done : kChunkSize;
      size_t got = std::fread(data + done, 1, want, stream);
      if (got == 0) break;
      done += got;
    }
  } else {
    done = std::fread(data, 1, length, stream);
  }
  if (done < length) std::memset(data + done, 0, length - done);
  *block = data;
  *size = length;
  return 0;
}

int ReadWholeFile(const char* path, char** block, size_t* size) {
  if (block != nullptr) *block = nullptr;
  if (size != nullptr) *size = 0;
  FILE* stream = OpenFileForReading(path);
  if (stream == nullptr) return 0;
  int failed = ReadStream(stream, block, size);
  CloseFile(stream);
  return failed ? 0 : 1;
}

int ReadFileInto(const char* path, void* buffer, uint32_t count) {
  FILE* stream = OpenFileForReading(path);
  if (stream == nullptr) return kFileErrorAccess;
  uint32_t read = 0;
  int ok = ReadFile(stream, buffer, count, &read) && read == count;
  CloseFile(stream);
  return ok ? kFileErrorNone : kFileErrorAccess;
}

void* ReadFileAlloc(const char* path, uint32_t* size, int* error) {
  if (size != nullptr) *size = 0;
  if (error != nullptr) *error = kFileErrorNone;
  FILE* stream = OpenFileForReading(path);
  if (stream == nullptr) {
    if (error != nullptr) *error = kFileErrorAccess;
    return nullptr;
  }
  uint32_t length = GetFileSize(stream);
  void* block = TrackedAlloc(0, length);
  if (block == nullptr) {
    CloseFile(stream);
    if (error != nullptr) *error = kFileErrorNoMemory;
    return nullptr;
  }
  uint32_t read = 0;
  int ok = ReadFile(stream, block, length, &read) && read == length;
  CloseFile(stream);
  if (!ok) {
    TrackedFree(block);
    if (error != nullptr) *error = kFileErrorAccess;
    return nullptr;
  }
  if (size != nullptr) *size = length;
  return block;
}

int WriteFileAt(const char* path, const void* data, uint32_t count, uint32_t offset) {
  if (offset == 0) {
    if (!MakeWritable(path)) return kFileErrorNotWritable;
    EnsureParentDirectories(path, nullptr);
    // A whole new file goes through a temporary one, not a truncation in place: a failed or
    // interrupted write then leaves the old file whole instead of none or a cut one.
    return ReplaceFileBytes(path, data, count) ? kFileErrorNone : kFileErrorAccess;
  }
  EnsureParentDirectories(path, nullptr);
  FILE* stream = OpenFileEx(path, kGenericRead | kGenericWrite, 0, nullptr, kOpenExisting, 0);
  if (stream == nullptr) return kFileErrorAccess;
  std::fseek(stream, static_cast<long>(offset), SEEK_SET);
  // The bytes count as written only once they have left the stream's buffer: a full disk shows
  // at the flush, and a half-written file must not stay behind.
  if (!WriteFile(stream, data, count, nullptr) || std::fflush(stream) != 0) {
    CloseFile(stream);
    DeleteFile(path);
    return kFileErrorAccess;
  }
  CloseFile(stream);
  return kFileErrorNone;
}

int MapFileError(int code) {
  if (code == 0) return 0;
  // Unsigned arithmetic, so that absurd codes wrap instead of overflowing.
  return static_cast<int>(0u - 3000u - static_cast<unsigned>(code));
}

int CheckPathKind(const char* path, int wantFile) {
  uint32_t attributes = GetFileAttributesEx(path);
  if (attributes == kInvalidFileAttributes) return wantFile ? -3002 : -3003;
  bool folder = (attributes & kFileAttributeDirectory) != 0;
  if (wantFile) return folder ? -2418 : 0;
  return folder ? 0 : -1017;
}

}  // namespace vsm
