#include "module_host.h"

#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "config/log_writer.h"
#include "config/path_table.h"
#include "config/working_paths.h"
#include "core/distribute_command.h"
#include "core/module_lifecycle.h"
#include "core/virtual_manager_client.h"
#include "fuzz_support.h"
#include "protocol/json_command.h"

namespace vsm::fuzz {

namespace {

constexpr uintmax_t kLogFileLimit = 4u << 20;
// The send-back formats cmdId into a 1024-byte buffer beside 15 bytes of its own and a NUL.
constexpr size_t kLongestCmdId = 1008;
// Not a socket: the commands that look up the user behind the client's socket find none, and
// so start no shell.
constexpr uint32_t kNoSocket = 0xFFFFFFFF;

bool loggingEverything = false;

char CollectAnswer(unsigned int key, unsigned long long context, const char* text,
                   const void* binary, unsigned int binaryLength, long long extra) {
  reinterpret_cast<HostCallOutcome*>(static_cast<uintptr_t>(context))->answers.push_back(text);
  return 1;
}

}  // namespace

void StartModule(bool logEverything) {
  InitializeWorkingPathsFrom(ScratchFolder() + "/host", false);
  RunAction(0, nullptr, nullptr, 0);
  loggingEverything = logEverything;
  SetVerboseLogging(logEverything);
}

bool IsCallTheHostMayMake(const HostCallInput& input) {
  try {
    // Only the text up to its NUL arrives: it comes as a C string.
    const std::string text(input.text.c_str());
    const std::string command =
        VirtualManagerClient::RouteText(input.url.c_str(), text, ByteBlock()).command;
    // A longer cmdId overflows the send-back's buffer, and its checked formatter ends the
    // process.
    return JsonCommand(command).GetCmdId().size() <= kLongestCmdId;
  } catch (const std::out_of_range&) {
    // A "/LoadZipFromBytes" URL too short to hold the type character: the route's substr
    // raises std::out_of_range, which reaches the host.
    return false;
  }
}

HostCallOutcome RunHostCall(const HostCallInput& input) {
  HostCallOutcome outcome;
  HostCall call;
  call.sendBackKey = input.sendBackKey;
  call.sendBackContext = reinterpret_cast<uintptr_t>(&outcome);
  call.body = input.hasBody ? input.body.data() : nullptr;
  call.bodyLength = static_cast<uint32_t>(input.body.size());
  call.clientSupported = input.clientSupported;
  call.sendBackHandle = &CollectAnswer;
  call.clientSocket = kNoSocket;
  call.origin = input.origin.c_str();
  outcome.result = DistributeCommandCall(0, input.url.c_str(), input.text.c_str(), call);
  return outcome;
}

void ResetModule() {
  VirtualManagerClient::DestroyInstance();
  for (const std::string& file : {GetConfigFile(), GetServiceFile(), GetUserConfigFile()}) {
    unlink(file.c_str());
  }
  if (loggingEverything) {
    std::error_code error;
    const std::string log = GetServiceLogFile();
    if (std::filesystem::file_size(log, error) > kLogFileLimit && !error) unlink(log.c_str());
  }
}

}  // namespace vsm::fuzz
