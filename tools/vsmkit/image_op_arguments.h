// Readers of the arguments the image OPs share: whole numbers, reals, colours as eight hex
// digits, and regions as four numbers. Each throws UsageError naming the argument.
#ifndef VSM_TOOLS_VSMKIT_IMAGE_OP_ARGUMENTS_H_
#define VSM_TOOLS_VSMKIT_IMAGE_OP_ARGUMENTS_H_

#include <cstdint>
#include <string>

#include "image/image.h"
#include "kit_command.h"

namespace vsmkit {

inline int32_t WholeArgument(const std::string& text, const char* what) {
  return static_cast<int32_t>(ParseDecimal(text, what, INT32_MIN, INT32_MAX));
}

inline float RealArgument(const std::string& text, const char* what) {
  return static_cast<float>(ParseReal(text, what));
}

// A colour's four bytes in memory order (blue, green, red, spare for a ColorValue).
struct ColorBytes {
  explicit ColorBytes(uint32_t value) {
    for (int i = 0; i < 4; ++i) bytes[i] = static_cast<uint8_t>(value >> (8 * i));
  }
  uint8_t bytes[4];
};

// LEFT TOP RIGHT BOTTOM from arguments[first] on.
inline vsm::ImageRect RectArgument(const Arguments& arguments, size_t first) {
  return vsm::ImageRect{
      WholeArgument(arguments[first], "L"), WholeArgument(arguments[first + 1], "T"),
      WholeArgument(arguments[first + 2], "R"), WholeArgument(arguments[first + 3], "B")};
}

inline void PrintResult(const std::string& text) { WriteStandardOutput(text.data(), text.size()); }

}  // namespace vsmkit

#endif  // VSM_TOOLS_VSMKIT_IMAGE_OP_ARGUMENTS_H_
