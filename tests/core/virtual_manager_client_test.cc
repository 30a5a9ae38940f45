#include "core/virtual_manager_client.h"

#include <gtest/gtest.h>

#include "test_support/answer_capture.h"

namespace vsm {
namespace {

TEST(RouteText, BuildsTheCommandAndItsBody) {
  struct Row {
    std::string url, text, command;
    std::string body;  // what goes with the command; "" for none
  } rows[] = {
      {"/vsm/x", "{\"id\":\"1\"}", "{\"id\":\"1\"}", ""},
      {"/vsm/x", "{\"id\":\"1\"}\r\n\r\nABC", "{\"id\":\"1\"}", "ABC"},
      {"/vsm/x", "{\"id\":\"1\"}\r\n\r\n", "{\"id\":\"1\"}", ""},
      {"/vsm/x", "\r\n\r\nABC", "", "ABC"},
      {"/abc/vsm/", "{}", "", ""},
      {"/vsm", "{}", "", ""},
      {"/x/LoadZipFromBytes?type=1&vsver=16&", "",
       "{\"id\":\"1\",\"method\":\"LoadZipFromBytes\",\"parameter\":[1,\"16\"]}", "BODY"},
      // Without "?type=" the URL's sixth character is taken; at the URL's end, nothing.
      {"/LoadZipFromBytes/abc", "",
       "{\"id\":\"1\",\"method\":\"LoadZipFromBytes\",\"parameter\":[Z,\"\"]}", "BODY"},
      {"/x/LoadZipFromBytes?type=", "",
       "{\"id\":\"1\",\"method\":\"LoadZipFromBytes\",\"parameter\":[,\"\"]}", "BODY"},
      {"/CheckUpdateFile?vsver=2&", "{\"method\":\"CheckUpdateFile\",\"parameter\":[1,]}",
       "{\"method\":\"CheckUpdateFile\",\"parameter\":[1,\"2\"]}", ""},
      {"/vsm/CheckUpdateFile", "x", "x\"\"]}", ""},
  };
  for (const Row& row : rows) {
    auto routed = VirtualManagerClient::RouteText(row.url, row.text, ByteBlock::CopyOf("BODY", 4));
    EXPECT_EQ(routed.command, row.command) << row.url;
    const ByteBlock& body = routed.body;
    EXPECT_EQ(
        body.data() ? std::string(reinterpret_cast<const char*>(body.data()), body.length()) : "",
        row.body)
        << row.url;
  }
}

TEST(ExtractClientVersion, NeedsAnAmpersandBehindTheValue) {
  const char* rows[][2] = {{"/a?vsver=16&x=1", "16"},
                           {"/a?vsver=16", ""},
                           {"/a?vsver=&", ""},
                           {"/a?x=1&vsver=1.2.3&", "1.2.3"},
                           {"/a", ""}};
  for (const auto& row : rows)
    EXPECT_EQ(VirtualManagerClient::ExtractClientVersion(row[0]), row[1]);
}

time_t fakeNow = 0;
time_t FakeClock() { return fakeNow; }

TEST(WaitValue, CountsIdlenessFromTheLastCommandOrAnswer) {
  VirtualManagerClient::SetClockForTesting(&FakeClock);
  VirtualManagerClient* client = VirtualManagerClient::GetInstance();
  fakeNow = 5000;
  EXPECT_EQ(client->GetWaitValue(), 1);  // never saw a command
  testing::AnswerCapture capture;
  auto route = [&](const char* url) {
    const HostCall call{1, capture.Context(), nullptr, 0, 1, &testing::CaptureAnswer};
    return client->RouteCommand(call, url, "{\"method\":\"ChangePort\"}", ByteBlock());
  };
  fakeNow = 1000;
  route("/vsm/");
  fakeNow = 1030;
  EXPECT_EQ(client->GetWaitValue(), 1);
  fakeNow = 1031;
  EXPECT_EQ(client->GetWaitValue(), 100);
  EXPECT_EQ(route("/nowhere"), 1);  // the plain "Invalid command" reply counts as well
  EXPECT_EQ(capture.answers.back().text, "Invalid command");
  EXPECT_EQ(client->GetWaitValue(), 1);
  VirtualManagerClient::SetClockForTesting(nullptr);
  VirtualManagerClient::DestroyInstance();
}

}  // namespace
}  // namespace vsm
