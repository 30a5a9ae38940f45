// Win32-shaped file calls over C streams.
//
// The rest of the module was written against the Win32 file calls, so they keep that shape here:
// access masks, dispositions, 1 for success and 0 for failure, and arguments that mean nothing on
// Linux stay in the signatures. The handle is a plain FILE*; whoever opens it closes it with
// CloseFile. Paths are 8-bit strings with '/' as separator. No call throws or prints; a null
// path or stream is a failure, never a crash. The calls keep no state, so they are as
// thread-safe as the C streams beneath them.
#ifndef VSM_SUPPORT_FILE_STREAM_H_
#define VSM_SUPPORT_FILE_STREAM_H_

#include <cstdint>
#include <cstdio>

namespace vsm {

// Bits of the access mask of OpenFileEx.
constexpr uint32_t kGenericRead = 0x80000000;
constexpr uint32_t kGenericWrite = 0x40000000;

// Dispositions of OpenFileEx.
constexpr uint32_t kCreateAlways = 2;  // create or truncate
constexpr uint32_t kOpenExisting = 3;
constexpr uint32_t kOpenAlways = 4;  // open or create

// Results of GetFileAttributesEx, and the attribute value callers pass to SetFileAttributes.
constexpr uint32_t kInvalidFileAttributes = 0xFFFFFFFF;
constexpr uint32_t kFileAttributeDirectory = 16;
constexpr uint32_t kFileAttributeNormal = 128;

// Opens `path` after `disposition`; with kGenericWrite in `access` the stream can read and
// write, otherwise it only reads. The stream is never in append mode and stands at offset 0.
// Null when the file can't be opened (disposition 3 on a missing file creates nothing).
// `share`, `security` and `flags` are ignored. Without the write bit, disposition 2 still
// truncates.
FILE* OpenFileEx(const char* path, uint32_t access, uint32_t share, void* security,
                 uint32_t disposition, uint32_t flags);
// Null gives 1; otherwise whether fclose succeeded.
int CloseFile(FILE* stream);
// Reads up to `count` bytes. Stores the count read when `bytesRead` isn't null. A short read is
// no failure; only a stream error (or a null stream or buffer) gives 0.
int ReadFile(FILE* stream, void* buffer, uint32_t count, uint32_t* bytesRead);
// Gives 1 only when all `count` bytes went into the stream. Stores the count written when
// `bytesWritten` isn't null.
int WriteFile(FILE* stream, const void* buffer, uint32_t count, uint32_t* bytesWritten);
// fseek by a signed 32-bit `offset` from `origin` (0 start, 1 current, 2 end), then the
// position as ftell gives it; -1 for a null stream. `offsetHigh` is ignored, so files past
// 2 GiB can't be reached by offset.
int64_t SetFilePointer(FILE* stream, int32_t offset, int32_t* offsetHigh, int origin);
// The size of the stream's file, cut to 32 bits. The position stays where it was. 0 for null.
uint32_t GetFileSize(FILE* stream);
// Whether unlink succeeded.
int DeleteFile(const char* path);
// Does nothing and gives 1: Linux has no file attributes of this kind.
int SetFileAttributes(const char* path, uint32_t attributes);
// Null gives 0; anything else 1, since it only calls SetFileAttributes.
int MakeWritable(const char* path);
// Stores the low 32 bits of the modification time in seconds and gives 1. Deliberately gives 1
// even for a missing file, for which it stores 0. The two middle arguments are ignored.
int GetFileModifiedTime(const char* path, void* creationTime, void* accessTime, uint32_t* seconds);
// kFileAttributeDirectory for a folder, 0 for anything else that stat finds,
// kInvalidFileAttributes for a missing, empty or null path.
uint32_t GetFileAttributesEx(const char* path);
// Makes the folder with mode 0777. Gives 1 only when the path did not exist and mkdir
// succeeded, so an existing folder gives 0.
int CreateDirectory(const char* path);

}  // namespace vsm

#endif  // VSM_SUPPORT_FILE_STREAM_H_
