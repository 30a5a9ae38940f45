// vsmkit image OPs for the image core, depth change, colour reduction, sampling and scaling.
#include <cinttypes>
#include <cstdio>
#include <string>
#include <vector>

#include "image/quantizer.h"
#include "image_ops.h"

namespace vsmkit {

namespace {

constexpr int64_t kInt32Low = INT32_MIN, kInt32High = INT32_MAX;

int32_t Int(const std::string& text, const char* what) {
  return static_cast<int32_t>(ParseDecimal(text, what, kInt32Low, kInt32High));
}

uint32_t Unsigned(const std::string& text, const char* what) {
  return static_cast<uint32_t>(ParseDecimal(text, what, 0, UINT32_MAX));
}

bool Flag(const std::string& text, const char* what) { return ParseDecimal(text, what, 0, 1) != 0; }

void Print(const std::string& text) { WriteStandardOutput(text.data(), text.size()); }

bool Info(vsm::CImage& image, const Arguments&) {
  const vsm::ImageInfo& info = *image.GetInfo();
  char line[128];
  snprintf(line, sizeof line, "%" PRId32 " %" PRId32 " %u %" PRIu32 " %" PRIu32 " %" PRIu32 "\n",
           info.width, info.height, static_cast<unsigned>(info.bitCount), info.colorsUsed,
           info.stride, info.dibSize);
  Print(line);
  return true;
}

bool Depth(vsm::CImage& image, const Arguments& arguments) {
  return image.ConvertBitDepth(Unsigned(arguments[0], "BITS"), Flag(arguments[1], "OPTIMISE"));
}

bool Reduce(vsm::CImage& image, const Arguments& arguments) {
  return image.ReduceBitDepth(Unsigned(arguments[0], "BITS"), Flag(arguments[1], "DIFFUSE"),
                              nullptr, Unsigned(arguments[2], "COLORS"));
}

bool Raise(vsm::CImage& image, const Arguments& arguments) {
  return image.RaiseBitDepth(Unsigned(arguments[0], "BITS"));
}

bool Quantize(vsm::CImage& image, const Arguments& arguments) {
  const uint32_t colors = static_cast<uint32_t>(ParseDecimal(arguments[0], "COLORS", 0, 65536));
  const uint32_t bits = Unsigned(arguments[1], "BITS");
  // The tree reads a palette entry for every index the depth can hold, whatever the colour
  // count says, so the block gets zeroed room for a full palette behind it.
  const vsm::ImageInfo& info = *image.GetInfo();
  std::vector<uint8_t> dib(info.dib, info.dib + info.dibSize);
  dib.resize(dib.size() + 1024);
  vsm::CQuantizer quantizer(colors, bits);
  if (!quantizer.AddImage(dib.data())) return false;
  std::vector<uint8_t> entries(4 * static_cast<size_t>(colors));
  quantizer.WritePalette(entries.data());
  std::string text = std::to_string(quantizer.GetLeafCount()) + "\n";
  for (uint32_t i = 0; i < colors; ++i) {
    const uint8_t* entry = &entries[4 * i];
    text +=
        HexWord(entry[0] | entry[1] << 8 | entry[2] << 16 | static_cast<uint32_t>(entry[3]) << 24) +
        "\n";
  }
  Print(text);
  return true;
}

bool Scale(vsm::CImage& image, const Arguments& arguments) {
  return image.Scale(Int(arguments[0], "W"), Int(arguments[1], "H"), Int(arguments[2], "METHOD"));
}

// These two give no result: the error code tells.
bool Resample(vsm::CImage& image, const Arguments& arguments) {
  image.ResampleSampled(Int(arguments[0], "W"), Int(arguments[1], "H"), Int(arguments[2], "MODE"),
                        Int(arguments[3], "OVERFLOW"), Flag(arguments[4], "NOAVERAGING"));
  return image.GetLastError() == vsm::kImageOk;
}

bool Dpi(vsm::CImage& image, const Arguments& arguments) {
  image.SetDpi(Int(arguments[0], "X"), Int(arguments[1], "Y"), Flag(arguments[2], "RESAMPLE"),
               Int(arguments[3], "METHOD"));
  return image.GetLastError() == vsm::kImageOk;
}

bool Sample(vsm::CImage& image, const Arguments& arguments) {
  const float x = static_cast<float>(ParseReal(arguments[2], "X"));
  const float y = static_cast<float>(ParseReal(arguments[3], "Y"));
  uint8_t background[4];
  const bool given = arguments.size() > 4;
  if (given) {
    const uint32_t word = ParseHexWord(arguments[4], "BACKGROUND");
    for (int i = 0; i < 4; ++i) background[i] = static_cast<uint8_t>(word >> (8 * i));
  }
  const vsm::ColorValue color = image.SampleAt(
      Int(arguments[0], "MODE"), Int(arguments[1], "OVERFLOW"), given ? background : nullptr, x, y);
  Print(HexWord(color) + "\n");
  return true;
}

const ImageOp kOps[] = {
    {"info", "", false, 0, 0, Info},
    {"depth", "BITS OPTIMISE", true, 2, 2, Depth},
    {"reduce", "BITS DIFFUSE COLORS", true, 3, 3, Reduce},
    {"raise", "BITS", true, 1, 1, Raise},
    {"quantize", "COLORS BITS", false, 2, 2, Quantize},
    {"scale", "W H METHOD", true, 3, 3, Scale},
    {"resample", "W H MODE OVERFLOW NOAVERAGING", true, 5, 5, Resample},
    {"dpi", "X Y RESAMPLE METHOD", true, 4, 4, Dpi},
    {"sample", "MODE OVERFLOW X Y [BACKGROUND]", false, 4, 5, Sample},
};

}  // namespace

ImageOpList CoreImageOps() { return {kOps, sizeof kOps / sizeof kOps[0]}; }

}  // namespace vsmkit
