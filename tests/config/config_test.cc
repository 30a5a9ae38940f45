// The configuration and logging layer: every setting with its default, the port registry among
// them, the path table, start-up beside the program file, and the log writer.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <functional>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "config/config_store.h"
#include "config/log_writer.h"
#include "config/module_identity.h"
#include "config/path_table.h"
#include "config/port_registry.h"
#include "config/working_paths.h"
#include "support/rw_lock.h"
#include "test_support/log_line.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

using testing::ReadFileBytes;
using testing::WriteFileBytes;

// Each key reads as its default with no files, and as what was written by hand under its name in
// its own file and section; a boolean's reader (cached ones after a re-cache) follows the key.
// Then writes, booleans, long values and the number search on the configuration file.
TEST(ConfigStoreTest, KeysWritesBooleansAndLongValues) {
  testing::TempDir dir;
  BuildPathTable(dir.Join("prog"));
  const char *vs = "VSConfiguration.ini", *service = "service.ini";
  // The key, its name and default, the boolean that reads it, its file and section.
  // clang-format off
  const std::tuple<const ConfigKey&, const char*, const char*, bool (*)(), const char*, const char*> rows[] = {
      {kLogLevelKey, "LogLevel", "1", nullptr, vs, "VS"},
      {kServerKey, "Server", "", nullptr, vs, "VS"},
      {kScannerAccessKey, "EnableScannerAccess", "TRUE", IsScannerAccessEnabled, vs, "VS"},
      {kFileAccessKey, "EnableFileAccess", "TRUE", IsFileAccessEnabled, vs, "VS"},
      {kWebcamAccessKey, "EnableWebcamAccess", "TRUE", IsWebcamAccessEnabled, vs, "VS"},
      {kScannerAccessAuthKey, "EnableScannerAccessAuth", "FALSE", IsScannerAccessAuthEnabled, vs, "VS"},
      {kFileAccessAuthKey, "EnableFileAccessAuth", "FALSE", IsFileAccessAuthEnabled, vs, "VS"},
      {kWebcamAccessAuthKey, "EnableWebcamAccessAuth", "FALSE", IsWebcamAccessAuthEnabled, vs, "VS"},
      {kCorsAllKey, "EnableCORSAll", "TRUE", IsCorsAllEnabled, vs, "VS"},
      {kEnhancedModeKey, "EnableEnhancedMode", "FALSE", IsEnhancedModeEnabled, vs, "VS"},
      {kListenTypeKey, "ListenType", "", nullptr, vs, "VS"},
      {kOnlySignedModulesKey, "OnlyLoadVeldoraneSignedModule", "TRUE", OnlyLoadSignedModules, vs, "VS"},
      {kVSVersionKey, "VSVersion", "0", nullptr, vs, "VS"},
      {kIfUpdateKey, "IfUpdate", "0", nullptr, vs, "VS"},
      {kCertNameKey, "cert_name", "", nullptr, vs, "localhost"},
      {kKeyNameKey, "key_name", "", nullptr, vs, "localhost"},
      {kServiceVersionKey, "ServiceVersion", "16.2", nullptr, service, "VS"},
      {kSingleUserKey, "SingleUser", "FALSE", IsSingleUser, service, "VS"},
      {kServiceModeKey, "ServiceMode", "system", nullptr, service, "VS"},
      {kExitFlagKey, "ExitFlag", "FALSE", nullptr, "user_config.ini", "alice"}};
  // clang-format on
  CacheStartupSettings();
  EXPECT_TRUE(GetServiceName() == ServiceDisplayName && !IsUserServiceMode() && !ReadExitFlag("a"));
  for (const auto& [key, name, byDefault, flag, file, section] : rows) {
    SCOPED_TRACE(name);
    EXPECT_EQ(ReadConfigKey(key, section), byDefault);
    EXPECT_TRUE(!flag || flag() == (strcmp(byDefault, "TRUE") == 0));
    WriteFileBytes(dir.Join(file), "[" + std::string(section) + "]\n" + name + "=tRuE\n");
    EXPECT_EQ(ReadConfigKey(key, section), "tRuE");
    CacheStartupSettings();
    EXPECT_TRUE(!flag || flag());
    remove(dir.Join(file).c_str());
  }
  const std::string config = dir.Join("VSConfiguration.ini");
  auto read = [](const char* key) { return ReadDefaultConfigValue(key, "none", nullptr); };
  WriteConfigNumber("B", -7, nullptr);  // a missing file is made by the first write
  EXPECT_EQ(ReadFileBytes(config), "[VS]\nB=-7\n");
  WriteFileBytes(config, "# made by hand\n; note\n\n[VS]\nKey=1\nKEY=2\n[Other]\na=b\n");
  EXPECT_EQ(read("key"), "2");
  WriteDefaultConfigValue("kEy", "", nullptr);
  WriteDefaultConfigValue("c", "4", "other");
  WriteDefaultConfigValue(nullptr, "x", nullptr);
  WriteDefaultConfigValue("x", nullptr, nullptr);
  EXPECT_EQ(ReadFileBytes(config), "[Other]\na=b\nc=4\n[VS]\nKey=\n");

  const std::string text(3000, 'v');
  EXPECT_EQ(ReadDefaultConfigValue("Key", text.c_str(), nullptr), text);  // empty: default uncut
  EXPECT_EQ(ReadDefaultConfigValue("Missing", text.c_str(), nullptr), text.substr(0, 2046));
  WriteDefaultConfigValue("Long", text.c_str(), nullptr);
  EXPECT_NE(ReadFileBytes(config).find("Long=" + text + "\n"), std::string::npos);
  EXPECT_EQ(ReadDefaultConfigValue("Long", nullptr, nullptr), text.substr(0, 2046));
  EXPECT_EQ(ReadDefaultConfigValue(nullptr, "d", nullptr) + read("Key"), "dnone");

  const std::pair<const char*, bool> flags[] = {{"true", true},   {"TrUe", true},   {"1", false},
                                                {" TRUE", false}, {"TRUE ", false}, {"", true}};
  for (const auto& [value, isTrue] : flags) {
    WriteFileBytes(config, std::string("[VS]\nEnableCORSAll=") + value + "\n");
    EXPECT_EQ(ReadConfigFlag("EnableCORSAll", "TRUE"), isTrue) << '"' << value << '"';
    EXPECT_EQ(ReadConfigFlag("EnableCORSAll", "FALSE"), isTrue && *value);
  }
  // The file is read whole, past a NUL; one that can't be opened contains nothing.
  WriteFileBytes(config, std::string("Port_mp_0=18625\n\0tail -5", 24));
  for (int number : {18625, 862, -5}) EXPECT_TRUE(FileContainsNumber(config, number)) << number;
  EXPECT_FALSE(FileContainsNumber(config, 18626) || FileContainsNumber(dir.Join("none"), 1));
}

// "name:port," for each entry in table order.
std::string Text(const PortTable& table) {
  std::string text;
  for (const auto& entry : table) text += entry.first + ":" + std::to_string(entry.second) + ",";
  return text;
}

// "Port_mn_<i>=<names[i]>" and "Port_mp_<i>=<100 + i>" for each name.
std::string Entries(const std::vector<std::string>& names) {
  std::string lines;
  for (size_t i = 0, n = names.size(); i < n; ++i)
    lines += "Port_mn_" + std::to_string(i) + "=" + names[i] + "\nPort_mp_" + std::to_string(i) +
             "=" + std::to_string(100 + i) + "\n";
  return lines;
}

// The shared registry: loads follow the stored count or the limit of ten, saves hold what this
// process set. Then the per-user ports.
TEST(PortRegistryTest, SharedRegistryAndUserPorts) {
  testing::TempDir dir;
  BuildPathTable(dir.Join("prog"));
  const std::string config = dir.Join("VSConfiguration.ini");
  const std::vector<std::string> eleven = {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k"};
  const std::string ten = "a:100,b:101,c:102,d:103,e:104,f:105,g:106,h:107,i:108,j:109,";
  const std::tuple<std::string, bool, std::string> rows[] = {
      {"Port=0\n" + Entries({"vsm", "qpt"}), false, "qpt:101,vsm:100,"},
      {"Port=0\n" + Entries({"vsm", "qpt"}), true, ""},
      {Entries({"vsm"}), true, ""},
      {"Port=5\n" + Entries({"vsm", "qpt"}), true, "qpt:101,vsm:100,"},
      {"Port=1\n" + Entries({"vsm", "qpt"}), true, "vsm:100,"},
      {"Port=11\n" + Entries(eleven), false, ten},
      {"Port=11\n" + Entries(eleven), true, ten + "k:110,"},
      {"Port=1\nPort_mn_0=vsm\nPort_mp_0=x1\n", true, "vsm:0,"},
      {Entries({"vsm", "vsm"}), false, "vsm:101,"}};
  for (const auto& [file, useStoredCount, expected] : rows) {
    WriteFileBytes(config, "[VS]\n" + file);
    PortTable table = {{"old", 1}};
    LoadPlainPortTable(&table, useStoredCount);
    EXPECT_EQ(Text(table), expected) << file << useStoredCount;
  }
  // A new process saves only what it set, in name order, and leaves stale entries behind.
  WriteFileBytes(config, "[VS]\nPort=2\n" + Entries({"qpt", "zzz"}));
  SetPlainPortOf(18625, "vsm");
  EXPECT_EQ(ReadFileBytes(config),
            "[VS]\nPort=1\nPort_mn_0=vsm\nPort_mn_1=zzz\nPort_mp_0=18625\nPort_mp_1=101\n");
  PortTable table;
  LoadPlainPortTable(&table, false);
  EXPECT_EQ(Text(table), "vsm:18625,zzz:101,");

  // A user's ports are <alias>[_ssl][_def] in the user's section of user_config.ini, 0 when
  // missing; the writes go to qpt and qpt_def, qpt_ssl and qpt_ssl_def, qpt, qpt_ssl. The current
  // user's section is "", and only work modes 3 and 6 report its non-zero SSL ports, vsm's first.
  for (int i = 0; i < 4; ++i) WriteUserPort("alice", "qpt", i < 2, i % 2, 100 + i);
  WriteUserPort("", "qpt", false, true, 8443);
  std::string ports;
  for (int i = 0; i < 8; ++i)  // qpt, then vsm, whose keys are all missing
    ports += std::to_string(ReadUserPort("alice", i < 4 ? "qpt" : "vsm", i & 2, i & 1)) + " ";
  for (int32_t vsm : {0, 9443}) {
    WriteUserPort("", "vsm", false, true, vsm);
    for (uint32_t mode : {0, 2, 3, 4, 6, 7}) {
      SetWorkMode(mode);
      std::vector<int32_t> found = {1};
      GetUserSslPorts(&found);
      ports += "|" + std::to_string(mode) + ":";
      for (int32_t port : found) ports += std::to_string(port) + ",";
    }
  }
  EXPECT_EQ(
      ports,
      "102 103 100 101 0 0 0 0 |0:|2:|3:8443,|4:|6:8443,|7:|0:|2:|3:9443,8443,|4:|6:9443,8443,|7:");
  EXPECT_EQ(ReadFileBytes(dir.Join("user_config.ini")),
            "[]\nqpt_ssl=8443\nvsm_ssl=9443\n"
            "[alice]\nqpt=102\nqpt_def=100\nqpt_ssl=103\nqpt_ssl_def=101\n");
}

TEST(WorkingPathsTest, StartUpMakesTheTreeOnceCachesTheSettingsAndSurvivesAPlainFileLog) {
  testing::TempDir dir;
  ResetPathTableForTesting();
  WriteFileBytes(dir.Join("VSConfiguration.ini"),
                 "[VS]\nLogLevel=14\nServer=10.0.0.9\nEnableCORSAll=false\nListenType=ws\n");
  WriteFileBytes(dir.Join("service.ini"), "[VS]\nServiceName=Mine\n");
  SetWorkMode(4);
  InitializeWorkingPathsFrom(dir.Join("prog"), true);
  EXPECT_TRUE(testing::PathExists(dir.Join("cache")) && testing::PathExists(dir.Join("upload")));
  // chmod -R reaches the folders and the log files that choosing the paths made.
  for (const char* path : {"log", "log/vss.log", "log/vsu.log", "dump"}) {
    struct stat st = {};
    EXPECT_TRUE(stat(dir.Join(path).c_str(), &st) == 0 && (st.st_mode & 0777) == 0777) << path;
  }
  EXPECT_TRUE(IsVerboseLogging() && !IsCorsAllEnabled() && IsScannerAccessEnabled());
  EXPECT_EQ(GetCachedServer() + GetListenType() + GetServiceName(), "10.0.0.9wsMine");
  EXPECT_EQ(testing::WithoutHeads(ReadFileBytes(dir.Join("log/vss.log"))),
            "H [Debug-4]: Version info:Veldorane Service Manager Module, vsm build 1212---16, 2, "
            "6, 1212, \r\n\t\tis64:1, isScanning=0, workMode=4, isQPTActiveX=1\r\n\n");

  WriteFileBytes(dir.Join("VSConfiguration.ini"), "");
  InitializeWorkingPathsFrom("/elsewhere/prog", false);  // changes nothing, reads nothing
  EXPECT_EQ(GetRootDirectory() + GetCachedServer(), dir.path() + "/10.0.0.9");
  EXPECT_TRUE(IsVerboseLogging());

  // A log that is a plain file doesn't stop a start: the log files go beside, with a number
  // before the last extension.
  testing::TempDir other;
  ResetPathTableForTesting();
  WriteFileBytes(other.Join("log"), "a plain file");
  InitializeWorkingPathsFrom(other.Join("prog"), false);
  const std::string log = other.Join("log/");
  const std::pair<std::string, const char*> paths[] = {
      {GetServiceLogFile(), "vss(*).log"},
      {GetUpdaterLogFile(), "vsu(*).log"},
      {ChooseLogPath(log, "a.b.log"), "a.b(*).log"},
      {ChooseLogPath(log, "vsslog"), "vsslog"}};
  for (const auto& [path, pattern] : paths)
    EXPECT_TRUE(path.rfind(log, 0) == 0 && testing::Matches(path.substr(log.size()), pattern))
        << path;
  EXPECT_FALSE(testing::PathExists(other.Join("dump")) || IsVerboseLogging());
  EXPECT_EQ(GetCachedServer(), "127.0.0.1");  // no Server in the file
  SetVerboseLogging(true);
  EXPECT_EQ(LogError("lost"), 0);
}

TEST(LogWriterTest, MaskLinesAndData) {
  testing::TempDir dir;
  BuildPathTable(dir.Join("prog"));
  mkdir(dir.Join("log").c_str(), 0755);
  SetWorkMode(0);
  auto log = [&] { return testing::WithoutHeads(ReadFileBytes(dir.Join("log/vss.log"))); };
  const std::string e = "H [Error-0]: e1 GetLastError = 13.\n", i = "H [Info-0]: ix\n",
                    d = "H [Debug-0]: d\n";
  // LogLevel (null: no configuration file), verbose flag, the lines written.
  const std::tuple<const char*, bool, std::string> rows[] = {
      {nullptr, false, ""},     {"", false, ""},          {"1", false, ""},
      {"abc", false, ""},       {"6", false, e + i},      {"8", false, d},
      {"14", false, e + i + d}, {"-1", false, e + i + d}, {"1", true, e + i + d}};
  const std::string config = dir.Join("VSConfiguration.ini");
  for (const auto& [level, verbose, expected] : rows) {
    SCOPED_TRACE(level ? level : "no file");
    remove(dir.Join("log/vss.log").c_str());
    remove(config.c_str());  // read at the next call: a change by hand takes effect at once
    if (level) WriteFileBytes(config, std::string("[VS]\nLogLevel=") + level + "\n");
    SetVerboseLogging(verbose);  // start-up saw 14: the file is no longer read
    errno = 13;
    EXPECT_EQ(LogError("e%d", 1) + LogInfo("i%s", "x") + LogDebug("d"), 3);
    EXPECT_EQ(log(), expected);
  }
  remove(dir.Join("log/vss.log").c_str());
  SetVerboseLogging(true);
  SetWorkMode(3);
  // The first line waits for configLock, which a thread holds, and the wait changes errno; the
  // line still shows the errno found on entry.
  std::atomic<bool> held{false};
  std::thread holder([&] {
    ScopedWriteLock lock(GetConfigLock());
    held = true;
    usleep(100000);
  });
  while (!held) std::this_thread::yield();
  for (uint32_t level : {2, 6, 4, 12, 8, 24, 1, 16, 32}) {  // named by the lowest bit
    errno = 2;
    EXPECT_EQ(WriteLogLine(level, "t", nullptr, 0), 1);
  }
  holder.join();
  const std::string text(10000, 'x');
  LogInfo("%s|", text.c_str());
  LogDebugData("data", "ab\0c", 4);
  LogDebugData(nullptr, nullptr, 5);
  EXPECT_EQ(log(),
            "H [Error-3]: t GetLastError = 2.\nH [Error-3]: t GetLastError = 2.\n"
            "H [Info-3]: t\nH [Info-3]: t\nH [Debug-3]: t\nH [Debug-3]: t\n"
            "H [Info-3]: " +
                text + "|\nH [Debug-3]: data\n" + std::string("ab\0c\n", 5) + "H [Debug-3]: \n");
  va_list none{};
  EXPECT_EQ(LogMessage(kLogInfo, nullptr, none) + 2 * LogMessage(kLogVerbose, nullptr, none), 2);

  // The head's fields in order: process, thread, then the date as month/day/year.
  char head[64];
  const time_t now = time(nullptr);
  const int length = snprintf(head, sizeof(head), "[Process:%6d Thread:%6d] [", getpid(),
                              static_cast<int>(syscall(SYS_gettid)));
  strftime(head + length, sizeof(head) - length, "%m/%d/%Y ", localtime(&now));
  EXPECT_EQ(ReadFileBytes(dir.Join("log/vss.log")).substr(0, strlen(head)), head);
}

// log/ is open to every local user: what one plants in the log file's place is never written
// through, and the line is lost as with a log that can't be opened.
TEST(LogWriterTest, PlantedLinksPipesAndSecondNamesAreNotWritten) {
  testing::TempDir dir, outside;
  BuildPathTable(dir.Join("prog"));
  mkdir(dir.Join("log").c_str(), 0777);
  SetVerboseLogging(true);
  const std::string logFile = dir.Join("log/vss.log"), target = outside.Join("target");
  const std::pair<const char*, std::function<int()>> plants[] = {
      {"link", [&] { return symlink(target.c_str(), logFile.c_str()); }},
      {"dangling link", [&] { return symlink(outside.Join("new").c_str(), logFile.c_str()); }},
      {"second name", [&] { return link(target.c_str(), logFile.c_str()); }},
      {"pipe", [&] { return mkfifo(logFile.c_str(), 0666); }}};
  for (const auto& [name, plant] : plants) {
    SCOPED_TRACE(name);
    WriteFileBytes(target, "precious");
    ASSERT_EQ(plant(), 0);
    EXPECT_EQ(LogError("line"), 0);
    EXPECT_EQ(ReadFileBytes(target), "precious");
    EXPECT_FALSE(testing::PathExists(outside.Join("new")));
    remove(logFile.c_str());
  }
  EXPECT_EQ(LogError("line"), 1);  // and a plain file is written again
}

}  // namespace
}  // namespace vsm
