#include "support/checked_format.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace vsm {

namespace {

[[noreturn]] void EndProcess(const char* what, size_t needed, size_t available) {
  std::fprintf(stderr, "vsm: %s of %zu bytes overflows a buffer of %zu bytes\n", what, needed,
               available);
  std::fflush(stderr);
  std::abort();
}

}  // namespace

int CheckedFormatV(char* buffer, size_t size, const char* format, va_list arguments) {
  va_list copy;
  va_copy(copy, arguments);
  int length = std::vsnprintf(buffer, size, format, copy);
  va_end(copy);
  if (length < 0) EndProcess("formatted text", 0, size);
  if (static_cast<size_t>(length) >= size) {
    EndProcess("formatted text", static_cast<size_t>(length) + 1, size);
  }
  return length;
}

int CheckedFormat(char* buffer, size_t size, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  int length = CheckedFormatV(buffer, size, format, arguments);
  va_end(arguments);
  return length;
}

void CheckedCopy(void* target, size_t targetSize, const void* source, size_t count) {
  if (count > targetSize) EndProcess("copied block", count, targetSize);
  if (count > 0) std::memcpy(target, source, count);
}

}  // namespace vsm
