#include "e2e/harness/host_harness.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "test_support/temp_dir.h"

namespace vsm::e2e {

namespace {

Library Load() {
  Library library;
  void* handle = dlopen(VSM_LIBRARY_PATH, RTLD_NOW);
  if (handle == nullptr) {
    ADD_FAILURE() << "cannot load " << VSM_LIBRARY_PATH << ": " << dlerror();
    return library;
  }
#define VSM_BIND(name)                                                           \
  library.name = reinterpret_cast<decltype(library.name)>(dlsym(handle, #name)); \
  if (library.name == nullptr) ADD_FAILURE() << "libvsm.so exports no " #name;
  VSM_EXPORTS(VSM_BIND)
#undef VSM_BIND
  return library;
}

}  // namespace

const Library& LoadLibrary() {
  static const Library library = Load();
  return library;
}

std::string CommandResult::Text() const {
  if (answers.size() > 1) ADD_FAILURE() << "more than one answer: " << answers.size();
  return answers.empty() ? std::string() : answers.front().text;
}

CommandResult Send(const CommandCall& call) {
  testing::AnswerCapture capture;
  CommandResult result;
  result.result = LoadLibrary().DistributeCommand(
      call.key, capture.Context(), call.mustBeZero, call.url.c_str(), call.text.c_str(), call.body,
      call.bodyLength, 1, call.callback, 7, call.origin.c_str(), 11, 12, 13);
  result.answers = capture.answers;
  return result;
}

CommandResult Send(const std::string& text) {
  CommandCall call;
  call.text = text;
  return Send(call);
}

int StartHostAs(int uid, const std::string& folder, const std::vector<std::string>& arguments,
                const std::string& inputPath, const std::string& outputPath) {
  const std::string program = folder + "/vsmctl";
  if (access(program.c_str(), X_OK) != 0) {
    testing::WriteFileBytes(program, testing::ReadFileBytes(VSMCTL_PATH));
    chmod(program.c_str(), 0755);
  }
  pid_t child = fork();
  if (child == 0) {
    std::vector<std::string> all = {program, "--lib", VSM_LIBRARY_PATH};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& argument : all) argv.push_back(argument.data());
    argv.push_back(nullptr);
    if (!freopen(inputPath.c_str(), "rb", stdin) || !freopen(outputPath.c_str(), "wb", stdout) ||
        (uid >= 0 &&
         (setgid(static_cast<gid_t>(uid)) != 0 || setuid(static_cast<uid_t>(uid)) != 0))) {
      _exit(125);
    }
    execv(program.c_str(), argv.data());
    _exit(127);
  }
  return child;
}

std::string RunHostAs(int uid, const std::string& folder, const std::vector<std::string>& arguments,
                      const std::string& input, int* status) {
  // Input and output live outside the folder, which a test may have made read-only.
  testing::TempDir io;
  testing::WriteFileBytes(io.Join("in"), input);
  pid_t child = StartHostAs(uid, folder, arguments, io.Join("in"), io.Join("out"));
  int childStatus = -1;
  waitpid(child, &childStatus, 0);
  if (status != nullptr) *status = WIFEXITED(childStatus) ? WEXITSTATUS(childStatus) : -1;
  return testing::ReadFileBytes(io.Join("out"));
}

}  // namespace vsm::e2e
