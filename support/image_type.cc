#include "support/image_type.h"

#include <cstring>

namespace vsm {

namespace {

bool StartsWith(const uint8_t* bytes, uint32_t size, const char* magic, uint32_t magicLength) {
  return size >= magicLength && std::memcmp(bytes, magic, magicLength) == 0;
}

uint8_t UpperAscii(uint8_t ch) {
  return ch >= 'a' && ch <= 'z' ? static_cast<uint8_t>(ch - 32) : ch;
}

}  // namespace

int32_t DetectImageType(const uint8_t* bytes, uint32_t size) {
  if (bytes == nullptr || size < 4) return kImageUnknown;
  if (bytes[0] == 0xFF && bytes[1] == 0xD8) return kImageJpeg;
  if (StartsWith(bytes, size, "\x89PNG", 4)) return kImagePng;
  if (bytes[0] == 'B' && bytes[1] == 'M') return kImageBmp;
  if (StartsWith(bytes, size, "MM\x00\x2A", 4) || StartsWith(bytes, size, "II\x2A\x00", 4)) {
    return kImageTiff;
  }
  if (bytes[0] == '%' && UpperAscii(bytes[1]) == 'P' && UpperAscii(bytes[2]) == 'D' &&
      UpperAscii(bytes[3]) == 'F') {
    return kImagePdf;
  }
  if (StartsWith(bytes, size, "GIF87a", 6) || StartsWith(bytes, size, "GIF89a", 6)) {
    return kImageGif;
  }
  // Seven bytes have always been enough for this signature; with exactly seven the eighth,
  // which isn't there, is not looked at.
  if (size >= 7 && std::memcmp(bytes, "\x00\x00\x00\x0C\x6A\x50\x20\x20", size < 8 ? 7 : 8) == 0) {
    return kImageJpeg2000;
  }
  if (StartsWith(bytes, size, "\xFF\x4F\xFF\x51", 4)) return kImageJpeg2000;
  return kImageUnknown;
}

}  // namespace vsm
