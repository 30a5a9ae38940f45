#include "config/working_paths.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "config/config_store.h"
#include "config/log_writer.h"
#include "config/module_identity.h"
#include "config/path_table.h"
#include "test_support/temp_dir.h"
#include "test_support/log_line.h"

namespace vsm {
namespace {

using testing::PathExists;
using testing::ReadFileBytes;
using testing::WriteFileBytes;

class WorkingPathsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ResetPathTableForTesting();
    SetVerboseLogging(false);
  }
  testing::TempDir dir_;
};

TEST_F(WorkingPathsTest, StartUpMakesTheTreeAndCachesTheSettingsOnce) {
  InitializeWorkingPathsFrom(dir_.Join("prog"), true);
  EXPECT_EQ(GetServiceLogFile() + GetUpdaterLogFile(),
            dir_.Join("log/vss.log") + dir_.Join("log/vsu.log"));
  for (const char* path : {"cache", "upload"}) EXPECT_TRUE(PathExists(dir_.Join(path))) << path;
  // chmod -R reaches the folders and the log files that choosing the paths made.
  for (const char* path : {"log", "log/vss.log", "log/vsu.log", "dump"}) {
    struct stat st = {};
    stat(dir_.Join(path).c_str(), &st);
    EXPECT_EQ(st.st_mode & 0777, 0777u) << path;
  }
  EXPECT_EQ(GetCachedServer() + GetServiceName(), "127.0.0.1" + ServiceDisplayName);
  EXPECT_TRUE(!IsVerboseLogging() && IsScannerAccessEnabled() && !IsEnhancedModeEnabled());
  const std::string token = GetInstanceToken();
  EXPECT_TRUE(token.size() == 32 && token.find_first_not_of("0123456789abcdef") == token.npos)
      << token;
  EXPECT_EQ(ReadFileBytes(GetServiceLogFile()), "");  // no version line with the default mask

  WriteFileBytes(dir_.Join("VSConfiguration.ini"), "[VS]\nServer=10.0.0.9\nLogLevel=14\n");
  InitializeWorkingPathsFrom("/elsewhere/prog", true);  // changes nothing, reads nothing
  EXPECT_EQ(GetRootDirectory() + GetCachedServer() + GetInstanceToken(),
            dir_.path() + "/127.0.0.1" + token);
  EXPECT_FALSE(IsVerboseLogging());
  EXPECT_EQ(RemoveCacheDirectory(), 1);
  EXPECT_FALSE(PathExists(dir_.Join("cache")));
}

TEST_F(WorkingPathsTest, WithLogLevel14TheVersionLineIsWritten) {
  WriteFileBytes(dir_.Join("VSConfiguration.ini"),
                 "[VS]\nLogLevel=14\nServer=10.0.0.9\nEnableCORSAll=false\nListenType=ws\n");
  WriteFileBytes(dir_.Join("service.ini"), "[VS]\nServiceName=Mine\n");
  SetWorkMode(4);
  InitializeWorkingPathsFrom(dir_.Join("prog"), false);
  EXPECT_FALSE(PathExists(dir_.Join("dump")));
  EXPECT_TRUE(IsVerboseLogging() && !IsCorsAllEnabled());
  EXPECT_EQ(GetCachedServer() + GetListenType() + GetServiceName(), "10.0.0.9wsMine");
  EXPECT_EQ(testing::WithoutHeads(ReadFileBytes(dir_.Join("log/vss.log"))),
            "H [Debug-4]: Version info:Veldorane Service Manager Module, vsm build 1212---16, 2, "
            "6, 1212, \r\n\t\tis64:1, isScanning=0, workMode=4, isQPTActiveX=1\r\n\n");
}

TEST_F(WorkingPathsTest, BrokenFoldersDoNotStopTheStart) {
  ASSERT_EQ(mkdir(dir_.Join("ro").c_str(), 0555), 0);
  InitializeWorkingPathsFrom(dir_.Join("ro/prog"), true);
  EXPECT_EQ(GetRootDirectory(), dir_.Join("ro/"));
  SetVerboseLogging(true);
  EXPECT_EQ(LogInfo("after start"), geteuid() == 0 ? 1 : 0);  // root writes into it all the same

  ResetPathTableForTesting();
  WriteFileBytes(dir_.Join("log"), "a plain file");
  InitializeWorkingPathsFrom(dir_.Join("prog"), true);
  SetVerboseLogging(true);
  const std::string log = dir_.Join("log/");
  EXPECT_TRUE(testing::Matches(GetServiceLogFile().substr(log.size()), "vss(*).log") &&
              testing::Matches(GetUpdaterLogFile().substr(log.size()), "vsu(*).log"))
      << GetServiceLogFile();
  EXPECT_EQ(LogError("lost"), 0);
  EXPECT_EQ(ReadFileBytes(dir_.Join("log")), "a plain file");
}

}  // namespace
}  // namespace vsm
