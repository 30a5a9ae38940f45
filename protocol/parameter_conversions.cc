#include "protocol/parameter_conversions.h"

#include <strings.h>

#include <cfloat>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "protocol/json_value_access.h"
#include "protocol/styled_writer.h"

namespace vsm {

namespace {

constexpr size_t kNumberBuffer = 256;

std::string FormatNumber(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string FormatNumber(const char* format, ...) {
  char buffer[kNumberBuffer];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(buffer, sizeof(buffer), format, arguments);
  va_end(arguments);
  return buffer;
}

long TextToLong(const Json::Value& value) {
  return std::strtol(StrictString(value).c_str(), nullptr, 10);
}

double TextToDouble(const Json::Value& value) {
  return std::strtod(StrictString(value).c_str(), nullptr);
}

bool IsTrueText(const Json::Value& value) {
  return strcasecmp(StrictString(value).c_str(), "true") == 0;
}

// A double narrowed to float the way the hardware does it: out of range gives an infinity.
float Narrow(double d) {
  if (std::isfinite(d) && std::fabs(d) > FLT_MAX) {
    return d > 0 ? std::numeric_limits<float>::infinity() : -std::numeric_limits<float>::infinity();
  }
  return static_cast<float>(d);
}

bool IsNumber(const Json::Value& value) {
  return IsIntValue(value) || IsUIntValue(value) || IsRealValue(value);
}

// The shape the Value... numbers share: a text through `fromText`, a boolean as 1 or 0, a number
// through `fromNumber`, anything else (and a null pointer) 0.
template <typename T, typename FromText, typename FromNumber>
T NumberOf(const Json::Value* value, FromText fromText, FromNumber fromNumber) {
  if (value == nullptr) return T(0);
  switch (value->type()) {
    case Json::stringValue:
      return static_cast<T>(fromText(*value));
    case Json::booleanValue:
      return value->asBool() ? T(1) : T(0);
    case Json::realValue:
    case Json::intValue:
    case Json::uintValue:
      return static_cast<T>(fromNumber(*value));
    default:
      return T(0);
  }
}

// The shape ReadShort, ReadUInt and ReadDouble share: texts and numbers are accepted; anything
// else, booleans included, stores `fallback` and gives false.
template <typename T, typename FromText, typename FromNumber>
bool ReadNumber(const Json::Value* value, T* out, T fallback, FromText fromText,
                FromNumber fromNumber) {
  if (out == nullptr) return false;
  if (value != nullptr && (IsStringValue(*value) || IsNumber(*value))) {
    *out = static_cast<T>(IsStringValue(*value) ? fromText(*value) : fromNumber(*value));
    return true;
  }
  *out = fallback;
  return false;
}

}  // namespace

bool ValueText(const Json::Value* value, std::string* out) {
  if (out == nullptr) return false;
  if (value == nullptr) {
    out->clear();
    return false;
  }
  switch (value->type()) {
    case Json::stringValue:
    case Json::booleanValue:
      *out = StrictString(*value);
      return true;
    case Json::realValue:
      *out = FormatNumber("%lf", value->asDouble());
      return true;
    case Json::intValue:
      *out = FormatNumber("%d", NumberAsInt32(*value));
      return true;
    case Json::uintValue:
      *out = FormatNumber("%u", NumberAsUInt32(*value));
      return true;
    case Json::arrayValue:
    case Json::nullValue:
      // Null counts as an array here, so it reads as its JSON text, not as a word.
      *out = StyledWrite(*value);
      return true;
    case Json::objectValue:
      out->clear();
      return false;
  }
  return false;
}

std::string ValueString(const Json::Value* value) {
  std::string text;
  ValueText(value, &text);
  return text;
}

bool ValueCString(const Json::Value* value, std::string* out) {
  if (out == nullptr) return false;
  std::string text;
  if (!ValueText(value, &text)) return false;
  *out = text.c_str();
  return true;
}

int16_t ValueShort(const Json::Value* value) {
  return NumberOf<int16_t>(
      value, [](const Json::Value& v) { return static_cast<int16_t>(TextToLong(v)); },
      [](const Json::Value& v) { return static_cast<int16_t>(NumberAsInt32(v)); });
}

bool ReadShort(const Json::Value* value, uint16_t* out) {
  return ReadNumber<uint16_t>(
      value, out, 65535, [](const Json::Value& v) { return static_cast<uint16_t>(TextToLong(v)); },
      [](const Json::Value& v) { return static_cast<uint16_t>(NumberAsInt32(v)); });
}

int32_t ValueInt(const Json::Value* value) {
  return NumberOf<int32_t>(
      value, [](const Json::Value& v) { return static_cast<int32_t>(TextToLong(v)); },
      NumberAsInt32);
}

bool ReadInt(const Json::Value* value, int32_t* out) {
  if (out == nullptr) return false;
  if (value != nullptr) {
    if (IsIntValue(*value)) {
      *out = NumberAsInt32(*value);
      return true;
    }
    if (IsStringValue(*value)) {
      long number = TextToLong(*value);
      if (number != 0 || StrictString(*value) == "0") {
        *out = static_cast<int32_t>(number);
        return true;
      }
      *out = -1;
      return false;
    }
    if (IsRealValue(*value) || IsUIntValue(*value)) {
      *out = NumberAsInt32(*value);
      return true;
    }
  }
  *out = -1;
  return false;
}

int64_t ValueInt64(const Json::Value* value) {
  return std::strtoll(ValueString(value).c_str(), nullptr, 10);
}

uint32_t ValueUInt(const Json::Value* value) {
  return NumberOf<uint32_t>(
      value, [](const Json::Value& v) { return static_cast<uint32_t>(TextToLong(v)); },
      NumberAsUInt32);
}

bool ReadUInt(const Json::Value* value, uint32_t* out) {
  return ReadNumber<uint32_t>(
      value, out, 0, [](const Json::Value& v) { return static_cast<uint32_t>(TextToLong(v)); },
      NumberAsUInt32);
}

double ValueDouble(const Json::Value* value) {
  return NumberOf<double>(value, TextToDouble, NumberAsDouble);
}

bool ReadDouble(const Json::Value* value, double* out) {
  return ReadNumber<double>(value, out, 0.0, TextToDouble, NumberAsDouble);
}

float ValueFloat(const Json::Value* value) { return Narrow(ValueDouble(value)); }

bool ReadFloat(const Json::Value* value, float* out) {
  if (out == nullptr) return false;
  double number = 0.0;
  bool accepted = ReadDouble(value, &number);
  *out = Narrow(number);
  return accepted;
}

bool ValueBool(const Json::Value* value) {
  if (value == nullptr) return false;
  switch (value->type()) {
    case Json::stringValue:
      return IsTrueText(*value);
    case Json::booleanValue:
      return value->asBool();
    case Json::realValue:
      return CutToInt32(value->asDouble()) != 0;
    case Json::intValue:
    case Json::uintValue:
      return NumberAsInt64(*value) != 0;
    default:
      return false;
  }
}

bool ReadBool(const Json::Value* value, bool* out) {
  if (out == nullptr || value == nullptr) return false;
  switch (value->type()) {
    case Json::stringValue:
      return IsTrueText(*value);
    case Json::booleanValue:
      *out = value->asBool();
      return true;
    case Json::realValue:
      *out = CutToInt32(value->asDouble()) != 0;
      return true;
    case Json::intValue:
    case Json::uintValue:
      *out = NumberAsInt64(*value) != 0;
      return true;
    case Json::nullValue:
      *out = false;
      return true;
    default:
      return false;
  }
}

bool ReadChar(const Json::Value* value, char* out) {
  if (out == nullptr) return false;
  if (value != nullptr && IsStringValue(*value)) {
    *out = StrictString(*value).c_str()[0];
    return true;
  }
  if (value != nullptr && (IsIntValue(*value) || IsUIntValue(*value))) {
    *out = static_cast<char>(NumberAsInt64(*value) & 0xFF);
    return true;
  }
  *out = 0;
  return false;
}

bool ReadIntArray(const Json::Value* value, int32_t** out, int32_t* count) {
  if (out == nullptr || count == nullptr || value == nullptr) return false;
  *out = nullptr;
  *count = 0;
  switch (value->type()) {
    case Json::stringValue:
      *out = new int32_t[1]{static_cast<int32_t>(TextToLong(*value))};
      *count = 1;
      return true;
    case Json::intValue:
    case Json::uintValue:
      *out = new int32_t[1]{NumberAsInt32(*value)};
      *count = 1;
      return true;
    case Json::arrayValue:
    case Json::nullValue: {
      const Json::ArrayIndex size = value->size();
      *out = new int32_t[size]();
      *count = static_cast<int32_t>(size);
      for (Json::ArrayIndex i = 0; i < size; ++i) {
        const Json::Value& member = (*value)[i];
        if (IsIntValue(member)) {
          (*out)[i] = NumberAsInt32(member);
        } else if (IsStringValue(member)) {
          (*out)[i] = static_cast<int32_t>(TextToLong(member));
        } else {
          return false;
        }
      }
      return true;
    }
    default:
      return false;
  }
}

}  // namespace vsm
