// The configuration and logging layer: every setting with its default, the port registry among
// them, the path table, start-up beside the program file, and the log writer.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>
#include <utility>
#include <vector>

#include "config/config_store.h"
#include "config/log_writer.h"
#include "config/module_identity.h"
#include "config/path_table.h"
#include "config/port_registry.h"
#include "config/working_paths.h"
#include "test_support/log_line.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

using testing::ReadFileBytes;
using testing::WriteFileBytes;

// Each key reads as its default with no files, and as what was written by hand under its name in
// its own file and section; a boolean's reader (cached ones after a re-cache) follows the key.
TEST(ConfigStoreTest, EveryKeyHasItsDefaultFileAndSection) {
  testing::TempDir dir;
  BuildPathTable(dir.Join("prog"));
  struct Row {
    const ConfigKey& key;
    const char *name, *byDefault;
    bool (*flag)() = nullptr;
    const char *file = "VSConfiguration.ini", *section = "VS";
  };
  const Row rows[] = {
      {kLogLevelKey, "LogLevel", "1"},
      {kServerKey, "Server", ""},
      {kScannerAccessKey, "EnableScannerAccess", "TRUE", IsScannerAccessEnabled},
      {kFileAccessKey, "EnableFileAccess", "TRUE", IsFileAccessEnabled},
      {kWebcamAccessKey, "EnableWebcamAccess", "TRUE", IsWebcamAccessEnabled},
      {kScannerAccessAuthKey, "EnableScannerAccessAuth", "FALSE", IsScannerAccessAuthEnabled},
      {kFileAccessAuthKey, "EnableFileAccessAuth", "FALSE", IsFileAccessAuthEnabled},
      {kWebcamAccessAuthKey, "EnableWebcamAccessAuth", "FALSE", IsWebcamAccessAuthEnabled},
      {kCorsAllKey, "EnableCORSAll", "TRUE", IsCorsAllEnabled},
      {kEnhancedModeKey, "EnableEnhancedMode", "FALSE", IsEnhancedModeEnabled},
      {kListenTypeKey, "ListenType", ""},
      {kOnlySignedModulesKey, "OnlyLoadVeldoraneSignedModule", "TRUE", OnlyLoadSignedModules},
      {kVSVersionKey, "VSVersion", "0"},
      {kIfUpdateKey, "IfUpdate", "0"},
      {kCertNameKey, "cert_name", "", {}, "VSConfiguration.ini", "localhost"},
      {kKeyNameKey, "key_name", "", {}, "VSConfiguration.ini", "localhost"},
      {kServiceVersionKey, "ServiceVersion", "16.2", {}, "service.ini"},
      {kSingleUserKey, "SingleUser", "FALSE", IsSingleUser, "service.ini"},
      {kServiceModeKey, "ServiceMode", "system", {}, "service.ini"},
      {kExitFlagKey, "ExitFlag", "FALSE", {}, "user_config.ini", "alice"}};
  CacheStartupSettings();
  EXPECT_TRUE(GetServiceName() == ServiceDisplayName && !IsUserServiceMode() && !ReadExitFlag("a"));
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(ReadConfigKey(row.key, row.section), row.byDefault);
    EXPECT_TRUE(!row.flag || row.flag() == (strcmp(row.byDefault, "TRUE") == 0));
    WriteFileBytes(dir.Join(row.file),
                   "[" + std::string(row.section) + "]\n" + row.name + "=tRuE\n");
    EXPECT_EQ(ReadConfigKey(row.key, row.section), "tRuE");
    CacheStartupSettings();
    EXPECT_TRUE(!row.flag || row.flag());
    remove(dir.Join(row.file).c_str());
  }
}

TEST(ConfigStoreTest, BooleansWritesAndLongValues) {
  testing::TempDir dir;
  BuildPathTable(dir.Join("prog"));
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

  const std::pair<const char*, bool> rows[] = {{"true", true},   {"TrUe", true},   {"1", false},
                                               {" TRUE", false}, {"TRUE ", false}, {"", true}};
  for (const auto& row : rows) {
    WriteFileBytes(config, std::string("[VS]\nEnableCORSAll=") + row.first + "\n");
    EXPECT_EQ(ReadConfigFlag("EnableCORSAll", "TRUE"), row.second) << '"' << row.first << '"';
    EXPECT_EQ(ReadConfigFlag("EnableCORSAll", "FALSE"), row.second && *row.first);
  }
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
  for (size_t i = 0; i < names.size(); ++i) {
    const std::string n = std::to_string(i);
    lines +=
        "Port_mn_" + n + "=" + names[i] + "\nPort_mp_" + n + "=" + std::to_string(100 + i) + "\n";
  }
  return lines;
}

TEST(PortRegistryTest, LoadsFollowTheStoredCountOrTheLimitOfTen) {
  testing::TempDir dir;
  BuildPathTable(dir.Join("prog"));
  const std::string config = dir.Join("VSConfiguration.ini");
  const std::vector<std::string> eleven = {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k"};
  const std::string ten = "a:100,b:101,c:102,d:103,e:104,f:105,g:106,h:107,i:108,j:109,";
  const struct {
    std::string file;
    bool useStoredCount;
    std::string expected;
  } rows[] = {{"Port=0\n" + Entries({"vsm", "qpt"}), false, "qpt:101,vsm:100,"},
              {"Port=0\n" + Entries({"vsm", "qpt"}), true, ""},
              {Entries({"vsm"}), true, ""},
              {"Port=5\n" + Entries({"vsm", "qpt"}), true, "qpt:101,vsm:100,"},
              {"Port=1\n" + Entries({"vsm", "qpt"}), true, "vsm:100,"},
              {"Port=11\n" + Entries(eleven), false, ten},
              {"Port=11\n" + Entries(eleven), true, ten + "k:110,"},
              {"Port=1\nPort_mn_0=vsm\nPort_mp_0=x1\n", true, "vsm:0,"},
              {Entries({"vsm", "vsm"}), false, "vsm:101,"}};
  for (const auto& row : rows) {
    WriteFileBytes(config, "[VS]\n" + row.file);
    PortTable table = {{"old", 1}};
    LoadPlainPortTable(&table, row.useStoredCount);
    EXPECT_EQ(Text(table), row.expected) << row.file << row.useStoredCount;
  }
  // A new process saves only what it set, in name order, and leaves stale entries behind.
  WriteFileBytes(config, "[VS]\nPort=2\n" + Entries({"qpt", "zzz"}));
  SetPlainPortOf(18625, "vsm");
  EXPECT_EQ(ReadFileBytes(config),
            "[VS]\nPort=1\nPort_mn_0=vsm\nPort_mn_1=zzz\nPort_mp_0=18625\nPort_mp_1=101\n");
  PortTable table;
  LoadPlainPortTable(&table, false);
  EXPECT_EQ(Text(table), "vsm:18625,zzz:101,");
}

TEST(WorkingPathsTest, StartUpMakesTheTreeOnceAndCachesTheSettings) {
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
}

TEST(WorkingPathsTest, ALogThatIsAPlainFileDoesNotStopTheStart) {
  testing::TempDir dir;
  ResetPathTableForTesting();
  WriteFileBytes(dir.Join("log"), "a plain file");
  InitializeWorkingPathsFrom(dir.Join("prog"), false);
  // The log files go beside, with a number before the last extension.
  const std::string log = dir.Join("log/");
  const std::pair<std::string, const char*> paths[] = {
      {GetServiceLogFile(), "vss(*).log"},
      {GetUpdaterLogFile(), "vsu(*).log"},
      {ChooseLogPath(log, "a.b.log"), "a.b(*).log"},
      {ChooseLogPath(log, "vsslog"), "vsslog"}};
  for (const auto& path : paths) {
    EXPECT_TRUE(path.first.rfind(log, 0) == 0 &&
                testing::Matches(path.first.substr(log.size()), path.second))
        << path.first;
  }
  EXPECT_FALSE(testing::PathExists(dir.Join("dump")) || IsVerboseLogging());
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
  const struct {
    const char* level;  // null: no configuration file
    bool verbose;
    std::string expected;
  } rows[] = {{nullptr, false, ""},     {"", false, ""},          {"1", false, ""},
              {"abc", false, ""},       {"6", false, e + i},      {"8", false, d},
              {"14", false, e + i + d}, {"-1", false, e + i + d}, {"1", true, e + i + d}};
  const std::string config = dir.Join("VSConfiguration.ini");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.level ? row.level : "no file");
    remove(dir.Join("log/vss.log").c_str());
    remove(config.c_str());  // read at the next call: a change by hand takes effect at once
    if (row.level) WriteFileBytes(config, std::string("[VS]\nLogLevel=") + row.level + "\n");
    SetVerboseLogging(row.verbose);  // start-up saw 14: the file is no longer read
    errno = 13;
    EXPECT_EQ(LogError("e%d", 1) + LogInfo("i%s", "x") + LogDebug("d"), 3);
    EXPECT_EQ(log(), row.expected);
  }
  remove(dir.Join("log/vss.log").c_str());
  SetVerboseLogging(true);
  SetWorkMode(3);
  for (uint32_t level : {2, 6, 4, 12, 8, 24, 1, 16, 32}) {  // named by the lowest bit
    errno = 2;
    EXPECT_EQ(WriteLogLine(level, "t", nullptr, 0), 1);
  }
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

}  // namespace
}  // namespace vsm
