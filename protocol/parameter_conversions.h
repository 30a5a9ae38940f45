// Typed reading of a command's parameters.
//
// Two forms stand side by side: Value... returns the value and has no failure; Read... writes
// through an out-pointer and returns whether the value's type is one it accepts. All take a
// pointer to the value; a null pointer gives 0, false or an empty text (and a null out-pointer
// makes a Read... return false). Types are the stored JSON types (see json_value_access.h).
// Texts are turned into numbers by strtol / strtod in base 10 with no end pointer, so a text
// that isn't a number gives 0; reals are cut toward zero; numbers narrow to their low bits.
// The order and set of accepted types differ from function to function on purpose: handlers
// and pages rely on each of them (ReadInt telling "0" from a word, ReadBool reporting the
// comparison for a string without storing it).
// Thread-safe; nothing here throws except on allocation failure.
#ifndef VSM_PROTOCOL_PARAMETER_CONVERSIONS_H_
#define VSM_PROTOCOL_PARAMETER_CONVERSIONS_H_

#include <json/value.h>

#include <cstdint>
#include <string>

namespace vsm {

// Text of a value: a string as it stands (up to a NUL), "true"/"false", a real by "%lf", an
// int by "%d", a uint by "%u" (numbers through a 256-byte buffer, so longer texts are cut to
// 255 characters), an array or null as its styled JSON text ("null" and a line feed for null),
// and "" with false for an object.
bool ValueText(const Json::Value* value, std::string* out);
std::string ValueString(const Json::Value* value);
// ValueText, then the text as a C string (up to its first NUL) when ValueText succeeded.
bool ValueCString(const Json::Value* value, std::string* out);

int16_t ValueShort(const Json::Value* value);
bool ReadShort(const Json::Value* value, uint16_t* out);  // 65535 and false when not accepted
int32_t ValueInt(const Json::Value* value);
// Int, then string, then real, then uint. A string is accepted when strtol gives non-zero or
// the text is exactly "0"; otherwise -1 and false. Other types: -1 and false.
bool ReadInt(const Json::Value* value, int32_t* out);
// Every type through ValueString, then strtoll.
int64_t ValueInt64(const Json::Value* value);
uint32_t ValueUInt(const Json::Value* value);
bool ReadUInt(const Json::Value* value, uint32_t* out);
double ValueDouble(const Json::Value* value);
bool ReadDouble(const Json::Value* value, double* out);
float ValueFloat(const Json::Value* value);
bool ReadFloat(const Json::Value* value, float* out);
// A string equal to "true" ignoring case; a bool; a number that isn't 0 (reals cut first).
bool ValueBool(const Json::Value* value);
// A string: returns whether it equals "true" ignoring case and does not write. A bool: stores
// it. A number: stores whether it is non-zero. Null: stores false. These return true; an array
// or object returns false and does not write.
bool ReadBool(const Json::Value* value, bool* out);
// A string's first byte (0 when empty); an integer's low byte. Others: 0 and false.
bool ReadChar(const Json::Value* value, char* out);

// A new int32_t array (the caller owns it and frees it with delete[]) in *out, its length in
// *count. A string gives one element by strtol, an int or uint one element, an array (or null)
// one element per member: int members as they are, string members by strtol. At the first
// member of any other type it returns false and leaves the array allocated and partly filled.
// An object or other scalar returns false with no array. Null out or count returns false.
bool ReadIntArray(const Json::Value* value, int32_t** out, int32_t* count);

}  // namespace vsm

#endif  // VSM_PROTOCOL_PARAMETER_CONVERSIONS_H_
