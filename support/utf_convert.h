// UTF-8 to UTF-16 and back, over wide strings.
//
// A wide string here has wchar_t (32-bit) elements, but what it holds is UTF-16: a character
// above 0xFFFF takes two elements, a high and a low surrogate. Both conversions produce and
// expect that layout. Failures give an empty or partial result, never an exception: utfcpp's
// exceptions stop here. Thread-safe; no state.
//
// No export of the module reaches this code: only the host name encoder (punycode.h) uses it.
#ifndef VSM_SUPPORT_UTF_CONVERT_H_
#define VSM_SUPPORT_UTF_CONVERT_H_

#include <cstddef>
#include <string>

namespace vsm {

// Decodes `length` bytes of UTF-8. Clean input is checked strictly and its units are appended
// to `output`. Input that the strict check refuses goes through a lenient decoder instead,
// which does not look for overlong forms, so that text from older encoders that wrote them
// still reads; its result replaces `output`. Surrogate values, values above 0x10FFFF, truncated
// sequences, stray continuation bytes and lead bytes above 0xF7 are refused by both, and leave
// `output` empty. (Callers pass an empty `output`, so appending and replacing read the same.)
// A null text with any length counts as empty.
void Utf8ToWide(const char* text, size_t length, std::wstring& output);

// Encodes a zero-terminated string of UTF-16 units as UTF-8 into `output`, replacing what it
// held. Only the low 16 bits of each element count. A lone or reversed surrogate stops the
// conversion: `output` then holds what was converted before the bad unit. Null or empty input
// gives an empty `output`.
void WideToUtf8(const wchar_t* units, std::string& output);

}  // namespace vsm

#endif  // VSM_SUPPORT_UTF_CONVERT_H_
