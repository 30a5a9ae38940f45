#include "support/base64.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <typeinfo>

namespace vsm {

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr uint8_t kInvalid = 254;
constexpr uint8_t kPadding = 255;

// Character to value: 0 to 63 for the alphabet, 255 for `=`, 254 for anything else; bit 7 of
// the character is ignored.
constexpr std::array<uint8_t, 256> DecodingTable() {
  std::array<uint8_t, 256> table{};
  for (auto& entry : table) entry = kInvalid;
  for (int value = 0; value < 64; ++value) {
    const auto c = static_cast<uint8_t>(kAlphabet[value]);
    table[c] = static_cast<uint8_t>(value);
    table[c | 128] = static_cast<uint8_t>(value);
  }
  table['='] = kPadding;
  table['=' | 128] = kPadding;
  return table;
}

constexpr std::array<uint8_t, 256> kDecoding = DecodingTable();

// The value a place of a block gets: `=` becomes 0 where the decoder clears it.
constexpr uint8_t PlaceValue(uint8_t c, bool padsToZero) {
  return padsToZero && kDecoding[c] == kPadding ? 0 : kDecoding[c];
}

// The fast decoder's tables: each character's six bits already in their place of the 24-bit
// group, for a place that keeps `=` as 255 (masked to 63) and for one that clears it.
struct ShiftedValues {
  std::array<uint32_t, 256> keep[2];
  std::array<uint32_t, 256> clear[4];
};

constexpr ShiftedValues MakeShiftedValues() {
  ShiftedValues values{};
  for (int c = 0; c < 256; ++c) {
    const auto character = static_cast<uint8_t>(c);
    for (int place = 0; place < 4; ++place) {
      const int shift = 18 - 6 * place;
      if (place < 2) values.keep[place][c] = uint32_t{PlaceValue(character, false) & 63u} << shift;
      values.clear[place][c] = uint32_t{PlaceValue(character, true) & 63u} << shift;
    }
  }
  return values;
}

constexpr ShiftedValues kShifted = MakeShiftedValues();

// Twelve bits to their two characters, for the fast encoder.
constexpr std::array<std::array<char, 2>, 4096> PairTable() {
  std::array<std::array<char, 2>, 4096> table{};
  for (int bits = 0; bits < 4096; ++bits)
    table[bits] = {kAlphabet[bits >> 6], kAlphabet[bits & 63]};
  return table;
}

constexpr std::array<std::array<char, 2>, 4096> kPairs = PairTable();

constexpr std::array<uint8_t, 256> WhiteSpaceTable() {
  std::array<uint8_t, 256> table{};
  for (int c = 7; c <= 13; ++c) table[c] = 1;
  table[' '] = 1;
  return table;
}

constexpr std::array<uint8_t, 256> kWhiteSpace = WhiteSpaceTable();

// A reservation of `size` bytes: a new zeroed block when it exceeds the capacity.
int Reserve(uint32_t size, uint8_t** buffer, uint32_t* capacity, uint32_t* length) {
  *length = 0;
  if (size <= *capacity) return 1;
  std::free(*buffer);
  *buffer = nullptr;
  *capacity = 0;
  const uint64_t wanted = uint64_t{size & ~0xfffu} + 4096;
  if (wanted > UINT32_MAX) return 0;
  *buffer = static_cast<uint8_t*>(std::calloc(wanted, 1));
  if (*buffer == nullptr) return 0;
  *capacity = static_cast<uint32_t>(wanted);
  return 1;
}

void WriteGroup(uint32_t group, uint8_t* target) {
  target[0] = static_cast<uint8_t>(group >> 16);
  target[1] = static_cast<uint8_t>(group >> 8);
  target[2] = static_cast<uint8_t>(group);
}

}  // namespace

CBase64::CBase64()
    : plainBuffer_(nullptr),
      textBuffer_(nullptr),
      plainCapacity_(0),
      textCapacity_(0),
      plainLength_(0),
      textLength_(0) {}

CBase64::~CBase64() {
  std::free(plainBuffer_);
  std::free(textBuffer_);
  for (uint8_t* block : lostBlocks_) std::free(block);
}

// Only an object of this very class is known to run these steps; a subclass gets them called.
bool CBase64::HasOwnSteps() const { return typeid(*this) == typeid(CBase64); }

uint32_t CBase64::Encode(const uint8_t* data, uint32_t size) {
  if (data == nullptr) size = 0;
  if (plainBuffer_ != nullptr) lostBlocks_.push_back(plainBuffer_);
  plainBuffer_ = const_cast<uint8_t*>(data);
  plainLength_ = size;
  // Cleared on every way out, so that the destructor never frees the caller's data.
  struct ClearPlain {
    CBase64* codec;
    ~ClearPlain() {
      codec->plainBuffer_ = nullptr;
      codec->plainLength_ = 0;
    }
  } clearPlain{this};
  const double reservation = std::ceil(size / 3.0) * 4.0;
  if (reservation > UINT32_MAX) {
    textLength_ = 0;
    return 0;
  }
  if (ReserveText(static_cast<uint32_t>(reservation)) == 0) return textLength_;
  if (HasOwnSteps()) {
    EncodeGroups(data, size);
    return textLength_;
  }
  uint32_t done = 0;
  for (; size - done >= 3; done += 3) {
    const Base64Block block{{data[done], data[done + 1], data[done + 2], 0}, 3};
    EncodeBlock(block, textBuffer_ + textLength_);
    textLength_ += 4;
  }
  if (size > done) {
    Base64Block block{{0, 0, 0, 0}, static_cast<uint8_t>(size - done)};
    std::memcpy(block.data, data + done, size - done);
    EncodeBlock(block, textBuffer_ + textLength_);
    textLength_ += 4;
  }
  return textLength_;
}

void CBase64::EncodeGroups(const uint8_t* data, uint32_t size) {
  char* out = textBuffer_ + textLength_;
  uint32_t done = 0;
  for (; size - done >= 3; done += 3, out += 4) {
    const uint32_t group =
        uint32_t{data[done]} << 16 | uint32_t{data[done + 1]} << 8 | data[done + 2];
    std::memcpy(out, kPairs[group >> 12].data(), 2);
    std::memcpy(out + 2, kPairs[group & 4095].data(), 2);
  }
  if (size > done) {
    const uint32_t rest = size - done;
    const uint32_t group =
        uint32_t{data[done]} << 16 | (rest == 2 ? uint32_t{data[done + 1]} << 8 : 0);
    out[0] = kAlphabet[group >> 18];
    out[1] = kAlphabet[group >> 12 & 63];
    out[2] = rest == 2 ? kAlphabet[group >> 6 & 63] : '=';
    out[3] = '=';
    out += 4;
  }
  textLength_ = static_cast<uint32_t>(out - textBuffer_);
}

uint32_t CBase64::Decode(const char* text, uint32_t size) {
  if (text == nullptr) size = 0;
  const bool ownSteps = HasOwnSteps();
  uint32_t padding = 0;
  if (ownSteps) {
    padding = FilterAndCount(text, size);
  } else {
    FilterText(text, size);
    padding = static_cast<uint32_t>(std::count(text, text + size, '='));
  }
  if (ReservePlain(size) == 0) return plainLength_;
  if (ownSteps) {
    DecodeGroups();
  } else {
    const auto* characters = reinterpret_cast<const uint8_t*>(textBuffer_);
    uint32_t done = 0;
    for (; textLength_ - done >= 4; done += 4) {
      Base64Block block{
          {PlaceValue(characters[done], false), PlaceValue(characters[done + 1], false),
           PlaceValue(characters[done + 2], true), PlaceValue(characters[done + 3], true)},
          4};
      DecodeBlock(block, plainBuffer_ + plainLength_);
      plainLength_ += 3;
    }
    if (textLength_ > done) {
      const uint32_t rest = textLength_ - done;
      Base64Block block{{0, 0, 0, 0}, static_cast<uint8_t>(rest)};
      for (uint32_t i = 0; i < rest; ++i) block.data[i] = PlaceValue(characters[done + i], true);
      DecodeBlock(block, plainBuffer_ + plainLength_);
      plainLength_ += rest;
    }
  }
  plainLength_ -= std::min(padding, plainLength_);
  return plainLength_;
}

uint32_t CBase64::FilterAndCount(const char* text, uint32_t size) {
  if (ReserveText(size) == 0) return static_cast<uint32_t>(std::count(text, text + size, '='));
  const auto* in = reinterpret_cast<const uint8_t*>(text);
  char* out = textBuffer_;
  uint32_t kept = 0;
  uint32_t padding = 0;
  uint32_t i = 0;
  const auto keep = [&](uint8_t c) {
    out[kept] = static_cast<char>(c);
    kept += 1 - kWhiteSpace[c];
    padding += c == '=';
  };
  // Eight characters at once when none of them is white space or `=`: no byte below 14, none
  // equal to 32 or 61 (the usual tests for a zero byte in a word; they never miss one).
  constexpr uint64_t kOnes = 0x0101010101010101ull;
  constexpr uint64_t kHighs = 0x8080808080808080ull;
  for (; size - i >= 8; i += 8) {
    uint64_t word;
    std::memcpy(&word, in + i, 8);
    const uint64_t blank = word ^ (kOnes * ' ');
    const uint64_t pad = word ^ (kOnes * '=');
    const uint64_t special =
        ((word - kOnes * 14) & ~word) | ((blank - kOnes) & ~blank) | ((pad - kOnes) & ~pad);
    if ((special & kHighs) == 0) {
      std::memcpy(out + kept, &word, 8);
      kept += 8;
    } else {
      for (uint32_t k = 0; k < 8; ++k) keep(in[i + k]);
    }
  }
  for (; i < size; ++i) keep(in[i]);
  textLength_ = kept;
  return padding;
}

void CBase64::DecodeGroups() {
  const auto* in = reinterpret_cast<const uint8_t*>(textBuffer_);
  uint8_t* out = plainBuffer_ + plainLength_;
  const uint32_t groups = textLength_ / 4;
  for (uint32_t g = 0; g < groups; ++g, in += 4, out += 3) {
    WriteGroup(kShifted.keep[0][in[0]] | kShifted.keep[1][in[1]] | kShifted.clear[2][in[2]] |
                   kShifted.clear[3][in[3]],
               out);
  }
  const uint32_t rest = textLength_ % 4;
  if (rest > 0) {
    uint32_t group = 0;
    for (uint32_t i = 0; i < rest; ++i) group |= kShifted.clear[i][in[i]];
    WriteGroup(group, out);
  }
  plainLength_ += 3 * groups + rest;
}

uint32_t CBase64::EncodeString(const char* text) {
  return text == nullptr ? 0 : Encode(reinterpret_cast<const uint8_t*>(text), std::strlen(text));
}

uint32_t CBase64::DecodeString(const char* text) {
  return text == nullptr ? 0 : Decode(text, std::strlen(text));
}

uint8_t* CBase64::GetPlain(uint32_t* size) {
  if (size != nullptr) *size = plainLength_;
  return plainBuffer_;
}

uint8_t* CBase64::GetPlainBuffer() { return plainBuffer_; }

char* CBase64::GetTextBuffer() { return textBuffer_; }

int CBase64::ReserveText(uint32_t size) {
  uint8_t* buffer = reinterpret_cast<uint8_t*>(textBuffer_);
  const int reserved = Reserve(size, &buffer, &textCapacity_, &textLength_);
  textBuffer_ = reinterpret_cast<char*>(buffer);
  return reserved;
}

int CBase64::ReservePlain(uint32_t size) {
  return Reserve(size, &plainBuffer_, &plainCapacity_, &plainLength_);
}

void CBase64::FilterText(const char* text, uint32_t size) {
  if (ReserveText(size) == 0) return;
  for (uint32_t i = 0; i < size; ++i) {
    if (IsWhiteSpace(text[i]) == 0) textBuffer_[textLength_++] = text[i];
  }
}

void CBase64::SetPlain(const uint8_t* data, uint32_t size) {
  if (ReservePlain(size) == 0) return;
  if (size > 0) std::memcpy(plainBuffer_, data, size);
  plainLength_ = size;
}

void CBase64::EncodeBlock(const Base64Block& block, char* target) {
  uint8_t sextets[4];
  SplitTriple(sextets, block.data);
  for (int i = 0; i < 4; ++i) target[i] = kAlphabet[sextets[i] & 63];
  if (block.count == 1) target[2] = '=';
  if (block.count == 1 || block.count == 2) target[3] = '=';
}

int CBase64::DecodeBlock(const Base64Block& block, uint8_t* target) {
  uint8_t bytes[3];
  JoinQuad(bytes, block.data);
  std::memcpy(target, bytes, 3);
  int below = 0;
  for (uint8_t value : block.data) below += value < kPadding;
  return below;
}

void CBase64::SplitTriple(uint8_t* sextets, const uint8_t* bytes) {
  sextets[0] = static_cast<uint8_t>(bytes[0] >> 2);
  sextets[1] = static_cast<uint8_t>((bytes[0] & 3) << 4 | bytes[1] >> 4);
  sextets[2] = static_cast<uint8_t>((bytes[1] & 15) << 2 | bytes[2] >> 6);
  sextets[3] = static_cast<uint8_t>(bytes[2] & 63);
}

void CBase64::JoinQuad(uint8_t* bytes, const uint8_t* sextets) {
  const uint32_t group = uint32_t{sextets[0] & 63u} << 18 | uint32_t{sextets[1] & 63u} << 12 |
                         uint32_t{sextets[2] & 63u} << 6 | (sextets[3] & 63u);
  WriteGroup(group, bytes);
}

int CBase64::IsWhiteSpace(char character) { return kWhiteSpace[static_cast<uint8_t>(character)]; }

}  // namespace vsm
