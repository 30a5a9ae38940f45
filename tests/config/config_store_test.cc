#include "config/config_store.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "config/module_identity.h"
#include "config/path_table.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

using testing::ReadFileBytes;
using testing::WriteFileBytes;

class ConfigStoreTest : public ::testing::Test {
 protected:
  void SetUp() override { BuildPathTable(dir_.Join("prog")); }
  std::string Config() const { return dir_.Join("VSConfiguration.ini"); }
  std::string Read(const char* key) const { return ReadDefaultConfigValue(key, "none", nullptr); }

  testing::TempDir dir_;
};

TEST_F(ConfigStoreTest, EveryKeyHasItsDefaultFileAndSection) {
  const char *cfg = "VSConfiguration.ini", *svc = "service.ini";
  struct Row {
    const ConfigKey& key;
    const char* file;
    const char* section;
    const char* name;
    const char* byDefault;
    bool (*flag)();  // the boolean reader of the key, if any (cached ones after a re-cache)
  } rows[] = {
      {kLogLevelKey, cfg, "VS", "LogLevel", "1", nullptr},
      {kServerKey, cfg, "VS", "Server", "", nullptr},
      {kScannerAccessKey, cfg, "VS", "EnableScannerAccess", "TRUE", IsScannerAccessEnabled},
      {kFileAccessKey, cfg, "VS", "EnableFileAccess", "TRUE", IsFileAccessEnabled},
      {kWebcamAccessKey, cfg, "VS", "EnableWebcamAccess", "TRUE", IsWebcamAccessEnabled},
      {kScannerAccessAuthKey, cfg, "VS", "EnableScannerAccessAuth", "FALSE",
       IsScannerAccessAuthEnabled},
      {kFileAccessAuthKey, cfg, "VS", "EnableFileAccessAuth", "FALSE", IsFileAccessAuthEnabled},
      {kWebcamAccessAuthKey, cfg, "VS", "EnableWebcamAccessAuth", "FALSE",
       IsWebcamAccessAuthEnabled},
      {kCorsAllKey, cfg, "VS", "EnableCORSAll", "TRUE", IsCorsAllEnabled},
      {kEnhancedModeKey, cfg, "VS", "EnableEnhancedMode", "FALSE", IsEnhancedModeEnabled},
      {kListenTypeKey, cfg, "VS", "ListenType", "", nullptr},
      {kOnlySignedModulesKey, cfg, "VS", "OnlyLoadVeldoraneSignedModule", "TRUE",
       OnlyLoadSignedModules},
      {kVSVersionKey, cfg, "VS", "VSVersion", "0", nullptr},
      {kIfUpdateKey, cfg, "VS", "IfUpdate", "0", nullptr},
      {kCertNameKey, cfg, "localhost", "cert_name", "", nullptr},
      {kKeyNameKey, cfg, "localhost", "key_name", "", nullptr},
      {kServiceVersionKey, svc, "VS", "ServiceVersion", "16.2", nullptr},
      {kSingleUserKey, svc, "VS", "SingleUser", "FALSE", IsSingleUser},
      {kServiceModeKey, svc, "VS", "ServiceMode", "system", nullptr},
      {kExitFlagKey, "user_config.ini", "alice", "ExitFlag", "FALSE", nullptr},
  };
  CacheStartupSettings();
  EXPECT_EQ(GetServiceName() + "|" + GetListenType() + "|" + ReadServiceVersion(),
            ServiceDisplayName + "||16.2");
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const char* section = strcmp(row.section, "VS") == 0 ? nullptr : row.section;
    EXPECT_EQ(ReadConfigKey(row.key, section), row.byDefault);
    EXPECT_TRUE(!row.flag || row.flag() == (strcmp(row.byDefault, "TRUE") == 0));
    WriteFileBytes(dir_.Join(row.file),
                   std::string("[") + row.section + "]\n" + row.name + "=tRuE\n");
    EXPECT_EQ(ReadConfigKey(row.key, section), "tRuE");
    CacheStartupSettings();
    EXPECT_TRUE(!row.flag || row.flag());
    remove(dir_.Join(row.file).c_str());
  }
  EXPECT_FALSE(IsUserServiceMode() || ReadExitFlag("alice"));
}

TEST_F(ConfigStoreTest, BooleansAreTheWordTrueAndSettersLeaveTheCache) {
  const std::pair<const char*, bool> rows[] = {{"true", true},   {"TrUe", true},   {"1", false},
                                               {" TRUE", false}, {"TRUE ", false}, {"", true}};
  for (const auto& row : rows) {
    WriteFileBytes(Config(), std::string("[VS]\nEnableCORSAll=") + row.first + "\n");
    EXPECT_EQ(ReadConfigFlag("EnableCORSAll", "TRUE"), row.second) << '"' << row.first << '"';
    EXPECT_EQ(ReadConfigFlag("EnableCORSAll", "FALSE"), row.second && *row.first);
  }
  for (const char* mode : {"user", "USER", "users"}) {
    WriteConfigValue("ServiceMode", mode, nullptr, dir_.Join("service.ini"));
    EXPECT_EQ(IsUserServiceMode(), mode[4] == '\0') << mode;
  }
  CacheStartupSettings();
  SetScannerAccess(false);
  SetFileAccess(false);
  SetWebcamAccess(true);
  SetServiceName("Other");
  SetCachedServer("10.1.2.3");
  WriteExitFlag("bob", true);
  EXPECT_EQ(Read("EnableScannerAccess") + Read("EnableFileAccess") + Read("EnableWebcamAccess"),
            "FALSEFALSETRUE");
  EXPECT_TRUE(IsScannerAccessEnabled() && IsFileAccessEnabled());
  EXPECT_EQ(GetServiceName() + " " + GetCachedServer(), ServiceDisplayName + " 10.1.2.3");
  EXPECT_EQ(ReadFileBytes(dir_.Join("service.ini")),
            "[VS]\nServiceMode=users\nServiceName=Other\n");
  EXPECT_EQ(ReadFileBytes(dir_.Join("user_config.ini")), "[bob]\nExitFlag=TRUE\n");
  EXPECT_TRUE(ReadExitFlag("bob") && !ReadExitFlag("alice"));
}

TEST_F(ConfigStoreTest, WritesRewriteTheFileAndLongValuesAreCut) {
  WriteConfigNumber("B", -7, nullptr);  // a missing file is made by the first write
  EXPECT_EQ(ReadFileBytes(Config()), "[VS]\nB=-7\n");
  WriteFileBytes(Config(), "# made by hand\n; note\n\n[VS]\nKey=1\nKEY=2\n[Other]\na=b\n");
  EXPECT_EQ(Read("key"), "2");
  WriteDefaultConfigValue("kEy", "", nullptr);
  WriteDefaultConfigValue("c", "4", "other");
  WriteDefaultConfigValue(nullptr, "x", nullptr);
  WriteDefaultConfigValue("x", nullptr, nullptr);
  EXPECT_EQ(ReadFileBytes(Config()), "[Other]\na=b\nc=4\n[VS]\nKey=\n");

  const std::string text(3000, 'v');
  EXPECT_EQ(ReadDefaultConfigValue("Key", text.c_str(), nullptr), text);  // empty: default uncut
  EXPECT_EQ(ReadDefaultConfigValue("Missing", text.c_str(), nullptr), text.substr(0, 2046));
  WriteDefaultConfigValue("Long", text.c_str(), nullptr);
  EXPECT_NE(ReadFileBytes(Config()).find("Long=" + text + "\n"), std::string::npos);
  EXPECT_EQ(ReadDefaultConfigValue("Long", nullptr, nullptr), text.substr(0, 2046));
  EXPECT_EQ(ReadDefaultConfigValue(nullptr, "d", nullptr) + Read("Key"), "dnone");
}

TEST_F(ConfigStoreTest, OddFilesReadAndWriteWithoutLosingKeys) {
  std::string manyKeys = "[VS]\n", binary;
  for (int i = 0; i < 10000; ++i)
    manyKeys += "K" + std::to_string(i) + "=" + std::to_string(i) + "\n";
  for (int i = 0; i < 4096; ++i) binary += static_cast<char>((i * 37) % 256);
  const std::pair<std::string, const char*> rows[] = {
      {"", "none"},
      {"[VS]\nKeep=yes\nBig=" + std::string(1 << 20, 'b') + "\n", "yes"},
      {binary + "\n[VS]\nKeep=yes\n", "yes"},
      {"Keep=yes\nOther=1\n", "none"},  // no section: the lines are lost
      {"[VS]\r\nKeep=yes\r\n[X]\r\n", "yes"},
      {manyKeys + "Keep=yes\n", "yes"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.first.substr(0, 20));
    WriteFileBytes(Config(), row.first);
    EXPECT_EQ(Read("Keep"), row.second);
    WriteDefaultConfigValue("New", "1", nullptr);
    EXPECT_EQ(Read("New") + Read("Keep"), std::string("1") + row.second);
  }
  EXPECT_EQ(Read("K9999"), "9999");
  remove(Config().c_str());
  ASSERT_EQ(mkdir(Config().c_str(), 0755), 0);  // unreadable: defaults, and writes go nowhere
  WriteDefaultConfigValue("New", "1", nullptr);
  EXPECT_EQ(Read("New"), "none");

  WriteFileBytes(Config() + "2", std::string("Port_mp_0=18625\n\0tail -5", 24));
  for (int number : {18625, 862, -5}) EXPECT_TRUE(FileContainsNumber(Config() + "2", number));
  EXPECT_FALSE(FileContainsNumber(Config() + "2", 18626) || FileContainsNumber(Config(), 1));
}

}  // namespace
}  // namespace vsm
