#include "config/path_table.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace vsm {
namespace {

TEST(PathTableTest, EveryNameBelowTheProgramDirectory) {
  BuildPathTable("/opt/x/prog");
  const std::pair<std::string, std::string> names[] = {
      {GetRootDirectory(), "/opt/x/"},
      {GetLogDirectory(), "/opt/x/log/"},
      {GetCacheDirectory(), "/opt/x/cache/"},
      {GetUploadDirectory(), "/opt/x/upload/"},
      {GetCertDirectory(), "/opt/x/cert/"},
      {GetDumpDirectory(), "/opt/x/dump/"},
      {GetExceptionMarkerFile(), "/opt/x/vs.exception"},
      {GetConfigFile(), "/opt/x/VSConfiguration.ini"},
      {GetUserConfigFile(), "/opt/x/user_config.ini"},
      {GetServiceFile(), "/opt/x/service.ini"},
      {GetCertFile(), "/opt/x/cert/server.pem"},
      {GetCertKeyFile(), "/opt/x/cert/server_key.pem"},
      {GetCertBlobFile(), "/opt/x/cert/cert.e"},
      {GetServiceLogFile(), "/opt/x/log/vss.log"},
      {GetUpdaterLogFile(), "/opt/x/log/vsu.log"},
      {GetProgramPath(), "/opt/x/prog"},
      {GetConfigFileBuffer(), "/opt/x/VSConfiguration.ini"},
  };
  for (const auto& name : names) EXPECT_EQ(name.first, name.second);

  SetProgramPath(nullptr);
  EXPECT_EQ(GetProgramPath(), "/opt/x/prog");
  SetProgramPath("/usr/bin/host");
  SetServiceLogFile("/var/a.log");
  SetUpdaterLogFile("/var/b.log");
  EXPECT_EQ(GetProgramPath() + GetServiceLogFile() + GetUpdaterLogFile(),
            "/usr/bin/host/var/a.log/var/b.log");
}

TEST(PathTableTest, PathWithoutSlashGivesRelativeNamesAndLongNamesAreCut) {
  BuildPathTable("prog");
  EXPECT_EQ(GetRootDirectory() + "|" + GetConfigFile() + "|" + GetServiceLogFile(),
            "|VSConfiguration.ini|log/vss.log");
  EXPECT_STREQ(GetConfigFileBuffer(), "VSConfiguration.ini");

  BuildPathTable("/" + std::string(2000, 'd') + "/prog");
  EXPECT_EQ(std::string(GetConfigFileBuffer()), GetConfigFile().substr(0, 1023));
  ResetPathTableForTesting();
  EXPECT_STREQ(GetConfigFileBuffer(), "");
  EXPECT_EQ(GetCertFile(), "");
}

}  // namespace
}  // namespace vsm
