#include <gtest/gtest.h>

#include "commands/server_document.h"
#include "config/path_table.h"
#include "config/working_paths.h"
#include "core/virtual_manager_client.h"
#include "test_support/command_runner.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

using testing::RunCommandText;

class ServerInfoTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ResetPathTableForTesting();  // start-up runs once per process; every test starts anew
    InitializeWorkingPathsFrom(folder_.Join("prog"), false);
  }
  void TearDown() override { VirtualManagerClient::DestroyInstance(); }
  std::string Configuration() {
    return testing::ReadFileBytes(folder_.Join("VSConfiguration.ini"));
  }

  testing::TempDir folder_;
};

std::string Set(const std::string& parameters) {
  return "{\"id\":\"1\",\"cmdId\":\"8\",\"method\":\"SetServerInfo\",\"parameter\":[" + parameters +
         "]}";
}

constexpr char kGetServerInfo[] = "{\"id\":\"1\",\"cmdId\":\"8\",\"method\":\"GetServerInfo\"}";

TEST_F(ServerInfoTest, AnEmptyRegistryShowsMinusOne) {
  EXPECT_EQ(RunCommandText(kGetServerInfo).Text(),
            "{\"Host\":\"\",\"qpt\":{\"port\":\"-1\",\"sslPort\":\"-1\"},"
            "\"vsm\":{\"port\":\"-1\",\"sslPort\":\"-1\"}}");
}

TEST_F(ServerInfoTest, SetServerInfoStoresAndAnswersRaw) {
  EXPECT_EQ(RunCommandText(Set("\"127.0.0.1\",18625,18626,18622,18623")).Text(),
            "{\"Host\":\"127.0.0.1\",\"qpt\":{\"port\":\"18622\",\"sslPort\":\"18623\"},"
            "\"vsm\":{\"port\":\"18625\",\"sslPort\":\"18626\"}}");
  EXPECT_EQ(Configuration(),
            "[VS]\nPort=2\nPort_mn_0=qpt\nPort_mn_1=vsm\nPort_mp_0=18622\nPort_mp_1=18625\n"
            "Server=127.0.0.1\nSSLPort=2\nSSLPort_mn_0=qpt\nSSLPort_mn_1=vsm\n"
            "SSLPort_mp_0=18623\nSSLPort_mp_1=18626\n");
  EXPECT_EQ(RunCommandText(kGetServerInfo).Text(),
            "{\"Host\":\"127.0.0.1\",\"qpt\":{\"port\":\"18622\",\"sslPort\":\"18623\"},"
            "\"vsm\":{\"port\":\"18625\",\"sslPort\":\"18626\"}}");
}

TEST_F(ServerInfoTest, TheDocumentShowsWhatWasAskedNotWhatWasRead) {
  // Ports are kept as the text of their numbers; a quote in the host is not escaped.
  EXPECT_EQ(RunCommandText(Set("\"a\\\"b\",-5,\"7\",2.9,4294967295")).Text(),
            "{\"Host\":\"a\"b\",\"qpt\":{\"port\":\"2\",\"sslPort\":\"-1\"},"
            "\"vsm\":{\"port\":\"-5\",\"sslPort\":\"7\"}}");
  EXPECT_EQ(RunCommandText(kGetServerInfo).Text(),
            "{\"Host\":\"a\"b\",\"qpt\":{\"port\":\"2\",\"sslPort\":\"-1\"},"
            "\"vsm\":{\"port\":\"-5\",\"sslPort\":\"7\"}}");
}

TEST_F(ServerInfoTest, SetServerInfoRefusesOtherOrigins) {
  EXPECT_EQ(RunCommandText(Set("\"h\",1,2,3,4"), "http://localhost").Text(),
            "{\n   \"description\" : \"Only support access from local machine\",\n"
            "   \"exception\" : -1,\n   \"id\" : \"1\",\n   \"method\" : \"SetServerInfo\",\n"
            "   \"result\" : [ \"h\", 1, 2, 3, 4, false ],\n\t\"cmdId\" : \"8\"\n}\n");
  EXPECT_FALSE(testing::PathExists(folder_.Join("VSConfiguration.ini")));
}

TEST_F(ServerInfoTest, TooFewParametersStoreNothing) {
  EXPECT_EQ(RunCommandText(Set("\"a\"")).Text(),
            "{\n   \"description\" : \"Invalid parameter count.\",\n   \"exception\" : -2202,\n"
            "   \"id\" : \"1\",\n   \"method\" : \"SetServerInfo\",\n"
            "   \"result\" : [ \"a\", false ],\n\t\"cmdId\" : \"8\"\n}\n");
  EXPECT_EQ(RunCommandText(Set("\"h\",1,2,3")).Text().find("-2202") != std::string::npos, true);
  EXPECT_FALSE(testing::PathExists(folder_.Join("VSConfiguration.ini")));
}

// Every JSON type in every position of SetServerInfo: the host takes all but an object, the
// ports take numbers and numeric texts.
TEST_F(ServerInfoTest, ParametersOfEveryTypeInEveryPosition) {
  struct Kind {
    std::string json;
    bool hostOk;
    bool portOk;
  } kinds[] = {{"null", true, false},      {"true", true, false},  {"7", true, true},
               {"3000000000", true, true}, {"1.5", true, true},    {"\"9\"", true, true},
               {"\"0\"", true, true},      {"\"x\"", true, false}, {"[1]", true, false},
               {"{\"a\":1}", false, false}};
  for (int position = 0; position < 5; ++position) {
    for (const Kind& kind : kinds) {
      std::string parameters;
      for (int i = 0; i < 5; ++i) {
        parameters += (i ? "," : "") + (i == position ? kind.json : (i == 0 ? "\"h\"" : "1"));
      }
      bool accepted = position == 0 ? kind.hostOk : kind.portOk;
      std::string answer = RunCommandText(Set(parameters)).Text();
      if (accepted) {
        EXPECT_EQ(answer.substr(0, 9), "{\"Host\":\"") << parameters;
      } else {
        EXPECT_EQ(answer, "{}") << parameters;
      }
    }
  }
  // A parameter object yields no arguments at all, only its member count.
  EXPECT_EQ(RunCommandText("{\"id\":\"1\",\"method\":\"SetServerInfo\",\"parameter\":"
                           "{\"a\":1,\"b\":2,\"c\":3,\"d\":4,\"e\":5}}")
                .Text(),
            "{}");
}

// The other commands with every JSON type in every position they read.
TEST_F(ServerInfoTest, ParametersOfEveryTypeInTheOtherCommands) {
  const std::string kinds[] = {"null",  "true",  "7",     "3000000000", "1.5",
                               "\"9\"", "\"0\"", "\"x\"", "[1]",        "{\"a\":1}"};
  const std::string noPorts =
      "{\"Host\":\"\",\"qpt\":{\"port\":\"-1\",\"sslPort\":\"-1\"},"
      "\"vsm\":{\"port\":\"-1\",\"sslPort\":\"-1\"}}";
  for (const std::string& kind : kinds) {
    // GetServerInfo reads no parameter.
    EXPECT_EQ(
        RunCommandText("{\"id\":\"1\",\"method\":\"GetServerInfo\",\"parameter\":[" + kind + "]}")
            .Text(),
        noPorts);
    // GetPorts takes any text as the hash; an object reads as the empty hash.
    EXPECT_NE(RunCommandText("{\"id\":\"1\",\"method\":\"GetPorts\",\"parameter\":[" + kind + "]}")
                  .Text()
                  .find("\"exception\" : -2408"),
              std::string::npos);
    for (int position = 0; position < 3; ++position) {
      std::string parameters;
      for (int i = 0; i < 3; ++i) {
        parameters += (i ? "," : "") + (i == position ? kind : (i == 0 ? "\"h\"" : "1"));
      }
      bool accepted = position == 0 ? kind != "{\"a\":1}"
                                    : (kind != "null" && kind != "true" && kind != "\"x\"" &&
                                       kind != "[1]" && kind != "{\"a\":1}");
      std::string answer = RunCommandText(
                               "{\"id\":\"1\",\"method\":\"CheckQPTPort\","
                               "\"parameter\":[" +
                               parameters + "]}")
                               .Text();
      EXPECT_EQ(answer == "{}", !accepted) << parameters;
    }
  }
  EXPECT_EQ(VirtualManagerClient::GetInstance()->manager()->GetUserHashes().count(""), 1u);
}

TEST_F(ServerInfoTest, ChangePortAnswersTrue) {
  EXPECT_EQ(RunCommandText("{\"id\":\"1\",\"cmdId\":\"17\",\"method\":\"ChangePort\","
                           "\"parameter\":[\"a\"]}")
                .Text(),
            "{\n   \"id\" : \"1\",\n   \"method\" : \"ChangePort\",\n"
            "   \"result\" : [ \"a\", true ],\n\t\"cmdId\" : \"17\"\n}\n");
  EXPECT_EQ(RunCommandText("{\"id\":\"1\",\"method\":\"ChangePort\"}").Text(),
            "{\n   \"id\" : \"1\",\n   \"method\" : \"ChangePort\",\n"
            "   \"result\" : [ true ],\n\t\"cmdId\" : \"\"\n}\n");
}

TEST_F(ServerInfoTest, CheckQPTPortAnswersTrueWithoutEcho) {
  const std::string trueAnswer =
      "{\n   \"id\" : \"1\",\n   \"method\" : \"CheckQPTPort\",\n   \"result\" : [ true ],\n"
      "\t\"cmdId\" : \"17\"\n}\n";
  for (const std::string parameters :
       {"\"127.0.0.1\",18625,18626", "\"h\",70000,-1", "\"h\",\"0\",2.5", "[],1,1"}) {
    EXPECT_EQ(RunCommandText("{\"id\":\"1\",\"cmdId\":\"17\",\"method\":\"CheckQPTPort\","
                             "\"parameter\":[" +
                             parameters + "]}")
                  .Text(),
              trueAnswer)
        << parameters;
  }
  EXPECT_EQ(RunCommandText("{\"id\":\"1\",\"method\":\"CheckQPTPort\",\"parameter\":"
                           "[\"h\",\"x\",1]}")
                .Text(),
            "{}");
  EXPECT_EQ(RunCommandText("{\"id\":\"1\",\"cmdId\":\"17\",\"method\":\"CheckQPTPort\","
                           "\"parameter\":[\"h\",1]}")
                .Text(),
            "{\n   \"description\" : \"Invalid parameter count.\",\n   \"exception\" : -2202,\n"
            "   \"id\" : \"1\",\n   \"method\" : \"CheckQPTPort\",\n"
            "   \"result\" : [ \"h\", 1, false ],\n\t\"cmdId\" : \"17\"\n}\n");
}

TEST_F(ServerInfoTest, GetPortsFindsNoUserBehindAHash) {
  EXPECT_EQ(RunCommandText("{\"id\":\"1\",\"cmdId\":\"5\",\"method\":\"GetPorts\","
                           "\"parameter\":[\"12345\"]}")
                .Text(),
            "{\n   \"description\" : \"User SID is empty.\",\n   \"exception\" : -2408,\n"
            "   \"id\" : \"1\",\n   \"method\" : \"GetPorts\",\n"
            "   \"result\" : [ \"12345\", false ],\n\t\"cmdId\" : \"5\"\n}\n");
  auto hashes = VirtualManagerClient::GetInstance()->manager()->GetUserHashes();
  ASSERT_EQ(hashes.count("12345"), 1u);
  EXPECT_EQ(hashes["12345"], "");
  EXPECT_NE(RunCommandText("{\"id\":\"1\",\"method\":\"GetPorts\"}").Text().find("-2202"),
            std::string::npos);
}

TEST_F(ServerInfoTest, BuildModulePortsReadsTheUsersValues) {
  testing::WriteFileBytes(folder_.Join("user_config.ini"),
                          "[alice]\nvsm=1\nvsm_ssl=2\nqpt=3\nqpt_ssl=x\n");
  ModulePortMap ports = VirtualManagerClient::GetInstance()->manager()->BuildModulePorts("alice");
  EXPECT_EQ(BuildPortsObject(ports),
            "{\"qpt\":{\"port\":3,\"sslPort\":0},\"vsm\":{\"port\":1,\"sslPort\":2}}");
  EXPECT_EQ(BuildPortsObject({}), "{}");
}

}  // namespace
}  // namespace vsm
