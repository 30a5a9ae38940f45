#include <gtest/gtest.h>

#include <cstdio>

#include "commands/server_document.h"
#include "config/path_table.h"
#include "config/working_paths.h"
#include "core/virtual_manager_client.h"
#include "support/process_memory.h"
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
  bool Stored() { return testing::PathExists(folder_.Join("VSConfiguration.ini")); }

  testing::TempDir folder_;
};

std::string Command(const std::string& method, const std::string& parameters) {
  return "{\"id\":\"1\",\"cmdId\":\"8\",\"method\":\"" + method + "\",\"parameter\":[" +
         parameters + "]}";
}
std::string Envelope(const std::string& method, const std::string& result,
                     const std::string& error = "") {
  return "{\n" + error + "   \"id\" : \"1\",\n   \"method\" : \"" + method +
         "\",\n   \"result\" : " + result + ",\n\t\"cmdId\" : \"8\"\n}\n";
}
const char kCountError[] =
    "   \"description\" : \"Invalid parameter count.\",\n   \"exception\" : -2202,\n";

TEST_F(ServerInfoTest, TheDocumentShowsWhatWasAskedAndIsReadBack) {
  const std::string empty =
      "{\"Host\":\"\",\"qpt\":{\"port\":\"-1\",\"sslPort\":\"-1\"},"
      "\"vsm\":{\"port\":\"-1\",\"sslPort\":\"-1\"}}";
  EXPECT_EQ(RunCommandText(Command("GetServerInfo", "{}")).Text(), empty);
  // Ports are the text of their numbers; a quote in the host is not escaped.
  const std::string document =
      "{\"Host\":\"a\"b\",\"qpt\":{\"port\":\"2\",\"sslPort\":\"-1\"},"
      "\"vsm\":{\"port\":\"-5\",\"sslPort\":\"7\"}}";
  EXPECT_EQ(RunCommandText(Command("SetServerInfo", "\"a\\\"b\",-5,\"7\",2.9,4294967295")).Text(),
            document);
  EXPECT_EQ(RunCommandText(Command("GetServerInfo", "")).Text(), document);
}

TEST_F(ServerInfoTest, RefusalsAndCountErrorsStoreNothing) {
  EXPECT_EQ(RunCommandText(Command("SetServerInfo", "\"h\",1,2,3,4"), "http://localhost").Text(),
            Envelope("SetServerInfo", "[ \"h\", 1, 2, 3, 4, false ]",
                     "   \"description\" : \"Only support access from local machine\",\n"
                     "   \"exception\" : -1,\n"));
  EXPECT_EQ(RunCommandText(Command("SetServerInfo", "\"h\",1,2,3")).Text(),
            Envelope("SetServerInfo", "[ \"h\", 1, 2, 3, false ]", kCountError));
  EXPECT_EQ(RunCommandText(Command("CheckQPTPort", "\"h\",1")).Text(),
            Envelope("CheckQPTPort", "[ \"h\", 1, false ]", kCountError));
  EXPECT_EQ(RunCommandText(Command("GetPorts", "")).Text(),
            Envelope("GetPorts", "[ false ]", kCountError));
  EXPECT_FALSE(Stored());
}

// Every JSON type in every position each command reads: the host texts take all but an object,
// the ports take numbers and numeric texts, and a type that can't be read answers a bare {}.
TEST_F(ServerInfoTest, ParametersOfEveryTypeInEveryPosition) {
  const std::string kinds[] = {"null",  "true",  "7",     "3000000000", "1.5",
                               "\"9\"", "\"0\"", "\"x\"", "[1]",        "{\"a\":1}"};
  auto portOk = [](const std::string& kind) {
    return kind != "null" && kind != "true" && kind != "\"x\"" && kind != "[1]" && kind[0] != '{';
  };
  for (const std::string& kind : kinds) {
    for (int position = 0; position < 5; ++position) {
      std::string parameters;
      for (int i = 0; i < 5; ++i) {
        parameters += (i ? "," : "") + (i == position ? kind : (i == 0 ? "\"h\"" : "1"));
      }
      const bool ok = position == 0 ? kind[0] != '{' : portOk(kind);
      EXPECT_EQ(RunCommandText(Command("SetServerInfo", parameters)).Text() == "{}", !ok)
          << parameters;
      if (position < 3) {
        EXPECT_EQ(RunCommandText(Command("CheckQPTPort", parameters)).Text(),
                  ok ? Envelope("CheckQPTPort", "[ true ]") : "{}")
            << parameters;
      }
    }
    // Any hash, even an unreadable one (as the empty hash), finds no user here.
    EXPECT_NE(RunCommandText(Command("GetPorts", kind)).Text().find("\"exception\" : -2408"),
              std::string::npos);
  }
  // A parameter object yields no arguments, only its member count.
  EXPECT_EQ(RunCommandText("{\"method\":\"SetServerInfo\",\"parameter\":{\"a\":1,\"b\":2,\"c\":3,"
                           "\"d\":4,\"e\":5}}")
                .Text(),
            "{}");
}

// 50,000 distinct 256-byte hashes from one page: all answer alike, the first 10,000 are
// remembered with an empty user, and the rest leave nothing behind.
TEST_F(ServerInfoTest, GetPortsRemembersUnknownHashesUpToTheBoundAndFindsNoUser) {
  constexpr int kBound = ManagerClient::kMaxRememberedHashes;
  auto hashOf = [](int i) { return std::to_string(i) + std::string(250, 'h'); };
  const uint64_t residentBefore = GetResidentSetBytes();
  for (int i = 0; i < 50000; ++i) {
    const std::string answer = RunCommandText(Command("GetPorts", "\"" + hashOf(i) + "\"")).Text();
    if (i % 9999 != 0 && i != kBound) continue;  // the 1st, the 10,001st and a few between
    EXPECT_EQ(answer, Envelope("GetPorts", "[\n      \"" + hashOf(i) + "\",\n      false\n   ]",
                               "   \"description\" : \"User SID is empty.\",\n"
                               "   \"exception\" : -2408,\n"));
  }
  const uint64_t grown = GetResidentSetBytes() - residentBefore;
  std::printf("resident size grew by %.1f MB over 50,000 hashes\n", grown / 1e6);
#ifndef __SANITIZE_ADDRESS__  // whose quarantine keeps freed blocks resident
  EXPECT_LT(grown, 10'000'000u);
#endif
  auto hashes = VirtualManagerClient::GetInstance()->manager()->GetUserHashes();
  EXPECT_EQ(hashes.size() + hashes.count(hashOf(kBound - 1)) + hashes.count(hashOf(kBound)),
            kBound + 1u);
}

TEST_F(ServerInfoTest, BuildModulePortsReadsTheUsersValues) {
  testing::WriteFileBytes(folder_.Join("user_config.ini"),
                          "[alice]\nvsm=1\nvsm_ssl=2\nqpt=3\nqpt_ssl=x\n");
  EXPECT_EQ(
      BuildPortsObject(VirtualManagerClient::GetInstance()->manager()->BuildModulePorts("alice")),
      "{\"qpt\":{\"port\":3,\"sslPort\":0},\"vsm\":{\"port\":1,\"sslPort\":2}}");
  EXPECT_EQ(BuildPortsObject({}), "{}");
}

}  // namespace
}  // namespace vsm
