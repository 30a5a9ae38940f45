#include "module_library.h"

#include <dlfcn.h>

#include <cstring>
#include <vector>

namespace vsmhost {

namespace {

template <typename Function>
void Bind(void* library, const std::string& path, const char* name, Function* out) {
  *out = reinterpret_cast<Function>(dlsym(library, name));
  if (*out == nullptr) throw ModuleLoadError(path + " exports no " + name);
}

char KeepAnswer(unsigned int key, unsigned long long context, const char* text, const void* binary,
                unsigned int binaryLength, long long extra) {
  auto* answer = reinterpret_cast<ModuleAnswer*>(static_cast<uintptr_t>(context));
  if (answer->answered) return 1;  // one answer per command; a second one has nowhere to go
  answer->answered = true;
  answer->text = text != nullptr ? text : "";
  if (binary != nullptr) {
    answer->hasBinary = true;
    answer->binary.assign(static_cast<const char*>(binary), binaryLength);
  }
  return 1;
}

}  // namespace

std::unique_ptr<ModuleLibrary> ModuleLibrary::Load(const std::string& path) {
  void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) throw ModuleLoadError("cannot load " + path + ": " + dlerror());
  std::unique_ptr<ModuleLibrary> module(new ModuleLibrary);
  module->path_ = path;
  Bind(library, path, "DoAction", &module->doAction_);
  Bind(library, path, "CloseWebSocket", &module->closeWebSocket_);
  Bind(library, path, "GetWaitTimeout", &module->getWaitTimeout_);
  Bind(library, path, "GetAlias", &module->getAlias_);
  Bind(library, path, "GetVersionDesc", &module->getVersionDesc_);
  Bind(library, path, "GetPorts", &module->getPorts_);
  Bind(library, path, "DistributeCommand", &module->distributeCommand_);
  Bind(library, path, "GetImage", &module->getImage_);
  Bind(library, path, "SetImage", &module->setImage_);
  Bind(library, path, "Reserved", &module->reserved_);

  // Both texts are asked for their size first; a module that reports nonsense is refused.
  const int aliasLength = module->getAlias_(nullptr);
  const int versionLength = module->getVersionDesc_(nullptr);
  if (aliasLength < 2 || aliasLength > 256 || versionLength < 1 || versionLength > 4096) {
    throw ModuleLoadError(path + " reports an alias or version of impossible length");
  }
  // GetAlias writes its text as whole 32-bit words; leave room for one more.
  std::vector<char> alias(static_cast<size_t>(aliasLength) + 4, '\0');
  module->getAlias_(alias.data());
  module->alias_ = alias.data();
  std::vector<char> version(static_cast<size_t>(versionLength) + 1, '\0');
  module->getVersionDesc_(version.data());
  module->version_ = version.data();
  if (module->alias_.empty() || module->alias_.find_first_of("/?#% ") != std::string::npos) {
    throw ModuleLoadError(path + " has an alias that cannot stand in a URL: " + module->alias_);
  }
  module->getPorts_(0, &module->ports_[0]);
  module->getPorts_(1, &module->ports_[1]);
  return module;
}

int ModuleLibrary::Start() { return doAction_(0, nullptr, nullptr, 0); }

int ModuleLibrary::Stop() { return doAction_(3, nullptr, nullptr, 0); }

ModuleAnswer ModuleLibrary::Distribute(const Connection& connection, const std::string& url,
                                       const std::string& text, const std::string& origin) const {
  ModuleAnswer answer;
  try {
    answer.result = distributeCommand_(
        connection.number, static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(&answer)), 0,
        url.c_str(), text.c_str(), nullptr, 0, 1, &KeepAnswer,
        static_cast<unsigned>(connection.socket), origin.c_str(), 0, 0, 0);
  } catch (...) {
    // An exception out of a module is its own fault; the client sees a command without answer.
    answer.answered = false;
  }
  return answer;
}

void ModuleLibrary::CloseWebSocket(unsigned connection) const { closeWebSocket_(connection); }

void ModuleLibrary::PollWaitTimeout() {
  waitTimeout_.store(getWaitTimeout_(), std::memory_order_relaxed);
}

}  // namespace vsmhost
