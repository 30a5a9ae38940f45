#include "host_options.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace vsmhost {

const char kHostUsage[] =
    "usage: vsmhost [options]\n"
    "Serves the modules to web pages on the loopback interface: HTTP and WebSocket on\n"
    "127.0.0.1 (and ::1 where the system has it).\n"
    "  --module PATH          a module library to load (repeatable; default: libvsm.so beside\n"
    "                         vsmhost)\n"
    "  --port N               the port (default: the first module's; 0 picks a free one)\n"
    "  --page DIR             the demo page's folder (default: page/ beside vsmhost)\n"
    "  --threads N            I/O threads (default: one per core)\n"
    "  --idle-timeout S       close connections idle for S seconds (default: 60)\n"
    "  --max-connections N    connections open at once (default: 256)\n"
    "  --verbose              one line per request on standard error\n"
    "  --help                 this text\n";

namespace {

unsigned long ReadNumber(const std::string& option, const char* text, unsigned long high) {
  char* end = nullptr;
  errno = 0;
  const unsigned long value = strtoul(text, &end, 10);
  if (*text < '0' || *text > '9' || *end != '\0' || errno == ERANGE || value > high) {
    throw HostUsageError(option + " needs a number from 0 to " + std::to_string(high) + ", not \"" +
                         text + "\"");
  }
  return value;
}

// The folder of this program, with no '/' at the end.
std::string ProgramDirectory() {
  char path[4096];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
  const std::string program = length > 0 ? std::string(path, static_cast<size_t>(length)) : "";
  const size_t slash = program.rfind('/');
  return slash == std::string::npos ? "." : program.substr(0, slash);
}

}  // namespace

HostOptions ParseHostOptions(int argc, char** argv) {
  HostOptions options;
  for (int i = 1; i < argc; ++i) {
    const std::string option = argv[i];
    auto value = [&]() -> const char* {
      if (i + 1 >= argc) throw HostUsageError(option + " needs a value");
      return argv[++i];
    };
    if (option == "--help" || option == "-h") {
      options.help = true;
    } else if (option == "--module") {
      options.modules.push_back(value());
    } else if (option == "--port") {
      options.port = static_cast<int>(ReadNumber(option, value(), 65535));
    } else if (option == "--page") {
      options.pageDirectory = value();
    } else if (option == "--threads") {
      options.threads = static_cast<unsigned>(ReadNumber(option, value(), 256));
    } else if (option == "--idle-timeout") {
      options.idleSeconds = static_cast<unsigned>(ReadNumber(option, value(), 86400));
    } else if (option == "--max-connections") {
      options.maxConnections = static_cast<unsigned>(ReadNumber(option, value(), 65536));
    } else if (option == "--verbose") {
      options.verbose = true;
    } else {
      throw HostUsageError("unknown option " + option);
    }
  }
  if (options.maxConnections == 0) throw HostUsageError("--max-connections must be at least 1");
  const std::string home = ProgramDirectory();
  if (options.modules.empty()) options.modules.push_back(home + "/libvsm.so");
  if (options.pageDirectory.empty()) options.pageDirectory = home + "/page";
  return options;
}

}  // namespace vsmhost
