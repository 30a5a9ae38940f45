// HttpParamResponse: the answer of one command as it will go back, and the body that came
// with the command.
//
// Owns the body (possibly empty) from construction to destruction. One command, one thread:
// not thread-safe.
#ifndef VSM_CORE_HTTP_PARAM_RESPONSE_H_
#define VSM_CORE_HTTP_PARAM_RESPONSE_H_

#include <cstdint>
#include <string>

#include "core/byte_block.h"

namespace vsm {

class HttpParamResponse {
 public:
  // `bodyFlag` is stored; nothing reads it.
  HttpParamResponse(ByteBlock body, uint8_t bodyFlag);
  virtual ~HttpParamResponse();
  HttpParamResponse(const HttpParamResponse&) = delete;
  HttpParamResponse& operator=(const HttpParamResponse&) = delete;

  std::string text;  // the result as it will go back; empty at the start

  const uint8_t* GetBody() const { return body_.data(); }
  uint32_t GetBodyLength() const { return body_.length(); }
  uint8_t GetBodyFlag() const { return bodyFlag_; }

 private:
  ByteBlock body_;
  uint8_t bodyFlag_;
};

}  // namespace vsm

#endif  // VSM_CORE_HTTP_PARAM_RESPONSE_H_
