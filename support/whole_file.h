// Whole-file reading and writing, and the error codes of file commands.
//
// Files are held in memory whole; nothing here streams. A folder is never read as a file: the
// readers treat it like a file that can't be opened. The functions keep no state and are
// thread-safe as far as the files they touch are not shared. Nothing throws or prints.
#ifndef VSM_SUPPORT_WHOLE_FILE_H_
#define VSM_SUPPORT_WHOLE_FILE_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace vsm {

// Error codes of ReadFileInto, ReadFileAlloc and WriteFileAt.
constexpr int kFileErrorNone = 0;
constexpr int kFileErrorAccess = 16;  // file could not be opened, read or written
constexpr int kFileErrorNoMemory = 2;
constexpr int kFileErrorNotWritable = 22;

// Reads the stream whole, from offset 0, into a malloc block of size + 1 bytes whose last byte
// is 0; the caller frees it with free. Deliberately gives 0 on success and 1 on failure, the
// reverse of the other helpers, because its callers test it that way. Both outputs are cleared
// first. A null stream, a folder, an unseekable stream or a failed allocation gives 1. A read
// that ends early still succeeds: `*size` is the size the file had, and the unread rest of the
// block is zero.
int ReadStream(FILE* stream, char** block, size_t* size);
// ReadStream on `path`; 1 on success, 0 on failure. The block belongs to the caller (free).
int ReadWholeFile(const char* path, char** block, size_t* size);
// Reads the first `count` bytes of `path` into `buffer`. kFileErrorAccess when the file can't
// be opened or holds fewer than `count` bytes, else kFileErrorNone.
int ReadFileInto(const char* path, void* buffer, uint32_t count);
// The whole file in a block from TrackedAlloc (free it with TrackedFree), its size in `*size`.
// Null on failure, with `*error` kFileErrorAccess (can't open or read) or kFileErrorNoMemory;
// kFileErrorNone on success. Either pointer may be null.
void* ReadFileAlloc(const char* path, uint32_t* size, int* error);
// Writes `count` bytes of `data` into `path`, making the folders above it. With offset 0 the
// file is replaced whole (support/atomic_file.h): on failure kFileErrorAccess and the old file,
// if any, stays as it was. With another offset the file must exist and is patched in place at
// that offset; when it can't be opened or the bytes don't all reach it, kFileErrorAccess and the
// file is deleted. kFileErrorNotWritable for a null path; kFileErrorNone on success.
int WriteFileAt(const char* path, const void* data, uint32_t count, uint32_t offset);
// 0 stays 0; any other code becomes -3000 - code, the range of file errors in answers.
int MapFileError(int code);
// Checks that `path` is what the command wants. With `wantFile`: missing or null -3002, a
// folder -2418, anything else 0. Without: missing or null -3003, a file -1017, a folder 0.
int CheckPathKind(const char* path, int wantFile);

}  // namespace vsm

#endif  // VSM_SUPPORT_WHOLE_FILE_H_
