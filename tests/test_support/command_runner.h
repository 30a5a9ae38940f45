// Sends a command through the module's own entry (DistributeCommand's road) in-process and
// collects what comes back.
#ifndef VSM_TESTS_TEST_SUPPORT_COMMAND_RUNNER_H_
#define VSM_TESTS_TEST_SUPPORT_COMMAND_RUNNER_H_

#include <string>
#include <vector>

#include "test_support/answer_capture.h"

namespace vsm::testing {

struct CommandOutcome {
  int result = 0;
  std::vector<CapturedAnswer> answers;
  // The only answer's text ("" when none; a test failure when more than one).
  std::string Text() const;
};

constexpr char kLocalOrigin[] = "http://127.0.0.1";

CommandOutcome RunCommandText(const std::string& text, const std::string& origin = kLocalOrigin,
                              const std::string& url = "/vsm/", unsigned clientSupported = 1,
                              unsigned sendBackKey = 1);

}  // namespace vsm::testing

#endif  // VSM_TESTS_TEST_SUPPORT_COMMAND_RUNNER_H_
