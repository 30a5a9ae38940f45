// "Reboot", "AddFirewall" and "GetLocalIP": commands for a page on this machine only. On this
// platform they do no work of their own; their fixed answers behind the origin guard are the
// whole behaviour.
#include "commands/origin_guard.h"
#include "core/error_texts.h"
#include "core/manager_client.h"

namespace vsm {

void ManagerClient::Reboot(HttpParamRequest* request) {
  SetError(0, kDefaultErrorText);
  if (!PassesOriginGuard(request)) return;
  request->SetResult(true, nullptr, 0, GetErrorCode(), GetErrorText());
}

void ManagerClient::AddFirewall(HttpParamRequest* request) {
  SetError(0, kDefaultErrorText);
  if (!PassesOriginGuard(request)) return;
  request->SetResult(false, nullptr, 0, GetErrorCode(), GetErrorText());
}

void ManagerClient::GetLocalIP(HttpParamRequest* request) {
  SetError(0, kDefaultErrorText);
  if (!PassesOriginGuard(request)) return;
  request->SetRawResult(std::string("[") + "]");
}

}  // namespace vsm
