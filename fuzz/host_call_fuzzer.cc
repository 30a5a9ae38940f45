// The whole of a DistributeCommand call as the host makes it: URL, origin, command text and
// binary body all come from the input, with logging on, so that every route and every log line
// sees them.
//
// Input: one byte of flags (bit 0: the host does not support the client; bit 1: no send-back
// key), then the URL, the origin, the text and the body, separated by NUL bytes; with fewer than
// four fields there is no body. With a send-back key, every call is answered exactly once;
// without one, only a URL that matches no route is answered ("Invalid command").
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_support.h"
#include "module_host.h"

namespace {

using vsm::fuzz::FuzzCheck;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  vsm::fuzz::StartModule(true);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  auto fields = vsm::fuzz::SplitFields(data + 1, size - 1, 4);
  vsm::fuzz::HostCallInput input;
  input.clientSupported = (data[0] & 1) != 0 ? 0 : 1;
  input.sendBackKey = (data[0] & 2) != 0 ? 0 : 1;
  input.hasBody = fields.size() == 4;
  fields.resize(4);
  input.url = fields[0];
  input.origin = fields[1];
  input.text = fields[2];
  input.body = fields[3];
  if (!vsm::fuzz::IsCallTheHostMayMake(input)) return 0;

  const vsm::fuzz::HostCallOutcome outcome = vsm::fuzz::RunHostCall(input);
  const std::string call = input.url + "\n" + input.origin + "\n" + input.text;
  if (input.sendBackKey != 0) {
    FuzzCheck(outcome.answers.size() == 1, "one answer per call", call);
    FuzzCheck(outcome.result == 1, "the export gives the callback's byte", call);
  } else {
    FuzzCheck(outcome.answers.empty() || outcome.answers.front() == "Invalid command",
              "without a key only an unrouted call is answered", call);
  }
  vsm::fuzz::ResetModule();
  return 0;
}
