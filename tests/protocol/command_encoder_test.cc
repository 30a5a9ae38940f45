#include "protocol/command_encoder.h"

#include <gtest/gtest.h>

#include "protocol/json_reader.h"

namespace vsm {
namespace {

// A result list pointing at the members of the JSON array `json`, which it owns.
struct Results {
  explicit Results(const std::string& json) {
    EXPECT_TRUE(ParseJsonText(json, &values, false)) << json;
    for (Json::Value& value : values) list.push_back(&value);
  }
  Json::Value values;
  ResultList list;
};

TEST(EncodeCommandResult, WritesTheEnvelopes) {
  EXPECT_EQ(
      EncodeCommandResult("1", "ChangePort", Results("[\"a\",true]").list, false, 0, "Successful"),
      "{\n   \"id\" : \"1\",\n   \"method\" : \"ChangePort\",\n"
      "   \"result\" : [ \"a\", true ]\n}\n");
  EXPECT_EQ(EncodeCommandResult("1", "SetServerInfo", Results("[\"a\",false]").list, false, -2202,
                                "Invalid parameter count."),
            "{\n   \"description\" : \"Invalid parameter count.\",\n   \"exception\" : -2202,\n"
            "   \"id\" : \"1\",\n   \"method\" : \"SetServerInfo\",\n"
            "   \"result\" : [ \"a\", false ]\n}\n");
  const Results versions(
      "[\"16, 2, 6, 1212\",\"Veldorane Service Manager Module\",\"0\",\"false\",\"32\"]");
  EXPECT_EQ(EncodeCommandResult("1", "VersionInfo", versions.list, true, 0, ""),
            "{\n   \"event\" : \"VersionInfo\",\n   \"id\" : \"1\",\n   \"result\" : [\n"
            "      \"16, 2, 6, 1212\",\n      \"Veldorane Service Manager Module\",\n"
            "      \"0\",\n      \"false\",\n      \"32\"\n   ]\n}\n");
  // No result key for no results, an empty id kept, a description without an exception dropped.
  EXPECT_EQ(EncodeCommandResult("", "", ResultList(), false, 0, "ignored"),
            "{\n   \"id\" : \"\",\n   \"method\" : \"\"\n}\n");
}

TEST(EncodeSessionResult, AlwaysCarriesExceptionAndDescription) {
  EXPECT_EQ(EncodeSessionResult("s", "o", "m", Results("[1]").list, false, 0, "ignored"),
            "{\n   \"description\" : \"Successful\",\n   \"exception\" : 0,\n"
            "   \"method\" : \"m\",\n   \"object\" : \"o\",\n   \"result\" : [ 1 ],\n"
            "   \"session\" : \"s\"\n}\n");
  EXPECT_EQ(EncodeSessionResult("s", "o", "e", ResultList(), true, -5, "bad"),
            "{\n   \"description\" : \"bad\",\n   \"event\" : \"e\",\n"
            "   \"exception\" : -5,\n   \"object\" : \"o\",\n   \"session\" : \"s\"\n}\n");
}

}  // namespace
}  // namespace vsm
