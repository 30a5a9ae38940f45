#include "commands/origin_guard.h"

#include "core/error_texts.h"
#include "core/http_param_request.h"

namespace vsm {

bool IsLocalOrigin(const std::string& origin) {
  return origin.find("http://127.0.0.1") == 0 || origin.find("https://127.0.0.1") == 0;
}

bool PassesOriginGuard(HttpParamRequest* request) {
  if (IsLocalOrigin(request->GetOrigin())) return true;
  request->SetResult(false, nullptr, 0, kErrorLocalOriginOnly, kLocalOriginOnlyText);
  return false;
}

}  // namespace vsm
