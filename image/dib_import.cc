// Packed DIB import: foreign blocks (bit fields, 16 and 32 bits, alpha) brought to the plain form
// the kit works on, and the checks that keep every read inside the block the tracked heap knows.
#include "image/dib_import.h"

#include <cstring>

#include "image/image.h"
#include "image/image_layout.h"
#include "image/pixel_walk.h"
#include "support/tracked_heap.h"

namespace vsm {

namespace {

uint32_t WordAt(const uint8_t* bytes) {
  uint32_t word;
  std::memcpy(&word, bytes, 4);
  return word;
}

// Dots per inch of a pixels-per-metre field, as GetXDpi reads one.
int32_t DpiOfField(int32_t field) {
  if (field < 1) return 96;
  return static_cast<int32_t>(static_cast<float>(field * 254.0 / 10000.0 + 0.5));
}

// value << count for a count of either sign; a shift past the word gives 0. Masks with more
// than eight bits a channel give negative counts, which shift the other way.
uint32_t ShiftBy(uint32_t value, int32_t count) {
  if (count >= 32 || count <= -32) return 0;
  return count >= 0 ? value << count : value >> -count;
}

// Rows of `length` bytes from `offset` of the block, in place when the block holds them all,
// else from a zero-padded copy (bytes past the block read as 0). Empty when no memory.
class BlockRows {
 public:
  BlockRows(const uint8_t* block, uint64_t size, uint64_t offset, uint64_t length) {
    if (offset <= size && length <= size - offset) {
      rows_ = block + offset;
      return;
    }
    copy_ = static_cast<uint8_t*>(TrackedAlloc(0, length));
    if (copy_ != nullptr) CopyFromBlock(copy_, block, size, offset, length);
    rows_ = copy_;
  }
  ~BlockRows() { TrackedFree(copy_); }
  BlockRows(const BlockRows&) = delete;
  BlockRows& operator=(const BlockRows&) = delete;
  const uint8_t* rows() const { return rows_; }

 private:
  const uint8_t* rows_ = nullptr;
  uint8_t* copy_ = nullptr;
};

}  // namespace

uint64_t HoldableDibSize(const void* dib) {
  const DibHeaderFields header = ReadDibHeader(dib);
  const uint32_t bits = header.bitCount;
  if (header.headerSize != kDibHeaderSize || header.width < 1 || header.height < 1 ||
      header.colorsUsed > 256) {
    return 0;
  }
  if (bits != 1 && bits != 4 && bits != 8 && bits != 16 && bits != 24 && bits != 32) return 0;
  const uint64_t colors = header.colorsUsed == 0 && bits <= 8 ? 1u << bits : header.colorsUsed;
  const uint64_t size = kDibHeaderSize + 4 * colors +
                        static_cast<uint64_t>(RowBytes(header.width, bits)) * header.height;
  return size <= 0xFFFFFFFEu ? size : 0;
}

bool TrackedDibFits(const void* dib) {
  const uint64_t known = TrackedSize(const_cast<void*>(dib));
  if (known != 0 && known < kDibHeaderSize) return false;
  const uint64_t size = HoldableDibSize(dib);
  return size != 0 && (known == 0 || size <= known);
}

uint8_t* CImage::NormaliseDib(const void* dib) {
  // Create doesn't release a block; an image that holds one would lose it.
  Destroy();
  const uint8_t* source = static_cast<const uint8_t*>(dib);
  const uint64_t blockSize = dib == nullptr ? 0 : TrackedSize(const_cast<void*>(dib));
  if (blockSize < kDibHeaderSize) {
    info_.lastError = kImageInvalid;
    return nullptr;
  }
  const uint32_t compression = WordAt(source + 16);
  if (compression != 0 && compression != 3) return nullptr;
  const DibHeaderFields header = ReadDibHeader(source);
  std::memcpy(&info_, source, kDibHeaderSize);
  if (Create(info_.width, info_.height, &info_, info_.bitCount) == nullptr) return nullptr;

  // The vertical resolution follows the horizontal one whenever the source gives one.
  const int32_t xField = static_cast<int32_t>(WordAt(source + 24));
  const int32_t yField = static_cast<int32_t>(WordAt(source + 28));
  SetXDpi(xField == 0 ? 96 : DpiOfField(xField));
  SetYDpi(yField == 0 ? 96 : DpiOfField(xField));
  std::memcpy(info_.dib, &info_, kDibHeaderSize);

  // A source with a colour table (always at 8 bits and below) names its length; the bit-field
  // pixels of a 16-bit source are looked for behind it.
  uint32_t count = header.colorsUsed;
  if (count == 0 && header.bitCount <= 8) count = 1u << header.bitCount;
  if (HasPalette()) {
    const uint32_t entries = count < info_.colorsUsed ? count : info_.colorsUsed;
    uint8_t* palette = info_.dib + kDibHeaderSize;
    CopyFromBlock(palette, source, blockSize, kDibHeaderSize, 4ull * entries);
    for (uint32_t i = 0; i < entries; ++i) palette[4 * i + 3] = 0;
  }

  const bool pixels = info_.width >= 1 && info_.height >= 1;
  if (compression == 3 && pixels) {
    const uint64_t masksAt = header.headerSize;
    uint8_t masks[12];
    CopyFromBlock(masks, source, blockSize, masksAt, 12);
    const uint32_t red = WordAt(masks), green = WordAt(masks + 4), blue = WordAt(masks + 8);
    const uint64_t width = static_cast<uint32_t>(info_.width);
    const uint64_t height = static_cast<uint32_t>(info_.height);
    if (header.bitCount == 16) {
      // The first pass decodes in place from behind the colour table; the second decodes from
      // right behind the masks, and its result stands.
      const uint64_t length = (width + 1) / 2 * 4 * height;
      CopyFromBlock(info_.bits, source, blockSize, masksAt + 12 + 4ull * (count & 0x3FFF), length);
      ExpandBitfields(info_.bits, red, green, blue, 16);
      BlockRows rows(source, blockSize, masksAt + 12, length);
      if (rows.rows() != nullptr) ExpandBitfields(rows.rows(), red, green, blue, 16);
    } else if (header.bitCount == 32) {
      BlockRows rows(source, blockSize, masksAt + 12, width * 4 * height);
      if (rows.rows() != nullptr) {
        ExpandBitfields(rows.rows(), red & 0xFFFF, green & 0xFFFF, blue & 0xFFFF, 32);
      }
    }
  } else if (compression == 0) {
    // The whole block, header included: a 16- or 32-bit source keeps its own header in a block
    // the size of a 24-bit picture.
    CopyFromBlock(info_.dib, source, blockSize, 0, info_.dibSize);
  }
  return Detach();
}

void CImage::ExpandBitfields(const uint8_t* source, uint32_t redMask, uint32_t greenMask,
                             uint32_t blueMask, uint32_t depth) {
  if (info_.bits == nullptr || info_.width < 1 || info_.height < 1) return;
  const int32_t width = info_.width, height = info_.height;
  if (depth == 16) {
    const int32_t r = __builtin_popcount(redMask & 0xFFFF);
    const int32_t g = __builtin_popcount(greenMask & 0xFFFF);
    const int32_t b = __builtin_popcount(blueMask & 0xFFFF);
    const size_t rowBytes = (static_cast<size_t>(width) + 1) / 2 * 4;
    for (int32_t y = height - 1; y >= 0; --y) {
      const uint8_t* from = source + static_cast<size_t>(y) * rowBytes;
      uint8_t* to = RowAt(info_, y);
      for (int32_t x = width - 1; x >= 0; --x) {
        const uint32_t p = from[2 * x] | from[2 * x + 1] << 8;
        to[3 * x] = static_cast<uint8_t>(ShiftBy(p & blueMask, 8 - b));
        to[3 * x + 1] = static_cast<uint8_t>(ShiftBy(p & greenMask, -(g + b - 8)));
        to[3 * x + 2] = static_cast<uint8_t>(ShiftBy(p & redMask, -(r + g + b - 8)));
      }
    }
  } else if (depth == 32) {
    const size_t rowBytes = static_cast<size_t>(width) * 4;
    for (int32_t y = height - 1; y >= 0; --y) {
      const uint8_t* from = source + static_cast<size_t>(y) * rowBytes;
      uint8_t* to = RowAt(info_, y);
      for (int32_t x = width - 1; x >= 0; --x) std::memmove(to + 3 * x, from + 4 * x, 3);
    }
  }
}

uint8_t* CImage::FlattenAlphaDib(const void* dib) {
  const uint64_t blockSize = dib == nullptr ? 0 : TrackedSize(const_cast<void*>(dib));
  if (blockSize < kDibHeaderSize) return nullptr;
  const uint8_t* source = static_cast<const uint8_t*>(dib);
  const DibHeaderFields fields = ReadDibHeader(source);
  if (fields.bitCount < 32) return const_cast<uint8_t*>(source);
  if (fields.width < 1 || fields.height < 1) return nullptr;
  const uint64_t width = static_cast<uint32_t>(fields.width);
  const uint64_t height = static_cast<uint32_t>(fields.height);
  const uint64_t stride = static_cast<uint64_t>(RowBytes(fields.width, 24));
  const uint64_t sourceStride = static_cast<uint64_t>(RowBytes(fields.width, fields.bitCount));
  // A block shorter than the rows its header claims isn't a picture to compose.
  if (kDibHeaderSize + stride * height > 0xFFFFFFFEu ||
      kDibHeaderSize + sourceStride * height > blockSize) {
    return nullptr;
  }
  // The source's header with 40 bytes, 24 bits and no colour table; compression and the pixel
  // array size stay as the source says.
  uint8_t header[kDibHeaderSize];
  std::memcpy(header, source, kDibHeaderSize);
  const uint32_t headerSize = kDibHeaderSize, colors = 0;
  const uint16_t bits = 24;
  std::memcpy(header, &headerSize, 4);
  std::memcpy(header + 14, &bits, 2);
  std::memcpy(header + 32, &colors, 4);
  const uint32_t size = DibSizeFromHeader(header);
  uint8_t* block = static_cast<uint8_t*>(TrackedAlloc(kTrackedZeroFill, size));
  if (block == nullptr) return nullptr;
  std::memcpy(block, header, kDibHeaderSize);
  for (uint64_t y = 0; y < height; ++y) {
    const uint8_t* from = source + kDibHeaderSize + y * sourceStride;
    uint8_t* to = block + kDibHeaderSize + y * stride;
    for (uint64_t x = 0; x < width; ++x, from += 4, to += 3) {
      const uint32_t alpha = from[3], white = (255 - alpha) * 255;
      for (int k = 0; k < 3; ++k) to[k] = static_cast<uint8_t>((white + from[k] * alpha) / 255);
    }
  }
  return block;
}

void CImage::AttachFlattened(void* dib, bool copy, bool external) {
  if (dib == nullptr) {
    Attach(nullptr, copy, external);
    return;
  }
  const bool handedOver = !copy && !external;
  uint8_t* flat = FlattenAlphaDib(dib);
  if (flat != nullptr && flat != dib) {
    Attach(flat, false, false);
    if (handedOver) TrackedFree(dib);
    return;
  }
  if (!TrackedDibFits(dib)) {
    Destroy();
    info_.lastError = kImageInvalid;
    if (handedOver) TrackedFree(dib);
    return;
  }
  Attach(dib, copy, external);
}

CImage::CImage(const void* dib, FlattenAlpha) : external_(false), info_() {
  AttachFlattened(const_cast<void*>(dib), true, false);
}

CImage::CImage(void* dib, bool copy, bool external) : external_(false), info_() {
  AttachFlattened(dib, copy, external);
}

}  // namespace vsm
