#include "support/image_type.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vsm {
namespace {

TEST(ImageTypeTest, SignaturesAndTheirMinimumSizes) {
  const struct {
    std::string bytes;
    int32_t expected;
  } cases[] = {
      {"\xFF\xD8\xFF\xE0", kImageJpeg},
      {"\xFF\xD8\xFF", kImageUnknown},  // too short
      {"\x89PNG", kImagePng},
      {"BM\x36\x10", kImageBmp},
      {{"MM\0\x2A", 4}, kImageTiff},
      {{"II\x2A\0", 4}, kImageTiff},
      {{"II\0\x2A", 4}, kImageUnknown},
      {"%pDf", kImagePdf},
      {"GIF87a", kImageGif},
      {"GIF8", kImageUnknown},
      {"GIF88a", kImageUnknown},
      {{"\0\0\0\x0CjP  ", 8}, kImageJpeg2000},
      {{"\0\0\0\x0CjP ", 7}, kImageJpeg2000},  // seven bytes are enough
      {{"\0\0\0\x0CjP !", 8}, kImageUnknown},
      {{"\0\0\0\x0CjP", 6}, kImageUnknown},
      {"\xFF\x4F\xFF\x51", kImageJpeg2000},
  };
  for (const auto& c : cases) {
    std::vector<uint8_t> exact(c.bytes.begin(), c.bytes.end());  // so that ASan sees overreads
    EXPECT_EQ(c.expected, DetectImageType(exact.data(), static_cast<uint32_t>(exact.size())))
        << testing::PrintToString(c.bytes);
  }
  EXPECT_EQ(kImageUnknown, DetectImageType(nullptr, 8));
}

}  // namespace
}  // namespace vsm
