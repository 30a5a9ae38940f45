#include <gtest/gtest.h>

#include "commands/origin_guard.h"
#include "core/virtual_manager_client.h"
#include "test_support/command_runner.h"

namespace vsm {
namespace {

using testing::RunCommandText;

struct OriginRow {
  std::string origin;
  bool local;
};

class OriginTable : public ::testing::TestWithParam<OriginRow> {
 protected:
  void TearDown() override { VirtualManagerClient::DestroyInstance(); }
};

std::string Envelope(const std::string& method, const std::string& result) {
  return "{\n   \"id\" : \"1\",\n   \"method\" : \"" + method + "\",\n   \"result\" : " + result +
         ",\n\t\"cmdId\" : \"3\"\n}\n";
}

std::string Refusal(const std::string& method, const std::string& result) {
  return "{\n   \"description\" : \"Only support access from local machine\",\n"
         "   \"exception\" : -1,\n   \"id\" : \"1\",\n   \"method\" : \"" +
         method + "\",\n   \"result\" : " + result + ",\n\t\"cmdId\" : \"3\"\n}\n";
}

std::string Command(const std::string& method) {
  return "{\"id\":\"1\",\"cmdId\":\"3\",\"method\":\"" + method + "\",\"parameter\":[\"p\"]}";
}

TEST_P(OriginTable, GuardsTheLocalCommands) {
  const OriginRow& row = GetParam();
  EXPECT_EQ(IsLocalOrigin(row.origin), row.local) << row.origin;
  EXPECT_EQ(
      RunCommandText(Command("Reboot"), row.origin).Text(),
      row.local ? Envelope("Reboot", "[ \"p\", true ]") : Refusal("Reboot", "[ \"p\", false ]"));
  EXPECT_EQ(RunCommandText(Command("AddFirewall"), row.origin).Text(),
            row.local ? Envelope("AddFirewall", "[ \"p\", false ]")
                      : Refusal("AddFirewall", "[ \"p\", false ]"));
  EXPECT_EQ(RunCommandText(Command("GetLocalIP"), row.origin).Text(),
            row.local ? "[]" : Refusal("GetLocalIP", "[ \"p\", false ]"));
}

INSTANTIATE_TEST_SUITE_P(
    Origins, OriginTable,
    ::testing::Values(OriginRow{"http://127.0.0.1", true}, OriginRow{"https://127.0.0.1", true},
                      OriginRow{"http://127.0.0.1:8080", true},
                      OriginRow{"http://127.0.0.1.example.test", true},
                      OriginRow{"https://127.0.0.1:18626/page", true},
                      OriginRow{"http://localhost", false}, OriginRow{"HTTP://127.0.0.1", false},
                      OriginRow{"http://[::1]", false}, OriginRow{"", false},
                      OriginRow{"null", false}, OriginRow{"x http://127.0.0.1", false},
                      OriginRow{"http://127.0.0.2", false}, OriginRow{"http://127.0.0", false}));

}  // namespace
}  // namespace vsm
