// Randomised commands through "ChangePort", whose answer echoes the parameters in front of its
// result: the echo is checked against an encoding written here, independently of the module's
// writer, for the values generated here.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "e2e/harness/host_harness.h"

namespace vsm::e2e {
namespace {

// clang-format off
// Pieces of strings: as a page sends them, and as the answer must show them.
const char* const kPieces[][2] = {
    {"a", "a"}, {" ", " "}, {"\\\"", "\\\""}, {"\\\\", "\\\\"}, {"\\/", "/"}, {"\\n", "\\n"},
    {"\\t", "\\t"}, {"\\u0002", "\\u0002"}, {"\\u001f", "\\u001F"}, {"\\u00e9", "\xc3\xa9"},
    {"\xe4\xb8\xad", "\xe4\xb8\xad"}, {"\\ud83d\\ude00", "\xf0\x9f\x98\x80"}, {"true", "true"}};
// clang-format on

struct Value {
  std::string json, written;  // sent, and expected in the answer
  bool container = false;
};

Value Generate(std::mt19937& random, bool stringOnly) {
  const unsigned kind = stringOnly ? 0 : random() % 4;
  if (kind == 1 || kind == 2) {  // signed, or unsigned above 2147483647
    std::string number = std::to_string(kind == 1 ? -static_cast<long long>(random())
                                                  : 2147483648ll + random() * 4096ll);
    return {number, number};
  }
  if (kind == 3) {  // a short array of small numbers: one line inside, but it spreads its parent
    Value array{"[", "[ ", true};
    for (unsigned i = 0, n = 1 + random() % 3; i < n; ++i) {
      array.json += (i ? "," : "") + std::to_string(i);
      array.written += (i ? ", " : "") + std::to_string(i);
    }
    return {array.json + "]", array.written + " ]", true};
  }
  Value text{"\"", "\""};
  for (unsigned i = random() % 12; i > 0; --i) {
    const auto& piece = kPieces[random() % (sizeof(kPieces) / sizeof(kPieces[0]))];
    text.json += piece[0];
    text.written += piece[1];
  }
  return {text.json + "\"", text.written + "\""};
}

TEST(EchoProperty, ChangePortEchoesGeneratedParametersExactly) {
  ASSERT_EQ(LoadLibrary().DoAction(0, nullptr, nullptr, 0), 1);
  std::mt19937 random(1121);
  for (int round = 0; round < 400; ++round) {
    std::vector<Value> values(random() % 4 ? random() % 6 : random() % 31);
    std::string list;
    size_t length = 4 + 2 * values.size() + 4;  // "[ ", ", " between, " ]", and the final true
    bool nested = false;
    for (Value& value : values) {
      value = Generate(random, false);
      list += (list.empty() ? "" : ",") + value.json;
      length += value.written.size();
      nested = nested || value.container;
    }
    values.push_back({"true", "true"});
    // One line when it fits the 74-column margin and holds no container, else one per line.
    const bool oneLine = values.size() * 3 < 74 && !nested && length < 74;
    std::string result = oneLine ? "[ " : "[\n";
    for (size_t i = 0; i < values.size(); ++i) {
      result += oneLine ? (i ? ", " : "") + values[i].written
                        : "      " + values[i].written + (i + 1 < values.size() ? ",\n" : "\n");
    }
    result += oneLine ? " ]" : "   ]";
    const Value id = Generate(random, true);
    const std::string command = "{\"cmdId\":\"" + std::to_string(round) +
                                "\",\"method\":" + "\"ChangePort\",\"id\":" + id.json +
                                ",\"parameter\":[" + list + "]}";
    ASSERT_EQ(Send(command).Text(), "{\n   \"id\" : " + id.written + ",\n   \"method\" : " +
                                        "\"ChangePort\",\n   \"result\" : " + result +
                                        ",\n\t\"cmdId\" : \"" + std::to_string(round) + "\"\n}\n")
        << command;
  }
}

}  // namespace
}  // namespace vsm::e2e
