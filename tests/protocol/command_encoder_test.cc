#include "protocol/command_encoder.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "protocol/json_reader.h"
#include "protocol/styled_writer.h"

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

// A random JSON text: every scalar type (strings with quotes, control bytes, NULs and bytes
// above 0x7F), arrays short, long and nested, objects, and comments between elements.
std::string RandomJson(std::mt19937& random, int depth) {
  static const std::string scalars[] = {"null",
                                        "true",
                                        "-7",
                                        "3000000000",
                                        "18446744073709551615",
                                        "1.5",
                                        "1e-300",
                                        "\"\"",
                                        "\"a\\\"\\\\\\n\\u0001\xC3\xA9\xFF\\u0000b\"",
                                        "\"" + std::string(40, 'w') + "\""};
  const unsigned kind = random() % (depth > 2 ? 2 : 5);
  if (kind < 2) return scalars[random() % 10];
  const unsigned size = random() % 5 == 0 ? 20 + random() % 10 : random() % 5;
  std::string text = kind == 4 ? "{" : "[";
  for (unsigned i = 0; i < size; ++i) {
    if (i > 0) text += random() % 6 == 0 ? ", /* c */ " : random() % 6 == 0 ? ", // c\n" : ",";
    if (kind == 4) text += "\"k" + std::to_string(random() % 4) + "\":";
    text += RandomJson(random, depth + 1);
  }
  return text + (kind == 4 ? "}" : "]");
}

// The answers written straight from the list equal those of a tree that holds copies of the
// results, over generated result lists with null entries and values that carry comments.
TEST(EncodeCommandResult, WritesResultsAsATreeOfTheirCopiesWould) {
  std::mt19937 random(74);
  for (int round = 0; round < 300; ++round) {
    Json::Value values;
    ASSERT_TRUE(ParseJsonText("[" + RandomJson(random, 0) + "]", &values, true));
    ResultList list;
    for (Json::Value& value : values[0]) list.push_back(random() % 8 == 0 ? nullptr : &value);
    Json::Value copies;
    for (const Json::Value* value : list) copies["result"].append(value ? *value : Json::Value());
    const int32_t code = round % 3 == 0 ? -2202 : 0;
    const bool isEvent = round % 2 == 1;
    Json::Value command = copies, session = copies;
    command["id"] = "1";
    command[isEvent ? "event" : "method"] = session[isEvent ? "event" : "method"] = "m";
    if (code != 0) command["exception"] = code, command["description"] = "d";
    session["session"] = "s";
    session["object"] = "o";
    session["exception"] = code;
    session["description"] = code != 0 ? "d" : "Successful";
    ASSERT_EQ(EncodeCommandResult("1", "m", list, isEvent, code, "d"), StyledWrite(command));
    ASSERT_EQ(EncodeSessionResult("s", "o", "m", list, isEvent, code, "d"), StyledWrite(session));
  }
}

}  // namespace
}  // namespace vsm
