// Settings, ports and log lines from eight threads at once: lines stay whole, no key is lost.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "config/config_store.h"
#include "config/log_writer.h"
#include "config/path_table.h"
#include "config/port_registry.h"
#include "test_support/log_line.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

constexpr int kThreads = 8;
constexpr int kKeysPerThread = 4;
// configLock hands over by polling, so a thread may get few turns while others hold it; each
// thread goes on past the deadline until it has written every key twice.
constexpr int kMinimumRounds = 2 * kKeysPerThread;

TEST(ConfigConcurrencyTest, ThreadsReadWriteAndLogSideBySide) {
  testing::TempDir dir;
  BuildPathTable(dir.Join("prog"));
  ASSERT_EQ(mkdir(dir.Join("log").c_str(), 0755), 0);
  SetVerboseLogging(true);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
  std::vector<int> rounds(kThreads, 0);
  std::atomic<int> lines{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      const std::string module = "m" + std::to_string(t);
      int n = 0;
      for (; n < kMinimumRounds || std::chrono::steady_clock::now() < deadline; ++n) {
        const std::string key = "T" + std::to_string(t) + "_" + std::to_string(n % kKeysPerThread);
        WriteDefaultConfigValue(key.c_str(), std::to_string(n).c_str(), nullptr);
        EXPECT_EQ(ReadDefaultConfigValue(key.c_str(), "", nullptr), std::to_string(n));
        lines += LogInfo("thread %d round %d %0200d", t, n, 0);
        if (n % 8 == 0) SetPlainPortOf(static_cast<uint32_t>(n), module.c_str());
        SetCachedServer(module);
        EXPECT_EQ(GetCachedServer()[0], 'm');
      }
      rounds[t] = n;
    });
  }
  for (std::thread& thread : threads) thread.join();

  PortTable ports;
  LoadPlainPortTable(&ports, true);
  for (int t = 0; t < kThreads; ++t) {
    for (int k = 0; k < kKeysPerThread; ++k) {
      const int last = rounds[t] - 1 - (rounds[t] - 1 - k) % kKeysPerThread;  // its last write
      const std::string key = "T" + std::to_string(t) + "_" + std::to_string(k);
      EXPECT_EQ(ReadDefaultConfigValue(key.c_str(), "missing", nullptr), std::to_string(last));
    }
    EXPECT_EQ(ports["m" + std::to_string(t)], static_cast<uint32_t>((rounds[t] - 1) / 8 * 8));
  }
  // Every line whole: a head, then exactly the text of one call.
  const std::string text = "[Info-0]: thread 9 round * " + std::string(200, '0');
  std::istringstream log(testing::ReadFileBytes(dir.Join("log/vss.log")));
  int count = 0;
  for (std::string line; std::getline(log, line); ++count) {
    const size_t head = testing::MatchPattern(line, 0, testing::kLineHead);
    ASSERT_TRUE(head != 0 && testing::Matches(line.substr(head), text.c_str())) << line;
  }
  EXPECT_EQ(count, lines.load());
}

}  // namespace
}  // namespace vsm
