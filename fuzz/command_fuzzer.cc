// The command road: DistributeCommand on "/vsm/" from a local page, as a host passes it.
//
// Input: up to eight command texts, separated by NUL bytes (a text arrives as a C string), run
// in order on one module, which is reset afterwards; so SetServerInfo can be followed by the
// commands that read what it stored. Each command must be answered exactly once, and a styled
// answer must parse as JSON unless its cmdId, which goes in unescaped, holds a character that
// needs escaping.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_support.h"
#include "module_host.h"
#include "protocol/json_command.h"
#include "protocol/json_reader.h"

namespace {

using vsm::fuzz::FuzzCheck;

constexpr size_t kMostCommands = 8;

bool NeedsEscaping(const std::string& text) {
  for (unsigned char c : text) {
    if (c < 0x20 || c == '"' || c == '\\') return true;
  }
  return false;
}

void CheckAnswer(const vsm::fuzz::HostCallInput& input, const vsm::fuzz::HostCallOutcome& outcome) {
  FuzzCheck(outcome.answers.size() == 1, "one answer per command", input.text);
  FuzzCheck(outcome.result == 1, "the export gives the callback's byte", input.text);
  const std::string& answer = outcome.answers.front();
  const std::string command = input.text.substr(0, input.text.find("\r\n\r\n"));
  if (answer.compare(0, 2, "{\n") != 0 || NeedsEscaping(vsm::JsonCommand(command).GetCmdId())) {
    return;
  }
  Json::Value parsed;
  FuzzCheck(vsm::ParseJsonText(answer, &parsed, false), "a styled answer parses",
            input.text + "\n---\n" + answer);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  vsm::fuzz::StartModule(false);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto texts = vsm::fuzz::SplitFields(data, size, kMostCommands);
  for (const std::string& text : texts) {
    vsm::fuzz::HostCallInput input;
    input.text = text.c_str();
    if (!vsm::fuzz::IsCallTheHostMayMake(input)) continue;
    CheckAnswer(input, vsm::fuzz::RunHostCall(input));
  }
  vsm::fuzz::ResetModule();
  return 0;
}
