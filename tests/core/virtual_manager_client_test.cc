#include "core/virtual_manager_client.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "test_support/answer_capture.h"

namespace vsm {
namespace {

using testing::AnswerCapture;
using testing::CaptureAnswer;

struct RouteRow {
  std::string url;
  std::string text;
  std::string command;
  std::string body;  // what goes with the command; "" for none
};

class RouteTable : public ::testing::TestWithParam<RouteRow> {};

TEST_P(RouteTable, BuildsTheCommandAndItsBody) {
  const RouteRow& row = GetParam();
  uint8_t* bodyCopy = static_cast<uint8_t*>(std::malloc(4));
  std::memcpy(bodyCopy, "BODY", 4);
  auto routed = VirtualManagerClient::RouteText(row.url, row.text, bodyCopy, 4);
  EXPECT_EQ(routed.command, row.command) << row.url;
  std::string body =
      routed.body ? std::string(reinterpret_cast<char*>(routed.body), routed.bodyLength) : "";
  EXPECT_EQ(body, row.body) << row.url;
  EXPECT_EQ(routed.body == nullptr, row.body.empty());
  std::free(routed.body);
}

INSTANTIATE_TEST_SUITE_P(
    Routes, RouteTable,
    ::testing::Values(
        RouteRow{"/vsm/x", "{\"id\":\"1\"}", "{\"id\":\"1\"}", ""},
        RouteRow{"/vsm/x", "{\"id\":\"1\"}\r\n\r\nABC", "{\"id\":\"1\"}", "ABC"},
        RouteRow{"/vsm/x", "{\"id\":\"1\"}\r\n\r\n", "{\"id\":\"1\"}", ""},
        RouteRow{"/vsm/x", "\r\n\r\nABC", "", "ABC"}, RouteRow{"/vsm/", "", "", ""},
        RouteRow{"/abc/vsm/", "{}", "", ""}, RouteRow{"/vsm", "{}", "", ""},
        RouteRow{"", "{}", "", ""},
        RouteRow{"/x/LoadZipFromBytes?type=1&vsver=16&", "",
                 "{\"id\":\"1\",\"method\":\"LoadZipFromBytes\",\"parameter\":[1,\"16\"]}", "BODY"},
        RouteRow{"/LoadZipFromBytes/abc", "",
                 "{\"id\":\"1\",\"method\":\"LoadZipFromBytes\",\"parameter\":[Z,\"\"]}", "BODY"},
        RouteRow{"/x/LoadZipFromBytes?type=", "",
                 "{\"id\":\"1\",\"method\":\"LoadZipFromBytes\",\"parameter\":[,\"\"]}", "BODY"},
        RouteRow{"/CheckUpdateFile?vsver=2&", "{\"method\":\"CheckUpdateFile\",\"parameter\":[1,]}",
                 "{\"method\":\"CheckUpdateFile\",\"parameter\":[1,\"2\"]}", ""},
        RouteRow{"/vsm/CheckUpdateFile", "x", "x\"\"]}", ""},
        RouteRow{"/vsm/LoadZipFromBytes?type=2", "{\"ignored\":1}",
                 "{\"id\":\"1\",\"method\":\"LoadZipFromBytes\",\"parameter\":[2,\"\"]}", "BODY"}));

TEST(ExtractClientVersion, NeedsAnAmpersandBehindTheValue) {
  EXPECT_EQ(VirtualManagerClient::ExtractClientVersion("/a?vsver=16&x=1"), "16");
  EXPECT_EQ(VirtualManagerClient::ExtractClientVersion("/a?vsver=16"), "");
  EXPECT_EQ(VirtualManagerClient::ExtractClientVersion("/a?vsver=&"), "");
  EXPECT_EQ(VirtualManagerClient::ExtractClientVersion("/a?x=1&vsver=1.2.3&"), "1.2.3");
  EXPECT_EQ(VirtualManagerClient::ExtractClientVersion("/a"), "");
}

time_t fakeNow = 0;
time_t FakeClock() { return fakeNow; }

class WaitValueTest : public ::testing::Test {
 protected:
  void SetUp() override { VirtualManagerClient::SetClockForTesting(&FakeClock); }
  void TearDown() override {
    VirtualManagerClient::SetClockForTesting(nullptr);
    VirtualManagerClient::DestroyInstance();
  }
};

TEST_F(WaitValueTest, CountsIdlenessFromTheLastCommand) {
  VirtualManagerClient* client = VirtualManagerClient::GetInstance();
  fakeNow = 5000;
  EXPECT_EQ(client->GetWaitValue(), 1);  // never saw a command
  fakeNow = 1000;
  AnswerCapture capture;
  client->RouteCommand(1, capture.Context(), "/vsm/", "{\"method\":\"ChangePort\"}", 1,
                       &CaptureAnswer, 0, "", nullptr, 0, 0, 0, 0);
  fakeNow = 1030;
  EXPECT_EQ(client->GetWaitValue(), 1);
  fakeNow = 1031;
  EXPECT_EQ(client->GetWaitValue(), 100);
  client->MarkActivity();
  EXPECT_EQ(client->GetWaitValue(), 1);
}

TEST_F(WaitValueTest, AnInvalidCommandReplyAlsoCountsAsActivity) {
  VirtualManagerClient* client = VirtualManagerClient::GetInstance();
  fakeNow = 1000;
  client->MarkActivity();
  fakeNow = 2000;
  EXPECT_EQ(client->GetWaitValue(), 100);
  AnswerCapture capture;
  EXPECT_EQ(client->RouteCommand(1, capture.Context(), "/nowhere", "{}", 1, &CaptureAnswer, 0, "",
                                 nullptr, 0, 0, 0, 0),
            1);
  ASSERT_EQ(capture.answers.size(), 1u);
  EXPECT_EQ(capture.answers[0].text, "Invalid command");
  EXPECT_EQ(client->GetWaitValue(), 1);
}

TEST(Singleton, DestroyGivesAFreshInstanceWithEmptyMaps) {
  VirtualManagerClient::DestroyInstance();  // nothing there yet: no effect
  VirtualManagerClient* first = VirtualManagerClient::GetInstance();
  EXPECT_EQ(VirtualManagerClient::GetInstance(), first);
  first->AddFileToWhiteList("/a");
  char record[4] = {1, 2, 3, 4};
  EXPECT_EQ(first->SetImage("/SetEncryptedImageMap?GUID=g", record, 4), 1);
  VirtualManagerClient::DestroyInstance();
  VirtualManagerClient* second = VirtualManagerClient::GetInstance();
  EXPECT_EQ(second->IsFileInWhiteList("/a"), 0);
  uint32_t length = 0;
  EXPECT_EQ(second->GetImage("/GetEncryptedImageMap?GUID=g", nullptr, &length), 0);
  VirtualManagerClient::DestroyInstance();
}

}  // namespace
}  // namespace vsm
