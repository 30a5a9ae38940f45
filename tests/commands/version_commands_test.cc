#include <gtest/gtest.h>

#include "commands/user_hash.h"
#include "config/module_identity.h"
#include "config/path_table.h"
#include "config/working_paths.h"
#include "core/virtual_manager_client.h"
#include "test_support/command_runner.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

using testing::RunCommandText;

class VersionCommandsTest : public ::testing::Test {
 protected:
  // Start-up in a folder of the test's own, with the given configuration file.
  void Start(const std::string& configuration) {
    testing::WriteFileBytes(folder_.Join("VSConfiguration.ini"), configuration);
    ResetPathTableForTesting();  // start-up runs once per process; every test starts anew
    InitializeWorkingPathsFrom(folder_.Join("prog"), false);
  }
  void TearDown() override {
    SetWorkMode(0);
    VirtualManagerClient::DestroyInstance();
  }
  testing::TempDir folder_;
};

std::string VersionInfo(const std::string& extra) {
  return RunCommandText("{\"id\":\"1\",\"cmdId\":\"17\",\"method\":\"VersionInfo\"" + extra + "}")
      .Text();
}

std::string Spread(const std::string& flag, const std::string& echoed = "") {
  return "{\n   \"event\" : \"VersionInfo\",\n   \"id\" : \"1\",\n   \"result\" : [\n" + echoed +
         "      \"16, 2, 6, 1212\",\n      \"Veldorane Service Manager Module\",\n      \"0\",\n"
         "      \"" +
         flag + "\",\n      \"32\"\n   ],\n\t\"cmdId\" : \"17\"\n}\n";
}

TEST_F(VersionCommandsTest, EnhancedModeNeedsTheKeyWorkModeZeroAndACurrentClient) {
  Start("[VS]\nEnableEnhancedMode=true\n");
  EXPECT_EQ(VersionInfo(""), Spread("true"));
  EXPECT_EQ(VersionInfo(",\"version\":\"qwasm_1\",\"parameter\":[7]"),
            Spread("true", "      7,\n"));
  // The old version text is short enough for the five elements to fit one line.
  EXPECT_EQ(VersionInfo(",\"version\":\"qwasm_13000404\""),
            "{\n   \"event\" : \"VersionInfo\",\n   \"id\" : \"1\",\n   \"result\" : [ "
            "\"13,0,0,0404\", \"Veldorane Service Manager Module\", \"0\", \"false\", \"32\" ],\n"
            "\t\"cmdId\" : \"17\"\n}\n");
  SetWorkMode(3);
  EXPECT_EQ(VersionInfo(""), Spread("false"));
  EXPECT_EQ(VirtualManagerClient::GetInstance()->manager()->GetUserSessions().count(""), 1u);
}

TEST_F(VersionCommandsTest, VSVersionReadsTheKeyOnlyWithoutParameters) {
  Start("[VS]\nVSVersion=16.2.0.1\n");
  const std::string head = "{\n   \"event\" : \"VSVersion\",\n   \"id\" : \"1\",\n   \"result\" : ";
  EXPECT_EQ(RunCommandText("{\"id\":\"1\",\"method\":\"VSVersion\"}").Text(),
            head + "[ \"16.2.0.1\", \"Veldorane Service\" ],\n\t\"cmdId\" : \"\"\n}\n");
  EXPECT_EQ(RunCommandText("{\"id\":\"1\",\"method\":\"VSVersion\",\"parameter\":[\"x\"]}").Text(),
            head + "[ \"x\", \"\", \"Veldorane Service\" ],\n\t\"cmdId\" : \"\"\n}\n");
  Start("[VS]\nVSVersion=\n");  // an empty value reads as the default
  VirtualManagerClient::DestroyInstance();
  EXPECT_EQ(RunCommandText("{\"id\":\"1\",\"method\":\"VSVersion\"}").Text(),
            head + "[ \"0\", \"Veldorane Service\" ],\n\t\"cmdId\" : \"\"\n}\n");
}

TEST(HashUserName, MultipliesByThirtyThree) {
  EXPECT_EQ(HashUserName(""), 0u);
  EXPECT_EQ(HashUserName("ab"), 3299u);
  EXPECT_EQ(HashUserName("\xff"), 255u);  // bytes count unsigned
  EXPECT_EQ(HashUserName(std::string("a\0b", 3)), 97u);
  EXPECT_EQ(HashUserName("zzzzzzzzzzzz"), 3197785144u);  // wraps in 32 bits
}

}  // namespace
}  // namespace vsm
