#include "protocol/command_encoder.h"

#include <gtest/gtest.h>

#include <memory>

#include "protocol/json_reader.h"

namespace vsm {
namespace {

// Owns the values of a result list, as a request does.
class Results {
 public:
  Results& Add(const std::string& json) {
    auto value = std::make_unique<Json::Value>();
    EXPECT_TRUE(ParseJsonText(json, value.get(), false)) << json;
    list_.push_back(value.get());
    owned_.push_back(std::move(value));
    return *this;
  }
  Results& AddMissing() {
    list_.push_back(nullptr);
    return *this;
  }
  const ResultList& list() const { return list_; }

 private:
  ResultList list_;
  std::vector<std::unique_ptr<Json::Value>> owned_;
};

TEST(EncodeCommandResult, WritesTheSuccessfulEnvelope) {
  Results results;
  results.Add("\"a\"").Add("true");
  EXPECT_EQ(EncodeCommandResult("1", "ChangePort", results.list(), false, 0, "Successful"),
            "{\n   \"id\" : \"1\",\n   \"method\" : \"ChangePort\",\n"
            "   \"result\" : [ \"a\", true ]\n}\n");
}

TEST(EncodeCommandResult, WritesTheFailedEnvelope) {
  Results results;
  results.Add("\"a\"").Add("false");
  EXPECT_EQ(EncodeCommandResult("1", "SetServerInfo", results.list(), false, -2202,
                                "Invalid parameter count."),
            "{\n   \"description\" : \"Invalid parameter count.\",\n"
            "   \"exception\" : -2202,\n   \"id\" : \"1\",\n"
            "   \"method\" : \"SetServerInfo\",\n   \"result\" : [ \"a\", false ]\n}\n");
}

TEST(EncodeCommandResult, WritesEventsWithSpreadResults) {
  Results results;
  results.Add("\"16, 2, 6, 1212\"")
      .Add("\"Veldorane Service Manager Module\"")
      .Add("\"0\"")
      .Add("\"false\"")
      .Add("\"32\"");
  EXPECT_EQ(EncodeCommandResult("1", "VersionInfo", results.list(), true, 0, ""),
            "{\n   \"event\" : \"VersionInfo\",\n   \"id\" : \"1\",\n   \"result\" : [\n"
            "      \"16, 2, 6, 1212\",\n      \"Veldorane Service Manager Module\",\n"
            "      \"0\",\n      \"false\",\n      \"32\"\n   ]\n}\n");
}

TEST(EncodeCommandResult, OmitsAnEmptyResultAndKeepsAnEmptyId) {
  EXPECT_EQ(EncodeCommandResult("", "", ResultList(), false, 0, "ignored"),
            "{\n   \"id\" : \"\",\n   \"method\" : \"\"\n}\n");
}

TEST(EncodeCommandResult, WritesUnreadableArgumentsAsNull) {
  Results results;
  results.AddMissing().AddMissing().Add("true");
  EXPECT_EQ(EncodeCommandResult("1", "m", results.list(), false, 0, ""),
            "{\n   \"id\" : \"1\",\n   \"method\" : \"m\",\n"
            "   \"result\" : [ null, null, true ]\n}\n");
}

TEST(EncodeCommandResult, SpreadsNestedResults) {
  Results results;
  results.Add("[{\"port\":1}]");
  EXPECT_EQ(EncodeCommandResult("1", "m", results.list(), false, 0, ""),
            "{\n   \"id\" : \"1\",\n   \"method\" : \"m\",\n   \"result\" : [\n      [\n"
            "         {\n            \"port\" : 1\n         }\n      ]\n   ]\n}\n");
}

TEST(EncodeSessionResult, AlwaysCarriesExceptionAndDescription) {
  Results results;
  results.Add("1");
  EXPECT_EQ(EncodeSessionResult("s", "o", "m", results.list(), false, 0, "ignored"),
            "{\n   \"description\" : \"Successful\",\n   \"exception\" : 0,\n"
            "   \"method\" : \"m\",\n   \"object\" : \"o\",\n   \"result\" : [ 1 ],\n"
            "   \"session\" : \"s\"\n}\n");
  EXPECT_EQ(EncodeSessionResult("s", "o", "e", ResultList(), true, -5, "bad"),
            "{\n   \"description\" : \"bad\",\n   \"event\" : \"e\",\n"
            "   \"exception\" : -5,\n   \"object\" : \"o\",\n   \"session\" : \"s\"\n}\n");
}

}  // namespace
}  // namespace vsm
