#include "core/http_param_request.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>

#include "test_support/answer_capture.h"

namespace vsm {
namespace {

using testing::AnswerCapture;
using testing::CaptureAnswer;

char DirectThunk(SendBackCallback callback, unsigned int key, unsigned long long context,
                 const char* text, const void* binary, unsigned int binaryLength, long long extra) {
  return callback(key, context, text, binary, binaryLength, extra);
}

class RequestTest : public ::testing::Test {
 protected:
  std::unique_ptr<HttpParamRequest> Make(const std::string& command, uint32_t key = 1,
                                         uint8_t* body = nullptr, uint32_t bodyLength = 0) {
    return std::make_unique<HttpParamRequest>(key, capture_.Context(), command, 1, 9, "origin",
                                              &DirectThunk, &CaptureAnswer, 1, 2, 3, body,
                                              bodyLength, 1);
  }
  AnswerCapture capture_;
};

TEST_F(RequestTest, TakesTheCommandApart) {
  uint8_t* body = static_cast<uint8_t*>(std::malloc(3));
  std::memcpy(body, "ABC", 3);
  auto request = Make(
      "{\"id\":\"7\",\"cmdId\":\"c\",\"event\":\"e\",\"version\":\"v\",\"parameter\":[1,\"x\"]}", 1,
      body, 3);
  EXPECT_EQ(request->GetId(), "7");
  EXPECT_EQ(request->GetMethod(), "e");
  EXPECT_EQ(request->GetCommandKind(), kCommandEvent);
  EXPECT_EQ(request->GetVersion(), "v");
  EXPECT_EQ(request->GetOrigin(), "origin");
  EXPECT_EQ(request->GetClientSocket(), 9u);
  ASSERT_EQ(request->GetParameters().size(), 2u);
  EXPECT_EQ(request->GetParameters()[1]->asString(), "x");
  ASSERT_EQ(request->GetResponse()->GetBodyLength(), 3u);
  EXPECT_EQ(std::memcmp(request->GetResponse()->GetBody(), "ABC", 3), 0);
  EXPECT_EQ(request->GetResponse()->text, "");
}

TEST_F(RequestTest, TextThatDoesNotParseLeavesEverythingEmpty) {
  auto request = Make("{\"id\":");
  EXPECT_EQ(request->GetId(), "");
  EXPECT_EQ(request->GetMethod(), "");
  EXPECT_EQ(request->GetCommandKind(), kCommandNone);
  EXPECT_TRUE(request->GetParameters().empty());
}

struct SetResultRow {
  const char* name;
  std::function<void(HttpParamRequest*)> act;
  std::string expected;
};

class SetResultTable : public RequestTest, public ::testing::WithParamInterface<SetResultRow> {};

TEST_P(SetResultTable, EncodesTheWholeAnswer) {
  auto request = Make("{\"id\":\"1\",\"method\":\"m\",\"parameter\":[\"p\"]}");
  GetParam().act(request.get());
  EXPECT_EQ(request->GetResponse()->text, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Operations, SetResultTable,
    ::testing::Values(
        SetResultRow{"PlainSuccess",
                     [](HttpParamRequest* r) { r->SetResult(true, nullptr, 0, 0, ""); },
                     "{\n   \"id\" : \"1\",\n   \"method\" : \"m\",\n"
                     "   \"result\" : [ \"p\", true ]\n}\n"},
        SetResultRow{"SuccessWithDescription",
                     [](HttpParamRequest* r) { r->SetResult("v", nullptr, 0, 0, "note"); },
                     "{\n   \"id\" : \"1\",\n   \"method\" : \"m\",\n   \"result\" : "
                     "[ \"p\", \"v\", \"note\", \"Veldorane Service Manager Module\" ]\n}\n"},
        SetResultRow{"Failure",
                     [](HttpParamRequest* r) { r->SetResult(false, nullptr, 0, -3, "bad"); },
                     "{\n   \"description\" : \"bad\",\n   \"exception\" : -3,\n"
                     "   \"id\" : \"1\",\n   \"method\" : \"m\",\n"
                     "   \"result\" : [ \"p\", false ]\n}\n"},
        SetResultRow{"Integer",
                     [](HttpParamRequest* r) { r->SetResult(int32_t{-5}, nullptr, 0, 0, ""); },
                     "{\n   \"id\" : \"1\",\n   \"method\" : \"m\",\n"
                     "   \"result\" : [ \"p\", -5 ]\n}\n"},
        SetResultRow{"EventDecidesLast",
                     [](HttpParamRequest* r) {
                       r->SetResult("a", nullptr, 0, 0, "");
                       r->AddResult("b", true, 0, "");
                     },
                     "{\n   \"event\" : \"m\",\n   \"id\" : \"1\",\n"
                     "   \"result\" : [ \"p\", \"a\", \"b\" ]\n}\n"},
        SetResultRow{"AddResultKeepsItsCode",
                     [](HttpParamRequest* r) { r->AddResult("b", false, 5, "five"); },
                     "{\n   \"description\" : \"five\",\n   \"exception\" : 5,\n"
                     "   \"id\" : \"1\",\n   \"method\" : \"m\",\n"
                     "   \"result\" : [ \"p\", \"b\" ]\n}\n"},
        SetResultRow{
            "JsonResult",
            [](HttpParamRequest* r) { r->AddJsonResult("{\"vsm\":{\"port\":1}}", true, 0, ""); },
            "{\n   \"event\" : \"m\",\n   \"id\" : \"1\",\n   \"result\" : [\n"
            "      \"p\",\n      {\n         \"vsm\" : {\n"
            "            \"port\" : 1\n         }\n      }\n   ]\n}\n"},
        SetResultRow{"JsonResultThatDoesNotParse",
                     [](HttpParamRequest* r) {
                       r->SetResult(true, nullptr, 0, 0, "");
                       r->AddJsonResult("{oops", true, 0, "");
                     },
                     "{\n   \"id\" : \"1\",\n   \"method\" : \"m\",\n"
                     "   \"result\" : [ \"p\", true ]\n}\n"},
        SetResultRow{"Raw",
                     [](HttpParamRequest* r) {
                       r->SetResult(true, nullptr, 0, 0, "");
                       r->SetRawResult("{}");
                     },
                     "{}"}),
    [](const ::testing::TestParamInfo<SetResultRow>& info) { return info.param.name; });

TEST_F(RequestTest, SendBackInsertsCmdIdAsTheLastMember) {
  auto request =
      Make("{\"id\":\"1\",\"cmdId\":\"17\",\"method\":\"ChangePort\",\"parameter\":[\"a\"]}");
  request->SetResult(true, nullptr, 0, 0, "");
  EXPECT_EQ(request->SendBack(), 1);
  ASSERT_EQ(capture_.answers.size(), 1u);
  EXPECT_EQ(capture_.answers[0].text,
            "{\n   \"id\" : \"1\",\n   \"method\" : \"ChangePort\",\n"
            "   \"result\" : [ \"a\", true ],\n\t\"cmdId\" : \"17\"\n}\n");
  EXPECT_EQ(capture_.answers[0].extra, 0);
}

TEST_F(RequestTest, SendBackInsertsEmptyAndUnescapedCmdIds) {
  auto request = Make("{\"id\":\"1\",\"cmdId\":\"a\\\"b\",\"method\":\"m\"}");
  request->SetResult(true, nullptr, 0, 0, "");
  request->SendBack();
  EXPECT_EQ(capture_.answers[0].text,
            "{\n   \"id\" : \"1\",\n   \"method\" : \"m\",\n   \"result\" : [ true ],\n"
            "\t\"cmdId\" : \"a\"b\"\n}\n");
  auto noCmdId = Make("{\"id\":\"1\",\"method\":\"m\"}");
  noCmdId->SetResult(true, nullptr, 0, 0, "");
  noCmdId->SendBack();
  EXPECT_NE(capture_.answers[1].text.find(",\n\t\"cmdId\" : \"\"\n}\n"), std::string::npos);
}

TEST_F(RequestTest, SendBackLeavesTextsWithoutBraceOrLineFeedAlone) {
  for (const char* raw : {"{}", "[]", "plain", "{\"Host\":\"x\"}", ""}) {
    auto request = Make("{\"id\":\"1\",\"cmdId\":\"9\",\"method\":\"m\"}");
    request->SetRawResult(raw);
    request->SendBack();
    EXPECT_EQ(capture_.answers.back().text, raw);
  }
}

TEST_F(RequestTest, SendBackHandsTheBinaryOverOnce) {
  auto request = Make("{\"id\":\"1\",\"method\":\"m\"}");
  request->SetResult(true, "xyz", 3, 0, "");
  request->SetResult(true, "pq", 2, 0, "");  // the last binary replaces the first
  request->SendBack();
  EXPECT_EQ(capture_.answers[0].binary, "pq");
  EXPECT_EQ(request->GetBinary(), nullptr);
  EXPECT_EQ(request->GetBinaryLength(), 0u);
  request->SendBack();  // a second send-back repeats the text without the binary
  EXPECT_FALSE(capture_.answers[1].hasBinary);
  EXPECT_EQ(capture_.answers[1].text, capture_.answers[0].text);
}

TEST_F(RequestTest, SendBackWithoutKeyOrCallbackSendsNothing) {
  auto noKey = Make("{\"id\":\"1\",\"method\":\"m\"}", 0);
  noKey->SetResult(true, "b", 1, 0, "");
  EXPECT_EQ(noKey->SendBack(), 0);
  EXPECT_TRUE(capture_.answers.empty());
  HttpParamRequest noCallback(1, capture_.Context(), "{}", 1, 0, "", &DirectThunk, nullptr, 0, 0, 0,
                              nullptr, 0, 1);
  EXPECT_EQ(noCallback.SendBack(), 0);
  EXPECT_TRUE(capture_.answers.empty());
}

TEST_F(RequestTest, SendBackWidensTheHostsByteWithItsSign) {
  capture_.reply = static_cast<char>(0xFE);
  auto request = Make("{\"id\":\"1\",\"method\":\"m\"}");
  request->SetResult(true, nullptr, 0, 0, "");
  EXPECT_EQ(request->SendBack(), -2);
}

TEST_F(RequestTest, ClearParametersStopsTheEcho) {
  auto request = Make("{\"id\":\"1\",\"method\":\"m\",\"parameter\":[1,2,3]}");
  request->ClearParameters();
  request->SetResult(true, nullptr, 0, 0, "");
  EXPECT_EQ(request->GetResponse()->text,
            "{\n   \"id\" : \"1\",\n   \"method\" : \"m\",\n   \"result\" : [ true ]\n}\n");
}

TEST_F(RequestTest, GetLapReturnsThePreviousStamp) {
  auto request = Make("{}");
  uint32_t first = request->GetLap();
  EXPECT_EQ(first, request->GetStartTick());
  EXPECT_GE(request->GetLap() - first, 0u);
}

TEST_F(RequestTest, CmdIdOf1008BytesFitsAndOneMoreEndsTheProcess) {
  auto fits = Make("{\"id\":\"1\",\"cmdId\":\"" + std::string(1008, 'c') + "\",\"method\":\"m\"}");
  fits->SetResult(true, nullptr, 0, 0, "");
  fits->SendBack();
  EXPECT_NE(capture_.answers[0].text.find(std::string(1008, 'c') + "\"\n}\n"), std::string::npos);
  EXPECT_DEATH(
      {
        auto tooLong =
            Make("{\"id\":\"1\",\"cmdId\":\"" + std::string(1009, 'c') + "\",\"method\":\"m\"}");
        tooLong->SetResult(true, nullptr, 0, 0, "");
        tooLong->SendBack();
      },
      "formatted text of 1025 bytes overflows a buffer of 1024 bytes");
}

}  // namespace
}  // namespace vsm
