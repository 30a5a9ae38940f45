// A host killed with SIGKILL at random moments while it saves VSConfiguration.ini: after each
// kill the file holds a whole saved state, never an empty or cut one, and a reader in another
// process never meets an empty or cut file while the saves go on.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <regex>
#include <string>
#include <thread>
#include <tuple>

#include "e2e/harness/host_harness.h"
#include "test_support/temp_dir.h"

namespace vsm::e2e {
namespace {

using testing::ReadFileBytes;
using testing::WriteFileBytes;

// Large enough that a save takes several writes, so that a file cut while written would show.
const std::string kHead = "[VS]\nPadding=" + std::string(30000, 'p') + "\n";
// The host alternates two commands; a new process saves its port table as it grows, so the
// counts pass through 1. Every state a save leaves has each key once, with one of its values.
const std::string kCommands = std::string(
    "{\"method\":\"SetServerInfo\",\"parameter\":[\"bb.example\",1,2,3,4]}\n"
    "{\"method\":\"SetServerInfo\",\"parameter\":[\"a.example\",18625,18626,18622,18623]}\n");
const std::regex kSavedTail(
    "Port=[12]\nPort_mn_0=qpt\nPort_mn_1=vsm\nPort_mp_0=(18622|3)\nPort_mp_1=(18625|1)\n"
    "Server=(a|bb)\\.example\nSSLPort=[12]\nSSLPort_mn_0=qpt\nSSLPort_mn_1=vsm\n"
    "SSLPort_mp_0=(18623|4)\nSSLPort_mp_1=(18626|2)\n");

bool IsSavedState(const std::string& text) {
  return text.compare(0, kHead.size(), kHead) == 0 &&
         std::regex_match(text.substr(std::min(kHead.size(), text.size())), kSavedTail);
}

// Changes with each save: a rename gives a new inode, a rewrite in place a new time.
std::tuple<ino_t, time_t, long> StampOf(const std::string& path) {
  struct stat info = {};
  stat(path.c_str(), &info);
  return {info.st_ino, info.st_mtim.tv_sec, info.st_mtim.tv_nsec};
}

TEST(SettingsCrash, KilledSavesLeaveTheOldOrTheNewFileAndReadersNeverSeeLess) {
  // In memory where there is such a file system: flushes to a disk cost milliseconds there and
  // nothing here, and a killed process leaves the same files either way.
  if (access("/dev/shm", W_OK) == 0) setenv("TMPDIR", "/dev/shm", 1);
  testing::TempDir folder, io;
  const std::string config = folder.Join("VSConfiguration.ini");
  std::string commands;
  for (int i = 0; i < 200; ++i) commands += kCommands;
  ASSERT_TRUE(WriteFileBytes(io.Join("in"), commands));
  ASSERT_TRUE(WriteFileBytes(
      config, kHead + "Port=2\nPort_mn_0=qpt\nPort_mn_1=vsm\nPort_mp_0=3\nPort_mp_1=1\n"
                      "Server=bb.example\nSSLPort=2\nSSLPort_mn_0=qpt\nSSLPort_mn_1=vsm\n"
                      "SSLPort_mp_0=4\nSSLPort_mp_1=2\n"));
  ASSERT_TRUE(IsSavedState(ReadFileBytes(config)));

  // The reader counts what it read until the stop file appears, and dies with the test.
  pid_t reader = fork();
  if (reader == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    long reads = 0, bad = 0;
    for (; !testing::PathExists(io.Join("stop")); ++reads) {
      bad += !IsSavedState(ReadFileBytes(config));
      std::this_thread::sleep_for(std::chrono::microseconds(200));  // leaves the host a core
    }
    WriteFileBytes(io.Join("result"), std::to_string(reads) + " " + std::to_string(bad));
    _exit(0);
  }

  // Each kill comes at a random moment after the host's first save, whenever its start ends.
  std::mt19937 random(20240307);
  std::uniform_int_distribution<int> delay(0, 2000);
  int killsWhileSaving = 0;
  for (int kill = 0; kill < 200; ++kill) {
    const auto before = StampOf(config);
    pid_t host = StartHostAs(-1, folder.path(), {}, io.Join("in"), "/dev/null");
    int waited = 0;
    while (StampOf(config) == before && ++waited < 20000) {
      std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    killsWhileSaving += waited < 20000;
    std::this_thread::sleep_for(std::chrono::microseconds(delay(random)));
    ::kill(host, SIGKILL);
    waitpid(host, nullptr, 0);
    const std::string text = ReadFileBytes(config);
    EXPECT_TRUE(IsSavedState(text)) << "after kill " << kill << ": " << text.size() << " bytes";
    if (!IsSavedState(text)) break;  // the next host would start from a damaged file
  }
  EXPECT_GT(killsWhileSaving, 100);

  WriteFileBytes(io.Join("stop"), "");
  waitpid(reader, nullptr, 0);
  long reads = 0, bad = -1;
  std::sscanf(ReadFileBytes(io.Join("result")).c_str(), "%ld %ld", &reads, &bad);
  EXPECT_GT(reads, 0);
  EXPECT_EQ(bad, 0) << "of " << reads << " reads";
}

}  // namespace
}  // namespace vsm::e2e
