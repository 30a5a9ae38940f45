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

struct Generated {
  std::string json;     // as the page sends it
  std::string written;  // as the answer must show it
  bool container = false;
};

class ValueGenerator {
 public:
  explicit ValueGenerator(unsigned seed) : random_(seed) {}
  int Pick(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }

  Generated Next() {
    switch (Pick(6)) {
      case 0:
        return String();
      case 1:
        return Number(static_cast<long long>(random_()) * (Pick(2) ? -1 : 1000003));
      case 2:
        return Pick(2) ? Generated{"true", "true"} : Generated{"false", "false"};
      case 3:
        return {"null", "null"};
      case 4:
        return Number(static_cast<long long>(2147483648ull + random_() * 4096ull));
      default: {
        int count = Pick(4);
        Generated array{"[", count ? "[ " : "[]", count > 0};
        for (int i = 0; i < count; ++i) {
          std::string value = std::to_string(Pick(1000));
          array.json += (i ? "," : "") + value;
          array.written += (i ? ", " : "") + value;
        }
        array.json += "]";
        if (count) array.written += " ]";
        return array;
      }
    }
  }

  Generated String() {
    static const char* const pieces[][2] = {{"a", "a"},
                                            {" ", " "},
                                            {"\\\"", "\\\""},
                                            {"\\\\", "\\\\"},
                                            {"\\/", "/"},
                                            {"\\n", "\\n"},
                                            {"\\t", "\\t"},
                                            {"\\u0002", "\\u0002"},
                                            {"\\u001f", "\\u001F"},
                                            {"\\u00e9", "\xc3\xa9"},
                                            {"\xe4\xb8\xad", "\xe4\xb8\xad"},
                                            {"\\ud83d\\ude00", "\xf0\x9f\x98\x80"}};
    Generated value{"\"", "\""};
    for (int i = Pick(12); i > 0; --i) {
      const auto& piece = pieces[Pick(sizeof(pieces) / sizeof(pieces[0]))];
      value.json += piece[0];
      value.written += piece[1];
    }
    value.json += "\"";
    value.written += "\"";
    return value;
  }

 private:
  static Generated Number(long long value) {
    return {std::to_string(value), std::to_string(value)};
  }
  std::mt19937 random_;
};

// The echoed parameters and ChangePort's true: one line when it fits the 74-column margin and
// holds no non-empty container, else one element per line.
std::string ExpectedResult(std::vector<Generated> elements) {
  elements.push_back({"true", "true"});
  size_t length = 4 + 2 * (elements.size() - 1);
  bool nested = false;
  for (const Generated& element : elements) {
    length += element.written.size();
    nested = nested || element.container;
  }
  const bool oneLine = elements.size() * 3 < 74 && !nested && length < 74;
  std::string text = oneLine ? "[ " : "[\n";
  for (size_t i = 0; i < elements.size(); ++i) {
    text += oneLine ? (i ? ", " : "") + elements[i].written
                    : "      " + elements[i].written + (i + 1 < elements.size() ? ",\n" : "\n");
  }
  return text + (oneLine ? " ]" : "   ]");
}

TEST(EchoProperty, ChangePortEchoesGeneratedParametersExactly) {
  ASSERT_EQ(LoadLibrary().DoAction(0, nullptr, nullptr, 0), 1);
  ValueGenerator generator(1121);
  for (int round = 0; round < 400; ++round) {
    std::vector<Generated> parameters(generator.Pick(4) ? generator.Pick(6) : generator.Pick(31));
    std::string list;
    for (Generated& parameter : parameters) {
      parameter = generator.Next();
      list += (list.empty() ? "" : ",") + parameter.json;
    }
    Generated id = generator.String();
    std::string command = "{\"cmdId\":\"" + std::to_string(round) +
                          "\",\"method\":\"ChangePort\",\"id\":" + id.json + ",\"parameter\":[" +
                          list + "]}";
    ASSERT_EQ(Send(command).Text(), "{\n   \"id\" : " + id.written +
                                        ",\n   \"method\" : \"ChangePort\",\n   \"result\" : " +
                                        ExpectedResult(parameters) + ",\n\t\"cmdId\" : \"" +
                                        std::to_string(round) + "\"\n}\n")
        << command;
  }
}

}  // namespace
}  // namespace vsm::e2e
