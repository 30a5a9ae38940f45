#include "bmp_file.h"

#include <cstring>

#include "kit_command.h"

namespace vsmkit {

namespace {

constexpr uint32_t kFileHeaderSize = 14;

uint32_t Word(const uint8_t* bytes) {
  return bytes[0] | bytes[1] << 8 | bytes[2] << 16 | static_cast<uint32_t>(bytes[3]) << 24;
}

void PutWord(uint8_t* bytes, uint32_t value) {
  for (int i = 0; i < 4; ++i) bytes[i] = static_cast<uint8_t>(value >> (8 * i));
}

}  // namespace

std::vector<uint8_t> ReadBmpDib(const std::string& path) {
  const std::vector<uint8_t> file = ReadWholeFile(path);
  auto refuse = [&path](const std::string& why) { return OperationFailed(path + ": " + why); };
  if (file.size() < kFileHeaderSize + 40 || file[0] != 'B' || file[1] != 'M') {
    throw refuse("not a BMP file");
  }
  const uint8_t* dib = file.data() + kFileHeaderSize;
  const int32_t width = static_cast<int32_t>(Word(dib + 4));
  const int32_t height = static_cast<int32_t>(Word(dib + 8));
  const uint32_t bits = dib[14] | dib[15] << 8;
  const uint32_t colors = Word(dib + 32);
  if (Word(dib) != 40) throw refuse("only 40-byte DIB headers are read");
  if (bits != 1 && bits != 4 && bits != 8 && bits != 24) throw refuse("not 1, 4, 8 or 24 bits");
  if (Word(dib + 16) != 0) throw refuse("compressed pixels");
  if (width < 1 || height < 1) throw refuse("not a bottom-up picture of at least one pixel");
  const uint64_t entries = colors != 0 ? colors : bits == 24 ? 0 : 1u << bits;
  if (entries > 256 || (bits < 24 && entries > (1u << bits))) {
    throw refuse("more colours than the depth holds");
  }
  const uint64_t stride = (static_cast<uint64_t>(width) * bits + 31) / 32 * 4;
  const uint64_t size = 40 + 4 * entries + stride * static_cast<uint64_t>(height);
  if (size > 0xFFFFFFFFull || file.size() - kFileHeaderSize < size) throw refuse("truncated");
  if (Word(file.data() + 10) != kFileHeaderSize + 40 + 4 * entries) {
    throw refuse("the pixels don't follow the palette");
  }
  return std::vector<uint8_t>(dib, dib + size);
}

void WriteBmpFile(const std::string& path, const uint8_t* dib, uint32_t size,
                  uint32_t pixelOffset) {
  std::vector<uint8_t> file(kFileHeaderSize + static_cast<size_t>(size));
  file[0] = 'B';
  file[1] = 'M';
  PutWord(&file[2], kFileHeaderSize + size);
  PutWord(&file[10], kFileHeaderSize + pixelOffset);
  std::memcpy(&file[kFileHeaderSize], dib, size);
  WriteWholeFile(path, file);
}

}  // namespace vsmkit
