// VirtualManagerClient: the process-wide object behind every export.
//
// It routes DistributeCommand calls by URL into JSON commands and runs them through its one
// ManagerClient; it keeps the activity time that answers GetWaitTimeout; and it is the host's
// store of opaque image records keyed by GUID and of white-listed file paths.
//
// The instance comes into being at the first call that needs it (GetInstance, double-checked
// under `instanceLock`) and goes with DestroyInstance, which must not overlap other calls (the
// pointer is used after the lock is released; the host's order guarantees this). All other
// members are thread-safe: `stateLock` guards the activity time, `mapLock` the two maps. No
// lock is held across a handler or the host's callback.
#ifndef VSM_CORE_VIRTUAL_MANAGER_CLIENT_H_
#define VSM_CORE_VIRTUAL_MANAGER_CLIENT_H_

#include <cstdint>
#include <ctime>
#include <map>
#include <memory>
#include <string>

#include "core/byte_block.h"
#include "core/host_call.h"
#include "core/http_param_request.h"
#include "core/manager_client.h"
#include "support/rw_lock.h"

namespace vsm {

// One stored record, opaque to the module: exactly 2052 bytes.
struct ImageMapEntry {
  char first[1024];
  char second[1024];
  uint32_t value;
};
static_assert(sizeof(ImageMapEntry) == 2052, "the host reads records of 2052 bytes");

class VirtualManagerClient {
 public:
  static VirtualManagerClient* GetInstance();
  static void DestroyInstance();

  VirtualManagerClient();
  virtual ~VirtualManagerClient();
  VirtualManagerClient(const VirtualManagerClient&) = delete;
  VirtualManagerClient& operator=(const VirtualManagerClient&) = delete;

  ManagerClient* manager() { return manager_.get(); }

  // Builds the command of a DistributeCommand call from its URL, text and body copy, runs it
  // with the rest of the host's call and returns the host's byte.
  int RouteCommand(const HostCall& call, const std::string& url, const std::string& text,
                   ByteBlock bodyCopy);
  // What a URL and a text become: the JSON command (empty when no route matches) and the body
  // that goes with it (the body copy, a block cut from behind the text's blank line, or none).
  struct RoutedCommand {
    std::string command;
    ByteBlock body;
  };
  static RoutedCommand RouteText(const std::string& url, const std::string& text,
                                 ByteBlock bodyCopy);
  // Runs one request with the activity time at 0 while it runs. 0 for a null request.
  int RunCommand(HttpParamRequest* request);
  // The value of "vsver=" when a "&" follows it; "" otherwise.
  static std::string ExtractClientVersion(const std::string& url);

  // Stamps the activity time with the clock.
  void MarkActivity();
  // 1 while a command runs and for 30 seconds after the last command or send-back; 100 from
  // 31 seconds of idleness on.
  int GetWaitValue();

  // The host's store; see vsm.h for the exports that reach these.
  int GetImage(const char* url, void* out, uint32_t* outLength);
  int SetImage(const char* url, const void* data, uint32_t dataLength);
  int Reserved(const char* subCommand, const char* argument, const void* mustBeNull);
  // Everything behind "GUID=" when `url` holds `routeText`; "" otherwise. A null `url` raises
  // std::logic_error.
  static std::string ExtractGuid(const char* url, const char* routeText);
  // `path` with every backslash turned into a slash.
  static std::string NormalisePathKey(const std::string& path);
  int IsFileInWhiteList(const char* path);
  void AddFileToWhiteList(const char* path);

  // The clock of the activity time, in seconds; tests replace it.
  using SecondsClock = time_t (*)();
  static void SetClockForTesting(SecondsClock clock);

 private:
  time_t lastCommandTime_;
  CRWLock stateLock_;
  std::unique_ptr<ManagerClient> manager_;
  std::map<std::string, ImageMapEntry> imageMap_;
  CRWLock mapLock_;
  std::map<std::string, char> fileWhiteList_;
};

}  // namespace vsm

#endif  // VSM_CORE_VIRTUAL_MANAGER_CLIENT_H_
