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

// A ChangePort answer: the echoed parameters and true, with id "1" and an empty cmdId.
std::string Echo(const std::string& result) {
  return "{\n   \"id\" : \"1\",\n   \"method\" : \"ChangePort\",\n   \"result\" : " + result +
         ",\n\t\"cmdId\" : \"\"\n}\n";
}
std::string ChangePortWith(const std::string& parameters) {
  return "{\"id\":\"1\",\"method\":\"ChangePort\",\"parameter\":" + parameters + "}";
}
// The answer to a text that does not parse as a command.
const char kNotACommand[] =
    "{\n   \"description\" : \"Function not found\",\n   \"exception\" : -2200,\n"
    "   \"id\" : \"\",\n   \"method\" : \"\",\n   \"result\" : [ false ],\n\t\"cmdId\" : \"\"\n}\n";

struct Exchange {
  std::string url, text, answer;
};

TEST_F(CommandExchange, AnswersByteForByte) {
  const std::string failed =
      "{\n   \"description\" : \"Function not found\",\n   \"exception\" : -2200,\n   \"id\" : \"";
  // clang-format off
  const Exchange exchanges[] = {
      {"/vsm/", "{\"id\":\"1\",\"cmdId\":\"17\",\"method\":\"ChangePort\",\"parameter\":[\"a\"]}",
       "{\n   \"id\" : \"1\",\n   \"method\" : \"ChangePort\",\n   \"result\" : [ \"a\", true ],\n\t\"cmdId\" : \"17\"\n}\n"},
      {"/vsm/x", "{\"id\":\"1\",\"cmdId\":\"17\",\"method\":\"SetServerInfo\",\"parameter\":[\"a\"]}",
       "{\n   \"description\" : \"Invalid parameter count.\",\n   \"exception\" : -2202,\n   \"id\" : \"1\",\n"
       "   \"method\" : \"SetServerInfo\",\n   \"result\" : [ \"a\", false ],\n\t\"cmdId\" : \"17\"\n}\n"},
      {"/vsm/", "{\"id\":\"1\",\"cmdId\":\"17\",\"method\":\"VersionInfo\",\"parameter\":[]}",
       "{\n   \"event\" : \"VersionInfo\",\n   \"id\" : \"1\",\n   \"result\" : [\n      \"16, 2, 6, 1212\",\n"
       "      \"Veldorane Service Manager Module\",\n      \"0\",\n      \"false\",\n      \"32\"\n   ],\n\t\"cmdId\" : \"17\"\n}\n"},
      {"/vsm/", "{\"id\":\"1\",\"method\":\"GetLocalIP\"}", "[]"},
      // Routes: no route gives plain text, and so does a route with no command before the blank
      // line; the update routes build commands that have no handler here.
      {"/abc/vsm/", "{\"id\":\"1\",\"method\":\"ChangePort\"}", "Invalid command"},
      {"/VSM/", "{\"id\":\"1\",\"method\":\"ChangePort\"}", "Invalid command"},
      {"", "{\"id\":\"1\",\"method\":\"ChangePort\"}", "Invalid command"},
      {"/vsm/", "", "Invalid command"},
      {"/vsm/", "\r\n\r\n{\"method\":\"ChangePort\"}", "Invalid command"},
      {"/vsm/", "{\"id\":\"1\",\"method\":\"ChangePort\"}\r\n\r\nABC", Echo("[ true ]")},
      {"/x/LoadZipFromBytes?type=1&vsver=16&", "",
       failed + "1\",\n   \"method\" : \"LoadZipFromBytes\",\n   \"result\" : [ 1, \"16\", false ],\n\t\"cmdId\" : \"\"\n}\n"},
      {"/CheckUpdateFile?vsver=3&", "{\"id\":\"2\",\"method\":\"CheckUpdateFile\",\"parameter\":[\"f\",]}",
       failed + "2\",\n   \"method\" : \"CheckUpdateFile\",\n   \"result\" : [ \"f\", \"3\", false ],\n\t\"cmdId\" : \"\"\n}\n"},
      // Bad input: a clear answer, never a crash.
      {"/vsm/", "this is not json", kNotACommand},
      {"/vsm/", "{\"id\":\"1\",\"method\":\"ChangePort\",", kNotACommand},
      {"/vsm/", std::string(10 * 1024 * 1024, '['), kNotACommand},
      {"/vsm/", ChangePortWith("[\"\xC3\x28\xFF\"]"), Echo("[ \"\xC3\x28\xFF\", true ]")},
      {"/vsm/", ChangePortWith("[\"a\\u0000b\",\"\\u0001\"]"), Echo("[ \"a\", \"\\u0001\", true ]")},
      {"/vsm/", ChangePortWith("[123456789012345678901234567890,18446744073709551615,-1]"),
       Echo("[ 1.234567890123457e+29, 18446744073709551615, -1, true ]")},
      {"/vsm/", ChangePortWith("{\"a\":1,\"b\":2}"), Echo("[ null, null, true ]")},
      {"/vsm/", ChangePortWith("7"), Echo("[ true ]")},
      {"/vsm/", ChangePortWith("[\"" + std::string(10 << 20, 'x') + "\"]"),
       Echo("[\n      \"" + std::string(10 << 20, 'x') + "\",\n      true\n   ]")},
  };
  // clang-format on
  for (const Exchange& exchange : exchanges) {
    CommandCall call;
    call.url = exchange.url;
    call.text = exchange.text;
    call.body = "binary";
    call.bodyLength = 6;
    CommandResult result = Send(call);
    EXPECT_EQ(result.result, 1) << exchange.text.substr(0, 80);
    EXPECT_EQ(result.Text(), exchange.answer) << exchange.text.substr(0, 80);
  }
}

TEST_F(CommandExchange, DeepNestingIsAnsweredLikeAnyOther) {
  std::string answer =
      Send(ChangePortWith("[" + std::string(1500, '[') + std::string(1500, ']') + "]")).Text();
  const std::string head = Echo("[\n      [\n").substr(0, 69);
  const std::string tail = "\n      ],\n      true\n   ],\n\t\"cmdId\" : \"\"\n}\n";
  ASSERT_GT(answer.size(), head.size() + tail.size());
  EXPECT_EQ(answer.substr(0, head.size()), head);
  EXPECT_EQ(answer.substr(answer.size() - tail.size()), tail);
  // Three more blanks per level; the array around the innermost "[]" fits one line, 4500 in.
  EXPECT_NE(answer.find("\n" + std::string(4500, ' ') + "[ [] ]\n"), std::string::npos);
}

TEST_F(CommandExchange, TheCallDecidesWhetherAnythingIsSent) {
  CommandCall call;
  call.text = "{\"id\":\"1\",\"method\":\"ChangePort\"}";
  call.callback = [](unsigned, unsigned long long, const char*, const void*, unsigned,
                     long long) -> char { return static_cast<char>(-3); };
  EXPECT_EQ(Send(call).result, -3);  // the host's byte, with its sign
  call.callback = &testing::CaptureAnswer;
  call.mustBeZero = 1;
  EXPECT_EQ(Send(call).result, 0);
  EXPECT_TRUE(Send(call).answers.empty());
  call.mustBeZero = 0;
  call.key = 0;  // the handler runs, its answer is lost
  EXPECT_EQ(Send(call).result, 0);
  EXPECT_TRUE(Send(call).answers.empty());
}

TEST_F(CommandExchange, NullTextsReachTheHostAsLogicErrors) {
  const Library& library = LoadLibrary();
  const char* texts[][3] = {
      {nullptr, "{}", "o"}, {"/vsm/", nullptr, "o"}, {"/vsm/", "{}", nullptr}};
  for (const auto& text : texts) {
    try {
      library.DistributeCommand(1, 0, 0, text[0], text[1], "b", 1, 1, &testing::CaptureAnswer, 0,
                                text[2], 0, 0, 0);
      ADD_FAILURE() << "no exception";
    } catch (const std::logic_error& error) {
      EXPECT_STREQ(error.what(), "basic_string::_M_construct null not valid");
    }
  }
}

}  // namespace
}  // namespace vsm::e2e
