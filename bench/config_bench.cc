// The cost of a setting read and of a log call, against baselines measured in the same run: one
// GetProfileString on the same file (what a read costs below the store) and one snprintf of a
// log line (what formatting alone costs).
#include <benchmark/benchmark.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "config/config_store.h"
#include "config/log_writer.h"
#include "config/path_table.h"
#include "support/profile_string.h"

namespace vsm {
namespace {

// A root folder with a 20-key configuration file and a log folder, kept for the whole run.
class BenchRoot {
 public:
  BenchRoot() {
    char pattern[] = "/tmp/vsm-bench-XXXXXX";
    if (mkdtemp(pattern) == nullptr) abort();
    path_ = pattern;
    std::string content = "[VS]\n";
    for (int i = 0; i < 19; ++i) {
      content += "Key" + std::to_string(i) + "=value number " + std::to_string(i) + "\n";
    }
    content += "Server=127.0.0.1\n";
    std::ofstream(Join("VSConfiguration.ini"), std::ios::binary) << content;
    mkdir(Join("log").c_str(), 0755);
    BuildPathTable(Join("prog"));
  }
  ~BenchRoot() { std::filesystem::remove_all(path_); }
  std::string Join(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

const BenchRoot& Root() {
  static const BenchRoot root;
  return root;
}

void BM_GetProfileStringBaseline(benchmark::State& state) {
  const std::string file = Root().Join("VSConfiguration.ini");
  char value[2048];
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        GetProfileString("VS", "Key10", "", value, sizeof(value), file.c_str()));
  }
}
BENCHMARK(BM_GetProfileStringBaseline);

void BM_ReadConfigValue(benchmark::State& state) {
  Root();
  for (auto _ : state) benchmark::DoNotOptimize(ReadDefaultConfigValue("Key10", "", nullptr));
}
BENCHMARK(BM_ReadConfigValue);

void BM_SnprintfLineBaseline(benchmark::State& state) {
  char line[512];
  int round = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        snprintf(line, sizeof(line),
                 "[Process:%6d Thread:%6d] [%02d/%02d/%04d %02d:%02d:%02d.%03d] [%s-%d]: "
                 "request %d of %s done\n",
                 4711, 4713, 3, 7, 2024, 16, 5, 9, 42, "Debug", 0, ++round, "vsm"));
  }
}
BENCHMARK(BM_SnprintfLineBaseline);

void BM_LogDebugOff(benchmark::State& state) {
  Root();
  SetVerboseLogging(false);
  int round = 0;
  for (auto _ : state) benchmark::DoNotOptimize(LogDebug("request %d of %s done", ++round, "vsm"));
}
BENCHMARK(BM_LogDebugOff);

void BM_LogDebugMask14(benchmark::State& state) {
  Root();
  SetVerboseLogging(true);
  int round = 0;
  for (auto _ : state) benchmark::DoNotOptimize(LogDebug("request %d of %s done", ++round, "vsm"));
  SetVerboseLogging(false);
  remove(Root().Join("log/vss.log").c_str());
}
BENCHMARK(BM_LogDebugMask14);

}  // namespace
}  // namespace vsm
