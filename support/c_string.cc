#include "support/c_string.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "support/tracked_heap.h"

namespace vsm {

namespace {

// Lengths are signed 32 bits throughout the kit; texts longer than that don't occur.
int32_t Length(const char* text) { return static_cast<int32_t>(std::strlen(text)); }

}  // namespace

int32_t ReplaceChar(char* text, char from, char to) {
  if (text == nullptr) return 0;
  int32_t length = Length(text);
  if (from == '\0') return length;
  for (int32_t i = 0; i < length; ++i) {
    if (text[i] == from) text[i] = to;
  }
  return length;
}

void RemoveChar(char* text, char ch) {
  if (text == nullptr || ch == '\0') return;
  char* out = text;
  for (const char* in = text; *in != '\0'; ++in) {
    if (*in != ch) *out++ = *in;
  }
  *out = '\0';
}

void TrimRightChar(char* text, char ch) {
  if (text == nullptr || ch == '\0') return;
  int32_t length = Length(text);
  while (length > 0 && text[length - 1] == ch) text[--length] = '\0';
}

void TrimRightSpaces(char* text) { TrimRightChar(text, ' '); }

void TrimBlanks(char* text) {
  if (text == nullptr) return;
  int32_t length = Length(text);
  while (length > 0 && (text[length - 1] == ' ' || text[length - 1] == '\t')) --length;
  text[length] = '\0';
  int32_t first = 0;
  while (first < length && (text[first] == ' ' || text[first] == '\t')) ++first;
  if (first > 0) std::memmove(text, text + first, static_cast<size_t>(length - first) + 1);
}

int32_t IndexOfChar(const char* text, char ch, int32_t start) {
  if (text == nullptr || start < 0) return -1;
  int32_t length = Length(text);
  for (int32_t i = start; i < length; ++i) {
    if (text[i] == ch) return i;
  }
  return -1;
}

int32_t ReverseFindChar(const char* text, char ch) {
  if (text == nullptr) return -1;
  for (int32_t i = Length(text) - 1; i >= 0; --i) {
    if (text[i] == ch) return i;
  }
  return -1;
}

void Mid(const char* text, int32_t start, int32_t count, char* output) {
  if (output == nullptr) return;
  output[0] = '\0';
  if (text == nullptr || start < 0 || count < 0) return;
  int32_t length = Length(text);
  if (start >= length) return;
  int32_t taken = length - start < count ? length - start : count;
  std::memcpy(output, text + start, static_cast<size_t>(taken));
  output[taken] = '\0';
}

char* SafeStringCopy(char* target, const char* source, size_t size) {
  if (target == nullptr) return target;
  if (source != nullptr) std::strncpy(target, source, size);
  if (size != 0) target[size - 1] = '\0';
  return target;
}

char* DuplicateString(const char* text) {
  if (text == nullptr) return nullptr;
  size_t size = std::strlen(text) + 1;
  char* copy = static_cast<char*>(TrackedAlloc(0, size));
  if (copy != nullptr) std::memcpy(copy, text, size);
  return copy;
}

int BytesEqual(const void* a, const void* b, int32_t count) {
  if (count < 1) return 1;
  if (a == nullptr || b == nullptr) return a == b ? 1 : 0;
  return std::memcmp(a, b, static_cast<size_t>(count)) == 0 ? 1 : 0;
}

int IsAllDigits(const char* text, int32_t count) {
  if (text == nullptr) return 0;
  for (int32_t i = 0; i < count; ++i) {
    if (text[i] < '0' || text[i] > '9') return 0;
  }
  return 1;
}

int32_t FormatLength(const char* format, va_list arguments) {
  if (format == nullptr) return -1;
  va_list copy;
  va_copy(copy, arguments);
  int length = std::vsnprintf(nullptr, 0, format, copy);
  va_end(copy);
  return length;
}

int64_t TextToInt64(const char* text) {
  if (text == nullptr) return 0;
  return std::strtoll(text, nullptr, 10);
}

float TextToFloat(const char* text) {
  if (text == nullptr) return 0;
  return static_cast<float>(std::strtod(text, nullptr));
}

void GetLoginName(char* target) {
  char name[1024] = {};
  if (getlogin_r(name, sizeof(name)) != 0) {
    std::printf("getlogin_r failed.\n");
    return;
  }
  if (target != nullptr) std::memcpy(target, name, std::strlen(name) + 1);
}

}  // namespace vsm
