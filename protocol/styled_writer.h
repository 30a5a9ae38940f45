// The styled JSON text of every answer and event.
//
// Clients read answers byte for byte, so this writer reproduces the layout the protocol has
// always had, independent of the JsonCpp version in use:
//   - an object opens with "{" and a line feed; each member stands on its own line, indented
//     by three blanks per level, as the quoted name, " : " and the value; members are separated
//     by "," at the line's end; "}" closes at the outer indent. Members come in ascending byte
//     order of their names.
//   - an array stands on one line as "[ a, b ]" when 3 * size < 74, no element is a non-empty
//     array or object, no element carries a comment, and 4 + 2 * (size - 1) + the elements'
//     text lengths < 74; otherwise it is spread over lines like an object's members.
//   - strings and member names are written as C strings, up to their first NUL byte; '"', '\\'
//     and \b \f \n \r \t get their short escapes, other bytes 0x01 to 0x1F become \u00XX with
//     upper-case hex digits, and every other byte (0x7F and all bytes from 0x80 on) stands as it
//     is, so text that is not UTF-8 goes out unchanged.
//   - reals are printed with "%#.16g" and then cut after the second character behind the last
//     non-zero digit when only digits stand between it and the point (1.5 -> 1.50, 2.0 -> 2.0,
//     1e20 -> 1.000000000000000e+20); integers are in decimal.
//   - comments that the value carries are written where they were.
// The whole text ends in a line feed. Thread-safe; no state between calls.
#ifndef VSM_PROTOCOL_STYLED_WRITER_H_
#define VSM_PROTOCOL_STYLED_WRITER_H_

#include <json/value.h>

#include <string>
#include <vector>

namespace vsm {

std::string StyledWrite(const Json::Value& root);
// The same text as StyledWrite gives for `root` with the value at `standIn` (a value inside
// `root`) replaced by an array of copies of `elements`, a null entry standing for null; but
// nothing is copied. Answers are written this way from values their request keeps.
std::string StyledWriteWithArray(const Json::Value& root, const Json::Value* standIn,
                                 const std::vector<Json::Value*>& elements);

// The pieces the writer uses, for callers that format single values the same way.
std::string FormatReal(double value);
std::string QuoteCString(const char* text);

}  // namespace vsm

#endif  // VSM_PROTOCOL_STYLED_WRITER_H_
