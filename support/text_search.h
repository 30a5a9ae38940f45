// Substring search in C strings, with or without regard to ASCII case.
//
// The search never steps back: after a partial match fails it goes on at the character that
// failed, not at the one after the partial match's start. So "aab" is not found in "aaab". This
// is deliberate and stays: callers have always received these positions. (For the blank-line
// separator "\r\n\r\n" that the request framing looks for, it finds what a full search finds.)
// Only A to Z are folded when the case doesn't matter. Thread-safe; no state.
#ifndef VSM_SUPPORT_TEXT_SEARCH_H_
#define VSM_SUPPORT_TEXT_SEARCH_H_

#include <cstdint>

namespace vsm {

// The index of the first match of `pattern` that starts in [start, end) and ends before `end`,
// or -1. An empty or null pattern, a null text, a negative start or start >= end give -1.
// `end` must not pass the text's terminating zero: that is the caller's contract.
int32_t FindInRange(const char* text, const char* pattern, int32_t start, int32_t end,
                    bool caseSensitive);
// FindInRange over the whole text.
int32_t FindText(const char* text, const char* pattern, bool caseSensitive);
// The number of blocks that "\r\n\r\n" separates, found ignoring case, with the splitting rule
// of CountParts: the separators, plus 1 unless the text ends with one; the empty text gives 0.
int32_t CountTextBlocks(const char* text);

}  // namespace vsm

#endif  // VSM_SUPPORT_TEXT_SEARCH_H_
