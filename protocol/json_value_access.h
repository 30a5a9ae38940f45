// Readings of a Json::Value in the protocol's own terms.
//
// The protocol was written against an older JsonCpp whose readings the clients depend on; the
// JsonCpp in use reads some values differently. Every place that asks a Json::Value what it is
// or what it holds goes through these helpers, so the protocol's readings hold whatever the
// library does:
//   - types are the stored type(), never the library's range-based isInt/isUInt/isDouble
//     (which call the real 2.0 an int and every number a double);
//   - "is an array" is also true for null;
//   - the text of a value is strict: a string gives its text up to its first NUL byte (strings
//     were C strings), a boolean "true" or "false", anything else an empty string;
//   - member names of a value that is not an object are none, not an exception;
//   - numbers narrow by cutting (reals toward zero, integers to their low bits), never by an
//     exception and never by undefined behaviour.
// None of these throws. All are thread-safe on values that no thread modifies.
#ifndef VSM_PROTOCOL_JSON_VALUE_ACCESS_H_
#define VSM_PROTOCOL_JSON_VALUE_ACCESS_H_

#include <json/value.h>

#include <cstdint>
#include <string>
#include <vector>

namespace vsm {

inline bool IsNullValue(const Json::Value& v) { return v.type() == Json::nullValue; }
inline bool IsBoolValue(const Json::Value& v) { return v.type() == Json::booleanValue; }
inline bool IsIntValue(const Json::Value& v) { return v.type() == Json::intValue; }
inline bool IsUIntValue(const Json::Value& v) { return v.type() == Json::uintValue; }
inline bool IsRealValue(const Json::Value& v) { return v.type() == Json::realValue; }
inline bool IsStringValue(const Json::Value& v) { return v.type() == Json::stringValue; }
inline bool IsObjectValue(const Json::Value& v) { return v.type() == Json::objectValue; }
// True for an array and for null.
inline bool IsArrayOrNull(const Json::Value& v) {
  return v.type() == Json::arrayValue || v.type() == Json::nullValue;
}

// A string's text up to its first NUL; "true"/"false" for a boolean; "" for anything else.
std::string StrictString(const Json::Value& v);

// The member names of an object in the library's (ascending byte) order; none for any other
// value.
std::vector<std::string> MemberNames(const Json::Value& v);

// The member `key` of an object, compared by exact bytes, or null when there is none or `v`
// is not an object.
const Json::Value* FindMember(const Json::Value& v, const std::string& key);

// Numbers as the old 32-bit readings saw them. Integers keep their low 32 (16, 8) bits; reals
// are cut toward zero. A real outside the range of the target (or NaN) gives the value the
// hardware conversion gives on x86-64: INT32_MIN for signed 32 bits, and for unsigned 32 bits
// the low bits of the 64-bit cut (0 outside the 64-bit range). Non-numbers give 0.
int64_t NumberAsInt64(const Json::Value& v);
int32_t NumberAsInt32(const Json::Value& v);
uint32_t NumberAsUInt32(const Json::Value& v);
double NumberAsDouble(const Json::Value& v);

// The cuts themselves, for text that strtod has turned into a double.
int32_t CutToInt32(double d);
uint32_t CutToUInt32(double d);

}  // namespace vsm

#endif  // VSM_PROTOCOL_JSON_VALUE_ACCESS_H_
