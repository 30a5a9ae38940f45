// Packed DIB import and the operations that follow it.
//
// Input: the fields of a 40-byte header (kept to sizes the run can afford), then the palette,
// masks and pixels, in a tracked block of exactly that size, so that TrackedSize tells the kit
// the block's true size. The block goes through NormaliseDib, through AttachFlattened (copied,
// handed over, or borrowed) and through the image slot; then up to four operations chosen by
// the input run on the images: depth change, scale, rotate, convolve and crop. An operation that
// fails leaves the picture it had.
#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "fuzz_support.h"
#include "image/image.h"
#include "image/image_slot.h"
#include "support/tracked_heap.h"

namespace {

using vsm::CImage;
using vsm::fuzz::FuzzCheck;

// The kit makes a picture as large as a header asks, up to 4 GB; runs keep to 16K pixels, so
// that each input takes milliseconds and memory stays small.
constexpr int64_t kMostPixels = 1 << 14;
constexpr int32_t kMostSide = 256;
constexpr int kMostOperations = 4;

void Put32(uint8_t* at, uint32_t value) { std::memcpy(at, &value, 4); }
void Put16(uint8_t* at, uint16_t value) { std::memcpy(at, &value, 2); }

int32_t Side(FuzzedDataProvider& input) {
  return input.ConsumeBool() ? input.ConsumeIntegralInRange<int32_t>(-2, kMostSide)
                             : input.ConsumeIntegral<int32_t>();
}

// A tracked block: a header of the input's fields, then the rest of the input. Null when the
// header asks for more pixels than a run affords.
uint8_t* MakeBlock(FuzzedDataProvider& input) {
  static const uint16_t kDepths[] = {1, 4, 8, 16, 24, 32, 0, 2, 48};
  const int32_t width = Side(input), height = Side(input);
  if (std::llabs(int64_t{width} * height) > kMostPixels) return nullptr;
  uint8_t header[vsm::kDibHeaderSize] = {};
  Put32(header, input.ConsumeBool() ? vsm::kDibHeaderSize : input.ConsumeIntegral<uint32_t>());
  Put32(header + 4, static_cast<uint32_t>(width));
  Put32(header + 8, static_cast<uint32_t>(height));
  Put16(header + 12, 1);
  Put16(header + 14, input.PickValueInArray(kDepths));
  Put32(header + 16, input.ConsumeBool() ? input.ConsumeIntegralInRange<uint32_t>(0, 3)
                                         : input.ConsumeIntegral<uint32_t>());
  Put32(header + 20, input.ConsumeIntegral<uint32_t>());
  Put32(header + 24, input.ConsumeIntegral<uint32_t>());
  Put32(header + 28, input.ConsumeIntegral<uint32_t>());
  Put32(header + 32, input.ConsumeBool() ? input.ConsumeIntegralInRange<uint32_t>(0, 256)
                                         : input.ConsumeIntegral<uint32_t>());
  Put32(header + 36, input.ConsumeIntegralInRange<uint32_t>(0, 300));
  const std::vector<uint8_t> rest =
      input.ConsumeBytes<uint8_t>(input.ConsumeIntegralInRange<size_t>(0, 4 * kMostPixels));
  auto* block = static_cast<uint8_t*>(vsm::TrackedAlloc(0, sizeof(header) + rest.size()));
  std::memcpy(block, header, sizeof(header));
  if (!rest.empty()) std::memcpy(block + sizeof(header), rest.data(), rest.size());
  return block;
}

vsm::ImageRect Rect(FuzzedDataProvider& input) {
  auto coordinate = [&input] { return input.ConsumeIntegralInRange<int32_t>(-4, kMostSide); };
  return {coordinate(), coordinate(), coordinate(), coordinate()};
}

void Operate(FuzzedDataProvider& input, CImage& image) {
  uint8_t background[4];
  switch (input.ConsumeIntegralInRange(0, 5)) {
    case 0: {
      static const uint32_t kDepths[] = {1, 4, 8, 24};
      image.ConvertBitDepth(input.PickValueInArray(kDepths), input.ConsumeBool());
      break;
    }
    case 1: {
      const int32_t width = input.ConsumeIntegralInRange<int32_t>(-1, kMostSide);
      const int32_t height = input.ConsumeIntegralInRange<int32_t>(-1, kMostSide);
      image.Scale(width, height, input.ConsumeIntegralInRange<int32_t>(0, 6));
      break;
    }
    case 2: {
      const int32_t mode = input.ConsumeIntegralInRange<int32_t>(0, 5);
      const int32_t overflow = input.ConsumeIntegralInRange<int32_t>(0, 7);
      const bool keepSize = input.ConsumeBool();
      const bool white = input.ConsumeBool();
      input.ConsumeData(background, sizeof(background));
      float angle = input.ConsumeFloatingPointInRange<float>(-720, 720);
      if (input.ConsumeBool())
        angle = std::round(angle / 90) * 90 + input.ConsumeProbability<float>() / 8;
      image.Rotate(mode, overflow, white ? nullptr : background, keepSize, angle);
      break;
    }
    case 3: {
      const int32_t size = input.ConsumeIntegralInRange<int32_t>(-1, 5);
      std::vector<int32_t> kernel(size > 0 ? size * size : 1);
      for (int32_t& tap : kernel) tap = input.ConsumeIntegral<int32_t>();
      const int32_t factor = input.ConsumeIntegral<int32_t>();
      image.Convolve(kernel.data(), size, factor, input.ConsumeIntegral<int32_t>());
      break;
    }
    case 4:
      image.Crop(Rect(input));
      break;
    default:
      image.RotateRightAngle(input.ConsumeIntegralInRange<int32_t>(-4, 4) * 90.0);
      break;
  }
}

void OperateSeveral(FuzzedDataProvider& input, CImage& image) {
  for (int i = 0; i < kMostOperations && input.remaining_bytes() > 0; ++i) {
    const bool valid = image.IsValid();
    Operate(input, image);
    FuzzCheck(!valid || image.IsValid(), "an operation leaves a picture in place");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  const int attachMode = input.ConsumeIntegralInRange(0, 2);
  uint8_t* block = MakeBlock(input);
  if (block == nullptr) return 0;

  CImage empty;
  uint8_t* normalised = empty.NormaliseDib(block);
  FuzzCheck(!empty.IsValid(), "NormaliseDib leaves its image empty");
  // The result keeps the source's header over a block laid out for the picture it made (a
  // 32-bit source's header over 24-bit rows, a colour count past the depth's over the depth's
  // palette), so it is attached as a foreign block, whose layout is checked, and handed over.
  CImage plain;
  if (normalised != nullptr) plain.AttachFlattened(normalised, false, false);

  // Copied: the block stays ours. Handed over: the image frees it. Borrowed: ours, freed after
  // the image is gone.
  const bool copy = attachMode == 0, external = attachMode == 2;
  uint8_t* source = block;
  if (attachMode == 1) {
    source = static_cast<uint8_t*>(vsm::TrackedAlloc(0, vsm::TrackedSize(block)));
    std::memcpy(source, block, vsm::TrackedSize(block));
  }
  {
    CImage flattened(source, copy, external);
    vsm::StoreClipboardDib(block);
    vsm::TrackedFree(vsm::FetchClipboardDib());
    OperateSeveral(input, plain);
    OperateSeveral(input, flattened);
  }
  vsm::StoreClipboardDib(nullptr);
  vsm::TrackedFree(block);
  return 0;
}
