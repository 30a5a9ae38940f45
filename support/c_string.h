// Plain C-string helpers that work in place or into caller buffers.
//
// Contract: texts are zero-terminated and the buffers are the caller's. None of these helpers
// checks a buffer's size: callers pass 1024-byte buffers and text that fits, and an output that
// is too small is the caller's fault. A null text makes each helper do nothing (or give -1, 0 or
// an empty result) rather than crash. Lengths and indices are signed 32 bits; "not found" is -1.
// Searches run over the characters before the terminating zero, so a zero `ch` is never found.
// Thread-safe: no state, apart from the tracked heap behind DuplicateString.
#ifndef VSM_SUPPORT_C_STRING_H_
#define VSM_SUPPORT_C_STRING_H_

#include <cstdarg>
#include <cstddef>
#include <cstdint>

namespace vsm {

// Replaces every `from` by `to` in place; returns the length of the text before the call.
int32_t ReplaceChar(char* text, char from, char to);
// Removes every `ch` in place, closing the gaps.
void RemoveChar(char* text, char ch);
// Cuts all trailing `ch`.
void TrimRightChar(char* text, char ch);
// Cuts all trailing blanks.
void TrimRightSpaces(char* text);
// Removes blanks and tabs at both ends, in place.
void TrimBlanks(char* text);

// First index of `ch` at or after `start`; -1 when there is none, and also when `start` is
// negative or at or past the end.
int32_t IndexOfChar(const char* text, char ch, int32_t start);
// Last index of `ch`, or -1.
int32_t ReverseFindChar(const char* text, char ch);
// Copies at most `count` characters from `start`, and a terminating zero, to `output`. A
// negative `start` or `count`, or a `start` past the end, gives an empty output.
void Mid(const char* text, int32_t start, int32_t count, char* output);

// strncpy, then zeroes target[size - 1] when `size` is non-zero, so that the copy always ends in
// a zero. A null source copies nothing. Returns `target`.
char* SafeStringCopy(char* target, const char* source, size_t size);
// A copy of `text` in a new block of the tracked heap, freed with TrackedFree. Null for a null
// text or a failed allocation.
char* DuplicateString(const char* text);

// 1 when the first `count` bytes are equal; a count below 1 gives 1; otherwise 0.
int BytesEqual(const void* a, const void* b, int32_t count);
// Null gives 0; a count below 1 gives 1; otherwise 1 when the first `count` bytes are all
// decimal digits. Stops at the first non-digit, so it never reads past the terminating zero.
int IsAllDigits(const char* text, int32_t count);

// The length vsnprintf would produce for `format` and `arguments`, without writing anything;
// negative when the format can't be formatted. `arguments` is left usable for the caller.
int32_t FormatLength(const char* format, va_list arguments);

// strtoll in base 10; null gives 0.
int64_t TextToInt64(const char* text);
// strtod narrowed to single precision; null gives 0.
float TextToFloat(const char* text);

// getlogin_r with a 1024-byte buffer, copied to `target` (at least 1024 bytes) on success. On
// failure prints "getlogin_r failed.\n" on standard output and leaves `target` alone.
void GetLoginName(char* target);

}  // namespace vsm

#endif  // VSM_SUPPORT_C_STRING_H_
