// Parsing of command texts and JSON results.
//
// ParseJsonText reads a text with the grammar of JsonCpp's classic Json::Reader, which the
// protocol has always used: any JSON value at the root (not only objects), text after the first
// complete value ignored, comments tolerated, no trailing commas, no "+" before a number, no
// byte-order mark skipped, a NUL byte read as the end of the text. Member names are C strings,
// cut at their first NUL byte: "a\u0000b" names the member "a", and a later member of that name
// wins. Positive integers up to 2147483647 and all negative integers are stored as signed,
// larger positive ones as unsigned, and numbers beyond 64 bits as reals.
//
// Unlike the library's reader, it never throws: any failure, including nesting too deep to
// parse safely, makes the result false and leaves `root` null. The nesting limit counts the
// values on the deepest chain from the root: `[[1]]` has three. Text nested up to
// kMaxJsonNesting levels parses; one level more counts as text that does not parse. The limit
// keeps the recursion of parsing, copying, writing and destroying a command inside a thread's
// stack (measured at the limit: about 700 KB in an optimised build, 4 to 8 MB under
// AddressSanitizer, against the 8 MB a thread gets by default), while commands nested far
// deeper than any page sends (1,500 levels) still work.
//
// Thread-safe.
#ifndef VSM_PROTOCOL_JSON_READER_H_
#define VSM_PROTOCOL_JSON_READER_H_

#include <json/value.h>

#include <string>

namespace vsm {

constexpr int kMaxJsonNesting = 2000;

// Parses `text` into `root`. With `collectComments`, comments are kept on the values they
// belong to and written out again by the styled writer. Returns whether the text parsed.
bool ParseJsonText(const std::string& text, Json::Value* root, bool collectComments);

}  // namespace vsm

#endif  // VSM_PROTOCOL_JSON_READER_H_
