// Sniffing the format of an image from its first bytes.
//
// Thread-safe; no state. Reads at most the first 8 bytes, and never more than `size`.
#ifndef VSM_SUPPORT_IMAGE_TYPE_H_
#define VSM_SUPPORT_IMAGE_TYPE_H_

#include <cstdint>

namespace vsm {

// Type numbers of DetectImageType.
enum ImageType : int32_t {
  kImageUnknown = -1,
  kImageBmp = 0,
  kImageJpeg = 1,
  kImageTiff = 2,
  kImagePng = 3,
  kImagePdf = 4,
  kImageGif = 6,
  kImageJpeg2000 = 14,
};

// The type of the image that starts with `bytes`: JPEG (FF D8), PNG (89 50 4E 47), BMP (42 4D),
// TIFF (4D 4D 00 2A or 49 49 2A 00), PDF ("%PDF" in any case), GIF ("GIF87a" or "GIF89a", from
// 6 bytes on), JPEG 2000 (00 00 00 0C 6A 50 20 20, from 7 bytes on, or FF 4F FF 51). Null,
// fewer than 4 bytes or an unknown start give kImageUnknown.
int32_t DetectImageType(const uint8_t* bytes, uint32_t size);

}  // namespace vsm

#endif  // VSM_SUPPORT_IMAGE_TYPE_H_
