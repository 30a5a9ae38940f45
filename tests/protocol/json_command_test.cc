#include "protocol/json_command.h"

#include <gtest/gtest.h>

#include <memory>

namespace vsm {
namespace {

struct CommandRow {
  std::string text;
  CommandKind kind;
  std::string name;
  std::string id;
  std::string propertyAccess;
  int parameterCount;
};

class JsonCommandTable : public ::testing::TestWithParam<CommandRow> {};

TEST_P(JsonCommandTable, ReadsTheKnownMembers) {
  const CommandRow& row = GetParam();
  JsonCommand command(row.text);
  EXPECT_EQ(command.GetKind(), row.kind) << row.text;
  EXPECT_EQ(command.GetName(), row.name) << row.text;
  EXPECT_EQ(command.GetId(), row.id) << row.text;
  EXPECT_EQ(command.GetPropertyAccess(), row.propertyAccess) << row.text;
  EXPECT_EQ(command.GetParameterCount(), row.parameterCount) << row.text;
}

INSTANTIATE_TEST_SUITE_P(
    Commands, JsonCommandTable,
    ::testing::Values(
        CommandRow{"", kCommandNone, "", "", "", 0},
        CommandRow{"not json", kCommandNone, "", "", "", 0},
        CommandRow{"{\"id\":5,\"method\":\"x\"}", kCommandMethod, "x", "", "", 0},
        CommandRow{"{\"method\":7}", kCommandMethod, "", "", "", 0},
        CommandRow{"{\"method\":true,\"id\":false}", kCommandMethod, "true", "false", "", 0},
        CommandRow{"{\"event\":\"e\",\"method\":\"m\"}", kCommandEvent, "e", "", "", 0},
        CommandRow{"{\"method\":\"m\",\"property\":\"p\"}", kCommandMethod, "m", "", "get", 0},
        CommandRow{"{\"property\":\"p\",\"parameter\":null}", kCommandProperty, "p", "", "set", 0},
        CommandRow{"{\"Method\":\"m\"}", kCommandNone, "", "", "", 0},
        CommandRow{"[{\"method\":\"m\"}]", kCommandNone, "", "", "", 0},
        CommandRow{"\"method\"", kCommandNone, "", "", "", 0},
        CommandRow{"{\"id\":\"1\",\"cmdId\":\"17\",\"method\":\"CheckQPTPort\",\"version\":"
                   "\"16.2\",\"parameter\":[\"127.0.0.1\",18625,18626]}",
                   kCommandMethod, "CheckQPTPort", "1", "", 3},
        CommandRow{"{\"method\":\"m\",\"parameter\":{\"a\":1,\"b\":2}}", kCommandMethod, "m", "",
                   "", 2},
        CommandRow{"{\"method\":\"m\",\"parameter\":\"abc\"}", kCommandMethod, "m", "", "", 0},
        CommandRow{"{\"method\":\"m\",\"parameter\":5}", kCommandMethod, "m", "", "", 0}));

TEST(JsonCommand, ReadsIdsAndVersionStrictly) {
  JsonCommand command("{\"id\":\"a\",\"cmdId\":17,\"version\":\"v1\",\"method\":\"m\"}");
  EXPECT_EQ(command.GetId(), "a");
  EXPECT_EQ(command.GetCmdId(), "");
  EXPECT_EQ(command.GetVersion(), "v1");
  EXPECT_TRUE(command.HasMember("cmdId"));
  EXPECT_FALSE(command.HasMember("cmdid"));
  EXPECT_FALSE(command.HasMember("cmd"));
}

TEST(JsonCommand, TypesEveryParameter) {
  JsonCommand command(
      "{\"parameter\":[null,true,-1,3000000000,1.5,\"s\",[1],{\"a\":1},2.0,2147483647]}");
  const ParameterType expected[] = {
      kParameterNull,   kParameterBool,  kParameterInt,    kParameterUInt, kParameterReal,
      kParameterString, kParameterArray, kParameterObject, kParameterReal, kParameterInt};
  for (int i = 0; i < 10; ++i) EXPECT_EQ(command.GetParameterType(i), expected[i]) << i;
  EXPECT_EQ(command.GetParameterType(10), kParameterInvalid);
  EXPECT_EQ(command.GetParameterType(-1), kParameterInvalid);
}

TEST(JsonCommand, CopiesParametersForTheCaller) {
  JsonCommand command("{\"parameter\":[null,\"x\"]}");
  std::unique_ptr<Json::Value> first(command.GetParameter(0));
  ASSERT_NE(first, nullptr);
  EXPECT_TRUE(first->isNull());
  std::unique_ptr<Json::Value> second(command.GetParameter(1));
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(second->asString(), "x");
  EXPECT_EQ(command.GetParameter(2), nullptr);
}

TEST(JsonCommand, ParameterObjectCountsMembersButGivesNoArguments) {
  JsonCommand command("{\"parameter\":{\"a\":1,\"b\":2}}");
  EXPECT_EQ(command.GetParameterCount(), 2);
  EXPECT_EQ(command.GetParameterType(0), kParameterInvalid);
  EXPECT_EQ(command.GetParameter(0), nullptr);
  EXPECT_EQ(command.GetParameter(1), nullptr);
}

TEST(JsonCommand, MemberValuesAndReparse) {
  JsonCommand command("{\"a\":[1,2]}");
  std::unique_ptr<Json::Value> a(command.GetMemberValue("a"));
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->size(), 2u);
  EXPECT_EQ(command.GetMemberValue("b"), nullptr);
  command.Reparse("{\"method\":\"again\"}");
  EXPECT_EQ(command.GetName(), "again");
  EXPECT_EQ(command.GetMemberValue("a"), nullptr);
  command.Reparse("{");
  EXPECT_FALSE(command.IsValid());
  EXPECT_EQ(command.GetKind(), kCommandNone);
  EXPECT_EQ(command.GetText(), "{");
}

}  // namespace
}  // namespace vsm
