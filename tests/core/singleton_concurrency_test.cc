#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include "core/virtual_manager_client.h"

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

}  // namespace
}  // namespace vsm
