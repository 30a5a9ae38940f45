// Commands per second through the built libvsm.so, loaded with dlopen as a host loads it, from
// 1, 2, 4 and 8 host threads at once, without a configuration file (argument 0) and with an
// installed service's one (argument 1). items_per_second counts the commands of all threads
// together, so the rates compare directly: more threads should never mean fewer commands. Every
// answer is checked against the one its own command must get; a lost or mixed answer fails the
// run.
#include <benchmark/benchmark.h>
#include <dlfcn.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/default_configuration.h"
#include "support/module_path.h"
#include "vsm.h"

namespace {

using DoActionFunction = decltype(&DoAction);
using DistributeCommandFunction = decltype(&DistributeCommand);

struct Library {
  DoActionFunction doAction;
  DistributeCommandFunction distributeCommand;
};

const Library& Load() {
  static const Library library = [] {
    void* handle = dlopen(VSM_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
      std::fprintf(stderr, "%s\n", dlerror());
      std::abort();
    }
    Library loaded{reinterpret_cast<DoActionFunction>(dlsym(handle, "DoAction")),
                   reinterpret_cast<DistributeCommandFunction>(dlsym(handle, "DistributeCommand"))};
    if (loaded.doAction == nullptr || loaded.distributeCommand == nullptr) std::abort();
    loaded.doAction(0, nullptr, nullptr, 0);
    return loaded;
  }();
  return library;
}

// The answer of the command in flight on this thread; the send-back runs on the calling thread.
thread_local std::string answer;
thread_local int answers = 0;

char KeepAnswer(unsigned int, unsigned long long, const char* text, const void*, unsigned int,
                long long) {
  answer = text;
  ++answers;
  return 1;
}

// The library keeps its configuration beside the program, as this process's start-up does.
std::string ConfigurationFile() {
  char directory[vsm::kPathBufferSize];
  vsm::GetModuleDirectory(directory);
  return std::string(directory) + "VSConfiguration.ini";
}

void BM_ChangePortThreads(benchmark::State& state) {
  const Library& library = Load();
  static std::atomic<long> wrong{0};
  if (state.thread_index() == 0) {
    wrong = 0;
    if (state.range(0) != 0) {
      vsm::bench::WriteDefaultConfiguration(ConfigurationFile());
    } else {
      std::remove(ConfigurationFile().c_str());
    }
  }
  const std::string thread = std::to_string(state.thread_index());
  long round = 0;
  for (auto _ : state) {
    const std::string id = thread + "-" + std::to_string(++round);
    const std::string command = "{\"id\":\"" + id + "\",\"cmdId\":\"" + id +
                                "\",\"method\":\"ChangePort\",\"parameter\":[\"" + thread + "\"]}";
    answers = 0;
    library.distributeCommand(1, 0, 0, "/vsm/", command.c_str(), nullptr, 0, 1, &KeepAnswer, 0,
                              "http://127.0.0.1", 0, 0, 0);
    const std::string expected = "{\n   \"id\" : \"" + id +
                                 "\",\n   \"method\" : \"ChangePort\",\n   \"result\" : [ \"" +
                                 thread + "\", true ],\n\t\"cmdId\" : \"" + id + "\"\n}\n";
    if (answers != 1 || answer != expected) ++wrong;
  }
  state.SetItemsProcessed(state.iterations());
  if (wrong.load() != 0) state.SkipWithError("an answer was lost or mixed");
  if (state.thread_index() == 0) std::remove(ConfigurationFile().c_str());
}
BENCHMARK(BM_ChangePortThreads)
    ->Arg(0)
    ->Arg(1)
    ->Threads(1)
    ->Threads(2)
    ->Threads(4)
    ->Threads(8)
    ->UseRealTime();

}  // namespace
