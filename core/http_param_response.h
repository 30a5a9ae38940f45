// HttpParamResponse: the answer of one command as it will go back, and the body that came
// with the command.
//
// Owns `body` (a malloc block, or null) from construction and frees it on destruction. One
// command, one thread: not thread-safe.
#ifndef VSM_CORE_HTTP_PARAM_RESPONSE_H_
#define VSM_CORE_HTTP_PARAM_RESPONSE_H_

#include <cstdint>
#include <string>

namespace vsm {

class HttpParamResponse {
 public:
  // Takes over `body`. `bodyFlag` is stored; nothing reads it.
  HttpParamResponse(uint8_t* body, uint32_t bodyLength, uint8_t bodyFlag);
  virtual ~HttpParamResponse();
  HttpParamResponse(const HttpParamResponse&) = delete;
  HttpParamResponse& operator=(const HttpParamResponse&) = delete;

  std::string text;  // the result as it will go back; empty at the start

  const uint8_t* GetBody() const { return body_; }
  uint32_t GetBodyLength() const { return bodyLength_; }
  uint8_t GetBodyFlag() const { return bodyFlag_; }

 private:
  uint8_t* body_;
  uint32_t bodyLength_;
  uint8_t bodyFlag_;
};

}  // namespace vsm

#endif  // VSM_CORE_HTTP_PARAM_RESPONSE_H_
