// vsmctl: a small host for libvsm.so.
//
// It loads the library with dlopen, calls the exports in the order a host does (GetAlias,
// GetVersionDesc, GetPorts, DoAction), then sends commands through DistributeCommand: the JSON
// command texts given as arguments, or one per line from standard input. Every answer is printed
// exactly as the send-back callback received it, framed by header lines, with the export's
// result behind it:
//
//   --- answer (N bytes)
//   <the N bytes of the answer; a line feed is added only when they don't end in one>
//   --- result R
//
// Errors in its own use (no library, a bad option) print a message and exit with 2.
#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "vsm.h"

namespace {

struct Exports {
  decltype(&::DoAction) doAction = nullptr;
  decltype(&::CloseWebSocket) closeWebSocket = nullptr;
  decltype(&::GetWaitTimeout) getWaitTimeout = nullptr;
  decltype(&::GetAlias) getAlias = nullptr;
  decltype(&::GetVersionDesc) getVersionDesc = nullptr;
  decltype(&::GetPorts) getPorts = nullptr;
  decltype(&::DistributeCommand) distributeCommand = nullptr;
  decltype(&::GetImage) getImage = nullptr;
  decltype(&::SetImage) setImage = nullptr;
  decltype(&::Reserved) reserved = nullptr;
};

struct Options {
  std::string library;
  std::string url = "/vsm/";
  std::string origin = "http://127.0.0.1";
  std::string body;
  bool hasBody = false;
  unsigned clientSupported = 1;
  unsigned sendBackKey = 1;
  unsigned action = 0;
  bool start = true;
  bool stop = true;
  std::vector<std::string> commands;
};

const char kUsage[] =
    "usage: vsmctl [options] [COMMAND...]\n"
    "Loads libvsm.so as a host does and sends it JSON commands: the COMMAND arguments, or one\n"
    "per line from standard input when none is given.\n"
    "  --lib PATH       the library to load (default: libvsm.so beside vsmctl)\n"
    "  --url URL        URL of each command (default: /vsm/)\n"
    "  --origin TEXT    origin of each command (default: http://127.0.0.1)\n"
    "  --body TEXT      send TEXT as the binary body of each command\n"
    "  --unsupported    mark the client as not supported\n"
    "  --key N          send-back key (default: 1; 0 means no send-back)\n"
    "  --action N       the DoAction that starts the module (default: 0)\n"
    "  --no-start       don't call DoAction before the commands\n"
    "  --no-stop        don't call DoAction(3) at the end\n"
    "  --help           this text\n";

[[noreturn]] void Fail(const std::string& message) {
  std::fprintf(stderr, "vsmctl: %s\n", message.c_str());
  std::exit(2);
}

[[noreturn]] void FailUsage(const std::string& message) {
  std::fprintf(stderr, "vsmctl: %s\n%s", message.c_str(), kUsage);
  std::exit(2);
}

unsigned ParseNumber(const std::string& option, const char* text) {
  char* end = nullptr;
  unsigned long value = std::strtoul(text, &end, 10);
  if (*text == '\0' || *end != '\0' || value > 0xFFFFFFFFul) {
    FailUsage(option + " needs a number, not \"" + text + "\"");
  }
  return static_cast<unsigned>(value);
}

std::string DefaultLibraryPath() {
  char path[4096] = {0};
  ssize_t length = readlink("/proc/self/exe", path, sizeof(path) - 1);
  std::string program = length > 0 ? std::string(path, static_cast<size_t>(length)) : "";
  size_t slash = program.rfind('/');
  return (slash == std::string::npos ? std::string(".") : program.substr(0, slash)) + "/libvsm.so";
}

Options ParseOptions(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    auto value = [&]() -> const char* {
      if (i + 1 >= argc) FailUsage(arg + " needs a value");
      return argv[++i];
    };
    if (arg == "--help") {
      std::fputs(kUsage, stdout);
      std::exit(0);
    } else if (arg == "--lib") {
      options.library = value();
    } else if (arg == "--url") {
      options.url = value();
    } else if (arg == "--origin") {
      options.origin = value();
    } else if (arg == "--body") {
      options.body = value();
      options.hasBody = true;
    } else if (arg == "--unsupported") {
      options.clientSupported = 0;
    } else if (arg == "--key") {
      options.sendBackKey = ParseNumber(arg, value());
    } else if (arg == "--action") {
      options.action = ParseNumber(arg, value());
    } else if (arg == "--no-start") {
      options.start = false;
    } else if (arg == "--no-stop") {
      options.stop = false;
    } else if (arg.size() > 1 && arg[0] == '-' && arg[1] == '-') {
      FailUsage("unknown option " + arg);
    } else {
      options.commands.push_back(arg);
    }
  }
  if (options.library.empty()) options.library = DefaultLibraryPath();
  return options;
}

template <typename Function>
void Bind(void* library, const char* name, Function* out) {
  *out = reinterpret_cast<Function>(dlsym(library, name));
  if (*out == nullptr) Fail(std::string("the library has no export ") + name);
}

Exports LoadExports(const std::string& path) {
  void* library = dlopen(path.c_str(), RTLD_NOW);
  if (library == nullptr) Fail("cannot load " + path + ": " + dlerror());
  Exports exports;
  Bind(library, "DoAction", &exports.doAction);
  Bind(library, "CloseWebSocket", &exports.closeWebSocket);
  Bind(library, "GetWaitTimeout", &exports.getWaitTimeout);
  Bind(library, "GetAlias", &exports.getAlias);
  Bind(library, "GetVersionDesc", &exports.getVersionDesc);
  Bind(library, "GetPorts", &exports.getPorts);
  Bind(library, "DistributeCommand", &exports.distributeCommand);
  Bind(library, "GetImage", &exports.getImage);
  Bind(library, "SetImage", &exports.setImage);
  Bind(library, "Reserved", &exports.reserved);
  return exports;
}

char PrintAnswer(unsigned int key, unsigned long long context, const char* text, const void* binary,
                 unsigned int binaryLength, long long extra) {
  size_t length = text ? std::strlen(text) : 0;
  std::printf("--- answer (%zu bytes)\n", length);
  std::fwrite(text, 1, length, stdout);
  if (length == 0 || text[length - 1] != '\n') std::fputc('\n', stdout);
  if (binary != nullptr) std::printf("--- binary (%u bytes)\n", binaryLength);
  return 1;
}

void Greet(const Exports& exports) {
  char alias[8] = {0};
  int aliasLength = exports.getAlias(alias);
  std::vector<char> version(static_cast<size_t>(exports.getVersionDesc(nullptr)) + 1, '\0');
  int versionLength = exports.getVersionDesc(version.data());
  unsigned plain = 0, second = 0;
  exports.getPorts(0, &plain);
  exports.getPorts(1, &second);
  std::printf("alias: %s (%d)\nversion: %s (%d)\nports: %u %u\n", alias, aliasLength,
              version.data(), versionLength, plain, second);
}

}  // namespace

int main(int argc, char** argv) {
  Options options = ParseOptions(argc, argv);
  Exports exports = LoadExports(options.library);
  Greet(exports);
  if (options.start) {
    std::printf("DoAction(%u): %d\n", options.action,
                exports.doAction(options.action, nullptr, nullptr, 0));
  }
  std::fflush(stdout);

  auto send = [&](const std::string& command) {
    const void* body = options.hasBody ? options.body.data() : nullptr;
    int result = exports.distributeCommand(
        options.sendBackKey, 0, 0, options.url.c_str(), command.c_str(), body,
        static_cast<unsigned>(options.body.size()), options.clientSupported, &PrintAnswer, 0,
        options.origin.c_str(), 0, 0, 0);
    std::printf("--- result %d\n", result);
    std::fflush(stdout);
  };
  if (!options.commands.empty()) {
    for (const std::string& command : options.commands) send(command);
  } else {
    std::string line;
    while (std::getline(std::cin, line)) {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      if (!line.empty()) send(line);
    }
  }

  std::printf("wait timeout: %d\n", exports.getWaitTimeout());
  if (options.stop) std::printf("DoAction(3): %d\n", exports.doAction(3, nullptr, nullptr, 0));
  return 0;
}
