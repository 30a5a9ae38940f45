// Whole-file replacement that a crash or a reader never sees half done.
//
// A file that is rewritten whole (settings, copies) is never truncated in place: the new content
// goes into a temporary file beside the target, which is flushed to the disk, renamed over the
// target, and then the folder is flushed too. A reader in any process sees the old content or
// the new, never an empty or partial file, and a process killed at any moment leaves one of the
// two. At worst a crash leaves a stray hidden temporary file (".<name>.<pid>-<n>") beside the
// target.
//
// What the target keeps: its mode and its owner and group. A symlink stays a symlink: the
// content goes to the file it points to (following a chain of links, relative ones from their
// own folder), and the link itself is not touched. A missing target is created with
// `newFileMode` less the umask, as an open with O_CREAT would create it.
//
// Where the atomic road can't be taken, the file is rewritten in place (truncated, then written),
// as a plain open for writing would do, so that nothing that could be saved before is lost:
//   - the target exists and is not a regular file (a device, a pipe): replacing it by a regular
//     file would be wrong;
//   - the folder refuses a new file (no write permission, a name too long) while the target
//     itself may be writable;
//   - the target's owner can't be given to the new file (a process that isn't root rewriting
//     another user's file).
// A target that exists but can't be opened for writing fails as it always did, untouched.
//
// Failure: false, with the target as it was (on the atomic road) and the temporary file
// removed. Nothing throws or prints; errno tells the last failing call. Thread-safe: concurrent
// replacements of one file never mix, and the last rename wins.
#ifndef VSM_SUPPORT_ATOMIC_FILE_H_
#define VSM_SUPPORT_ATOMIC_FILE_H_

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <string>

namespace vsm {

// Writes the whole new content to an open descriptor, positioned at offset 0 of an empty file;
// false when it could not. The descriptor stays the caller's: the writer must not close it.
using ContentWriter = std::function<bool(int descriptor)>;

// Replaces the content of `path` with what `writeContent` writes. True on success.
bool ReplaceFileContent(const std::string& path, const ContentWriter& writeContent,
                        mode_t newFileMode = 0666);
// The same with the bytes at hand.
bool ReplaceFileBytes(const std::string& path, const void* data, size_t size,
                      mode_t newFileMode = 0666);

}  // namespace vsm

#endif  // VSM_SUPPORT_ATOMIC_FILE_H_
