// The text kit: host names to their "xn--" form and the encoder under it, UTF-8 and UTF-16
// conversions, URL and hexadecimal decoding, number parsing, splitting, searching, the C-string
// helpers and the sniffing of image types.
//
// Input: a character (the delimiter, the character searched or removed), a small number (a
// start, a count, an output size), then the text. Properties checked beside the sanitizers:
// valid UTF-8 survives the round trip through UTF-16, and any UTF-16 comes out as valid UTF-8
// that reads back as a prefix of it; the encoder's output decodes to its input by the RFC's own
// decoder, whatever room the output had; the splitting forms agree; hexadecimal survives its
// round trip; a position the search reports holds the pattern.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_support.h"
#include "support/c_string.h"
#include "support/image_type.h"
#include "support/number_text.h"
#include "support/punycode.h"
#include "support/string_affix.h"
#include "support/string_split.h"
#include "support/text_search.h"
#include "support/tracked_heap.h"
#include "support/utf_convert.h"

namespace {

using vsm::fuzz::FuzzCheck;

// The C-string helpers work in the callers' 1024-byte buffers.
constexpr size_t kBufferSize = 1024;

// Shortest forms only, no surrogates, nothing above 0x10FFFF: what a strict decoder accepts.
bool IsStrictUtf8(const std::string& text) {
  for (size_t i = 0; i < text.size();) {
    const auto byte = [&](size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned lead = byte(i);
    size_t length = lead < 0x80 ? 1 : lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (length == 0 || lead > 0xF4 || i + length > text.size()) return false;
    unsigned value = length == 1 ? lead : lead & (0xFF >> (length + 1));
    for (size_t k = 1; k < length; ++k) {
      if ((byte(i + k) & 0xC0) != 0x80) return false;
      value = (value << 6) | (byte(i + k) & 0x3F);
    }
    const unsigned shortest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (value < shortest[length] || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) {
      return false;
    }
    i += length;
  }
  return true;
}

// UTF-16 units to code points, pairs joined; false for a lone surrogate.
bool CodePoints(const std::wstring& units, std::vector<uint32_t>* points) {
  for (size_t i = 0; i < units.size(); ++i) {
    uint32_t unit = static_cast<uint32_t>(units[i]);
    if (unit >= 0xDC00 && unit <= 0xDFFF) return false;
    if (unit >= 0xD800 && unit <= 0xDBFF) {
      if (i + 1 == units.size()) return false;
      uint32_t low = static_cast<uint32_t>(units[++i]);
      if (low < 0xDC00 || low > 0xDFFF) return false;
      unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
    }
    points->push_back(unit);
  }
  return true;
}

uint32_t Adapt(uint32_t delta, uint32_t points, bool first) {
  delta = first ? delta / 700 : delta / 2;
  delta += delta / points;
  uint32_t k = 0;
  for (; delta > 455; k += 36) delta /= 35;
  return k + 36 * delta / (delta + 38);
}

// The decoder of RFC 3492, section 6.2, as the oracle of the encoder.
bool PunycodeDecode(const std::string& encoded, std::vector<uint32_t>* points) {
  const size_t delimiter = encoded.rfind('-');
  const size_t basic = delimiter == std::string::npos ? 0 : delimiter;
  for (size_t j = 0; j < basic; ++j) points->push_back(static_cast<unsigned char>(encoded[j]));
  uint64_t n = 128, i = 0;
  uint32_t bias = 72;
  for (size_t in = basic > 0 ? basic + 1 : 0; in < encoded.size();) {
    const uint64_t oldI = i;
    uint64_t weight = 1;
    for (uint32_t k = 36;; k += 36) {
      if (in == encoded.size()) return false;
      const char c = encoded[in++];
      const uint32_t digit = c >= '0' && c <= '9'   ? c - '0' + 26
                             : c >= 'a' && c <= 'z' ? c - 'a'
                             : c >= 'A' && c <= 'Z' ? c - 'A'
                                                    : 36;
      if (digit == 36) return false;
      i += digit * weight;
      const uint32_t t = k <= bias ? 1 : k >= bias + 26 ? 26 : k - bias;
      if (i > 0xFFFFFFFF || digit < t) break;
      weight *= 36 - t;
    }
    const uint32_t count = static_cast<uint32_t>(points->size() + 1);
    if (i > 0xFFFFFFFF) return false;
    bias = Adapt(static_cast<uint32_t>(i - oldI), count, oldI == 0);
    n += i / count;
    i %= count;
    points->insert(points->begin() + static_cast<long>(i), static_cast<uint32_t>(n));
    ++i;
  }
  return true;
}

// The input's bytes taken two at a time as UTF-16 units, up to the first zero unit.
std::wstring Utf16Units(const std::string& bytes) {
  std::wstring units;
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const wchar_t unit =
        static_cast<unsigned char>(bytes[i]) | (static_cast<unsigned char>(bytes[i + 1]) << 8);
    if (unit == 0) break;
    units.push_back(unit);
  }
  return units;
}

void CheckUtf(const std::string& bytes) {
  std::wstring units;
  vsm::Utf8ToWide(bytes.data(), bytes.size(), units);
  if (IsStrictUtf8(bytes) && bytes.find('\0') == std::string::npos) {
    std::string back;
    vsm::WideToUtf8(units.c_str(), back);
    FuzzCheck(back == bytes, "valid UTF-8 comes back from UTF-16", bytes);
  }
  const std::wstring raw = Utf16Units(bytes);
  std::string encoded;
  vsm::WideToUtf8(raw.c_str(), encoded);
  FuzzCheck(IsStrictUtf8(encoded), "UTF-16 gives valid UTF-8", encoded);
  std::wstring decoded;
  vsm::Utf8ToWide(encoded.data(), encoded.size(), decoded);
  FuzzCheck(raw.compare(0, decoded.size(), decoded) == 0 && decoded.size() <= raw.size(),
            "UTF-16 reads back as a prefix of itself", bytes);
}

void CheckPunycode(const std::string& bytes, uint8_t room) {
  const std::wstring units = Utf16Units(bytes);
  std::vector<uint32_t> points;
  if (!CodePoints(units, &points)) return;
  std::string full(4096, '\0');
  uint32_t nonBasic = 0;
  const uint32_t length = vsm::PunycodeEncode(units.c_str(), vsm::kPunycodeZeroTerminated,
                                              full.data(), full.size(), nullptr, 0, &nonBasic);
  // Output that didn't fit is counted all the same.
  std::string cramped(room, '\0');
  uint32_t crampedNonBasic = 0;
  const uint32_t crampedLength =
      vsm::PunycodeEncode(units.c_str(), vsm::kPunycodeZeroTerminated, cramped.data(), room,
                          nullptr, 0, &crampedNonBasic);
  FuzzCheck(crampedLength == length && cramped == full.substr(0, room),
            "a short output gets the same bytes and length", bytes);
  if (length == 0 || length > full.size()) return;
  full.resize(length);
  if (nonBasic == 0) {
    FuzzCheck(full.size() == points.size(), "a basic label stays as it is", full);
    return;
  }
  std::vector<uint32_t> decoded;
  FuzzCheck(PunycodeDecode(full, &decoded) && decoded == points, "the encoding decodes", full);
}

void CheckHostName(const std::string& host) {
  const uint32_t size = vsm::HostNameToPunycode(host.c_str(), nullptr);
  if (size == 0) return;
  std::string output(size, '\xAA');
  const uint32_t length = vsm::HostNameToPunycode(host.c_str(), output.data());
  FuzzCheck(length + 1 == size && output[length] == '\0', "the size asked is the size used", host);
  bool ascii = true;
  for (unsigned char c : host) ascii = ascii && c < 0x80;
  if (!ascii) return;
  std::string expected = host;
  if (!expected.empty() && expected.back() == '.') expected.pop_back();
  FuzzCheck(output.compare(0, length, expected) == 0, "an ASCII host name stays as it is", host);
}

void CheckUrlDecode(const std::string& text) {
  // A '%' among the last two characters makes the decoder read past the terminating zero by
  // design; callers never pass one.
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') continue;
    if (i + 2 >= text.size()) return;
    i += 2;
  }
  std::string target(text.size() + 1, '\xAA');
  vsm::UrlDecode(text.c_str(), target.data());
}

void CheckSplitting(const std::string& text, char delimiter) {
  const std::vector<std::string> pieces = vsm::SplitString(text.c_str(), delimiter);
  FuzzCheck(pieces == vsm::SplitString(std::string(text.c_str()), delimiter),
            "both forms split alike", text);
  FuzzCheck(static_cast<size_t>(vsm::CountParts(text.c_str(), delimiter)) == pieces.size(),
            "CountParts counts the pieces", text);
  vsm::ArrayOfStrings array = nullptr;
  int32_t count = -1;
  FuzzCheck(vsm::SplitToArray(text.c_str(), delimiter, &array, &count) == 1 &&
                static_cast<size_t>(count) == pieces.size(),
            "SplitToArray makes the same pieces", text);
  for (int32_t i = 0; i < count; ++i) FuzzCheck(pieces[i] == array[i], "same piece", text);
  vsm::FreeArray(array, count);
  vsm::CountTextBlocks(text.c_str());
}

void CheckNumbers(const std::string& text, uint8_t number) {
  vsm::ParseIntString(text.c_str());
  vsm::ParseInt(text.c_str(), number);
  vsm::TextToInt64(text.c_str());
  vsm::TextToFloat(text.c_str());
  vsm::IsAllDigits(text.c_str(), number);
  std::vector<uint8_t> bytes(static_cast<size_t>(vsm::HexToBytes(text.c_str(), nullptr)));
  vsm::HexToBytes(text.c_str(), bytes.data());
  std::string hex(text.size() * 2 + 1, '\xAA');
  const auto* raw = reinterpret_cast<const uint8_t*>(text.data());
  const int32_t length = vsm::BytesToHex(raw, static_cast<int32_t>(text.size()), hex.data());
  FuzzCheck(length == static_cast<int32_t>(hex.size()), "BytesToHex tells its size", text);
  std::string back(text.size(), '\0');
  vsm::HexToBytes(hex.c_str(), reinterpret_cast<uint8_t*>(back.data()));
  FuzzCheck(back == text, "hexadecimal round trip", text);
}

bool SameIgnoringCase(char a, char b) {
  auto fold = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  return fold(a) == fold(b);
}

void CheckSearch(const std::string& text, uint8_t number) {
  // The pattern is the text's tail from `number` on, cut to at most 8 characters.
  const std::string haystack(text.c_str());
  const std::string pattern = haystack.substr(std::min<size_t>(number, haystack.size()), 8);
  for (bool caseSensitive : {true, false}) {
    const int32_t found = vsm::FindText(haystack.c_str(), pattern.c_str(), caseSensitive);
    if (found < 0) continue;
    FuzzCheck(static_cast<size_t>(found) + pattern.size() <= haystack.size(), "inside", text);
    for (size_t i = 0; i < pattern.size(); ++i) {
      const char a = haystack[found + i], b = pattern[i];
      FuzzCheck(caseSensitive ? a == b : SameIgnoringCase(a, b), "the match is there", text);
    }
  }
  vsm::FindInRange(haystack.c_str(), pattern.c_str(), number % 16,
                   static_cast<int32_t>(haystack.size()), false);
}

void CheckCStrings(const std::string& text, char ch, uint8_t number) {
  char buffer[kBufferSize] = {};
  char output[kBufferSize] = {};
  auto reload = [&] { vsm::SafeStringCopy(buffer, text.c_str(), sizeof(buffer)); };
  reload();
  const std::string original(buffer);
  vsm::RemoveChar(buffer, ch);
  std::string expected = original;
  if (ch != '\0') expected.erase(std::remove(expected.begin(), expected.end(), ch), expected.end());
  FuzzCheck(expected == buffer, "RemoveChar removes that character only", text);
  reload();
  vsm::ReplaceChar(buffer, ch, 'x');
  reload();
  vsm::TrimRightChar(buffer, ch);
  reload();
  vsm::TrimRightSpaces(buffer);
  reload();
  vsm::TrimBlanks(buffer);
  reload();
  vsm::IndexOfChar(buffer, ch, number);
  vsm::ReverseFindChar(buffer, ch);
  vsm::Mid(buffer, number % 32, number, output);
  vsm::BytesEqual(buffer, text.data(), std::min<int32_t>(number, text.size()));
  char* copy = vsm::DuplicateString(buffer);
  FuzzCheck(copy != nullptr && original == copy, "DuplicateString copies", text);
  vsm::TrackedFree(copy);
  vsm::EndsWith(text, original);
  vsm::StartsWith(text, original.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  const char ch = static_cast<char>(data[0]);
  const uint8_t number = data[1];
  const std::string text(reinterpret_cast<const char*>(data + 2), size - 2);
  CheckUtf(text);
  CheckPunycode(text, number);
  CheckHostName(text.c_str());
  CheckUrlDecode(text.c_str());
  CheckSplitting(text, ch);
  CheckNumbers(text, number);
  CheckSearch(text, number);
  CheckCStrings(text, ch, number);
  vsm::DetectImageType(reinterpret_cast<const uint8_t*>(text.data()),
                       static_cast<uint32_t>(text.size()));
  return 0;
}
