// A send-back callback for in-process tests: each command gets an AnswerCapture, passed as the
// send-back context, which records every answer the module sends.
#ifndef VSM_TESTS_TEST_SUPPORT_ANSWER_CAPTURE_H_
#define VSM_TESTS_TEST_SUPPORT_ANSWER_CAPTURE_H_

#include <cstdint>
#include <string>
#include <vector>

#include "vsm.h"

namespace vsm::testing {

struct CapturedAnswer {
  std::string text;
  std::string binary;
  bool hasBinary = false;
  long long extra = -1;
};

struct AnswerCapture {
  std::vector<CapturedAnswer> answers;
  char reply = 1;  // the byte the callback gives back

  unsigned long long Context() { return reinterpret_cast<uintptr_t>(this); }
};

char CaptureAnswer(unsigned int key, unsigned long long context, const char* text,
                   const void* binary, unsigned int binaryLength, long long extra);

}  // namespace vsm::testing

#endif  // VSM_TESTS_TEST_SUPPORT_ANSWER_CAPTURE_H_
