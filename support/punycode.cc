#include "support/punycode.h"

#include <cstring>
#include <string>

#include "support/mem_buffer.h"
#include "support/string_split.h"
#include "support/utf_convert.h"

namespace vsm {

namespace {

constexpr uint32_t kBase = 36;
constexpr uint32_t kTMin = 1;
constexpr uint32_t kTMax = 26;
constexpr uint32_t kSkew = 38;
constexpr uint32_t kDamp = 700;
constexpr uint32_t kInitialBias = 72;
constexpr uint32_t kInitialN = 128;
constexpr uint32_t kMaxInt = 0x7FFFFDFF;
constexpr uint32_t kMaxCodePoints = 512;
constexpr uint32_t kFlagBit = 0x80000000;
constexpr uint32_t kHostGrowBytes = 0x80000;
constexpr uint32_t kLabelBufferSize = 1024;

bool IsHighSurrogate(uint32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(uint32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

char EncodeDigit(uint32_t digit, bool upper) {
  if (digit < 26) return static_cast<char>((upper ? 'A' : 'a') + digit);
  return static_cast<char>('0' + (digit - 26));
}

char EncodeBasic(uint32_t codePoint, bool upper) {
  if (upper && codePoint >= 'a' && codePoint <= 'z') codePoint -= 32;
  if (!upper && codePoint >= 'A' && codePoint <= 'Z') codePoint += 32;
  return static_cast<char>(codePoint);
}

uint32_t Adapt(uint32_t delta, uint32_t numPoints, bool firstTime) {
  delta = firstTime ? delta / kDamp : delta >> 1;
  delta += delta / numPoints;
  uint32_t k = 0;
  while (delta > ((kBase - kTMin) * kTMax) / 2) {
    delta /= kBase - kTMin;
    k += kBase;
  }
  return k + (kBase - kTMin + 1) * delta / (delta + kSkew);
}

// Counts every byte, and stores those that fit: the caller learns the full length.
class OutputCounter {
 public:
  OutputCounter(char* output, uint32_t size) : output_(output), size_(size) {}
  void Put(char ch) {
    if (length_ < size_) output_[length_] = ch;
    ++length_;
  }
  uint32_t length() const { return length_; }

 private:
  char* output_;
  uint32_t size_;
  uint32_t length_ = 0;
};

// Encodes the labels into `text`; false when one of them fails.
bool EncodeLabels(ArrayOfStrings labels, int32_t count, CMemBuffer& text) {
  for (int32_t i = 0; i < count; ++i) {
    std::wstring wide;
    Utf8ToWide(labels[i], std::strlen(labels[i]), wide);
    if (wide.empty()) return false;
    char encoded[kLabelBufferSize] = {};
    uint32_t nonBasic = 0;
    uint32_t length = PunycodeEncode(wide.c_str(), kPunycodeZeroTerminated, encoded,
                                     sizeof(encoded), nullptr, 0, &nonBasic);
    if (length == 0) return false;
    if (length > sizeof(encoded)) length = sizeof(encoded);
    if (i > 0 && text.Write(".", 1) != 1) return false;
    if (nonBasic != 0 && text.WriteString("xn--") != 1) return false;
    if (text.Write(encoded, length) != length) return false;
  }
  return true;
}

}  // namespace

uint32_t PunycodeEncode(const wchar_t* input, uint32_t inputLength, char* output,
                        uint32_t outputSize, const uint8_t* caseFlags, int ignored,
                        uint32_t* nonBasicCount) {
  if (inputLength != kPunycodeZeroTerminated || input == nullptr) return 0;
  if (output == nullptr && outputSize != 0) return 0;
  if (nonBasicCount != nullptr) *nonBasicCount = 0;

  uint32_t entries[kMaxCodePoints];
  uint32_t count = 0;
  for (const wchar_t* unit = input; *unit != 0; ++unit) {
    uint32_t codePoint = static_cast<uint32_t>(*unit);
    if (IsHighSurrogate(codePoint)) {
      uint32_t low = static_cast<uint32_t>(unit[1]);
      if (!IsLowSurrogate(low)) return 0;
      codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (low - 0xDC00);
      ++unit;
    } else if (IsLowSurrogate(codePoint)) {
      return 0;
    }
    if (count == kMaxCodePoints) return 0;
    if (caseFlags != nullptr && caseFlags[count] != 0 && codePoint >= 0x80) codePoint |= kFlagBit;
    entries[count++] = codePoint;
  }

  OutputCounter out(output, outputSize);
  for (uint32_t j = 0; j < count; ++j) {
    if (entries[j] < 0x80) {
      uint32_t basic = entries[j];
      out.Put(caseFlags != nullptr ? EncodeBasic(basic, caseFlags[j] != 0)
                                   : static_cast<char>(basic));
    }
  }
  uint32_t basicCount = out.length();
  uint32_t h = basicCount;
  if (nonBasicCount != nullptr) *nonBasicCount = count - basicCount;
  if (count == basicCount) return basicCount;
  if (basicCount > 0) out.Put('-');

  uint32_t n = kInitialN;
  uint32_t delta = 0;
  uint32_t bias = kInitialBias;
  while (h < count) {
    uint32_t m = 0xFFFFFFFF;
    for (uint32_t j = 0; j < count; ++j) {
      uint32_t value = entries[j] & ~kFlagBit;
      if (value >= n && value < m) m = value;
    }
    // The first test keeps the subtraction below from wrapping; the second is the encoder's own.
    if (delta > kMaxInt || m - n > (kMaxInt - delta) / (h + 1)) return 0;
    delta += (m - n) * (h + 1);
    n = m;
    for (uint32_t j = 0; j < count; ++j) {
      uint32_t value = entries[j] & ~kFlagBit;
      if (value < n && ++delta == 0) return 0;
      if (value != n) continue;
      uint32_t q = delta;
      for (uint32_t k = kBase;; k += kBase) {
        uint32_t t = k <= bias ? kTMin : k >= bias + kTMax ? kTMax : k - bias;
        if (q < t) break;
        out.Put(EncodeDigit(t + (q - t) % (kBase - t), false));
        q = (q - t) / (kBase - t);
      }
      out.Put(EncodeDigit(q, (entries[j] & kFlagBit) != 0));
      bias = Adapt(delta, h + 1, h == basicCount);
      delta = 0;
      ++h;
    }
    ++delta;
    ++n;
  }
  return out.length();
}

uint32_t HostNameToPunycode(const char* host, char* output) {
  if (host == nullptr) return 0;
  ArrayOfStrings labels = nullptr;
  int32_t count = 0;
  if (SplitToArray(host, '.', &labels, &count) == 0) return 0;
  CMemBuffer text(kHostGrowBytes);
  bool encoded = EncodeLabels(labels, count, text);
  FreeArray(labels, count);
  if (!encoded) return 0;
  uint32_t length = text.GetLength();
  if (output == nullptr) return length + 1;
  if (length > 0) std::memcpy(output, text.buffer(), length);
  output[length] = '\0';
  return length;
}

}  // namespace vsm
