// Prefix and suffix tests on string objects, and narrow/wide conversion through the C library.
//
// EndsWith and StartsWith compare bytes, in three forms for the second text: a string object, a
// pointer with a length, and a zero-terminated pointer. An `other` longer than `text` gives
// false, an empty one true, a null pointer false. Thread-safe; no state.
#ifndef VSM_SUPPORT_STRING_AFFIX_H_
#define VSM_SUPPORT_STRING_AFFIX_H_

#include <cstddef>
#include <string>

namespace vsm {

bool EndsWith(const std::string& text, const std::string& other);
bool EndsWith(const std::string& text, const char* other, size_t length);
bool EndsWith(const std::string& text, const char* other);
bool StartsWith(const std::string& text, const std::string& other);
bool StartsWith(const std::string& text, const char* other, size_t length);
bool StartsWith(const std::string& text, const char* other);

// mbstowcs / wcstombs in the current C locale, into a string of the source's element count.
// Deliberately sized by the source and not by what was converted: where the conversion gives
// fewer elements, the rest of the result is zero elements, and a failed conversion gives only
// zero elements. Callers pass ASCII, for which both sizes agree.
std::wstring NarrowToWide(const std::string& text);
std::string WideToNarrow(const std::wstring& text);

}  // namespace vsm

#endif  // VSM_SUPPORT_STRING_AFFIX_H_
