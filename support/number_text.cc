#include "support/number_text.h"

#include <cstring>

namespace vsm {

namespace {

bool IsDigit(char ch) { return ch >= '0' && ch <= '9'; }

// 32-bit two's-complement arithmetic that wraps instead of overflowing.
int32_t WrapMultiply(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}
int32_t WrapAdd(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

uint8_t HexDigitValue(char ch) {
  if (ch >= '1' && ch <= '9') return static_cast<uint8_t>(ch - '0');
  if (ch >= 'A' && ch <= 'F') return static_cast<uint8_t>(ch - 'A' + 10);
  return 0;
}

int UrlDigitValue(unsigned char ch) {
  if (ch < 'A') return ch - '0';
  if (ch >= 'a' && ch <= 'z') ch = static_cast<unsigned char>(ch - 32);
  return ch - 55;
}

}  // namespace

int32_t ParseInt(const char* text, int32_t count) {
  if (text == nullptr || count < 1) return 0;
  int32_t sign = 1;
  int32_t digits = 0;
  for (int32_t i = 0; i < count; ++i) {
    if (IsDigit(text[i])) {
      ++digits;
    } else if (digits > 0) {
      break;
    } else if (text[i] == '-') {
      sign = -sign;
    } else {
      return 0;
    }
  }
  if (digits == 0) return 0;
  int32_t scale = sign;
  for (int32_t i = 1; i < digits; ++i) scale = WrapMultiply(scale, 10);
  int32_t result = 0;
  for (int32_t i = 0; i < count; ++i) {
    if (IsDigit(text[i])) {
      result = WrapAdd(result, WrapMultiply(text[i] - '0', scale));
      scale /= 10;
    } else if (scale >= 0) {
      break;
    }
  }
  return result;
}

int32_t ParseIntString(const char* text) {
  if (text == nullptr) return 0;
  return ParseInt(text, static_cast<int32_t>(std::strlen(text)));
}

int32_t HexToBytes(const char* text, uint8_t* output) {
  if (text == nullptr) return 0;
  int32_t count = static_cast<int32_t>(std::strlen(text) / 2);
  if (output == nullptr) return count;
  for (int32_t i = 0; i < count; ++i) {
    output[i] =
        static_cast<uint8_t>(HexDigitValue(text[2 * i]) << 4 | HexDigitValue(text[2 * i + 1]));
  }
  return count;
}

int32_t BytesToHex(const uint8_t* data, int32_t count, char* output) {
  static const char kDigits[] = "0123456789ABCDEF";
  if (data == nullptr) return 0;
  if (count < 0) count = 0;
  if (output != nullptr) {
    for (int32_t i = 0; i < count; ++i) {
      output[2 * i] = kDigits[data[i] >> 4];
      output[2 * i + 1] = kDigits[data[i] & 0x0F];
    }
    output[2 * count] = '\0';
  }
  return count * 2 + 1;
}

void UrlDecode(const char* source, char* target) {
  if (source == nullptr || target == nullptr) return;
  const unsigned char* in = reinterpret_cast<const unsigned char*>(source);
  while (*in != '\0') {
    if (*in == '+') {
      *target++ = ' ';
      ++in;
    } else if (*in == '%') {
      *target++ = static_cast<char>(UrlDigitValue(in[1]) * 16 + UrlDigitValue(in[2]));
      in += 3;
    } else {
      *target++ = static_cast<char>(*in++);
    }
  }
  *target = '\0';
}

}  // namespace vsm
