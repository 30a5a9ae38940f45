#include "test_support/command_runner.h"

#include <gtest/gtest.h>

#include "core/distribute_command.h"

namespace vsm::testing {

std::string CommandOutcome::Text() const {
  if (answers.size() > 1) ADD_FAILURE() << "more than one answer: " << answers.size();
  return answers.empty() ? std::string() : answers.front().text;
}

CommandOutcome RunCommandText(const std::string& text, const std::string& origin,
                              const std::string& url, unsigned clientSupported,
                              unsigned sendBackKey) {
  AnswerCapture capture;
  CommandOutcome outcome;
  const HostCall call{sendBackKey,     capture.Context(), nullptr, 0,
                      clientSupported, &CaptureAnswer,    5,       origin.c_str()};
  outcome.result = DistributeCommandCall(0, url.c_str(), text.c_str(), call);
  outcome.answers = capture.answers;
  return outcome;
}

}  // namespace vsm::testing
