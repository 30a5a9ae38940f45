// The image core: the block's life, the record, errors, resolutions, regions, and the progress
// and cancel protocol.
#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "image/float_geometry.h"
#include "image/image.h"
#include "support/tracked_heap.h"
#include "tests/image/test_pictures.h"

#if defined(__SANITIZE_ADDRESS__)
// The sanitizer's own count; its allocator keeps malloc's statistics empty.
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace vsm {
namespace {

size_t HeapInUse() {
#if defined(__SANITIZE_ADDRESS__)
  return __sanitizer_get_current_allocated_bytes();
#else
  return mallinfo2().uordblks;
#endif
}

std::string Text(const CImage& image) {
  char buffer[64];
  return image.GetErrorText(buffer);
}

TEST(ImageCoreTest, CreateRoundsTheDepthAndSizesRowsPaletteAndBlock) {
  // clang-format off
  struct Row { int32_t width, height; uint32_t bits; uint16_t depth; uint32_t colors, stride, size; } rows[] = {
      {1, 1, 24, 24, 0, 4, 44},     {3, 2, 16, 24, 0, 12, 64},   {5, 1, 2, 4, 16, 4, 108},
      {9, 1, 1, 1, 2, 4, 52},       {7, 3, 5, 8, 256, 8, 1088},  {1, 1, 32, 24, 0, 4, 44},
      {33, 2, 0, 1, 2, 8, 64},      {2, 1, 3, 4, 16, 4, 108}};
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    CImage blank, image;
    ASSERT_NE(nullptr, image.Create(row.width, row.height, blank.GetInfo(), row.bits));
    const ImageInfo* info = image.GetInfo();
    EXPECT_EQ(row.depth, info->bitCount);
    EXPECT_EQ(row.colors, info->colorsUsed);
    EXPECT_EQ(row.stride, info->stride);
    EXPECT_EQ(row.size, info->dibSize);
    EXPECT_EQ(row.size, TrackedSize(info->dib));
    EXPECT_EQ(row.size, CImage::DibSizeFromHeader(info->dib));
    EXPECT_EQ(0, std::memcmp(info->dib, info, 40));  // the block carries the working header
    EXPECT_EQ(info->dib + 40 + 4 * row.colors, info->bits);
    EXPECT_TRUE(image.IsValid());
  }
}

TEST(ImageCoreTest, CreateFailuresMarkImageAndTemplateAndAllocateNothing) {
  CImage source, image;
  source.Create(4, 4, source.GetInfo(), 8);
  EXPECT_EQ(nullptr, image.Create(0, 5, source.GetInfo(), 8));
  EXPECT_EQ(3u, image.GetLastError());
  EXPECT_EQ(3u, source.GetLastError());
  EXPECT_EQ("Invalid image. Original image does't exist.", Text(source));

  const size_t before = HeapInUse();
  EXPECT_EQ(nullptr, image.Create(70000, 70000, source.GetInfo(), 24));
  EXPECT_EQ(before, HeapInUse());
  EXPECT_EQ(7u, image.GetLastError());
  EXPECT_EQ(7u, source.GetLastError());
  EXPECT_EQ("Unknow error.", Text(image));
  EXPECT_EQ(nullptr, image.GetInfo()->dib);
  EXPECT_EQ(0, image.GetInfo()->width);
  // A negative product passes the limit; no block of that size can exist.
  EXPECT_EQ(nullptr, image.Create(-40000, 3, source.GetInfo(), 24));
  EXPECT_EQ(2u, image.GetLastError());
}

TEST(ImageCoreTest, CreateCopiesTheTemplateRecordAndPaletteBytes) {
  CImage source, image, wide;
  source.Create(2, 2, source.GetInfo(), 4);
  source.SetXDpi(300);
  for (uint32_t i = 0; i < 16; ++i) source.StorePaletteColor(i, 0x01000000 * i + i);
  source.NearestPaletteIndex(0x000005);  // cache: 5 -> 5
  ASSERT_NE(nullptr, image.Create(3, 1, source.GetInfo(), 0));
  EXPECT_EQ(4, image.GetInfo()->bitCount);
  EXPECT_EQ(300, image.GetXDpi());
  EXPECT_EQ(0, std::memcmp(source.GetPalette(), image.GetPalette(), 64));
  // The cache came along: a stale key answers before any search.
  image.StorePaletteColor(5, 0xFFFFFF);
  EXPECT_EQ(5, image.NearestPaletteIndex(0x000005));
  // An 8-bit image from a 4-bit template takes 1024 bytes from the template's block: its
  // palette, its pixels, and zeros past its end.
  source.GetInfo()->bits[0] = 0xAB;
  ASSERT_NE(nullptr, wide.Create(1, 1, source.GetInfo(), 8));
  EXPECT_EQ(0xABu, wide.PaletteColorAt(16) & 0xFF);
  EXPECT_EQ(0u, wide.PaletteColorAt(255));
}

TEST(ImageCoreTest, ErrorTextsAndTheNullBuffer) {
  const char* texts[] = {"Successful.",
                         "User canceled.",
                         "Not enough memory to perform operation.",
                         "Invalid image. Original image does't exist.",
                         "Failed to operate Clipboard.",
                         "Invalid value.",
                         "Unknow error.",
                         "Unknow error.",
                         "Unknow error."};
  CImage image;
  for (uint32_t code = 0; code < 9; ++code) {
    image.GetInfo()->lastError = code;
    EXPECT_EQ(texts[code], Text(image)) << code;
  }
  EXPECT_STREQ("NULL Pointer!", image.GetErrorText(nullptr));
}

TEST(ImageCoreTest, AttachBorrowDetachTakeOverAndCopy) {
  CImage made;
  made.Create(5, 3, made.GetInfo(), 8);
  made.GetInfo()->bits[10] = 42;  // row 1 (stride 8), column 2
  uint8_t* block = made.Detach();
  EXPECT_FALSE(made.IsValid());
  EXPECT_EQ(3u, made.GetLastError());

  CImage copied(block), borrowed(block, kBorrowBlock);
  EXPECT_NE(block, copied.GetDib());
  EXPECT_EQ(block, borrowed.GetDib());
  EXPECT_TRUE(borrowed.IsExternal());
  EXPECT_EQ(42, copied.PixelIndexAt(2, 1));
  borrowed.Destroy();  // the borrowed block stays
  EXPECT_EQ(42, block[40 + 1024 + 10]);
  EXPECT_TRUE(borrowed.IsExternal());

  uint8_t* duplicate = copied.CopyDib();
  ASSERT_NE(nullptr, duplicate);
  EXPECT_EQ(0, std::memcmp(duplicate, block, copied.GetInfo()->dibSize));
  TrackedFree(duplicate);

  CImage target;
  borrowed.Attach(block, false, true);
  target.TakeOver(borrowed);
  EXPECT_EQ(nullptr, borrowed.GetDib());
  EXPECT_TRUE(borrowed.IsExternal());
  EXPECT_FALSE(target.IsExternal());  // the target owns the block now and frees it
  EXPECT_EQ(block, target.GetDib());
  EXPECT_EQ(nullptr, CImage().CopyDib());

  CImage nothing;
  nothing.Attach(nullptr, true, false);
  EXPECT_EQ(3u, nothing.GetLastError());
}

TEST(ImageCoreTest, HeaderSizesFollowTheColourCountAndTheHeaderSizeField) {
  // A header saying 0 colours at 4 bits: the palette is 16 entries, in the size and the record.
  uint8_t header[40 + 64 + 8] = {40};
  header[4] = 3;    // width
  header[8] = 2;    // height
  header[14] = 4;   // bits
  header[20] = 99;  // a wrong pixel array size is recomputed
  EXPECT_EQ(40u + 64 + 8, CImage::DibSizeFromHeader(header));
  CImage image(header, kBorrowBlock);
  EXPECT_EQ(16u, image.GetColorCount());
  EXPECT_EQ(8u, image.GetInfo()->imageSize);
  EXPECT_EQ(header + 104, image.GetInfo()->bits);
  header[32] = 2;  // two colours
  EXPECT_EQ(40u + 8 + 8, CImage::DibSizeFromHeader(header));
  header[0] = 44;  // the record's pixels follow the header's own size; the size function says 40
  image.ApplyHeader(56);
  EXPECT_EQ(header + 52, image.GetInfo()->bits);
  EXPECT_EQ(56u, image.GetInfo()->dibSize);
}

TEST(ImageCoreTest, PixelBytesAspectAndResolutions) {
  CImage image;
  EXPECT_EQ(-1, image.GetPixelBytes(-1, -1));
  EXPECT_EQ(1.0f, image.GetAspectRatio());
  EXPECT_EQ(0, image.GetXDpi());
  image.Create(10, 4, image.GetInfo(), 4);
  EXPECT_EQ(32, image.GetPixelBytes(-1, -1));
  EXPECT_EQ(8 * 3, image.GetPixelBytes(9, 3));
  EXPECT_EQ(-1, image.GetPixelBytes(-1, 3));
  EXPECT_EQ(5u, image.GetLastError());
  EXPECT_EQ(2.5f, image.GetAspectRatio());
  // pixels per metre -> dpi, and dpi -> pixels per metre
  const int32_t reads[][2] = {{3780, 96}, {0, 96}, {-5, 96}, {11811, 300}, {1, 0}, {20, 1}};
  for (const auto& read : reads) {
    image.GetInfo()->yPelsPerMeter = read[0];
    EXPECT_EQ(read[1], image.GetYDpi()) << read[0];
  }
  const int32_t writes[][2] = {{0, 3780}, {-1, 3780}, {96, 3780}, {300, 11811}, {1, 39}};
  for (const auto& write : writes) {
    image.SetXDpi(write[0]);
    EXPECT_EQ(write[1], image.GetInfo()->xPelsPerMeter) << write[0];
  }
}

TEST(ImageCoreTest, RegionsClampSortAndRefuseEmptiness) {
  CImage image;
  image.Create(10, 8, image.GetInfo(), 24);
  // clang-format off
  struct Row { ImageRect rect; bool ok; ImageRect region; } rows[] = {
      {{0, 0, -1, -1}, true, {0, 0, 10, 8}},  {{5, 3, -1, 6}, true, {0, 3, 10, 6}},
      {{2, 7, 4, -1}, true, {2, 0, 4, 8}},    {{-3, -2, 20, 30}, true, {0, 0, 10, 8}},
      {{7, 6, 2, 1}, true, {2, 1, 7, 6}},     {{4, 1, 4, 5}, false, {}},
      {{12, 1, 15, 5}, false, {}},            {{1, 9, 3, 8}, false, {}}};
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    ImageRect region{};
    image.GetInfo()->lastError = 0;
    ASSERT_EQ(row.ok, image.ReadRegion(row.rect, &region));
    EXPECT_EQ(row.ok ? 0u : 5u, image.GetLastError());
    if (!row.ok) continue;
    EXPECT_EQ(row.region.left, region.left);
    EXPECT_EQ(row.region.top, region.top);
    EXPECT_EQ(row.region.right, region.right);
    EXPECT_EQ(row.region.bottom, region.bottom);
  }
}

TEST(ImageCoreTest, FloatRectsIntersectOrVanish) {
  auto edges = [](const FloatRect& r) {
    char text[64];
    snprintf(text, sizeof text, "%g %g %g %g", r.left, r.top, r.right, r.bottom);
    return std::string(text);
  };
  const FloatRect square(0, 0, 4, 4);
  EXPECT_EQ("2 1 4 3", edges(square.Intersect(FloatRect(2, 1, 6, 3))));
  EXPECT_EQ("4 4 4 4", edges(square.Intersect(FloatRect(4, 4, 5, 5))));  // touching: a point
  EXPECT_EQ("0 0 0 0", edges(square.Intersect(FloatRect(5, 0, 6, 4))));  // apart: all zero
  EXPECT_EQ(6.0f, FloatRect(1, 2, 4, 4).Surface());
  EXPECT_EQ(2.5f, FloatRect(1, 2, 4, 4).Centre().x);
  EXPECT_EQ(5.0f, FloatPoint(1, 1).Distance(FloatPoint(4, 5)));
}

// Records every percentage and raises the cancel flag at `cancelAt`.
class WatchedImage : public CImage {
 public:
  void OnProgress(uint32_t percent) override {
    seen += std::to_string(percent) + " ";
    if (percent == cancelAt) Cancel();
  }
  std::string seen;
  uint32_t cancelAt = 1000;
};

TEST(ImageCoreTest, ProgressPerRowAndAStickyCancelThatKeepsThePicture) {
  std::mt19937 random(5);
  WatchedImage image;
  FillRandom(image, 12, 9, 24, random);
  image.ResampleSampled(6, 4, 1, 5, true);
  EXPECT_EQ("0 25 50 75 ", image.seen);
  EXPECT_EQ(0u, image.GetInfo()->progress);
  EXPECT_EQ(6, image.GetInfo()->width);

  FillRandom(image, 12, 9, 24, random);
  const std::string picture = BlockBytes(image);
  image.seen.clear();
  image.cancelAt = 40;  // 2 * 100 / 5
  image.ResampleSampled(3, 5, 2, 5, false);
  EXPECT_EQ("0 20 40 ", image.seen);
  EXPECT_EQ(1u, image.GetLastError());
  EXPECT_EQ("User canceled.", Text(image));
  EXPECT_EQ(picture, BlockBytes(image));
  // The flag stays up: the next long operation stops at its first row.
  image.seen.clear();
  image.ResampleSampled(4, 4, 1, 5, false);
  EXPECT_EQ("0 ", image.seen);
  EXPECT_EQ(1u, image.GetLastError());
  EXPECT_EQ(picture, BlockBytes(image));
  // Replacing the state lowers it.
  CImage fresh;
  FillRandom(fresh, 4, 4, 24, random);
  image.TakeOver(fresh);
  image.ResampleSampled(2, 2, 1, 5, false);
  EXPECT_EQ(0u, image.GetLastError());
  EXPECT_EQ(0, image.GetInfo()->cancelled);
  EXPECT_EQ(2, image.GetInfo()->width);
}

}  // namespace
}  // namespace vsm
