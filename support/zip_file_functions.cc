#include "support/zip_file_functions.h"

#include <cerrno>
#include <cstdint>
#include <new>

#include "support/file_stream.h"

namespace vsm {

namespace {

struct ZipStream {
  FILE* file;
  int32_t lastError;
};

// Error 38 is the old end-of-file code of the Win32 numbering this layer was written against;
// reaching the end is no error for a reader, so it is stored as 0.
void StoreLastError(ZipStream* stream) { stream->lastError = errno == 38 ? 0 : errno; }

uint32_t ClampCount(uLong size) { return size > 0xFFFFFFFFul ? 0xFFFFFFFFu : uint32_t(size); }

voidpf OpenZipStream(voidpf opaque, const void* filename, int mode) {
  if (filename == nullptr) return nullptr;
  uint32_t access = kGenericRead | kGenericWrite;
  uint32_t disposition = kOpenExisting;
  if ((mode & ZLIB_FILEFUNC_MODE_READWRITEFILTER) == ZLIB_FILEFUNC_MODE_READ) {
    access = kGenericRead;
  } else if ((mode & ZLIB_FILEFUNC_MODE_EXISTING) == 0) {
    if ((mode & ZLIB_FILEFUNC_MODE_CREATE) == 0) return nullptr;
    disposition = kCreateAlways;
  }
  FILE* file = OpenFileEx(static_cast<const char*>(filename), access, 0, nullptr, disposition, 0);
  if (file == nullptr) return nullptr;
  auto* stream = new (std::nothrow) ZipStream{file, 0};
  if (stream == nullptr) CloseFile(file);
  return stream;
}

uLong ReadZipStream(voidpf opaque, voidpf handle, void* buffer, uLong size) {
  auto* stream = static_cast<ZipStream*>(handle);
  if (stream == nullptr) return 0;
  uint32_t moved = 0;
  if (!ReadFile(stream->file, buffer, ClampCount(size), &moved)) StoreLastError(stream);
  return moved;
}

uLong WriteZipStream(voidpf opaque, voidpf handle, const void* buffer, uLong size) {
  auto* stream = static_cast<ZipStream*>(handle);
  if (stream == nullptr) return 0;
  uint32_t moved = 0;
  if (!WriteFile(stream->file, buffer, ClampCount(size), &moved)) StoreLastError(stream);
  return moved;
}

ZPOS64_T TellZipStream(voidpf opaque, voidpf handle) {
  auto* stream = static_cast<ZipStream*>(handle);
  if (stream == nullptr) return static_cast<ZPOS64_T>(-1);
  const int64_t position = SetFilePointer(stream->file, 0, nullptr, SEEK_CUR);
  if (position < 0) {
    StoreLastError(stream);
    return static_cast<ZPOS64_T>(-1);
  }
  return static_cast<uint32_t>(position);
}

long SeekZipStream(voidpf opaque, voidpf handle, ZPOS64_T offset, int origin) {
  auto* stream = static_cast<ZipStream*>(handle);
  if (stream == nullptr) return -1;
  if (origin != ZLIB_FILEFUNC_SEEK_SET && origin != ZLIB_FILEFUNC_SEEK_CUR &&
      origin != ZLIB_FILEFUNC_SEEK_END) {
    return -1;
  }
  // Offsets past 2 GiB wrap to negative ones here, which the seek refuses.
  const auto narrow = static_cast<int32_t>(offset);
  const int64_t position = SetFilePointer(stream->file, narrow, nullptr, origin);
  // The file kit answers with the position even when the seek itself failed; a position other
  // than the one asked for tells the failure from an absolute seek.
  if (position < 0 || (origin == ZLIB_FILEFUNC_SEEK_SET && position != narrow)) {
    StoreLastError(stream);
    return -1;
  }
  return 0;
}

int CloseZipStream(voidpf opaque, voidpf handle) {
  auto* stream = static_cast<ZipStream*>(handle);
  if (stream == nullptr) return -1;
  FILE* file = stream->file;
  delete stream;
  if (file == nullptr) return -1;
  CloseFile(file);
  return 0;
}

int TestZipStreamError(voidpf opaque, voidpf handle) {
  auto* stream = static_cast<ZipStream*>(handle);
  return stream == nullptr ? -1 : stream->lastError;
}

}  // namespace

void FillZipFileFunctions(zlib_filefunc64_def* table) {
  table->zopen64_file = OpenZipStream;
  table->zread_file = ReadZipStream;
  table->zwrite_file = WriteZipStream;
  table->ztell64_file = TellZipStream;
  table->zseek64_file = SeekZipStream;
  table->zclose_file = CloseZipStream;
  table->zerror_file = TestZipStreamError;
  table->opaque = nullptr;
}

}  // namespace vsm
