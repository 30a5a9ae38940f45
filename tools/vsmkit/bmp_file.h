// BMP files for vsmkit: a 14-byte file header ("BM", the file size, two zero words, the offset of
// the pixels) in front of a packed DIB. The image kit itself reads and writes no file format.
#ifndef VSM_TOOLS_VSMKIT_BMP_FILE_H_
#define VSM_TOOLS_VSMKIT_BMP_FILE_H_

#include <cstdint>
#include <string>
#include <vector>

#include "image/image.h"

namespace vsmkit {

// The packed DIB of a BMP file: the 40-byte header, the three colour masks of a bit-field file,
// the palette, and the pixel rows from where the file header says they start. Accepted: 1, 4,
// 8, 16, 24 or 32 bits, no compression (or bit fields at 16 and 32 bits), bottom-up rows, a
// colour count that fits the depth, and all bytes present. Anything else is an OperationFailed
// naming the file and the reason.
std::vector<uint8_t> ReadBmpDib(const std::string& path);

// Loads a BMP file into `image` the way the kit imports foreign pictures: bit-field pixels (and
// plain 16-bit ones, which are 5-5-5 bit fields) through NormaliseDib, then AttachFlattened,
// which composes 32-bit pixels onto white. OperationFailed when the kit can't hold it.
void LoadBmpImage(const std::string& path, vsm::CImage& image);

// Writes `size` bytes of `dib` behind a file header whose pixel offset is 14 + `pixelOffset`.
// OperationFailed when the file can't be written; no partial file stays.
void WriteBmpFile(const std::string& path, const uint8_t* dib, uint32_t size, uint32_t pixelOffset);

}  // namespace vsmkit

#endif  // VSM_TOOLS_VSMKIT_BMP_FILE_H_
