// vsmkit image OPs for the tone, filter and drawing operations and the measures.
#include <cinttypes>
#include <cstdio>
#include <string>
#include <vector>

#include "image_op_arguments.h"
#include "image_ops.h"

namespace vsmkit {

namespace {

// Operations with no result leave it in the error code.
bool Succeeded(vsm::CImage& image) { return image.GetLastError() == vsm::kImageOk; }

bool Threshold(vsm::CImage& image, const Arguments& arguments) {
  return image.Threshold(RectArgument(arguments, 0), WholeArgument(arguments[4], "LEVEL"));
}

bool Grey(vsm::CImage& image, const Arguments& arguments) {
  bool resized;
  return image.ToGrey(RectArgument(arguments, 0), &resized);
}

bool Negate(vsm::CImage& image, const Arguments&) { return image.Negate(); }

bool Lut(vsm::CImage& image, const Arguments& arguments) {
  const std::vector<uint8_t> table = ParseHexBytes(arguments[0], "HEX512");
  if (table.size() != 256) throw UsageError("HEX512: 256 bytes as 512 hex digits");
  return image.ApplyLut(table.data());
}

bool Gamma(vsm::CImage& image, const Arguments& arguments) {
  return image.ApplyGamma(RealArgument(arguments[0], "G"));
}

bool Light(vsm::CImage& image, const Arguments& arguments) {
  image.ApplyLight(RealArgument(arguments[0], "BRIGHTNESS"),
                   RealArgument(arguments[1], "CONTRAST"));
  return Succeeded(image);
}

bool Convolve(vsm::CImage& image, const Arguments& arguments) {
  const int32_t size = static_cast<int32_t>(ParseDecimal(arguments[0], "SIZE", 0, 40));
  if (arguments.size() != 3 + static_cast<size_t>(size) * size) {
    throw UsageError("K: SIZE * SIZE kernel entries");
  }
  std::vector<int32_t> kernel;
  for (size_t i = 3; i < arguments.size(); ++i) kernel.push_back(WholeArgument(arguments[i], "K"));
  return image.Convolve(kernel.data(), size, WholeArgument(arguments[1], "FACTOR"),
                        WholeArgument(arguments[2], "OFFSET"));
}

bool Fill(vsm::CImage& image, const Arguments& arguments) {
  const ColorBytes color(ParseHexWord(arguments[4], "COLOR"));
  image.FillRect(RectArgument(arguments, 0), color.bytes);
  return Succeeded(image);
}

bool Blend(vsm::CImage& image, const Arguments& arguments) {
  const ColorBytes color(ParseHexWord(arguments[4], "COLOR"));
  uint8_t* block = image.BlendRectToDib(RectArgument(arguments, 0), color.bytes,
                                        RealArgument(arguments[5], "OPACITY"));
  if (block == nullptr) return false;
  // The returned block is what goes to OUT.bmp.
  image.Attach(block, false, false);
  return true;
}

bool Box(vsm::CImage& image, const Arguments& arguments) {
  const uint32_t right = static_cast<uint32_t>(ParseDecimal(arguments[2], "RIGHT", 0, 65535));
  const uint32_t bottom = static_cast<uint32_t>(ParseDecimal(arguments[3], "BOTTOM", 0, 65535));
  const uint8_t shape = 0;
  return image.DrawRoundedBox(
      WholeArgument(arguments[0], "LEFT"), WholeArgument(arguments[1], "TOP"), &shape,
      right << 16 | bottom, ParseHexWord(arguments[4], "COLORREF"),
      RealArgument(arguments[5], "RATIO"), RealArgument(arguments[6], "ALPHA"));
}

std::string RectText(const vsm::ImageRect& rect) {
  char line[64];
  snprintf(line, sizeof line, "%" PRId32 " %" PRId32 " %" PRId32 " %" PRId32 "\n", rect.left,
           rect.top, rect.right, rect.bottom);
  return line;
}

bool Deviation(vsm::CImage& image, const Arguments& arguments) {
  const double deviation = image.ColorDeviation(RectArgument(arguments, 0));
  if (!Succeeded(image)) return false;
  char line[64];
  snprintf(line, sizeof line, "%.17g\n", deviation);
  PrintResult(line);
  return true;
}

bool InkBounds(vsm::CImage& image, const Arguments& arguments) {
  vsm::ImageRect bounds;
  if (!image.FindInkBounds(WholeArgument(arguments[0], "LEVEL"), &bounds)) return false;
  PrintResult(RectText(bounds));
  return true;
}

bool ContentBounds(vsm::CImage& image, const Arguments& arguments) {
  PrintResult(RectText(image.FindContentBounds(ParseHexWord(arguments[0], "COLOR"))));
  return true;
}

const ImageOp kOps[] = {
    {"threshold", "L T R B LEVEL", true, 5, 5, Threshold},
    {"grey", "L T R B", true, 4, 4, Grey},
    {"negate", "", true, 0, 0, Negate},
    {"lut", "HEX512", true, 1, 1, Lut},
    {"gamma", "G", true, 1, 1, Gamma},
    {"light", "BRIGHTNESS CONTRAST", true, 2, 2, Light},
    {"convolve", "SIZE FACTOR OFFSET K...", true, 3, 3 + 40 * 40, Convolve},
    {"fill", "L T R B COLOR", true, 5, 5, Fill},
    {"blend", "L T R B COLOR OPACITY", true, 6, 6, Blend},
    {"box", "LEFT TOP RIGHT BOTTOM COLORREF RATIO ALPHA", true, 7, 7, Box},
    {"deviation", "L T R B", false, 4, 4, Deviation},
    {"inkbounds", "LEVEL", false, 1, 1, InkBounds},
    {"contentbounds", "COLOR", false, 1, 1, ContentBounds},
};

}  // namespace

ImageOpList ToneImageOps() { return {kOps, sizeof kOps / sizeof kOps[0]}; }

}  // namespace vsmkit
