// One DistributeCommand round trip, as a host makes it, beside baselines measured in the same
// run: parsing the same command text with JsonCpp's classic reader and writing an answer of the
// same size with its own styled writer, which is the floor of any JSON answer; and the floor of
// a command as the design has it, which adds the eight reads of the log mask a ChangePort makes,
// each opening the configuration file, reading it whole, scanning it and closing it.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <json/json.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "bench/default_configuration.h"
#include "config/path_table.h"
#include "vsm.h"

namespace {

char IgnoreAnswer(unsigned int, unsigned long long, const char*, const void*, unsigned int,
                  long long) {
  return 1;
}

std::string ChangePortCommand(int parameters) {
  std::string text = "{\"id\":\"1\",\"cmdId\":\"17\",\"method\":\"ChangePort\",\"parameter\":[";
  for (int i = 0; i < parameters; ++i) text += (i ? ",\"p" : "\"p") + std::to_string(i) + "\"";
  return text + "]}";
}

void Start() {
  static bool started = DoAction(0, nullptr, nullptr, 0) == 1;
  (void)started;
}

void RunChangePort(benchmark::State& state) {
  const std::string command = ChangePortCommand(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    int result = DistributeCommand(1, 0, 0, "/vsm/", command.c_str(), nullptr, 0, 1, &IgnoreAnswer,
                                   0, "http://127.0.0.1", 0, 0, 0);
    benchmark::DoNotOptimize(result);
  }
}

// No configuration file beside the program: every log call's mask test fails to open it.
void BM_DistributeCommand_ChangePort(benchmark::State& state) {
  Start();
  std::remove(vsm::GetConfigFile().c_str());
  RunChangePort(state);
}
BENCHMARK(BM_DistributeCommand_ChangePort)->Arg(0)->Arg(30);

// With the configuration file of an installed service.
void BM_DistributeCommand_ChangePort_DefaultConfiguration(benchmark::State& state) {
  Start();
  vsm::bench::WriteDefaultConfiguration(vsm::GetConfigFile());
  RunChangePort(state);
  std::remove(vsm::GetConfigFile().c_str());
}
BENCHMARK(BM_DistributeCommand_ChangePort_DefaultConfiguration)->Arg(0)->Arg(30);

void ParseAndStyledWrite(const std::string& command) {
  Json::Value root;
  Json::Reader reader;
  reader.parse(command, root, false);
  Json::Value answer;
  answer["id"] = root["id"];
  answer["method"] = root["method"];
  for (const Json::Value& parameter : root["parameter"]) answer["result"].append(parameter);
  answer["result"].append(true);
  Json::StyledWriter writer;
  std::string text = writer.write(answer);
  benchmark::DoNotOptimize(text);
}

// What no implementation of the design can skip: the mask is read from the file at each of the
// eight log calls, and the command is parsed and its answer written.
void RunFloor(benchmark::State& state) {
  const std::string command = ChangePortCommand(static_cast<int>(state.range(0)));
  const std::string path = vsm::GetConfigFile();
  for (auto _ : state) {
    for (int read = 0; read < 8; ++read) {
      const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
      if (file < 0) continue;
      char text[4096];
      const ssize_t length = ::read(file, text, sizeof(text));
      benchmark::DoNotOptimize(std::count(text, text + std::max<ssize_t>(length, 0), '\n'));
      close(file);
    }
    ParseAndStyledWrite(command);
  }
}

void BM_Floor_ChangePort(benchmark::State& state) {
  Start();
  std::remove(vsm::GetConfigFile().c_str());
  RunFloor(state);
}
BENCHMARK(BM_Floor_ChangePort)->Arg(0)->Arg(30);

void BM_Floor_ChangePort_DefaultConfiguration(benchmark::State& state) {
  Start();
  vsm::bench::WriteDefaultConfiguration(vsm::GetConfigFile());
  RunFloor(state);
  std::remove(vsm::GetConfigFile().c_str());
}
BENCHMARK(BM_Floor_ChangePort_DefaultConfiguration)->Arg(0)->Arg(30);

void BM_Baseline_ClassicParseAndStyledWrite(benchmark::State& state) {
  const std::string command = ChangePortCommand(static_cast<int>(state.range(0)));
  for (auto _ : state) ParseAndStyledWrite(command);
}
BENCHMARK(BM_Baseline_ClassicParseAndStyledWrite)->Arg(0)->Arg(30);

void BM_GetImage_PresentKey(benchmark::State& state) {
  Start();
  std::vector<char> record(2052, 'r');
  SetImage("/SetEncryptedImageMap?GUID=7d3c0c55-bench", record.data(), 2052);
  std::vector<char> out(2052);
  unsigned length = 0;
  for (auto _ : state) {
    int found = GetImage("/GetEncryptedImageMap?GUID=7d3c0c55-bench", out.data(), &length);
    benchmark::DoNotOptimize(found);
  }
}
BENCHMARK(BM_GetImage_PresentKey);

void BM_Baseline_MapCopy(benchmark::State& state) {
  std::map<std::string, std::vector<char>> map;
  map["7d3c0c55-bench"] = std::vector<char>(2052, 'r');
  std::vector<char> out(2052);
  const std::string url = "/GetEncryptedImageMap?GUID=7d3c0c55-bench";
  for (auto _ : state) {
    std::string key = url.substr(url.find("GUID=") + 5);
    auto entry = map.find(key);
    std::memcpy(out.data(), entry->second.data(), 2052);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(BM_Baseline_MapCopy);

}  // namespace
