#include "core/http_param_request.h"

#include <gtest/gtest.h>

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
                                         SendBackCallback callback = &CaptureAnswer) {
    const HostCall call{key, capture_.Context(), nullptr, 0, 1, callback, 9, "origin"};
    return std::make_unique<HttpParamRequest>(call, command, &DirectThunk,
                                              ByteBlock::CopyOf("ABC", 3), 1);
  }
  AnswerCapture capture_;
};

TEST_F(RequestTest, TakesTheCommandApartAndOwnsTheBody) {
  auto request = Make(
      "{\"id\":\"7\",\"cmdId\":\"c\",\"event\":\"e\",\"version\":\"v\",\"parameter\":[1,\"x\"]}");
  EXPECT_EQ(request->GetMethod() + request->GetId() + request->GetVersion(), "e7v");
  EXPECT_EQ(request->GetCommandKind(), kCommandEvent);
  ASSERT_EQ(request->GetParameters().size(), 2u);
  EXPECT_EQ(request->GetParameters()[1]->asString(), "x");
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(request->GetResponse()->GetBody()), 3),
            "ABC");
  auto broken = Make("{\"id\":");
  EXPECT_EQ(broken->GetId() + broken->GetMethod(), "");
  EXPECT_EQ(broken->GetCommandKind(), kCommandNone);
}

TEST_F(RequestTest, ResultOperationsEncodeTheWholeAnswerAndTheLastOneDecides) {
  auto text = [&](const std::function<void(HttpParamRequest*)>& act) {
    auto request = Make("{\"id\":\"1\",\"method\":\"m\",\"parameter\":[\"p\"]}");
    act(request.get());
    return request->GetResponse()->text;
  };
  auto envelope = [](const std::string& result, const std::string& before = "") {
    return "{\n" + before +
           "   \"id\" : \"1\",\n   \"method\" : \"m\",\n   \"result\" : " + result + "\n}\n";
  };
  using R = HttpParamRequest*;
  const std::string failed = "   \"description\" : \"bad\",\n   \"exception\" : -3,\n";
  // clang-format off
  EXPECT_EQ(text([](R r) { r->SetResult(true, nullptr, 0, 0, ""); }), envelope("[ \"p\", true ]"));
  EXPECT_EQ(text([](R r) { r->SetResult("v", nullptr, 0, 0, "note"); }), envelope("[ \"p\", \"v\", \"note\", \"Veldorane Service Manager Module\" ]"));
  EXPECT_EQ(text([](R r) { r->SetResult(false, nullptr, 0, -3, "bad"); }), envelope("[ \"p\", false ]", failed));
  EXPECT_EQ(text([](R r) { r->SetResult(int32_t{-5}, nullptr, 0, 0, ""); }), envelope("[ \"p\", -5 ]"));
  EXPECT_EQ(text([](R r) { r->AddResult("b", false, -3, "bad"); }), envelope("[ \"p\", \"b\" ]", failed));
  EXPECT_EQ(text([](R r) { r->SetResult("a", nullptr, 0, 0, ""); r->AddResult("b", true, 0, ""); }),
            "{\n   \"event\" : \"m\",\n   \"id\" : \"1\",\n   \"result\" : [ \"p\", \"a\", \"b\" ]\n}\n");
  // Text that does not parse changes nothing.
  EXPECT_EQ(text([](R r) { r->SetResult(true, nullptr, 0, 0, ""); r->AddJsonResult("{oops", true, 0, ""); }), envelope("[ \"p\", true ]"));
  EXPECT_EQ(text([](R r) { r->AddJsonResult("{\"a\":{}}", false, 0, ""); }), envelope("[\n      \"p\",\n      {\n         \"a\" : {}\n      }\n   ]"));
  EXPECT_EQ(text([](R r) { r->ClearParameters(); r->SetResult(true, nullptr, 0, 0, ""); }), envelope("[ true ]"));
  // clang-format on
  EXPECT_EQ(text([](R r) { r->SetRawResult("{}"); }), "{}");
}

TEST_F(RequestTest, SendBackInsertsCmdIdInStyledTextsOnly) {
  struct Row {
    std::string cmdId;  // a JSON member text, or "" for none
    std::string raw;    // a raw answer, or "" for the styled one
    std::string sent;
  } rows[] = {
      {",\"cmdId\":\"17\"", "", "   \"result\" : [ true ],\n\t\"cmdId\" : \"17\"\n}\n"},
      {"", "", "   \"result\" : [ true ],\n\t\"cmdId\" : \"\"\n}\n"},
      {",\"cmdId\":\"a\\\"b\"", "", "   \"result\" : [ true ],\n\t\"cmdId\" : \"a\"b\"\n}\n"},
      {",\"cmdId\":\"9\"", "{}", "{}"},
      {",\"cmdId\":\"9\"", "plain", "plain"},
  };
  for (const Row& row : rows) {
    auto request = Make("{\"id\":\"1\",\"method\":\"m\"" + row.cmdId + "}");
    request->SetResult(true, nullptr, 0, 0, "");
    if (!row.raw.empty()) request->SetRawResult(row.raw);
    EXPECT_EQ(request->SendBack(), 1);
    const std::string& text = capture_.answers.back().text;
    EXPECT_EQ(text.substr(text.size() - std::min(text.size(), row.sent.size())), row.sent);
    EXPECT_EQ(capture_.answers.back().extra, 0);
  }
}

TEST_F(RequestTest, SendBackHandsTheLastBinaryOverOnce) {
  auto request = Make("{\"id\":\"1\",\"method\":\"m\"}");
  request->SetResult(true, "xyz", 3, 0, "");
  request->SetResult(true, "pq", 2, 0, "");
  request->SendBack();
  request->SendBack();
  EXPECT_EQ(capture_.answers[0].binary, "pq");
  EXPECT_FALSE(capture_.answers[1].hasBinary);
  EXPECT_EQ(capture_.answers[1].text, capture_.answers[0].text);
  request->SetResult(true, "", 0, 0, "");  // an empty block is still a block
  request->SendBack();
  EXPECT_TRUE(capture_.answers[2].hasBinary && capture_.answers[2].binary.empty());
}

TEST_F(RequestTest, SendBackNeedsAKeyAndACallbackAndWidensTheByte) {
  EXPECT_EQ(Make("{\"id\":\"1\"}", 0)->SendBack(), 0);
  EXPECT_EQ(Make("{\"id\":\"1\"}", 1, nullptr)->SendBack(), 0);
  EXPECT_TRUE(capture_.answers.empty());
  capture_.reply = static_cast<char>(0xFE);
  EXPECT_EQ(Make("{\"id\":\"1\"}")->SendBack(), -2);
}

TEST_F(RequestTest, CmdIdOf1008BytesFitsAndOneMoreEndsTheProcess) {
  auto withCmdId = [&](size_t length) {
    auto request = Make("{\"id\":\"1\",\"cmdId\":\"" + std::string(length, 'c') + "\"}");
    request->SetResult(true, nullptr, 0, 0, "");
    request->SendBack();
  };
  withCmdId(1008);
  EXPECT_NE(capture_.answers[0].text.find(std::string(1008, 'c') + "\"\n}\n"), std::string::npos);
  EXPECT_DEATH(withCmdId(1009), "formatted text of 1025 bytes overflows a buffer of 1024 bytes");
}

}  // namespace
}  // namespace vsm
