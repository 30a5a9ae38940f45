#include "bmp_file.h"

#include <cstring>

#include "kit_command.h"
#include "support/tracked_heap.h"

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
  const uint32_t compression = Word(dib + 16);
  const uint32_t colors = Word(dib + 32);
  if (Word(dib) != 40) throw refuse("only 40-byte DIB headers are read");
  if (bits != 1 && bits != 4 && bits != 8 && bits != 16 && bits != 24 && bits != 32) {
    throw refuse("not 1, 4, 8, 16, 24 or 32 bits");
  }
  const bool bitFields = compression == 3 && (bits == 16 || bits == 32);
  if (compression != 0 && !bitFields) throw refuse("compressed pixels");
  if (width < 1 || height < 1) throw refuse("not a bottom-up picture of at least one pixel");
  const uint64_t entries = colors != 0 ? colors : bits <= 8 ? 1u << bits : 0;
  if (entries > 256 || (bits <= 8 && entries > (1u << bits))) {
    throw refuse("more colours than the depth holds");
  }
  const uint64_t masks = bitFields ? 12 : 0;
  const uint64_t stride = (static_cast<uint64_t>(width) * bits + 31) / 32 * 4;
  const uint64_t rows = stride * static_cast<uint64_t>(height);
  const uint64_t offset = Word(file.data() + 10);
  const uint64_t tables = kFileHeaderSize + 40 + masks + 4 * entries;
  if (40 + masks + 4 * entries + rows > 0xFFFFFFFEull || file.size() < tables || offset < tables ||
      file.size() - offset < rows) {
    throw refuse("truncated");
  }
  std::vector<uint8_t> packed(file.begin() + kFileHeaderSize, file.begin() + tables);
  packed.insert(packed.end(), file.begin() + offset, file.begin() + offset + rows);
  return packed;
}

void LoadBmpImage(const std::string& path, vsm::CImage& image) {
  std::vector<uint8_t> dib = ReadBmpDib(path);
  const uint32_t bits = dib[14] | dib[15] << 8;
  if (bits == 16 && Word(&dib[16]) == 0) {
    // Plain 16-bit rows are 5-5-5: the same pixels as bit fields with these masks.
    dib[16] = 3;
    const uint8_t masks[12] = {0x00, 0x7C, 0, 0, 0xE0, 0x03, 0, 0, 0x1F, 0, 0, 0};
    dib.insert(dib.begin() + 40, masks, masks + 12);
  }
  void* block = vsm::TrackedAlloc(0, dib.size());
  if (block == nullptr) throw OperationFailed(path + ": no memory");
  std::memcpy(block, dib.data(), dib.size());
  if (Word(&dib[16]) == 3) {
    vsm::CImage normaliser;
    void* plain = normaliser.NormaliseDib(block);
    vsm::TrackedFree(block);
    if (plain == nullptr) throw OperationFailed(path + ": the kit can't normalise this picture");
    block = plain;
  }
  // The image adopts the block, or frees it when it refuses.
  image.AttachFlattened(block, false, false);
  if (!image.IsValid()) throw OperationFailed(path + ": the kit can't hold this picture");
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
