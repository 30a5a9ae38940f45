#include "config/log_writer.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>
#include <thread>

#include "config/config_store.h"
#include "config/module_identity.h"
#include "config/path_table.h"
#include "test_support/temp_dir.h"
#include "test_support/log_line.h"

namespace vsm {
namespace {

using testing::ReadFileBytes;

class LogWriterTest : public ::testing::Test {
 protected:
  void SetUp() override {
    BuildPathTable(dir_.Join("prog"));
    mkdir(dir_.Join("log").c_str(), 0755);
    SetVerboseLogging(false);
    SetWorkMode(0);
  }
  void SetLevel(const char* level) {
    remove(dir_.Join("VSConfiguration.ini").c_str());
    if (level)
      testing::WriteFileBytes(dir_.Join("VSConfiguration.ini"),
                              std::string("[VS]\nLogLevel=") + level + "\n");
  }
  std::string Log(const char* name = "log/vss.log") const {
    return testing::WithoutHeads(ReadFileBytes(dir_.Join(name)));
  }

  testing::TempDir dir_;
};

TEST_F(LogWriterTest, TheMaskIsReadAtEachCallUnlessVerbose) {
  const std::string e = "H [Error-0]: e1 GetLastError = 13.\n", i = "H [Info-0]: ix\n",
                    d = "H [Debug-0]: d\n";
  const struct {
    const char* level;  // null: no configuration file
    bool verbose;
    std::string expected;
  } rows[] = {{nullptr, false, ""},     {"", false, ""},          {"1", false, ""},
              {"abc", false, ""},       {"6", false, e + i},      {"8", false, d},
              {"14", false, e + i + d}, {"-1", false, e + i + d}, {"1", true, e + i + d}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.level ? row.level : "no file");
    remove(dir_.Join("log/vss.log").c_str());
    SetLevel(row.level);             // read at the next call: a change by hand takes effect at once
    SetVerboseLogging(row.verbose);  // start-up saw 14: the file is no longer read
    errno = 13;
    EXPECT_EQ(LogError("e%d", 1) + LogInfo("i%s", "x") + LogDebug("d"), 3);
    EXPECT_EQ(Log(), row.expected);
  }
  SetLogLevel(2);
  EXPECT_FALSE(IsVerboseLogging() || IsDebugLogOn());
  SetLogLevel(14);
  EXPECT_TRUE(IsVerboseLogging() && IsDebugLogOn());
  EXPECT_EQ(ReadFileBytes(dir_.Join("VSConfiguration.ini")), "[VS]\nLogLevel=14\n");
}

TEST_F(LogWriterTest, LinesAreWholeWithLevelWorkModeAndData) {
  SetVerboseLogging(true);
  SetWorkMode(3);
  for (uint32_t level : {2, 6, 4, 12, 8, 24, 1, 16, 32}) {
    errno = 2;
    EXPECT_EQ(WriteLogLine(level, "t", nullptr, 0), 1);
  }
  const std::string text(10000, 'x');
  LogInfo("%s|", text.c_str());
  LogDebugData("data", "ab\0c", 4);
  LogDebugData(nullptr, nullptr, 5);
  EXPECT_EQ(Log(),
            "H [Error-3]: t GetLastError = 2.\nH [Error-3]: t GetLastError = 2.\n"
            "H [Info-3]: t\nH [Info-3]: t\nH [Debug-3]: t\nH [Debug-3]: t\n"
            "H [Info-3]: " +
                text + "|\nH [Debug-3]: data\n" + std::string("ab\0c\n", 5) + "H [Debug-3]: \n");
  va_list none{};
  EXPECT_EQ(LogMessage(kLogInfo, nullptr, none) + 2 * LogMessage(kLogVerbose, nullptr, none), 2);

  // The head's fields in order: process, thread, then the date as month/day/year.
  time_t now = time(nullptr);
  struct tm local;
  localtime_r(&now, &local);
  char head[64];
  snprintf(head, sizeof(head), "[Process:%6d Thread:%6d] [%02d/%02d/%04d ", getpid(),
           static_cast<int>(syscall(SYS_gettid)), local.tm_mon + 1, local.tm_mday,
           local.tm_year + 1900);
  EXPECT_EQ(ReadFileBytes(dir_.Join("log/vss.log")).substr(0, strlen(head)), head);
}

TEST_F(LogWriterTest, ErrorLinesShowTheErrnoFromBeforeTheLockWait) {
  SetVerboseLogging(true);
  std::atomic<bool> held{false};
  std::thread holder([&] {
    ScopedWriteLock lock(GetConfigLock());
    held = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  });
  while (!held) std::this_thread::yield();
  errno = 13;
  EXPECT_EQ(LogError("waited"), 1);  // waiting for the lock changes errno
  holder.join();
  EXPECT_EQ(Log(), "H [Error-0]: waited GetLastError = 13.\n");
}

TEST_F(LogWriterTest, LogPathsScanningAndMissingFolders) {
  SetVerboseLogging(true);
  SetScanning(true);
  LogInfo("u");
  SetScanning(false);
  EXPECT_EQ(Log("log/vsu.log"), "H [Info-0]: u\n");
  std::filesystem::remove_all(dir_.Join("log"));
  EXPECT_EQ(WriteLogLine(kLogInfo, "x", nullptr, 0) + LogError("x"), 0);
  EXPECT_EQ(WriteLogLine(kLogVerbose, "x", nullptr, 0), 1);  // left out by the mask

  const std::string log = dir_.Join("log/"), plain = dir_.Join("plain/");
  testing::WriteFileBytes(dir_.Join("plain"), "");
  mkdir(dir_.Join("log").c_str(), 0755);
  EXPECT_EQ(ChooseLogPath(log, "vss.log"), log + "vss.log");
  EXPECT_TRUE(testing::PathExists(log + "vss.log"));  // opened for appending, so made
  const std::pair<const char*, const char*> fallbacks[] = {
      {"vss.log", "vss(*).log"}, {"a.b.log", "a.b(*).log"}, {"vsslog", "vsslog"}};
  for (const auto& row : fallbacks) {
    const std::string path = ChooseLogPath(plain, row.first);
    EXPECT_TRUE(path.rfind(plain, 0) == 0 &&
                testing::Matches(path.substr(plain.size()), row.second))
        << path;
  }
}

}  // namespace
}  // namespace vsm
