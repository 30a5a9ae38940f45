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

TEST_F(DispatchTest, NamesAreComparedExactly) {
  for (const std::string method : {"versioninfo", "VersionInfo ", "LoadZipFromBytes", ""}) {
    EXPECT_EQ(RunCommandText("{\"id\":\"1\",\"cmdId\":\"4\",\"method\":\"" + method +
                             "\",\"parameter\":[1]}")
                  .Text(),
              "{\n   \"description\" : \"Function not found\",\n   \"exception\" : -2200,\n"
              "   \"id\" : \"1\",\n   \"method\" : \"" +
                  method +
                  "\",\n"
                  "   \"result\" : [ 1, false ],\n\t\"cmdId\" : \"4\"\n}\n");
  }
  // Any kind dispatches by its name; the answer of a handler that sets a result says "method".
  EXPECT_EQ(RunCommandText("{\"id\":\"1\",\"event\":\"ChangePort\",\"property\":\"x\"}").Text(),
            "{\n   \"id\" : \"1\",\n   \"method\" : \"ChangePort\",\n   \"result\" : [ true ],\n"
            "\t\"cmdId\" : \"\"\n}\n");
}

TEST_F(DispatchTest, UnsupportedClientsAreRefusedBeforeTheHandler) {
  EXPECT_EQ(RunCommandText("{\"id\":\"1\",\"cmdId\":\"2\",\"method\":\"VersionInfo\"}",
                           testing::kLocalOrigin, "/vsm/", 0)
                .Text(),
            "{\n   \"description\" : \"Unsupported browser client. Please try Quillport plugin "
            "edition for chrome in Chrome!\",\n   \"exception\" : -2205,\n   \"id\" : \"1\",\n"
            "   \"method\" : \"VersionInfo\",\n   \"result\" : [ false ],\n"
            "\t\"cmdId\" : \"2\"\n}\n");
  EXPECT_TRUE(VirtualManagerClient::GetInstance()->manager()->GetUserHashes().empty());
  // Without a send-back key the handler runs all the same and its answer is lost.
  auto outcome = RunCommandText("{\"id\":\"1\",\"method\":\"VersionInfo\"}", testing::kLocalOrigin,
                                "/vsm/", 1, 0);
  EXPECT_EQ(outcome.result, 0);
  EXPECT_TRUE(outcome.answers.empty());
  EXPECT_EQ(VirtualManagerClient::GetInstance()->manager()->GetUserHashes().count("0"), 1u);
}

TEST_F(DispatchTest, SetErrorKeepsAtMost1023Characters) {
  ManagerClient* manager = VirtualManagerClient::GetInstance()->manager();
  manager->SetError(-7, std::string(5000, 'e'));
  EXPECT_EQ(manager->GetErrorCode(), -7);
  EXPECT_EQ(manager->GetErrorText(), std::string(1023, 'e'));
}

}  // namespace
}  // namespace vsm
