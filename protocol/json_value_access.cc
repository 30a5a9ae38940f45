#include "protocol/json_value_access.h"

#include <cstring>

namespace vsm {

std::string StrictString(const Json::Value& v) {
  switch (v.type()) {
    case Json::stringValue: {
      const char* begin = nullptr;
      const char* end = nullptr;
      if (!v.getString(&begin, &end) || begin == nullptr) return std::string();
      const void* nul = std::memchr(begin, '\0', static_cast<size_t>(end - begin));
      return std::string(begin, nul ? static_cast<const char*>(nul) : end);
    }
    case Json::booleanValue:
      return v.asBool() ? "true" : "false";
    default:
      return std::string();
  }
}

std::vector<std::string> MemberNames(const Json::Value& v) {
  if (v.type() != Json::objectValue) return {};
  return v.getMemberNames();
}

const Json::Value* FindMember(const Json::Value& v, const std::string& key) {
  if (v.type() != Json::objectValue) return nullptr;
  return v.find(key.data(), key.data() + key.size());
}

int32_t CutToInt32(double d) {
  // cvttsd2si answers INT32_MIN for anything it can't represent.
  if (!(d > -2147483649.0 && d < 2147483648.0)) return INT32_MIN;
  return static_cast<int32_t>(d);
}

uint32_t CutToUInt32(double d) {
  // A double goes to an unsigned 32-bit value through the 64-bit signed conversion.
  if (!(d >= -9223372036854775808.0 && d < 9223372036854775808.0)) return 0;
  return static_cast<uint32_t>(static_cast<uint64_t>(static_cast<int64_t>(d)));
}

int64_t NumberAsInt64(const Json::Value& v) {
  switch (v.type()) {
    case Json::intValue:
      return v.asLargestInt();
    case Json::uintValue:
      return static_cast<int64_t>(v.asLargestUInt());
    case Json::realValue: {
      double d = v.asDouble();
      if (!(d >= -9223372036854775808.0 && d < 9223372036854775808.0)) return INT64_MIN;
      return static_cast<int64_t>(d);
    }
    default:
      return 0;
  }
}

int32_t NumberAsInt32(const Json::Value& v) {
  if (v.type() == Json::realValue) return CutToInt32(v.asDouble());
  return static_cast<int32_t>(static_cast<uint32_t>(NumberAsInt64(v)));
}

uint32_t NumberAsUInt32(const Json::Value& v) {
  if (v.type() == Json::realValue) return CutToUInt32(v.asDouble());
  return static_cast<uint32_t>(NumberAsInt64(v));
}

double NumberAsDouble(const Json::Value& v) {
  switch (v.type()) {
    case Json::intValue:
      return static_cast<double>(v.asLargestInt());
    case Json::uintValue:
      return static_cast<double>(v.asLargestUInt());
    case Json::realValue:
      return v.asDouble();
    default:
      return 0.0;
  }
}

}  // namespace vsm
