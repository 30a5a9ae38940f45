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

// A random value: scalars of every type (strings with quotes, control bytes, NULs and bytes
// above 0x7F), arrays short and long, nested, sparse, and objects.
Json::Value RandomValue(std::mt19937& random, int depth) {
  auto pick = [&](int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); };
  switch (depth > 2 ? pick(6) : pick(9)) {
    case 0:
      return Json::Value();
    case 1:
      return Json::Value(pick(2) == 1);
    case 2:
      return Json::Value(Json::Int64{static_cast<Json::Int64>(random()) - (Json::Int64{1} << 31)});
    case 3:
      return Json::Value(Json::UInt64{static_cast<Json::UInt64>(random()) << 32});
    case 4:
      return Json::Value(std::ldexp(static_cast<double>(random()), pick(80) - 40));
    case 5: {
      static const std::string pieces[] = {"a",
                                           "\"",
                                           "\\",
                                           "\n",
                                           "\x01",
                                           "\xC3\xA9",
                                           "\xFF",
                                           " ",
                                           std::string("\0", 1),
                                           std::string(40, 'w')};
      std::string text;
      for (int i = pick(6); i > 0; --i) text += pieces[pick(10)];
      return Json::Value(text);
    }
    case 6:
    case 7: {
      Json::Value array(Json::arrayValue);
      const int size = pick(4) == 0 ? 20 + pick(10) : pick(5);
      for (int i = 0; i < size; ++i) array.append(RandomValue(random, depth + 1));
      if (pick(8) == 0) array[size + pick(3)] = RandomValue(random, depth + 1);  // sparse
      return array;
    }
    default: {
      Json::Value object(Json::objectValue);
      for (int i = pick(4); i > 0; --i)
        object["k" + std::to_string(pick(5))] = RandomValue(random, 3);
      return object;
    }
  }
}

// The answers written straight from the list equal those of a tree that holds copies of the
// results, over generated result lists, with nulls in them and values that carry comments.
TEST(EncodeCommandResult, WritesResultsAsATreeOfTheirCopiesWould) {
  std::mt19937 random(74);
  const Results commented("[1, /* c */ 2, [3] // after\n, {\"a\":4} /* end */]");
  for (int round = 0; round < 400; ++round) {
    std::vector<Json::Value> values;
    const int size = round % 10 == 0 ? 25 + round % 7 : round % 6;
    for (int i = 0; i < size; ++i) values.push_back(RandomValue(random, 0));
    ResultList list;
    for (Json::Value& value : values)
      list.push_back(round % 4 == 0 && &value == &values[0] ? nullptr : &value);
    if (round % 5 == 0) list.insert(list.end(), commented.list.begin(), commented.list.end());
    Json::Value copies;
    for (const Json::Value* value : list) copies["result"].append(value ? *value : Json::Value());
    const int32_t code = round % 3 == 0 ? -2202 : 0;
    for (bool isEvent : {false, true}) {
      Json::Value command = copies;
      command["id"] = "1";
      command[isEvent ? "event" : "method"] = "m";
      if (code != 0) command["exception"] = code, command["description"] = "d";
      ASSERT_EQ(EncodeCommandResult("1", "m", list, isEvent, code, "d"), StyledWrite(command));
      Json::Value session = copies;
      session["session"] = "s";
      session["object"] = "o";
      session[isEvent ? "event" : "method"] = "m";
      session["exception"] = code;
      session["description"] = code != 0 ? "d" : "Successful";
      ASSERT_EQ(EncodeSessionResult("s", "o", "m", list, isEvent, code, "d"), StyledWrite(session));
    }
  }
}

}  // namespace
}  // namespace vsm
