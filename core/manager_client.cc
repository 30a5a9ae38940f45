#include "core/manager_client.h"

#include <cstdio>

#include "config/config_store.h"
#include "config/log_writer.h"
#include "core/error_texts.h"
#include "support/clock.h"

namespace vsm {

ManagerClient::ManagerClient() {
  methodTable_["VersionInfo"] = &ManagerClient::VersionInfo;
  methodTable_["GetServerInfo"] = &ManagerClient::GetServerInfo;
  methodTable_["SetServerInfo"] = &ManagerClient::SetServerInfo;
  methodTable_["ChangePort"] = &ManagerClient::ChangePort;
  methodTable_["Reboot"] = &ManagerClient::Reboot;
  methodTable_["AddFirewall"] = &ManagerClient::AddFirewall;
  methodTable_["GetLocalIP"] = &ManagerClient::GetLocalIP;
  methodTable_["CheckQPTPort"] = &ManagerClient::CheckQPTPort;
  methodTable_["VSVersion"] = &ManagerClient::VSVersion;
  methodTable_["GetPorts"] = &ManagerClient::GetPorts;
}

ManagerClient::~ManagerClient() = default;

void ManagerClient::SetError(int32_t code, const std::string& text) {
  std::lock_guard<std::mutex> hold(sharedStateMutex_);
  errorCode_ = code;
  std::snprintf(errorText_, sizeof(errorText_), "%s", text.c_str());
}

int32_t ManagerClient::GetErrorCode() {
  std::lock_guard<std::mutex> hold(sharedStateMutex_);
  return errorCode_;
}

std::string ManagerClient::GetErrorText() {
  std::lock_guard<std::mutex> hold(sharedStateMutex_);
  return errorText_;
}

int ManagerClient::DoCommand(HttpParamRequest* request) {
  // The timing lines count from "Receive Command", which RunCommand writes, so they start at 2.
  LogDebug("2. Before command actually start cost: %ums. id = [%s].",
           GetTickMilliseconds() - request->GetStartTick(), request->GetId().c_str());
  request->GetLap();
  if (request->IsClientSupported() == 0) {
    request->SetResult(false, nullptr, 0, kErrorUnsupportedClient, kUnsupportedClientText);
    return request->SendBack();
  }
  Dispatch(request);
  LogDebug("3. Command process cost: %ums. cmd = [%s]. id = [%s].",
           GetTickMilliseconds() - request->GetLap(), request->GetMethod().c_str(),
           request->GetId().c_str());
  if (request->GetResponse() == nullptr) {
    LogDebug("No valid value to return. result = NULL.");
    return 0;
  }
  int value = request->SendBack();
  LogDebug("4. Command send back result cost: %ums. id = [%s].\n",
           GetTickMilliseconds() - request->GetLap(), request->GetId().c_str());
  return value;
}

void ManagerClient::Dispatch(HttpParamRequest* request) {
  const std::string method = request->GetMethod();
  auto entry = methodTable_.find(method);
  if (entry != methodTable_.end()) {
    LogDebug("Twain function [%s] begin: ", method.c_str());
    (this->*(entry->second))(request);
    return;
  }
  LogError("Invalid function name: %s.", method.c_str());
  request->SetResult(false, nullptr, 0, kErrorFunctionNotFound, kFunctionNotFoundText);
}

bool ManagerClient::HasEnoughParameters(HttpParamRequest* request, size_t needed) {
  size_t actual = request->GetParameters().size();
  if (actual >= needed) return true;
  // "Invalidate" is the word the log has always had.
  LogError("Invalidate parameter count. Need %d parameter, %d parameter actually.",
           static_cast<int>(needed), static_cast<int>(actual));
  request->SetResult(false, nullptr, 0, kErrorInvalidParameterCount, kInvalidParameterCountText);
  return false;
}

void ManagerClient::ReplyRawParameterTypeError(HttpParamRequest* request) {
  LogError("%s", kInvalidParameterTypeText.c_str());
  request->SetRawResult("{}");
}

void ManagerClient::ReplyEnvelopedParameterTypeError(HttpParamRequest* request) {
  SetError(kErrorInvalidParameterType, kInvalidParameterTypeText);
  LogError("%s", kInvalidParameterTypeText.c_str());
  request->SetResult(false, nullptr, 0, GetErrorCode(), GetErrorText());
}

void ManagerClient::RequestUserExit(const std::string& user) { WriteExitFlag(user, true); }

std::string ManagerClient::FindUserOfHash(const std::string& hash) {
  std::lock_guard<std::mutex> hold(sharedStateMutex_);
  auto known = userHashes_.find(hash);
  if (known != userHashes_.end()) return known->second;
  // Bounded, not ever-growing: a page may send any number of made-up hashes, and each would stay
  // for the life of the host. Past the bound an unknown hash answers the same and is not kept.
  if (userHashes_.size() < kMaxRememberedHashes) userHashes_.emplace(hash, std::string());
  return std::string();
}

void ManagerClient::RecordUserSession(const std::string& user, uint32_t session, uint32_t process) {
  std::lock_guard<std::mutex> hold(sharedStateMutex_);
  UserSessionRecord& record = userSessions_[user];
  record.session = session;
  record.process = process;
}

void ManagerClient::RecordUserHash(const std::string& hashText, const std::string& user) {
  std::lock_guard<std::mutex> hold(sharedStateMutex_);
  userHashes_[hashText] = user;
}

std::map<std::string, UserSessionRecord> ManagerClient::GetUserSessions() {
  std::lock_guard<std::mutex> hold(sharedStateMutex_);
  return userSessions_;
}

std::map<std::string, std::string> ManagerClient::GetUserHashes() {
  std::lock_guard<std::mutex> hold(sharedStateMutex_);
  return userHashes_;
}

}  // namespace vsm
