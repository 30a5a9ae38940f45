#include "support/image_type.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

namespace vsm {
namespace {

TEST(ImageTypeTest, SignaturesAndTheirMinimumSizes) {
  const struct {
    std::string bytes;
    int32_t expected;
  } cases[] = {
      {std::string("\xFF\xD8\xFF\xE0", 4), kImageJpeg},
      {std::string("\xFF\xD8\xFF", 3), kImageUnknown},  // starts like a JPEG, too short
      {"\x89PNG\r\n", kImagePng},
      {"BM\x36\x10", kImageBmp},
      {std::string("MM\x00\x2A", 4), kImageTiff},
      {std::string("II\x2A\x00", 4), kImageTiff},
      {std::string("II\x00\x2A", 4), kImageUnknown},
      {"%PDF-1.7", kImagePdf},
      {"%pDf", kImagePdf},
      {"%PDX", kImageUnknown},
      {"GIF89a", kImageGif},
      {"GIF87a\x01", kImageGif},
      {"GIF8", kImageUnknown},
      {"GIF88a", kImageUnknown},
      {std::string("\x00\x00\x00\x0C\x6A\x50\x20\x20\x0D", 9), kImageJpeg2000},
      {std::string("\x00\x00\x00\x0C\x6A\x50\x20", 7), kImageJpeg2000},
      {std::string("\x00\x00\x00\x0C\x6A\x50\x20\x21", 8), kImageUnknown},
      {std::string("\x00\x00\x00\x0C\x6A\x50", 6), kImageUnknown},
      {std::string("\xFF\x4F\xFF\x51", 4), kImageJpeg2000},
      {std::string("\x00\x00\x00\x00", 4), kImageUnknown},
  };
  for (const auto& c : cases) {
    // A copy of exactly the given size, so that a read past it is caught.
    std::unique_ptr<uint8_t[]> bytes(new uint8_t[c.bytes.size()]);
    std::copy(c.bytes.begin(), c.bytes.end(), bytes.get());
    EXPECT_EQ(c.expected, DetectImageType(bytes.get(), static_cast<uint32_t>(c.bytes.size())))
        << "case of " << c.bytes.size() << " bytes starting " << int(uint8_t(c.bytes[0]));
  }
  EXPECT_EQ(kImageUnknown, DetectImageType(nullptr, 8));
}

}  // namespace
}  // namespace vsm
