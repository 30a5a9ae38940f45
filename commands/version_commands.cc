// "VersionInfo" and "VSVersion": what a page is talking to. VersionInfo is the first command a
// page sends.
#include <cstdio>

#include "commands/user_hash.h"
#include "config/config_store.h"
#include "config/log_writer.h"
#include "config/module_identity.h"
#include "core/error_texts.h"
#include "core/manager_client.h"
#include "host/socket_user.h"

namespace vsm {

namespace {

// A client of this one old version gets the old version text.
constexpr char kOldClientVersion[] = "qwasm_13000404";
constexpr char kOldVersionText[] = "13,0,0,0404";
constexpr char kLastVersionElement[] = "32";

}  // namespace

std::string ManagerClient::GetCurrentUserSession(uint32_t clientSocket) {
  std::string user;
  uint32_t session = 0;
  uint32_t process = 0;
  GetUserOfSocket(clientSocket, &user, &session, &process);
  LogDebug("User=%s, sock=%d, session=%d, process=%d", user.c_str(), static_cast<int>(clientSocket),
           static_cast<int>(session), static_cast<int>(process));
  RecordUserSession(user, session, process);
  return user;
}

void ManagerClient::VersionInfo(HttpParamRequest* request) {
  const bool currentClient = request->GetVersion() != kOldClientVersion;
  const std::string versionText = currentClient ? kModuleVersion : kOldVersionText;
  request->SetResult(versionText, nullptr, 0, 0, kSuccessText);
  // From here on every encoding is an event, so the answer carries "event", not "method".
  request->AddResult(ModuleDisplayName, true, 0, kSuccessText);

  const std::string user = GetCurrentUserSession(request->GetClientSocket());
  char hashText[32] = {0};
  std::snprintf(hashText, sizeof(hashText), "%u", HashUserName(user));
  RecordUserHash(hashText, user);
  request->AddResult(hashText, true, 0, kSuccessText);

  const bool enhanced = GetWorkMode() == 0 && IsEnhancedModeEnabled() && currentClient;
  if (enhanced) {
    request->AddResult("true", true, 0, kSuccessText);
    std::string ignored;
    GetCurrentUserModulePorts(user, &ignored);
  } else {
    request->AddResult("false", true, 0, kSuccessText);
  }
  request->AddResult(kLastVersionElement, true, 0, kSuccessText);
}

void ManagerClient::VSVersion(HttpParamRequest* request) {
  // The key is read only for a call without parameters; with any parameter the version stays
  // empty. Pages rely on the plain call, and the asymmetry stays.
  std::string version;
  if (request->GetParameters().empty()) version = ReadConfigKey(kVSVersionKey);
  request->SetResult(version, nullptr, 0, 0, kSuccessText);
  request->AddResult(ServiceDisplayName, true, 0, kSuccessText);
}

}  // namespace vsm
