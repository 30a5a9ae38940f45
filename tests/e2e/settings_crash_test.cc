// A host killed with SIGKILL at random moments while it saves VSConfiguration.ini: after each
// kill the file holds a whole saved state, never an empty or cut one, and a reader in another
// process never meets an empty or cut file while the saves go on.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <thread>

#include "e2e/harness/host_harness.h"
#include "test_support/temp_dir.h"

namespace vsm::e2e {
namespace {

using testing::PathExists;
using testing::ReadFileBytes;
using testing::TempDir;
using testing::WriteFileBytes;

constexpr int kKills = 200;
// Large enough that a save takes several writes, so that a file cut while written would show.
const std::string kPadding(30000, 'p');

// The two commands the host alternates, and every value each key can hold in a saved state (a
// new process saves its port table as it grows, so the counts pass through 1).
constexpr char kSetA[] =
    "{\"method\":\"SetServerInfo\",\"parameter\":[\"a.example\",18625,18626,18622,18623]}\n";
constexpr char kSetB[] = "{\"method\":\"SetServerInfo\",\"parameter\":[\"bb.example\",1,2,3,4]}\n";
const std::map<std::string, std::set<std::string>> kAllowed = {
    {"Padding", {kPadding}},
    {"Port", {"1", "2"}},
    {"Port_mn_0", {"qpt"}},
    {"Port_mn_1", {"vsm"}},
    {"Port_mp_0", {"18622", "3"}},
    {"Port_mp_1", {"18625", "1"}},
    {"Server", {"a.example", "bb.example"}},
    {"SSLPort", {"1", "2"}},
    {"SSLPort_mn_0", {"qpt"}},
    {"SSLPort_mn_1", {"vsm"}},
    {"SSLPort_mp_0", {"18623", "4"}},
    {"SSLPort_mp_1", {"18626", "2"}}};

// "[VS]" and every key once with one of its values, each line ended: a state some save wrote.
bool IsSavedState(const std::string& text) {
  if (text.empty() || text.back() != '\n') return false;
  std::istringstream lines(text);
  std::string line;
  if (!std::getline(lines, line) || line != "[VS]") return false;
  std::set<std::string> seen;
  while (std::getline(lines, line)) {
    size_t equals = line.find('=');
    if (equals == std::string::npos) return false;
    auto allowed = kAllowed.find(line.substr(0, equals));
    if (allowed == kAllowed.end() || !allowed->second.count(line.substr(equals + 1)) ||
        !seen.insert(allowed->first).second) {
      return false;
    }
  }
  return seen.size() == kAllowed.size();
}

struct FileStamp {
  ino_t inode = 0;
  timespec modified = {};
  bool operator==(const FileStamp& other) const {
    return inode == other.inode && modified.tv_sec == other.modified.tv_sec &&
           modified.tv_nsec == other.modified.tv_nsec;
  }
};

FileStamp StampOf(const std::string& path) {
  struct stat info = {};
  stat(path.c_str(), &info);
  return {info.st_ino, info.st_mtim};
}

// Whether the file was saved again (a new inode or a new time) within two seconds.
bool WaitForChange(const std::string& path, const FileStamp& before) {
  for (int wait = 0; wait < 20000; ++wait) {
    if (!(StampOf(path) == before)) return true;
    std::this_thread::sleep_for(std::chrono::microseconds(100));
  }
  return false;
}

// Reads the file until `stopFile` appears, then writes "<reads> <bad reads>" to `resultFile`.
[[noreturn]] void ReadUntilStopped(const std::string& file, const std::string& stopFile,
                                   const std::string& resultFile) {
  long reads = 0, bad = 0;
  while (!PathExists(stopFile)) {
    ++reads;
    if (!IsSavedState(ReadFileBytes(file))) ++bad;
    std::this_thread::sleep_for(std::chrono::microseconds(50));  // leaves the host a core
  }
  WriteFileBytes(resultFile, std::to_string(reads) + " " + std::to_string(bad));
  _exit(0);
}

TEST(SettingsCrash, KilledSavesLeaveTheOldOrTheNewFileAndReadersNeverSeeLess) {
  // In memory where there is such a file system: flushes to a disk cost milliseconds there and
  // nothing here, and a killed process leaves the same files either way.
  if (access("/dev/shm", W_OK) == 0) setenv("TMPDIR", "/dev/shm", 1);
  TempDir folder, io;
  const std::string config = folder.Join("VSConfiguration.ini");
  std::string commands;
  for (int i = 0; i < 200; ++i) commands += std::string(kSetB) + kSetA;
  ASSERT_TRUE(WriteFileBytes(io.Join("in"), commands));
  // The state after kSetA, padded.
  ASSERT_TRUE(WriteFileBytes(
      config, "[VS]\nPadding=" + kPadding +
                  "\nPort=2\nPort_mn_0=qpt\nPort_mn_1=vsm\nPort_mp_0=18622\nPort_mp_1=18625\n"
                  "Server=a.example\nSSLPort=2\nSSLPort_mn_0=qpt\nSSLPort_mn_1=vsm\n"
                  "SSLPort_mp_0=18623\nSSLPort_mp_1=18626\n"));
  ASSERT_TRUE(IsSavedState(ReadFileBytes(config)));

  pid_t reader = fork();
  if (reader == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // never outlives a test that failed on its way
    ReadUntilStopped(config, io.Join("stop"), io.Join("result"));
  }

  // Each kill comes at a random moment after the host's first save, whenever its start ends.
  std::mt19937 random(20240307);
  std::uniform_int_distribution<int> delay(0, 2000);
  int killsWhileSaving = 0;
  for (int kill = 0; kill < kKills; ++kill) {
    const FileStamp before = StampOf(config);
    pid_t host = StartHostAs(-1, folder.path(), {}, io.Join("in"), "/dev/null");
    killsWhileSaving += WaitForChange(config, before);
    std::this_thread::sleep_for(std::chrono::microseconds(delay(random)));
    ::kill(host, SIGKILL);
    waitpid(host, nullptr, 0);
    const std::string text = ReadFileBytes(config);
    EXPECT_TRUE(IsSavedState(text)) << "after kill " << kill << ": " << text.size() << " bytes";
    if (!IsSavedState(text)) break;  // the next host would start from a damaged file
  }
  EXPECT_GT(killsWhileSaving, kKills / 2);

  WriteFileBytes(io.Join("stop"), "");
  int status = -1;
  waitpid(reader, &status, 0);
  std::istringstream result(ReadFileBytes(io.Join("result")));
  long reads = 0, bad = -1;
  result >> reads >> bad;
  EXPECT_GT(reads, 0);
  EXPECT_EQ(bad, 0) << "of " << reads << " reads";
}

}  // namespace
}  // namespace vsm::e2e
