// BMP files for vsmkit: a 14-byte file header ("BM", the file size, two zero words, the offset of
// the pixels) in front of a packed DIB. The image kit itself reads and writes no file format.
#ifndef VSM_TOOLS_VSMKIT_BMP_FILE_H_
#define VSM_TOOLS_VSMKIT_BMP_FILE_H_

#include <cstdint>
#include <string>
#include <vector>

namespace vsmkit {

// The packed DIB of a BMP file, exactly as long as its header says. Only what the kit attaches
// as it stands is accepted: a 40-byte header, 1, 4, 8 or 24 bits, no compression, bottom-up
// rows, a colour count that fits the depth, the pixels right behind the palette, and all bytes
// present. Anything else is an OperationFailed naming the file and the reason.
std::vector<uint8_t> ReadBmpDib(const std::string& path);

// Writes `size` bytes of `dib` behind a file header whose pixel offset is 14 + `pixelOffset`.
// OperationFailed when the file can't be written; no partial file stays.
void WriteBmpFile(const std::string& path, const uint8_t* dib, uint32_t size, uint32_t pixelOffset);

}  // namespace vsmkit

#endif  // VSM_TOOLS_VSMKIT_BMP_FILE_H_
