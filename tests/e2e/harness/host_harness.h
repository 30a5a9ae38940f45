// The end-to-end tests' host: loads the built libvsm.so with dlopen and calls its ten exports
// exactly as a host does, with a send-back callback that records every answer.
//
// Each command gets its own Capture, passed to the library as the send-back context (which the
// module hands back unread), so commands sent from many threads at once never mix their answers.
#ifndef VSM_TESTS_E2E_HARNESS_HOST_HARNESS_H_
#define VSM_TESTS_E2E_HARNESS_HOST_HARNESS_H_

#include <string>
#include <vector>

#include "vsm.h"

namespace vsm::e2e {

struct Library {
  decltype(&::DoAction) DoAction = nullptr;
  decltype(&::CloseWebSocket) CloseWebSocket = nullptr;
  decltype(&::GetWaitTimeout) GetWaitTimeout = nullptr;
  decltype(&::GetAlias) GetAlias = nullptr;
  decltype(&::GetVersionDesc) GetVersionDesc = nullptr;
  decltype(&::GetPorts) GetPorts = nullptr;
  decltype(&::DistributeCommand) DistributeCommand = nullptr;
  decltype(&::GetImage) GetImage = nullptr;
  decltype(&::SetImage) SetImage = nullptr;
  decltype(&::Reserved) Reserved = nullptr;
};

// The library, loaded once per process (RTLD_NOW); a failure to load fails the test.
const Library& LoadLibrary();

struct Answer {
  std::string text;
  std::string binary;
  bool hasBinary = false;
  unsigned key = 0;
  long long extra = 0;
};

struct Capture {
  std::vector<Answer> answers;
};

// The callback every command is sent with; it appends to the Capture in the context.
char RecordAnswer(unsigned int key, unsigned long long context, const char* text,
                  const void* binary, unsigned int binaryLength, long long extra);

struct CommandCall {
  std::string url = "/vsm/";
  std::string text;
  std::string origin = "http://127.0.0.1";
  const void* body = nullptr;
  unsigned bodyLength = 0;
  unsigned clientSupported = 1;
  unsigned key = 1;
  int mustBeZero = 0;
  SendBackCallback callback = &RecordAnswer;
};

struct CommandResult {
  int result = 0;
  std::vector<Answer> answers;
  // The only answer's text; "" when there was none, and a test failure when there were more.
  std::string Text() const;
};

CommandResult Send(const CommandCall& call);
// A command text on the usual road: URL "/vsm/", local origin, supported client.
CommandResult Send(const std::string& text);

// Runs a copy of vsmctl placed in `folder` (so that the module's start-up builds its files
// there), with `arguments` and `input` on standard input. Returns its standard output; the exit
// status goes to `status` when it is not null.
std::string RunHost(const std::string& folder, const std::vector<std::string>& arguments,
                    const std::string& input, int* status = nullptr);
// The same, with the program running under the user id `uid` (the caller must be root).
std::string RunHostAs(int uid, const std::string& folder, const std::vector<std::string>& arguments,
                      const std::string& input, int* status = nullptr);

}  // namespace vsm::e2e

#endif  // VSM_TESTS_E2E_HARNESS_HOST_HARNESS_H_
