// "GetServerInfo", "SetServerInfo", "ChangePort", "CheckQPTPort" and "GetPorts": the host name
// and ports of the service's two modules, read from and written to the port registry.
#include "commands/origin_guard.h"
#include "commands/server_document.h"
#include "config/config_store.h"
#include "config/log_writer.h"
#include "config/module_identity.h"
#include "config/port_registry.h"
#include "core/error_texts.h"
#include "core/manager_client.h"
#include "protocol/parameter_conversions.h"

namespace vsm {

namespace {

// No port is ever reported busy in this build.
bool IsPortInUse(uint16_t port, const std::string& host) { return false; }

int32_t PortOrMissing(const PortTable& table, const char* alias) {
  auto entry = table.find(alias);
  return entry == table.end() ? -1 : static_cast<int32_t>(entry->second);
}

}  // namespace

void ManagerClient::GetServerInfo(HttpParamRequest* request) {
  SetError(0, kDefaultErrorText);
  const std::string host = ReadConfigKey(kServerKey);
  PortTable sslPorts;
  PortTable plainPorts;
  LoadSslPortTable(&sslPorts, false);
  LoadPlainPortTable(&plainPorts, false);
  request->SetRawResult(BuildServerDocument(host, PortOrMissing(plainPorts, kScanningModuleAlias),
                                            PortOrMissing(sslPorts, kScanningModuleAlias),
                                            PortOrMissing(plainPorts, kModuleAlias),
                                            PortOrMissing(sslPorts, kModuleAlias)));
}

void ManagerClient::SetServerInfo(HttpParamRequest* request) {
  SetError(0, kDefaultErrorText);
  if (!PassesOriginGuard(request)) return;
  if (!HasEnoughParameters(request, 5)) return;
  const ResultList& parameters = request->GetParameters();
  std::string host;
  int32_t vsmPort = -1, vsmSslPort = -1, qptPort = -1, qptSslPort = -1;
  if (!ValueText(parameters[0], &host) || !ReadInt(parameters[1], &vsmPort) ||
      !ReadInt(parameters[2], &vsmSslPort) || !ReadInt(parameters[3], &qptPort) ||
      !ReadInt(parameters[4], &qptSslPort)) {
    ReplyRawParameterTypeError(request);
    return;
  }
  WriteConfigKey(kServerKey, host.c_str());
  SetPlainPortOf(static_cast<uint32_t>(qptPort), kScanningModuleAlias);
  SetSslPortOf(static_cast<uint32_t>(qptSslPort), kScanningModuleAlias);
  SetPlainPortOf(static_cast<uint32_t>(vsmPort), kModuleAlias);
  SetSslPortOf(static_cast<uint32_t>(vsmSslPort), kModuleAlias);
  // The answer shows what was asked for, not a new read of the file.
  request->SetRawResult(BuildServerDocument(host, qptPort, qptSslPort, vsmPort, vsmSslPort));
}

void ManagerClient::ChangePort(HttpParamRequest* request) {
  SetError(0, kDefaultErrorText);
  request->SetResult(true, nullptr, 0, GetErrorCode(), GetErrorText());
}

void ManagerClient::CheckQPTPort(HttpParamRequest* request) {
  SetError(0, kDefaultErrorText);
  if (!HasEnoughParameters(request, 3)) return;
  const ResultList& parameters = request->GetParameters();
  std::string host;
  int32_t firstPort = -1, secondPort = -1;
  if (!ValueText(parameters[0], &host) || !ReadInt(parameters[1], &firstPort) ||
      !ReadInt(parameters[2], &secondPort)) {
    ReplyRawParameterTypeError(request);
    return;
  }
  bool free = !IsPortInUse(static_cast<uint16_t>(firstPort), host) &&
              !IsPortInUse(static_cast<uint16_t>(secondPort), host);
  // The one handler that does not echo its parameters.
  request->ClearParameters();
  request->SetResult(free, nullptr, 0, GetErrorCode(), GetErrorText());
}

void ManagerClient::GetPorts(HttpParamRequest* request) {
  if (!HasEnoughParameters(request, 1)) return;
  std::string hash;
  ValueText(request->GetParameters()[0], &hash);
  const std::string user = FindUserOfHash(hash);
  std::string error;
  ModulePortMap ports = GetCurrentUserModulePorts(user, &error);
  if (!error.empty()) {
    request->SetResult(false, nullptr, 0, kErrorUserSidEmpty, error);
    return;
  }
  request->AddJsonResult(BuildPortsObject(ports), true, 0, kSuccessText);
}

ModulePortMap ManagerClient::GetCurrentUserModulePorts(const std::string& user,
                                                       std::string* error) {
  LogDebug("GetCurrentUserModulePorts user=%s", user.c_str());
  if (user.empty() && error != nullptr) *error = kUserSidEmptyText;
  return ModulePortMap();
}

ModulePortMap ManagerClient::BuildModulePorts(const std::string& user) {
  ModulePortMap ports;
  for (const char* alias : kModuleAliasPair) {
    int32_t plain = ReadUserPort(user, alias, false, false);
    int32_t ssl = ReadUserPort(user, alias, false, true);
    LogDebug("port:%d--%d, %s", plain, ssl, alias);
    ports[alias] = {plain, ssl};
  }
  return ports;
}

}  // namespace vsm
