#include "protocol/json_command.h"

#include <gtest/gtest.h>

#include <memory>
#include <tuple>

#include "protocol/styled_writer.h"

namespace vsm {
namespace {

TEST(JsonCommand, ReadsTheKnownMembers) {
  // Kind, name, id, property access and parameter count.
  using Reading = std::tuple<CommandKind, std::string, std::string, std::string, int>;
  const std::pair<std::string, Reading> rows[] = {
      {"", {kCommandNone, "", "", "", 0}},
      {"{\"id\":5,\"method\":\"x\"}", {kCommandMethod, "x", "", "", 0}},
      {"{\"method\":7}", {kCommandMethod, "", "", "", 0}},
      {"{\"method\":true,\"id\":false}", {kCommandMethod, "true", "false", "", 0}},
      {"{\"event\":\"e\",\"method\":\"m\"}", {kCommandEvent, "e", "", "", 0}},
      {"{\"method\":\"m\",\"property\":\"p\"}", {kCommandMethod, "m", "", "get", 0}},
      {"{\"property\":\"p\",\"parameter\":null}", {kCommandProperty, "p", "", "set", 0}},
      {"{\"Method\":\"m\"}", {kCommandNone, "", "", "", 0}},
      {"[{\"method\":\"m\"}]", {kCommandNone, "", "", "", 0}},
      {"{\"id\":\"1\",\"cmdId\":\"17\",\"method\":\"CheckQPTPort\",\"version\":\"16.2\","
       "\"parameter\":[\"127.0.0.1\",18625,18626]}",
       {kCommandMethod, "CheckQPTPort", "1", "", 3}},
      {"{\"method\":\"m\",\"parameter\":{\"a\":1,\"b\":2}}", {kCommandMethod, "m", "", "", 2}},
  };
  for (const auto& [text, reading] : rows) {
    JsonCommand c(text);
    EXPECT_EQ(
        Reading(c.GetKind(), c.GetName(), c.GetId(), c.GetPropertyAccess(), c.GetParameterCount()),
        reading)
        << text;
  }
}

// The styled text of a value handed to the caller, who frees it; "none" for no value.
std::string TextOf(Json::Value* handedOver) {
  std::unique_ptr<Json::Value> value(handedOver);
  return value ? StyledWrite(*value) : "none";
}

TEST(JsonCommand, TypesAndCopiesEveryParameter) {
  JsonCommand command(
      "{\"cmdId\":17,\"version\":\"v1\","
      "\"parameter\":[null,true,-1,3000000000,1.5,\"s\",[1],{\"a\":1},2.0,2147483647]}");
  EXPECT_EQ(command.GetCmdId(), "");
  EXPECT_EQ(command.GetVersion(), "v1");
  EXPECT_TRUE(command.HasMember("cmdId"));
  EXPECT_FALSE(command.HasMember("cmdid"));
  EXPECT_FALSE(command.HasMember("cmd"));
  const ParameterType expected[] = {
      kParameterNull,   kParameterBool,  kParameterInt,    kParameterUInt, kParameterReal,
      kParameterString, kParameterArray, kParameterObject, kParameterReal, kParameterInt};
  for (int i = 0; i < 10; ++i) EXPECT_EQ(command.GetParameterType(i), expected[i]) << i;
  EXPECT_EQ(command.GetParameterType(10), kParameterInvalid);
  EXPECT_EQ(command.GetParameterType(-1), kParameterInvalid);
  EXPECT_EQ(TextOf(command.GetParameter(0)), "null\n");  // a null argument is still a value
  EXPECT_EQ(TextOf(command.GetParameter(5)), "\"s\"\n");
  EXPECT_EQ(TextOf(command.GetParameter(10)), "none");
}

TEST(JsonCommand, MemberValuesAndReparse) {
  JsonCommand command("{\"a\":[1,2]}");
  EXPECT_EQ(TextOf(command.GetMemberValue("a")), "[ 1, 2 ]\n");
  EXPECT_EQ(TextOf(command.GetMemberValue("b")), "none");
  command.Reparse("{\"method\":\"again\"}");
  EXPECT_EQ(command.GetName(), "again");
  EXPECT_EQ(TextOf(command.GetMemberValue("a")), "none");
  command.Reparse("{");
  EXPECT_FALSE(command.IsValid());
  EXPECT_EQ(command.GetKind(), kCommandNone);
  EXPECT_EQ(command.GetText(), "{");
}

// Taking an argument out of the parsed command gives the value a copy would have been.
TEST(JsonCommand, TakenParametersEqualCopiedOnes) {
  for (const char* text : {"{\"parameter\":[null,true,-1,1.5,\"s\\u0000t\",[1,[2]],{\"a\":{}}]}",
                           "{\"parameter\":{\"a\":1}}", "{"}) {
    JsonCommand copied(text), taken(text);
    for (int index = -1; index <= copied.GetParameterCount(); ++index) {
      EXPECT_EQ(TextOf(copied.GetParameter(index)), TextOf(taken.TakeParameter(index))) << text;
    }
  }
}

}  // namespace
}  // namespace vsm
