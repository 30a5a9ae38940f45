// Splitting a text at a delimiter character.
//
// One rule serves every form: the pieces between delimiters are kept, empty ones included, and a
// piece behind the last delimiter is added only when something follows it. So "a,,b," gives "a",
// "" and "b", and the empty text gives no piece at all. Thread-safe; no state of its own (the
// tracked heap behind SplitToArray has its own lock).
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

// A block of the tracked heap holding `count` pointers, each to a zero-terminated block of the
// tracked heap. Released with FreeArray.
typedef char** ArrayOfStrings;

// Splits into a new ArrayOfStrings stored in *array, with its piece count in *count; a null or
// empty text gives a null array and a count of 0. Result 1. When an allocation fails, what was
// made is released, *array becomes null and *count 0, and the result is 0 (also for null
// output pointers).
int SplitToArray(const char* text, char delimiter, ArrayOfStrings* array, int32_t* count);
// Frees the `count` pieces and the array; null does nothing.
void FreeArray(ArrayOfStrings array, int32_t count);

}  // namespace vsm

#endif  // VSM_SUPPORT_STRING_SPLIT_H_
