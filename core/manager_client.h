// ManagerClient: the object that knows the service commands.
//
// It holds the method table (exact, case-sensitive names to handlers), decides whether a
// command may run, times it, dispatches it and triggers the send-back. Handlers report through
// the request's result operations; their own results are ignored.
//
// One ManagerClient serves all threads. The method table never changes after construction and
// is read without a lock. `errorCode`/`errorText` and the two user maps are shared by every
// command: a handler stores its code on entry and reads it back a moment later, so two commands
// running at once can see each other's code. That sharing is how the service has always
// behaved. Each single access is atomic, though, so concurrent commands never tear a text or
// corrupt a map.
#ifndef VSM_CORE_MANAGER_CLIENT_H_
#define VSM_CORE_MANAGER_CLIENT_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "core/http_param_request.h"

namespace vsm {

class ManagerClient;
using CommandHandler = void (ManagerClient::*)(HttpParamRequest* request);

// What VersionInfo records about a user. Only `session` and `process` are ever written.
struct UserSessionRecord {
  uint64_t reserved1 = 0;
  uint64_t reserved2 = 0;
  uint32_t reserved3 = 0;
  uint32_t reserved4 = 0;
  uint32_t session = 0;
  uint32_t process = 0;
  std::string text;
};

// Alias to (plain port, secure port).
using ModulePortMap = std::map<std::string, std::pair<int32_t, int32_t>>;

class ManagerClient {
 public:
  static constexpr size_t kMaxRememberedHashes = 10000;

  ManagerClient();
  virtual ~ManagerClient();
  ManagerClient(const ManagerClient&) = delete;
  ManagerClient& operator=(const ManagerClient&) = delete;

  // Stores `code` and `text` (cut to 1023 characters).
  void SetError(int32_t code, const std::string& text);
  int32_t GetErrorCode();
  std::string GetErrorText();

  // The entry for one command: refuses an unsupported client (-2205), else dispatches, then
  // sends the answer back. 0 or the host's byte.
  int DoCommand(HttpParamRequest* request);
  // Runs the handler of the request's method, or answers -2200 "Function not found".
  void Dispatch(HttpParamRequest* request);

  // The handlers of the method table.
  void VersionInfo(HttpParamRequest* request);
  void GetServerInfo(HttpParamRequest* request);
  void SetServerInfo(HttpParamRequest* request);
  void ChangePort(HttpParamRequest* request);
  void Reboot(HttpParamRequest* request);
  void AddFirewall(HttpParamRequest* request);
  void GetLocalIP(HttpParamRequest* request);
  void CheckQPTPort(HttpParamRequest* request);
  void VSVersion(HttpParamRequest* request);
  void GetPorts(HttpParamRequest* request);

  // Members outside the table, kept for the service's other builds: the enveloped answer to a
  // parameter of the wrong type (false, -2405, "Invalid parameter type."), and the exit
  // request of a user.
  void ReplyEnvelopedParameterTypeError(HttpParamRequest* request);
  void RequestUserExit(const std::string& user);

  // The user behind a client socket; records its session. Empty on this platform.
  std::string GetCurrentUserSession(uint32_t clientSocket);
  // The ports of `user`'s modules. An empty user sets `error` to "User SID is empty.". The map
  // is empty either way: BuildModulePorts is not connected in this build.
  ModulePortMap GetCurrentUserModulePorts(const std::string& user, std::string* error);
  // The filled form of the port map, from the user's values in user_config.ini.
  ModulePortMap BuildModulePorts(const std::string& user);

  // Copies of the user maps, for tests and diagnostics.
  std::map<std::string, UserSessionRecord> GetUserSessions();
  std::map<std::string, std::string> GetUserHashes();

 private:
  bool HasEnoughParameters(HttpParamRequest* request, size_t needed);
  // What the handlers answer to a parameter of the wrong type: the raw text "{}", with no
  // code, no id and no cmdId; the error goes to the log only.
  void ReplyRawParameterTypeError(HttpParamRequest* request);
  // The user stored under `hash`, inserting an empty user for an unknown hash while the map
  // holds fewer than kMaxRememberedHashes entries. Hashes that VersionInfo records are kept
  // whatever the count: there is one per user of the machine.
  std::string FindUserOfHash(const std::string& hash);
  void RecordUserSession(const std::string& user, uint32_t session, uint32_t process);
  void RecordUserHash(const std::string& hashText, const std::string& user);

  std::map<std::string, CommandHandler> methodTable_;
  int32_t errorCode_ = 0;
  char errorText_[1024] = {0};
  std::map<std::string, UserSessionRecord> userSessions_;
  uint64_t unused_ = 0;
  std::map<std::string, std::string> userHashes_;
  std::mutex sharedStateMutex_;  // makes each access to the four shared members atomic
};

}  // namespace vsm

#endif  // VSM_CORE_MANAGER_CLIENT_H_
