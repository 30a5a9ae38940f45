// Checked formatting and copying into fixed buffers.
//
// Several texts of the module (shell commands, the cmdId member, key names) are built in
// buffers of a fixed size, and the stored image records have a fixed size. Overflowing such a
// buffer is a programming contract broken, not an input error: these helpers end the process
// (abort) instead of truncating, after one line on standard error that says what overflowed.
// Thread-safe; no state.
#ifndef VSM_SUPPORT_CHECKED_FORMAT_H_
#define VSM_SUPPORT_CHECKED_FORMAT_H_

#include <cstdarg>
#include <cstddef>

namespace vsm {

// snprintf into `buffer` of `size` bytes. Returns the length written. When the text and its
// NUL don't fit, the process ends.
int CheckedFormat(char* buffer, size_t size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
int CheckedFormatV(char* buffer, size_t size, const char* format, va_list arguments);

// memcpy of `count` bytes into `target` of `targetSize` bytes. A `count` above `targetSize`
// ends the process.
void CheckedCopy(void* target, size_t targetSize, const void* source, size_t count);

}  // namespace vsm

#endif  // VSM_SUPPORT_CHECKED_FORMAT_H_
