// The command line of vsmhost.
//
// ParseHostOptions reads argv into HostOptions and throws HostUsageError for anything it can't
// read; the caller prints the message and kHostUsage and exits with 2. Defaults fill what the
// line leaves out: the module is libvsm.so beside the program, the page folder is page/ beside
// it, and the port comes from the first module (port < 0).
#ifndef VSM_TOOLS_VSMHOST_HOST_OPTIONS_H_
#define VSM_TOOLS_VSMHOST_HOST_OPTIONS_H_

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace vsmhost {

struct HostUsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct HostOptions {
  std::vector<std::string> modules;
  int port = -1;  // -1: the first module's GetPorts(0, ...); 0: any free port
  std::string pageDirectory;
  unsigned threads = 0;  // 0: one per core
  unsigned idleSeconds = 60;
  unsigned maxConnections = 256;
  size_t maxBodyBytes = 16 * 1024 * 1024;
  bool verbose = false;
  bool help = false;
};

extern const char kHostUsage[];

HostOptions ParseHostOptions(int argc, char** argv);

}  // namespace vsmhost

#endif  // VSM_TOOLS_VSMHOST_HOST_OPTIONS_H_
