// One DistributeCommand round trip, as a host makes it, beside a baseline measured in the same
// run: parsing the same command text with JsonCpp's classic reader and writing an answer of the
// same size with its own styled writer, which is the floor of any JSON answer.
#include <benchmark/benchmark.h>
#include <json/json.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

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

// An installed service's configuration file of 20 keys with the default LogLevel: logging is
// off, but each of the command's log calls reads the file to learn that.
void BM_DistributeCommand_ChangePort_DefaultConfiguration(benchmark::State& state) {
  Start();
  std::string file = "[VS]\nLogLevel=1\nServer=127.0.0.1\n";
  for (int i = 0; i < 18; ++i) file += "Key" + std::to_string(i) + "=TRUE\n";
  std::FILE* out = std::fopen(vsm::GetConfigFile().c_str(), "wb");
  std::fputs(file.c_str(), out);
  std::fclose(out);
  RunChangePort(state);
  std::remove(vsm::GetConfigFile().c_str());
}
BENCHMARK(BM_DistributeCommand_ChangePort_DefaultConfiguration)->Arg(0)->Arg(30);

void BM_Baseline_ClassicParseAndStyledWrite(benchmark::State& state) {
  const std::string command = ChangePortCommand(static_cast<int>(state.range(0)));
  for (auto _ : state) {
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
