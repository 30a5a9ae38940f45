// vsmkit rsa: the raw RSA transformation on hexadecimal byte strings, sized the way callers
// size it: ask with a null output, allocate that many zeroed bytes, transform.
#include <string>
#include <vector>

#include "bigint/rsa_transform.h"
#include "kit_command.h"
#include "subcommands.h"

namespace vsmkit {

const char kRsaUsage[] =
    "vsmkit rsa fixed|minimal EXP MOD DATA\n"
    "                                the raw RSA transformation, all three as hex bytes;\n"
    "                                prints the result and the whole output buffer in hex";

int RunRsa(const Arguments& arguments) {
  ExpectCount(arguments, 4);
  const std::string& form = arguments[0];
  if (form != "fixed" && form != "minimal") throw UsageError("unknown form: " + form);
  const auto transform = form == "fixed" ? vsm::RsaTransformFixed : vsm::RsaTransformMinimal;
  const std::vector<uint8_t> exponent = ParseHexBytes(arguments[1], "EXP");
  const std::vector<uint8_t> modulus = ParseHexBytes(arguments[2], "MOD");
  const std::vector<uint8_t> data = ParseHexBytes(arguments[3], "DATA");
  auto run = [&](uint8_t* output) {
    return transform(exponent.data(), static_cast<int32_t>(exponent.size()), modulus.data(),
                     static_cast<int32_t>(modulus.size()), data.data(),
                     static_cast<int32_t>(data.size()), output);
  };
  std::vector<uint8_t> output(run(nullptr), 0);
  const uint32_t result = run(output.data());
  const std::string answer =
      std::to_string(result) + " " + ToLowerHex(output.data(), output.size()) + "\n";
  WriteStandardOutput(answer.data(), answer.size());
  return 0;
}

}  // namespace vsmkit
