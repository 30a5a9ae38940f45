// The end-to-end tests' host: loads the built libvsm.so with dlopen and calls its ten exports
// exactly as a host does. Each command gets its own AnswerCapture as the send-back context
// (which the module hands back unread), so commands sent from many threads never mix answers.
#ifndef VSM_TESTS_E2E_HARNESS_HOST_HARNESS_H_
#define VSM_TESTS_E2E_HARNESS_HOST_HARNESS_H_

#include <string>
#include <vector>

#include "test_support/answer_capture.h"
#include "vsm.h"

namespace vsm::e2e {

// The ten exports, in one list for the struct and for the loader.
// clang-format off
#define VSM_EXPORTS(X) \
  X(DoAction) X(CloseWebSocket) X(GetWaitTimeout) X(GetAlias) X(GetVersionDesc) X(GetPorts) \
  X(DistributeCommand) X(GetImage) X(SetImage) X(Reserved)
// clang-format on

struct Library {
#define VSM_FIELD(name) decltype(&::name) name = nullptr;
  VSM_EXPORTS(VSM_FIELD)
#undef VSM_FIELD
};

// The library, loaded once per process; a failure to load fails the test.
const Library& LoadLibrary();

struct CommandCall {
  std::string url = "/vsm/";
  std::string text;
  std::string origin = "http://127.0.0.1";
  const void* body = nullptr;
  unsigned bodyLength = 0;
  unsigned key = 1;
  int mustBeZero = 0;
  SendBackCallback callback = &testing::CaptureAnswer;
};

struct CommandResult {
  int result = 0;
  std::vector<testing::CapturedAnswer> answers;
  // The only answer's text; "" when there was none, a test failure when there were more.
  std::string Text() const;
};

CommandResult Send(const CommandCall& call);
// A command text on the usual road: URL "/vsm/", local origin, supported client.
CommandResult Send(const std::string& text);

// Starts a copy of vsmctl placed in `folder` with `arguments`, reading standard input from
// `inputPath` and writing standard output to `outputPath`, as user `uid` when it is not -1.
// Returns its process number; the caller waits for it.
int StartHostAs(int uid, const std::string& folder, const std::vector<std::string>& arguments,
                const std::string& inputPath, const std::string& outputPath);
// Runs a copy of vsmctl placed in `folder` (so that the module's start-up builds its files
// there) with `arguments` and `input` on standard input, as user `uid` when it is not -1 (the
// caller must then be root). Returns its standard output; the exit status goes to `status`.
std::string RunHostAs(int uid, const std::string& folder, const std::vector<std::string>& arguments,
                      const std::string& input, int* status = nullptr);
inline std::string RunHost(const std::string& folder, const std::vector<std::string>& arguments,
                           const std::string& input, int* status = nullptr) {
  return RunHostAs(-1, folder, arguments, input, status);
}

}  // namespace vsm::e2e

#endif  // VSM_TESTS_E2E_HARNESS_HOST_HARNESS_H_
