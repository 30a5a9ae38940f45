// Whole answers of commands sent through the built libvsm.so, loaded as a host loads it.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "e2e/harness/host_harness.h"

namespace vsm::e2e {
namespace {

class CommandExchange : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(LoadLibrary().DoAction(0, nullptr, nullptr, 0), 1); }
};

TEST_F(CommandExchange, TheUsualRoad) {
  CommandResult changePort =
      Send("{\"id\":\"1\",\"cmdId\":\"17\",\"method\":\"ChangePort\",\"parameter\":[\"a\"]}");
  EXPECT_EQ(changePort.result, 1);
  EXPECT_EQ(changePort.Text(),
            "{\n   \"id\" : \"1\",\n   \"method\" : \"ChangePort\",\n"
            "   \"result\" : [ \"a\", true ],\n\t\"cmdId\" : \"17\"\n}\n");
  EXPECT_EQ(
      Send("{\"id\":\"1\",\"cmdId\":\"17\",\"method\":\"SetServerInfo\",\"parameter\":[\"a\"]}")
          .Text(),
      "{\n   \"description\" : \"Invalid parameter count.\",\n   \"exception\" : -2202,\n"
      "   \"id\" : \"1\",\n   \"method\" : \"SetServerInfo\",\n"
      "   \"result\" : [ \"a\", false ],\n\t\"cmdId\" : \"17\"\n}\n");
  EXPECT_EQ(
      Send("{\"id\":\"1\",\"cmdId\":\"17\",\"method\":\"VersionInfo\",\"parameter\":[]}").Text(),
      "{\n   \"event\" : \"VersionInfo\",\n   \"id\" : \"1\",\n   \"result\" : [\n"
      "      \"16, 2, 6, 1212\",\n      \"Veldorane Service Manager Module\",\n"
      "      \"0\",\n      \"false\",\n      \"32\"\n   ],\n\t\"cmdId\" : \"17\"\n}\n");
  EXPECT_EQ(Send("{\"id\":\"1\",\"method\":\"GetLocalIP\"}").Text(), "[]");
}

TEST_F(CommandExchange, UrlsWithoutARouteGetPlainText) {
  for (const std::string url : {"/abc/vsm/", "", "/VSM/", "vsm/"}) {
    CommandCall call;
    call.url = url;
    call.text = "{\"id\":\"1\",\"method\":\"ChangePort\"}";
    CommandResult result = Send(call);
    EXPECT_EQ(result.result, 1) << url;
    EXPECT_EQ(result.Text(), "Invalid command") << url;
    EXPECT_FALSE(result.answers[0].hasBinary);
  }
  for (const std::string text : {"", "\r\n\r\n{\"method\":\"ChangePort\"}"}) {
    EXPECT_EQ(Send(text).Text(), "Invalid command");
  }
}

TEST_F(CommandExchange, TheHostsByteIsTheResult) {
  CommandCall call;
  call.text = "{\"id\":\"1\",\"method\":\"ChangePort\"}";
  call.callback = [](unsigned, unsigned long long, const char*, const void*, unsigned,
                     long long) -> char { return static_cast<char>(-3); };
  EXPECT_EQ(Send(call).result, -3);
}

TEST_F(CommandExchange, NothingHappensWhenMustBeZeroIsNot) {
  CommandCall call;
  call.text = "{\"id\":\"1\",\"method\":\"ChangePort\"}";
  call.mustBeZero = 1;
  call.body = "abc";
  call.bodyLength = 3;
  CommandResult result = Send(call);
  EXPECT_EQ(result.result, 0);
  EXPECT_TRUE(result.answers.empty());
}

TEST_F(CommandExchange, WithoutASendBackKeyTheAnswerIsLost) {
  CommandCall call;
  call.text = "{\"id\":\"1\",\"method\":\"ChangePort\"}";
  call.key = 0;
  CommandResult result = Send(call);
  EXPECT_EQ(result.result, 0);
  EXPECT_TRUE(result.answers.empty());
}

TEST_F(CommandExchange, NullTextsReachTheHostAsLogicErrors) {
  const Library& library = LoadLibrary();
  auto expectLogicError = [&](const char* url, const char* text, const char* origin) {
    try {
      library.DistributeCommand(1, 0, 0, url, text, nullptr, 0, 1, &RecordAnswer, 0, origin, 0, 0,
                                0);
      ADD_FAILURE() << "no exception";
    } catch (const std::logic_error& error) {
      EXPECT_STREQ(error.what(), "basic_string::_M_construct null not valid");
    }
  };
  expectLogicError(nullptr, "{}", "o");
  expectLogicError("/vsm/", nullptr, "o");
  expectLogicError("/vsm/", "{}", nullptr);
}

TEST_F(CommandExchange, BodiesBehindTheBlankLineAreTakenAndFreed) {
  CommandCall call;
  call.text = "{\"id\":\"1\",\"method\":\"ChangePort\"}\r\n\r\nABC";
  call.body = "binary";
  call.bodyLength = 6;
  EXPECT_EQ(Send(call).Text(),
            "{\n   \"id\" : \"1\",\n   \"method\" : \"ChangePort\",\n   \"result\" : [ true ],\n"
            "\t\"cmdId\" : \"\"\n}\n");
}

TEST_F(CommandExchange, TheUpdateRoutesEndAsUnknownFunctions) {
  CommandCall call;
  call.url = "/x/LoadZipFromBytes?type=1&vsver=16&";
  call.body = "PK";
  call.bodyLength = 2;
  EXPECT_EQ(Send(call).Text(),
            "{\n   \"description\" : \"Function not found\",\n   \"exception\" : -2200,\n"
            "   \"id\" : \"1\",\n   \"method\" : \"LoadZipFromBytes\",\n"
            "   \"result\" : [ 1, \"16\", false ],\n\t\"cmdId\" : \"\"\n}\n");
  call.url = "/CheckUpdateFile?vsver=3&";
  call.text = "{\"id\":\"2\",\"method\":\"CheckUpdateFile\",\"parameter\":[\"f\",]}";
  EXPECT_EQ(Send(call).Text(),
            "{\n   \"description\" : \"Function not found\",\n   \"exception\" : -2200,\n"
            "   \"id\" : \"2\",\n   \"method\" : \"CheckUpdateFile\",\n"
            "   \"result\" : [ \"f\", \"3\", false ],\n\t\"cmdId\" : \"\"\n}\n");
}

std::string ChangePortEcho(const std::string& result) {
  return "{\n   \"id\" : \"1\",\n   \"method\" : \"ChangePort\",\n   \"result\" : " + result +
         ",\n\t\"cmdId\" : \"\"\n}\n";
}

std::string ChangePortWith(const std::string& parameters) {
  return "{\"id\":\"1\",\"method\":\"ChangePort\",\"parameter\":" + parameters + "}";
}

// The answer to a text that does not parse as a command.
const char kNotACommand[] =
    "{\n   \"description\" : \"Function not found\",\n   \"exception\" : -2200,\n"
    "   \"id\" : \"\",\n   \"method\" : \"\",\n   \"result\" : [ false ],\n"
    "\t\"cmdId\" : \"\"\n}\n";

TEST_F(CommandExchange, BadInputGetsAClearAnswer) {
  const std::string notFound = kNotACommand;
  EXPECT_EQ(Send("this is not json").Text(), notFound);
  EXPECT_EQ(Send("{\"id\":\"1\",\"method\":\"ChangePort\",").Text(), notFound);
  EXPECT_EQ(Send(ChangePortWith("[\"\xC3\x28\xFF\"]")).Text(),
            ChangePortEcho("[ \"\xC3\x28\xFF\", true ]"));
  EXPECT_EQ(Send(ChangePortWith("[\"a\\u0000b\",\"\\u0001\"]")).Text(),
            ChangePortEcho("[ \"a\", \"\\u0001\", true ]"));
  EXPECT_EQ(Send(ChangePortWith("[123456789012345678901234567890,18446744073709551615,"
                                "-9223372036854775808]"))
                .Text(),
            ChangePortEcho("[\n      1.234567890123457e+29,\n      18446744073709551615,\n"
                           "      -9223372036854775808,\n      true\n   ]"));
  EXPECT_EQ(Send(ChangePortWith("{\"a\":1,\"b\":2}")).Text(),
            ChangePortEcho("[ null, null, true ]"));
  EXPECT_EQ(Send(ChangePortWith("7")).Text(), ChangePortEcho("[ true ]"));
  EXPECT_EQ(Send(ChangePortWith("\"text\"")).Text(), ChangePortEcho("[ true ]"));
}

TEST_F(CommandExchange, TenMegabytesOfTextComeBack) {
  const std::string big(10 * 1024 * 1024, 'x');
  EXPECT_EQ(Send(ChangePortWith("[\"" + big + "\"]")).Text(),
            ChangePortEcho("[\n      \"" + big + "\",\n      true\n   ]"));
  // Nested too deep to parse safely: the text counts as not parsed.
  EXPECT_EQ(Send(std::string(10 * 1024 * 1024, '[')).Text(), kNotACommand);
}

TEST_F(CommandExchange, DeepNestingIsAnsweredLikeAnyOther) {
  std::string nested = std::string(1500, '[') + std::string(1500, ']');
  std::string answer = Send(ChangePortWith("[" + nested + "]")).Text();
  const std::string head =
      "{\n   \"id\" : \"1\",\n   \"method\" : \"ChangePort\",\n   \"result\" : [\n      [\n";
  const std::string tail = "\n      ],\n      true\n   ],\n\t\"cmdId\" : \"\"\n}\n";
  ASSERT_GT(answer.size(), head.size() + tail.size());
  EXPECT_EQ(answer.substr(0, head.size()), head);
  EXPECT_EQ(answer.substr(answer.size() - tail.size()), tail);
  // Three more blanks per level; the array around the innermost "[]" fits one line, 4500 in.
  EXPECT_NE(answer.find("\n" + std::string(4500, ' ') + "[ [] ]\n"), std::string::npos);
}

TEST_F(CommandExchange, ACmdIdTooLongForItsBufferEndsTheProcess) {
  EXPECT_EQ(
      Send("{\"id\":\"1\",\"method\":\"ChangePort\",\"cmdId\":\"" + std::string(1008, 'c') + "\"}")
          .result,
      1);
  EXPECT_DEATH(
      Send("{\"id\":\"1\",\"method\":\"ChangePort\",\"cmdId\":\"" + std::string(1009, 'c') + "\"}"),
      "overflows a buffer of 1024 bytes");
}

}  // namespace
}  // namespace vsm::e2e
