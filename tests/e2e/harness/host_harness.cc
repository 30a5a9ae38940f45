#include "e2e/harness/host_harness.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <mutex>

namespace vsm::e2e {

namespace {

template <typename Function>
void Bind(void* library, const char* name, Function* out) {
  *out = reinterpret_cast<Function>(dlsym(library, name));
  if (*out == nullptr) ADD_FAILURE() << "libvsm.so exports no " << name;
}

Library Load() {
  Library library;
  void* handle = dlopen(VSM_LIBRARY_PATH, RTLD_NOW);
  if (handle == nullptr) {
    ADD_FAILURE() << "cannot load " << VSM_LIBRARY_PATH << ": " << dlerror();
    return library;
  }
  Bind(handle, "DoAction", &library.DoAction);
  Bind(handle, "CloseWebSocket", &library.CloseWebSocket);
  Bind(handle, "GetWaitTimeout", &library.GetWaitTimeout);
  Bind(handle, "GetAlias", &library.GetAlias);
  Bind(handle, "GetVersionDesc", &library.GetVersionDesc);
  Bind(handle, "GetPorts", &library.GetPorts);
  Bind(handle, "DistributeCommand", &library.DistributeCommand);
  Bind(handle, "GetImage", &library.GetImage);
  Bind(handle, "SetImage", &library.SetImage);
  Bind(handle, "Reserved", &library.Reserved);
  return library;
}

void CopyFile(const std::string& from, const std::string& to) {
  std::ifstream in(from, std::ios::binary);
  std::ofstream out(to, std::ios::binary | std::ios::trunc);
  out << in.rdbuf();
  out.close();
  chmod(to.c_str(), 0755);
}

}  // namespace

const Library& LoadLibrary() {
  static const Library library = Load();
  return library;
}

char RecordAnswer(unsigned int key, unsigned long long context, const char* text,
                  const void* binary, unsigned int binaryLength, long long extra) {
  auto* capture = reinterpret_cast<Capture*>(static_cast<uintptr_t>(context));
  Answer answer;
  answer.text = text ? text : "";
  answer.hasBinary = binary != nullptr;
  if (binary != nullptr) answer.binary.assign(static_cast<const char*>(binary), binaryLength);
  answer.key = key;
  answer.extra = extra;
  if (capture != nullptr) capture->answers.push_back(answer);
  return 1;
}

std::string CommandResult::Text() const {
  if (answers.size() > 1) ADD_FAILURE() << "more than one answer: " << answers.size();
  return answers.empty() ? std::string() : answers.front().text;
}

CommandResult Send(const CommandCall& call) {
  Capture capture;
  CommandResult result;
  result.result = LoadLibrary().DistributeCommand(
      call.key, reinterpret_cast<uintptr_t>(&capture), call.mustBeZero, call.url.c_str(),
      call.text.c_str(), call.body, call.bodyLength, call.clientSupported, call.callback, 7,
      call.origin.c_str(), 11, 12, 13);
  result.answers = capture.answers;
  return result;
}

CommandResult Send(const std::string& text) {
  CommandCall call;
  call.text = text;
  return Send(call);
}

std::string RunHost(const std::string& folder, const std::vector<std::string>& arguments,
                    const std::string& input, int* status) {
  return RunHostAs(-1, folder, arguments, input, status);
}

std::string RunHostAs(int uid, const std::string& folder, const std::vector<std::string>& arguments,
                      const std::string& input, int* status) {
  const std::string program = folder + "/vsmctl";
  if (access(program.c_str(), X_OK) != 0) CopyFile(VSMCTL_PATH, program);
  // Input and output live outside the folder, which a test may have made read-only.
  char inputPattern[] = "/tmp/vsmctl-input-XXXXXX";
  char outputPattern[] = "/tmp/vsmctl-output-XXXXXX";
  close(mkstemp(inputPattern));
  close(mkstemp(outputPattern));
  const std::string inputPath = inputPattern;
  const std::string outputPath = outputPattern;
  std::ofstream(inputPath, std::ios::binary) << input;
  pid_t child = fork();
  if (child == 0) {
    std::vector<std::string> all = {program, "--lib", VSM_LIBRARY_PATH};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& argument : all) argv.push_back(argument.data());
    argv.push_back(nullptr);
    if (freopen(inputPath.c_str(), "rb", stdin) == nullptr ||
        freopen(outputPath.c_str(), "wb", stdout) == nullptr) {
      _exit(126);
    }
    if (uid >= 0 &&
        (setgid(static_cast<gid_t>(uid)) != 0 || setuid(static_cast<uid_t>(uid)) != 0)) {
      _exit(125);
    }
    execv(program.c_str(), argv.data());
    _exit(127);
  }
  int childStatus = -1;
  waitpid(child, &childStatus, 0);
  if (status != nullptr) *status = WIFEXITED(childStatus) ? WEXITSTATUS(childStatus) : -1;
  std::ifstream output(outputPath, std::ios::binary);
  std::string text((std::istreambuf_iterator<char>(output)), std::istreambuf_iterator<char>());
  unlink(inputPath.c_str());
  unlink(outputPath.c_str());
  return text;
}

}  // namespace vsm::e2e
