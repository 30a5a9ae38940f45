// What every connection of vsmhost shares: the options, the loaded modules, the demo page held in
// memory, and the count of open connections with its cap.
//
// Everything here is read-only once the listeners run, except the counters, which are atomic,
// so any I/O thread may use the context without a lock.
#ifndef VSM_TOOLS_VSMHOST_HOST_CONTEXT_H_
#define VSM_TOOLS_VSMHOST_HOST_CONTEXT_H_

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host_options.h"
#include "module_library.h"

namespace vsmhost {

struct PageFile {
  std::string type;
  std::string bytes;
};

class HostContext;

// One open connection's place under the cap; the place frees when the slot goes. Moves from
// the HTTP session to the WebSocket session that takes its socket over.
class ConnectionSlot {
 public:
  ConnectionSlot() = default;
  explicit ConnectionSlot(HostContext* host) : host_(host) {}
  ConnectionSlot(ConnectionSlot&& other) noexcept : host_(other.host_) { other.host_ = nullptr; }
  ConnectionSlot& operator=(ConnectionSlot&&) = delete;
  ~ConnectionSlot();

 private:
  HostContext* host_ = nullptr;
};

class HostContext {
 public:
  HostContext(HostOptions options, std::vector<std::unique_ptr<ModuleLibrary>> modules);

  const HostOptions& options() const { return options_; }
  const std::vector<std::unique_ptr<ModuleLibrary>>& modules() const { return modules_; }
  // The module whose alias is exactly `alias`, or null.
  const ModuleLibrary* FindModule(const std::string& alias) const;
  // The page file called `name` ("index.html", ...), or null.
  const PageFile* FindPageFile(const std::string& name) const;

  // A place for one more connection, or nothing at the cap.
  std::optional<ConnectionSlot> TakeSlot();
  unsigned openConnections() const { return open_.load(); }
  // Numbers connections from 1; 0 is skipped when the count wraps.
  unsigned NewConnectionNumber();

  void set_port(unsigned port) { port_ = port; }
  unsigned port() const { return port_; }
  double UptimeSeconds() const;

 private:
  friend class ConnectionSlot;
  void LoadPage();

  HostOptions options_;
  std::vector<std::unique_ptr<ModuleLibrary>> modules_;
  std::map<std::string, PageFile> page_;
  std::atomic<unsigned> open_{0};
  std::atomic<unsigned> nextNumber_{0};
  unsigned port_ = 0;
  std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
};

}  // namespace vsmhost

#endif  // VSM_TOOLS_VSMHOST_HOST_CONTEXT_H_
