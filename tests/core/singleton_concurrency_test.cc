#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include "core/virtual_manager_client.h"
#include "test_support/command_runner.h"

namespace vsm {
namespace {

TEST(SingletonConcurrency, ThreadsStartingTogetherShareOneInstance) {
  for (int attempt = 0; attempt < 20; ++attempt) {
    VirtualManagerClient::DestroyInstance();
    std::atomic<bool> go{false};
    std::vector<VirtualManagerClient*> seen(8, nullptr);
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
      threads.emplace_back([&, i] {
        while (!go.load()) std::this_thread::yield();
        seen[i] = VirtualManagerClient::GetInstance();
      });
    }
    go.store(true);
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(std::set<VirtualManagerClient*>(seen.begin(), seen.end()).size(), 1u);
  }
  VirtualManagerClient::DestroyInstance();
}

// The handlers share errorCode, errorText and the user maps by design; concurrent commands may
// see each other's code but must never corrupt them.
TEST(SingletonConcurrency, CommandsShareTheManagerSafely) {
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&, i] {
      for (int round = 0; round < 300; ++round) {
        std::string hash = "h" + std::to_string(i * 1000 + round);
        auto ports = testing::RunCommandText(
            "{\"id\":\"1\",\"method\":\"GetPorts\",\"parameter\":[\"" + hash + "\"]}");
        auto version = testing::RunCommandText("{\"id\":\"1\",\"method\":\"VersionInfo\"}");
        auto reboot = testing::RunCommandText("{\"id\":\"1\",\"method\":\"Reboot\"}");
        if (ports.Text().find("-2408") == std::string::npos ||
            version.Text().find("\"32\"") == std::string::npos ||
            reboot.Text().find("true") == std::string::npos) {
          failures.fetch_add(1);
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(failures.load(), 0);
  EXPECT_EQ(VirtualManagerClient::GetInstance()->manager()->GetUserHashes().size(), 2401u);
  VirtualManagerClient::DestroyInstance();
}

}  // namespace
}  // namespace vsm
