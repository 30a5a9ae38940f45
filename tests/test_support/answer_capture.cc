#include "test_support/answer_capture.h"

namespace vsm::testing {

char CaptureAnswer(unsigned int key, unsigned long long context, const char* text,
                   const void* binary, unsigned int binaryLength, long long extra) {
  auto* capture = reinterpret_cast<AnswerCapture*>(static_cast<uintptr_t>(context));
  CapturedAnswer answer;
  answer.text = text ? text : "";
  answer.hasBinary = binary != nullptr;
  if (binary != nullptr) answer.binary.assign(static_cast<const char*>(binary), binaryLength);
  answer.extra = extra;
  capture->answers.push_back(answer);
  return capture->reply;
}

}  // namespace vsm::testing
