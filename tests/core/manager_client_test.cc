#include "core/manager_client.h"

#include <gtest/gtest.h>

#include "core/virtual_manager_client.h"
#include "test_support/command_runner.h"

namespace vsm {
namespace {

using testing::RunCommandText;

class DispatchTest : public ::testing::Test {
 protected:
  void TearDown() override { VirtualManagerClient::DestroyInstance(); }
};

std::string FunctionNotFound(const std::string& method, const std::string& results,
                             const std::string& cmdId) {
  return "{\n   \"description\" : \"Function not found\",\n   \"exception\" : -2200,\n"
         "   \"id\" : \"1\",\n   \"method\" : \"" +
         method + "\",\n   \"result\" : " + results + ",\n\t\"cmdId\" : \"" + cmdId + "\"\n}\n";
}

TEST_F(DispatchTest, UnknownAndMiscasedMethodsAreNotFound) {
  for (const std::string method : {"versioninfo", "Nope", "VersionInfo ", "LoadZipFromBytes"}) {
    auto outcome = RunCommandText("{\"id\":\"1\",\"cmdId\":\"4\",\"method\":\"" + method +
                                  "\",\"parameter\":[1]}");
    EXPECT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.Text(), FunctionNotFound(method, "[ 1, false ]", "4")) << method;
  }
}

TEST_F(DispatchTest, TextThatIsNotACommandEndsAsAnEmptyMethod) {
  const std::string empty =
      "{\n   \"description\" : \"Function not found\",\n   \"exception\" : -2200,\n"
      "   \"id\" : \"\",\n   \"method\" : \"\",\n   \"result\" : [ false ],\n"
      "\t\"cmdId\" : \"\"\n}\n";
  for (const std::string text : {"not json", "{}", "[1,2]", "{\"id\":\"1\"", "null", "\"x\""}) {
    EXPECT_EQ(RunCommandText(text).Text(), empty) << text;
  }
}

TEST_F(DispatchTest, UnsupportedClientsAreRefusedBeforeTheHandler) {
  auto outcome = RunCommandText("{\"id\":\"1\",\"cmdId\":\"2\",\"method\":\"ChangePort\"}",
                                testing::kLocalOrigin, "/vsm/", 0);
  EXPECT_EQ(outcome.Text(),
            "{\n   \"description\" : \"Unsupported browser client. Please try Quillport plugin "
            "edition for chrome in Chrome!\",\n   \"exception\" : -2205,\n   \"id\" : \"1\",\n"
            "   \"method\" : \"ChangePort\",\n   \"result\" : [ false ],\n"
            "\t\"cmdId\" : \"2\"\n}\n");
}

TEST_F(DispatchTest, KindsOtherThanMethodDispatchByName) {
  auto outcome = RunCommandText("{\"id\":\"1\",\"event\":\"ChangePort\",\"property\":\"x\"}");
  EXPECT_EQ(outcome.Text(),
            "{\n   \"id\" : \"1\",\n   \"method\" : \"ChangePort\",\n   \"result\" : [ true ],\n"
            "\t\"cmdId\" : \"\"\n}\n");
}

TEST_F(DispatchTest, WithoutASendBackKeyTheHandlerRunsAndNothingIsSent) {
  auto outcome = RunCommandText("{\"id\":\"1\",\"method\":\"VersionInfo\"}", testing::kLocalOrigin,
                                "/vsm/", 1, 0);
  EXPECT_EQ(outcome.result, 0);
  EXPECT_TRUE(outcome.answers.empty());
  // VersionInfo ran: it recorded the (empty) user under its hash.
  auto hashes = VirtualManagerClient::GetInstance()->manager()->GetUserHashes();
  ASSERT_EQ(hashes.count("0"), 1u);
}

TEST_F(DispatchTest, SetErrorKeepsAtMost1023Characters) {
  ManagerClient* manager = VirtualManagerClient::GetInstance()->manager();
  manager->SetError(-7, std::string(5000, 'e'));
  EXPECT_EQ(manager->GetErrorCode(), -7);
  EXPECT_EQ(manager->GetErrorText(), std::string(1023, 'e'));
}

}  // namespace
}  // namespace vsm
