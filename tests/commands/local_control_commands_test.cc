#include <gtest/gtest.h>

#include "commands/origin_guard.h"
#include "core/virtual_manager_client.h"
#include "test_support/command_runner.h"

namespace vsm {
namespace {

// The guard is a prefix test and nothing more: ports, paths and further labels pass; other
// names for this machine, other letter cases and an empty origin don't.
TEST(LocalControlCommands, AnswerOnlyBehindTheOriginGuard) {
  const std::pair<std::string, bool> origins[] = {{"http://127.0.0.1", true},
                                                  {"https://127.0.0.1", true},
                                                  {"http://127.0.0.1:8080", true},
                                                  {"http://127.0.0.1.example.test", true},
                                                  {"https://127.0.0.1:1/page", true},
                                                  {"http://localhost", false},
                                                  {"HTTP://127.0.0.1", false},
                                                  {"http://[::1]", false},
                                                  {"", false},
                                                  {"x http://127.0.0.1", false},
                                                  {"http://127.0.0.2", false}};
  auto answer = [](const std::string& method, const std::string& result, bool refused) {
    return "{\n" +
           std::string(refused ? "   \"description\" : \"Only support access from local "
                                 "machine\",\n   \"exception\" : -1,\n"
                               : "") +
           "   \"id\" : \"1\",\n   \"method\" : \"" + method + "\",\n   \"result\" : [ \"p\", " +
           result + " ],\n\t\"cmdId\" : \"3\"\n}\n";
  };
  for (const auto& [origin, local] : origins) {
    EXPECT_EQ(IsLocalOrigin(origin), local) << origin;
    auto run = [&](const std::string& method) {
      return testing::RunCommandText("{\"id\":\"1\",\"cmdId\":\"3\",\"method\":\"" + method +
                                         "\",\"parameter\":[\"p\"]}",
                                     origin)
          .Text();
    };
    EXPECT_EQ(run("Reboot"), answer("Reboot", local ? "true" : "false", !local)) << origin;
    EXPECT_EQ(run("AddFirewall"), answer("AddFirewall", "false", !local)) << origin;
    EXPECT_EQ(run("GetLocalIP"), local ? "[]" : answer("GetLocalIP", "false", true)) << origin;
  }
  VirtualManagerClient::DestroyInstance();
}

}  // namespace
}  // namespace vsm
