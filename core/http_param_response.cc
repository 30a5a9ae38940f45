#include "core/http_param_response.h"

#include <utility>

namespace vsm {

HttpParamResponse::HttpParamResponse(ByteBlock body, uint8_t bodyFlag)
    : body_(std::move(body)), bodyFlag_(bodyFlag) {}

HttpParamResponse::~HttpParamResponse() = default;

}  // namespace vsm
