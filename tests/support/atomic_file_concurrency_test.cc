// Threads replacing one file side by side while another reads it: every read finds one whole
// version, and no temporary file stays behind.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "support/atomic_file.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

// "<letter><count>:" and then the letter `count` times.
std::string Version(char letter, size_t count) {
  return letter + std::to_string(count) + ":" + std::string(count, letter);
}

bool IsWholeVersion(const std::string& text) {
  size_t colon = text.find(':');
  if (text.empty() || colon == std::string::npos) return false;
  return text == Version(text[0], std::strtoul(text.c_str() + 1, nullptr, 10));
}

TEST(AtomicFileConcurrencyTest, ReadersSeeOneWholeVersionWhileThreadsReplaceTheFile) {
  // In memory where possible: flushes to a disk would make the test slow, not stronger.
  if (access("/dev/shm", W_OK) == 0) setenv("TMPDIR", "/dev/shm", 1);
  testing::TempDir dir;
  const std::string file = dir.Join("shared.ini");
  ASSERT_TRUE(ReplaceFileBytes(file, Version('a', 1).data(), Version('a', 1).size()));
  std::atomic<bool> done{false};
  std::atomic<long> reads{0}, bad{0};
  std::thread reader([&] {
    while (!done.load()) {
      ++reads;
      if (!IsWholeVersion(testing::ReadFileBytes(file))) ++bad;
    }
  });
  std::vector<std::thread> writers;
  for (int t = 0; t < 4; ++t) {
    writers.emplace_back([&, t] {
      for (size_t i = 0; i < 50; ++i) {
        const std::string text = Version(static_cast<char>('b' + t), 1 + (i * 977 + t) % 20000);
        EXPECT_TRUE(ReplaceFileBytes(file, text.data(), text.size()));
      }
    });
  }
  for (std::thread& writer : writers) writer.join();
  done = true;
  reader.join();
  EXPECT_GT(reads.load(), 0);
  EXPECT_EQ(bad.load(), 0) << "of " << reads.load() << " reads";
  EXPECT_TRUE(IsWholeVersion(testing::ReadFileBytes(file)));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()),
                          std::filesystem::directory_iterator()),
            1);
}

}  // namespace
}  // namespace vsm
