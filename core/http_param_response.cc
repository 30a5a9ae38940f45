#include "core/http_param_response.h"

#include <cstdlib>

namespace vsm {

HttpParamResponse::HttpParamResponse(uint8_t* body, uint32_t bodyLength, uint8_t bodyFlag)
    : body_(body), bodyLength_(bodyLength), bodyFlag_(bodyFlag) {}

HttpParamResponse::~HttpParamResponse() {
  std::free(body_);
  body_ = nullptr;
}

}  // namespace vsm
