// CBase64: decoding any text and encoding any bytes.
//
// Input: one byte of flags (bit 0: the input is decoded, else encoded), then the data. The fast
// loop of the class itself must give the same bytes and lengths as the step-by-step path a
// subclass takes; what is encoded decodes back to the input; and the decoder's result never
// passes its reservation.
#include <cstdint>
#include <string>

#include "fuzz_support.h"
#include "support/base64.h"

namespace {

using vsm::fuzz::FuzzCheck;

// Overrides nothing, but an object of a subclass takes the step-by-step path.
class StepByStep : public vsm::CBase64 {};

std::string Plain(vsm::CBase64& codec) {
  uint32_t length = 0;
  const uint8_t* plain = codec.GetPlain(&length);
  return length == 0 ? std::string() : std::string(reinterpret_cast<const char*>(plain), length);
}

std::string Text(vsm::CBase64& codec, uint32_t length) {
  return length == 0 ? std::string() : std::string(codec.GetTextBuffer(), length);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const auto* bytes = data + 1;
  const auto length = static_cast<uint32_t>(size - 1);
  vsm::CBase64 fast;
  StepByStep steps;
  if ((data[0] & 1) != 0) {
    const auto* text = reinterpret_cast<const char*>(bytes);
    const uint32_t decoded = fast.Decode(text, length);
    FuzzCheck(decoded == steps.Decode(text, length) && Plain(fast) == Plain(steps),
              "both decoders agree", std::string(text, length));
    FuzzCheck(decoded <= fast.plainCapacity(), "the result stays in its block");
    return 0;
  }
  const uint32_t encoded = fast.Encode(bytes, length);
  FuzzCheck(encoded == (length + 2) / 3 * 4, "four characters for every three bytes");
  FuzzCheck(encoded == steps.Encode(bytes, length) && Text(fast, encoded) == Text(steps, encoded),
            "both encoders agree");
  const std::string text = Text(fast, encoded);
  vsm::CBase64 decoder;
  decoder.Decode(text.data(), static_cast<uint32_t>(text.size()));
  FuzzCheck(Plain(decoder) == std::string(reinterpret_cast<const char*>(bytes), length),
            "encoded bytes decode back", text);
  return 0;
}
