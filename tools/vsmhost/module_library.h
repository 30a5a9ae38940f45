// One module, loaded with dlopen and reached only through the ten exports of vsm.h.
//
// Load() binds every export (a library that lacks one is refused) and reads the module's
// identity: alias, version description and its two ports. Distribute() hands one command to
// DistributeCommand on the calling thread and keeps what the module's send-back callback
// receives; the module answers on that thread before the export returns, so the answer lives on
// the caller's stack and answers of different commands never meet. Every export may be called
// from any thread; Start() and Stop() are the host's to order around them (Stop() overlaps no
// other call). The library stays loaded until the process ends.
#ifndef VSM_TOOLS_VSMHOST_MODULE_LIBRARY_H_
#define VSM_TOOLS_VSMHOST_MODULE_LIBRARY_H_

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>

#include "vsm.h"

namespace vsmhost {

struct ModuleLoadError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The connection a command came on: its number (never 0, since the module drops answers for
// key 0) and its socket descriptor, which the module may ask the system about.
struct Connection {
  unsigned number = 0;
  int socket = -1;
};

// What the callback received for one command.
struct ModuleAnswer {
  bool answered = false;
  std::string text;
  bool hasBinary = false;
  std::string binary;
  int result = 0;
};

class ModuleLibrary {
 public:
  static std::unique_ptr<ModuleLibrary> Load(const std::string& path);

  const std::string& path() const { return path_; }
  const std::string& alias() const { return alias_; }
  const std::string& version() const { return version_; }
  unsigned firstPort() const { return ports_[0]; }
  unsigned secondPort() const { return ports_[1]; }

  int Start();  // DoAction(0, ...)
  int Stop();   // DoAction(3, ...)

  ModuleAnswer Distribute(const Connection& connection, const std::string& url,
                          const std::string& text, const std::string& origin) const;
  void CloseWebSocket(unsigned connection) const;

  // Asks GetWaitTimeout and keeps the value for LastWaitTimeout (-1 before the first poll).
  void PollWaitTimeout();
  int LastWaitTimeout() const { return waitTimeout_.load(std::memory_order_relaxed); }

 private:
  ModuleLibrary() = default;

  std::string path_, alias_, version_;
  unsigned ports_[2] = {0, 0};
  std::atomic<int> waitTimeout_{-1};
  decltype(&::DoAction) doAction_ = nullptr;
  decltype(&::CloseWebSocket) closeWebSocket_ = nullptr;
  decltype(&::GetWaitTimeout) getWaitTimeout_ = nullptr;
  decltype(&::GetAlias) getAlias_ = nullptr;
  decltype(&::GetVersionDesc) getVersionDesc_ = nullptr;
  decltype(&::GetPorts) getPorts_ = nullptr;
  decltype(&::DistributeCommand) distributeCommand_ = nullptr;
  decltype(&::GetImage) getImage_ = nullptr;
  decltype(&::SetImage) setImage_ = nullptr;
  decltype(&::Reserved) reserved_ = nullptr;
};

}  // namespace vsmhost

#endif  // VSM_TOOLS_VSMHOST_MODULE_LIBRARY_H_
