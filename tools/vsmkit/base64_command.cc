// vsmkit base64: CBase64 from standard input to standard output, bytes exact.
#include <string>
#include <vector>

#include "kit_command.h"
#include "subcommands.h"
#include "support/base64.h"

namespace vsmkit {

const char kBase64Usage[] =
    "vsmkit base64 encode|decode     base64 from standard input to standard output";

int RunBase64(const Arguments& arguments) {
  ExpectCount(arguments, 1);
  const std::string& direction = arguments[0];
  if (direction != "encode" && direction != "decode") {
    throw UsageError("unknown direction: " + direction);
  }
  const std::vector<uint8_t> input = ReadStandardInput();
  if (input.size() > UINT32_MAX / 2) throw OperationFailed("input too large");
  vsm::CBase64 codec;
  const auto size = static_cast<uint32_t>(input.size());
  if (direction == "encode") {
    const uint32_t length = codec.Encode(input.data(), size);
    WriteStandardOutput(codec.GetTextBuffer(), length);
  } else {
    codec.Decode(reinterpret_cast<const char*>(input.data()), size);
    uint32_t length = 0;
    const uint8_t* plain = codec.GetPlain(&length);
    WriteStandardOutput(plain, length);
  }
  return 0;
}

}  // namespace vsmkit
