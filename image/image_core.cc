// The life of an image's block, its header record, errors, resolutions, and the progress and
// cancel protocol of long operations.
#include <atomic>
#include <cstddef>
#include <cstring>
#include <typeinfo>

#include "image/image.h"
#include "image/image_layout.h"
#include "support/tracked_heap.h"

namespace vsm {

// The working header is copied to and from blocks as raw bytes, so the record must start with
// the 40 header bytes in their order, with no padding, on a little-endian machine.
static_assert(offsetof(ImageInfo, stride) == kDibHeaderSize, "header part of ImageInfo");
static_assert(offsetof(ImageInfo, colorsImportant) == 36, "header part of ImageInfo");
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "blocks are little-endian");

namespace {

// The four depths the kit makes: up to 1 gives 1, 2 to 4 give 4, 5 to 8 give 8, above 8 gives 24.
uint32_t LegalDepth(uint32_t bits) {
  if (bits <= 1) return 1;
  if (bits <= 4) return 4;
  if (bits <= 8) return 8;
  return 24;
}

uint32_t ColorsOfDepth(uint32_t bits) { return bits == 24 ? 0 : 1u << bits; }

}  // namespace

CImage::CImage() : external_(false), info_() {}

CImage::CImage(const void* dib) : external_(false), info_() {
  Attach(const_cast<void*>(dib), true, false);
}

CImage::CImage(void* dib, BorrowBlock) : external_(false), info_() { Attach(dib, false, true); }

CImage::~CImage() { Destroy(); }

void CImage::OnProgress(uint32_t percent) {}

const char* CImage::GetClassName() const { return "CImage"; }

bool CImage::IsValid() {
  const bool valid = info_.dib != nullptr && info_.bits != nullptr && info_.bitCount != 0 &&
                     info_.width >= 1 && info_.height >= 1;
  info_.lastError = valid ? kImageOk : kImageInvalid;
  return valid;
}

uint8_t* CImage::Create(int32_t width, int32_t height, ImageInfo* templateInfo, uint32_t bits) {
  if (width == 0 || height == 0) {
    info_.lastError = kImageInvalid;
    templateInfo->lastError = kImageInvalid;
    return nullptr;
  }
  bits = LegalDepth(bits == 0 ? templateInfo->bitCount : bits);
  info_ = *templateInfo;
  info_.headerSize = kDibHeaderSize;
  info_.width = width;
  info_.height = height;
  info_.planes = 1;
  info_.bitCount = static_cast<uint16_t>(bits);
  info_.compression = 0;
  info_.colorsUsed = ColorsOfDepth(bits);
  info_.colorsImportant = 0;

  const int64_t stride = RowBytes(width, bits);
  const int64_t imageSize = stride * height;
  const uint32_t paletteBytes = info_.colorsUsed * 4;
  // A negative product passes the limit; its allocation is what fails then.
  if (imageSize + kDibHeaderSize + paletteBytes > 0xFFFFFFFEll) {
    info_ = ImageInfo();
    info_.lastError = kImageTooLarge;
    templateInfo->lastError = kImageTooLarge;
    return nullptr;
  }
  info_.imageSize = static_cast<uint32_t>(imageSize);
  const int64_t blockSize = paletteBytes + kDibHeaderSize + imageSize;
  uint8_t* block = blockSize < kDibHeaderSize + paletteBytes
                       ? nullptr
                       : static_cast<uint8_t*>(TrackedAlloc(kTrackedZeroFill, blockSize));
  if (block == nullptr) {
    info_ = ImageInfo();
    info_.lastError = kImageNoMemory;
    templateInfo->lastError = kImageNoMemory;
    return nullptr;
  }
  std::memcpy(block, &info_, kDibHeaderSize);
  // The template's palette bytes, as many as the new image has entries, whatever the template's
  // own count: a 24-bit template hands on pixel bytes, which the caller then replaces. Bytes
  // past the end of the template's block stay zero.
  if (templateInfo->dib != nullptr) {
    const uint32_t available = templateInfo->dibSize > templateInfo->headerSize
                                   ? templateInfo->dibSize - templateInfo->headerSize
                                   : 0;
    std::memcpy(block + kDibHeaderSize, templateInfo->dib + templateInfo->headerSize,
                paletteBytes < available ? paletteBytes : available);
  }
  info_.dib = block;
  info_.bits = block + kDibHeaderSize + paletteBytes;
  info_.dibSize = static_cast<uint32_t>(blockSize);
  info_.stride = static_cast<uint32_t>(stride);
  return block;
}

void CImage::Destroy() {
  if (!external_) TrackedFree(info_.dib);
  info_ = ImageInfo();
}

void CImage::Attach(void* dib, bool copy, bool external) {
  Destroy();
  if (dib == nullptr) {
    info_.lastError = kImageInvalid;
    return;
  }
  const uint32_t size = DibSizeFromHeader(dib);
  external_ = external;
  uint8_t* block = static_cast<uint8_t*>(dib);
  if (copy) {
    block = static_cast<uint8_t*>(TrackedAlloc(0, size));
    if (block == nullptr) {
      info_.lastError = kImageNoMemory;
      return;
    }
    std::memcpy(block, dib, size);
  }
  info_.dib = block;
  ApplyHeader(size);
}

uint8_t* CImage::Detach() {
  uint8_t* block = info_.dib;
  info_ = ImageInfo();
  return block;
}

void CImage::TakeOver(CImage& other) {
  Destroy();
  external_ = false;
  info_ = other.info_;
  other.info_ = ImageInfo();
}

uint8_t* CImage::GetDib() { return IsValid() ? info_.dib : nullptr; }

uint8_t* CImage::CopyDib() {
  if (!IsValid()) return nullptr;
  void* copy = TrackedAlloc(0, info_.dibSize);
  if (copy == nullptr) {
    info_.lastError = kImageNoMemory;
    return nullptr;
  }
  std::memcpy(copy, info_.dib, info_.dibSize);
  return static_cast<uint8_t*>(copy);
}

void CImage::ApplyHeader(uint32_t size) {
  if (info_.dib == nullptr) {
    info_.lastError = kImageInvalid;
    return;
  }
  std::memset(&info_, 0, kDibHeaderSize);
  info_.dibSize = size;
  std::memcpy(&info_, info_.dib, kDibHeaderSize);
  info_.stride = static_cast<uint32_t>(RowBytes(info_.width, info_.bitCount));
  info_.imageSize = static_cast<uint32_t>(info_.height) * info_.stride;
  if (info_.bitCount < 9 && info_.colorsUsed == 0) info_.colorsUsed = 1u << info_.bitCount;
  info_.bits = info_.dib + info_.headerSize + 4 * info_.colorsUsed;
}

uint32_t CImage::DibSizeFromHeader(const void* header) {
  const DibHeaderFields fields = ReadDibHeader(header);
  const uint32_t stride = static_cast<uint32_t>(RowBytes(fields.width, fields.bitCount));
  const uint32_t palette =
      fields.bitCount < 9 && fields.colorsUsed == 0 ? 4u << fields.bitCount : 4 * fields.colorsUsed;
  return stride * static_cast<uint32_t>(fields.height) + kDibHeaderSize + palette;
}

float CImage::GetAspectRatio() {
  if (!IsValid()) return 1.0f;
  return static_cast<float>(info_.width) / static_cast<float>(info_.height);
}

int64_t CImage::GetPixelBytes(int32_t width, int32_t height) {
  if (!IsValid()) return -1;
  if (width == -1 && height == -1) {
    width = info_.width;
    height = info_.height;
  } else if (width < 0 || height < 0) {
    info_.lastError = kImageBadValue;
    return -1;
  }
  return RowBytes(width, info_.bitCount) * height;
}

namespace {

int32_t DpiOfField(int32_t pelsPerMeter) {
  if (pelsPerMeter < 1) return 96;
  return static_cast<int32_t>(static_cast<float>(pelsPerMeter * 254.0 / 10000.0 + 0.5));
}

int32_t FieldOfDpi(int32_t dpi) {
  if (dpi < 1) return 3780;
  return static_cast<int32_t>(static_cast<float>(dpi * 10000.0 / 254.0 + 0.5));
}

}  // namespace

int32_t CImage::GetXDpi() { return IsValid() ? DpiOfField(info_.xPelsPerMeter) : 0; }

int32_t CImage::GetYDpi() { return IsValid() ? DpiOfField(info_.yPelsPerMeter) : 0; }

void CImage::SetXDpi(int32_t dpi) { info_.xPelsPerMeter = FieldOfDpi(dpi); }

void CImage::SetYDpi(int32_t dpi) { info_.yPelsPerMeter = FieldOfDpi(dpi); }

// A single byte store that the loops read once per row; relaxed atomics keep it a byte store
// while telling the compiler and the thread checker that another thread may write it.
void CImage::Cancel() { __atomic_store_n(&info_.cancelled, 1, __ATOMIC_RELAXED); }

const char* CImage::GetErrorText(char* buffer) const {
  if (buffer == nullptr) return "NULL Pointer!";
  const char* text;
  switch (info_.lastError) {
    case kImageOk:
      text = "Successful.";
      break;
    case kImageCancelled:
      text = "User canceled.";
      break;
    case kImageNoMemory:
      text = "Not enough memory to perform operation.";
      break;
    case kImageInvalid:
      text = "Invalid image. Original image does't exist.";
      break;
    case kImageClipboard:
      text = "Failed to operate Clipboard.";
      break;
    case kImageBadValue:
      text = "Invalid value.";
      break;
    default:
      text = "Unknow error.";
      break;
  }
  std::memcpy(buffer, text, std::strlen(text) + 1);
  return buffer;
}

bool CImage::ReadRegion(ImageRect rect, ImageRect* region) {
  if (rect.right == -1) {
    rect.left = 0;
    rect.right = info_.width;
  }
  if (rect.bottom == -1) {
    rect.top = 0;
    rect.bottom = info_.height;
  }
  auto clamp = [](int32_t value, int32_t high) {
    return value < 0 ? 0 : value > high ? high : value;
  };
  rect.left = clamp(rect.left, info_.width);
  rect.right = clamp(rect.right, info_.width);
  rect.top = clamp(rect.top, info_.height);
  rect.bottom = clamp(rect.bottom, info_.height);
  if (rect.left == rect.right || rect.top == rect.bottom) {
    info_.lastError = kImageBadValue;
    return false;
  }
  if (rect.left > rect.right) std::swap(rect.left, rect.right);
  if (rect.top > rect.bottom) std::swap(rect.top, rect.bottom);
  *region = rect;
  return true;
}

bool CImage::StopAtRow(int32_t row, int32_t total) {
  // row * 100 / total in 32-bit signed arithmetic, wrapping as the hardware does.
  const int32_t scaled = static_cast<int32_t>(static_cast<uint32_t>(row) * 100u);
  info_.progress = total == 0 ? 0 : static_cast<uint32_t>(static_cast<int64_t>(scaled) / total);
  // Only a subclass can observe progress; a plain image pays this one comparison per row.
  if (typeid(*this) != typeid(CImage)) OnProgress(info_.progress);
  if (__atomic_load_n(&info_.cancelled, __ATOMIC_RELAXED) == 0) return false;
  info_.lastError = kImageCancelled;
  return true;
}

bool CImage::FinishWith(CImage& result) {
  if (__atomic_load_n(&info_.cancelled, __ATOMIC_RELAXED) != 0) {
    info_.lastError = kImageCancelled;
    return false;
  }
  TakeOver(result);
  info_.cancelled = 0;
  info_.progress = 0;
  return true;
}

namespace {

std::atomic<bool> fastLoops{true};

}  // namespace

bool FastLoopsEnabled() { return fastLoops.load(std::memory_order_relaxed); }

void EnableFastLoops(bool enabled) { fastLoops.store(enabled, std::memory_order_relaxed); }

}  // namespace vsm
