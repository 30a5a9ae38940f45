#include "kit_command.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace vsmkit {

void ExpectCount(const Arguments& arguments, size_t count) { ExpectCount(arguments, count, count); }

void ExpectCount(const Arguments& arguments, size_t least, size_t most) {
  if (arguments.size() < least || arguments.size() > most) {
    throw UsageError(arguments.size() < least ? "too few arguments" : "too many arguments");
  }
}

int64_t ParseDecimal(const std::string& text, const char* what, int64_t low, int64_t high) {
  char* end = nullptr;
  errno = 0;
  const long long value = strtoll(text.c_str(), &end, 10);
  if (text.empty() || *end != '\0' || errno == ERANGE || value < low || value > high) {
    throw UsageError(std::string(what) + ": not a number from " + std::to_string(low) + " to " +
                     std::to_string(high) + ": " + text);
  }
  return value;
}

double ParseReal(const std::string& text, const char* what) {
  char* end = nullptr;
  const double value = strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0') {
    throw UsageError(std::string(what) + ": not a number: " + text);
  }
  return value;
}

static int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::vector<uint8_t> ParseHexBytes(const std::string& text, const char* what) {
  if (text.size() % 2 != 0) throw UsageError(std::string(what) + ": odd number of hex digits");
  std::vector<uint8_t> bytes(text.size() / 2);
  for (size_t i = 0; i < bytes.size(); ++i) {
    const int high = HexDigit(text[2 * i]);
    const int low = HexDigit(text[2 * i + 1]);
    if (high < 0 || low < 0) throw UsageError(std::string(what) + ": not hex: " + text);
    bytes[i] = static_cast<uint8_t>(high << 4 | low);
  }
  return bytes;
}

uint32_t ParseHexWord(const std::string& text, const char* what) {
  if (text.size() != 8) throw UsageError(std::string(what) + ": expected 8 hex digits: " + text);
  uint32_t value = 0;
  for (char c : text) {
    const int digit = HexDigit(c);
    if (digit < 0) throw UsageError(std::string(what) + ": not hex: " + text);
    value = value << 4 | static_cast<uint32_t>(digit);
  }
  return value;
}

std::string ToLowerHex(const uint8_t* bytes, size_t length) {
  static const char kDigits[] = "0123456789abcdef";
  std::string text(length * 2, '0');
  for (size_t i = 0; i < length; ++i) {
    text[2 * i] = kDigits[bytes[i] >> 4];
    text[2 * i + 1] = kDigits[bytes[i] & 15];
  }
  return text;
}

std::string HexWord(uint32_t value) {
  char text[9];
  snprintf(text, sizeof text, "%08x", value);
  return text;
}

std::vector<uint8_t> ReadStandardInput() {
  std::vector<uint8_t> bytes;
  uint8_t chunk[65536];
  size_t got;
  while ((got = fread(chunk, 1, sizeof chunk, stdin)) > 0)
    bytes.insert(bytes.end(), chunk, chunk + got);
  if (ferror(stdin)) throw OperationFailed("cannot read standard input");
  return bytes;
}

void WriteStandardOutput(const void* bytes, size_t length) {
  if ((length > 0 && fwrite(bytes, 1, length, stdout) != length) || fflush(stdout) != 0) {
    throw OperationFailed("cannot write standard output");
  }
}

std::vector<uint8_t> ReadWholeFile(const std::string& path) {
  FILE* file = fopen(path.c_str(), "rb");
  if (file == nullptr) throw OperationFailed("cannot open " + path + ": " + strerror(errno));
  std::vector<uint8_t> bytes;
  uint8_t chunk[65536];
  size_t got;
  while ((got = fread(chunk, 1, sizeof chunk, file)) > 0)
    bytes.insert(bytes.end(), chunk, chunk + got);
  const bool failed = ferror(file) != 0;
  fclose(file);
  if (failed) throw OperationFailed("cannot read " + path);
  return bytes;
}

void WriteWholeFile(const std::string& path, const std::vector<uint8_t>& bytes) {
  FILE* file = fopen(path.c_str(), "wb");
  if (file == nullptr) throw OperationFailed("cannot create " + path + ": " + strerror(errno));
  const bool written = bytes.empty() || fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
  if (fclose(file) != 0 || !written) {
    remove(path.c_str());
    throw OperationFailed("cannot write " + path);
  }
}

}  // namespace vsmkit
