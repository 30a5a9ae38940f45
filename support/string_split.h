// Splitting a text at a delimiter character.
//
// One rule serves every form: the pieces between delimiters are kept, empty ones included, and a
// piece behind the last delimiter is added only when something follows it. So "a,,b," gives "a",
// "" and "b", and the empty text gives no piece at all. Thread-safe; no state.
#ifndef VSM_SUPPORT_STRING_SPLIT_H_
#define VSM_SUPPORT_STRING_SPLIT_H_

#include <cstdint>
#include <string>
#include <vector>

namespace vsm {

std::vector<std::string> SplitString(const std::string& text, char delimiter);
// A null text gives an empty vector.
std::vector<std::string> SplitString(const char* text, char delimiter);

// The number of delimiters, plus 1 unless the text ends with the delimiter; the empty text and
// null give 0. This is the number of pieces SplitString gives.
int32_t CountParts(const char* text, char delimiter);

}  // namespace vsm

#endif  // VSM_SUPPORT_STRING_SPLIT_H_
