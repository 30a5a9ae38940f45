// Randomised commands through "ChangePort", whose answer echoes the parameters in front of its
// result: the echo is checked against an encoding written here, independently of the module's
// writer, for the values it generates.
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

  Generated Next(bool allowArray = true) {
    switch (Pick(allowArray ? 6 : 5)) {
      case 0:
        return String();
      case 1: {
        long long value = static_cast<long long>(random_()) - (1ll << 31);
        if (Pick(4) == 0) value *= 1000003;
        return {std::to_string(value), std::to_string(value)};
      }
      case 2:
        return Pick(2) ? Generated{"true", "true"} : Generated{"false", "false"};
      case 3:
        return {"null", "null"};
      case 4: {
        unsigned long long value = 2147483648ull + random_() * 4096ull;
        return {std::to_string(value), std::to_string(value)};
      }
      default: {
        int count = Pick(4);
        Generated array{"[", "", count > 0};
        std::vector<std::string> parts;
        for (int i = 0; i < count; ++i) {
          int value = Pick(1000);
          array.json += (i ? "," : "") + std::to_string(value);
          parts.push_back(std::to_string(value));
        }
        array.json += "]";
        array.written = count == 0 ? "[]" : "[ " + Join(parts, ", ") + " ]";
        return array;
      }
    }
  }

  int Pick(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }

 private:
  static std::string Join(const std::vector<std::string>& parts, const std::string& glue) {
    std::string text;
    for (size_t i = 0; i < parts.size(); ++i) text += (i ? glue : "") + parts[i];
    return text;
  }

  Generated String() {
    static const char* const pieces[][2] = {{"a", "a"},
                                            {"Z", "Z"},
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
                                            {"\\ud83d\\ude00", "\xf0\x9f\x98\x80"},
                                            {"7", "7"}};
    Generated value{"\"", "\""};
    int length = Pick(12);
    for (int i = 0; i < length; ++i) {
      const auto& piece = pieces[Pick(sizeof(pieces) / sizeof(pieces[0]))];
      value.json += piece[0];
      value.written += piece[1];
    }
    value.json += "\"";
    value.written += "\"";
    return value;
  }

  std::mt19937 random_;
};

// The answer's "result": the echoed parameters and ChangePort's true, on one line when it fits
// the styled writer's margin, else one element per line.
std::string ExpectedResult(const std::vector<Generated>& parameters) {
  std::vector<std::string> elements;
  bool nested = false;
  size_t length = 0;
  for (const Generated& parameter : parameters) {
    elements.push_back(parameter.written);
    nested = nested || parameter.container;
  }
  elements.push_back("true");
  for (const std::string& element : elements) length += element.size();
  bool oneLine = elements.size() * 3 < 74 && !nested && 4 + 2 * (elements.size() - 1) + length < 74;
  std::string text;
  if (oneLine) {
    text = "[ ";
    for (size_t i = 0; i < elements.size(); ++i) text += (i ? ", " : "") + elements[i];
    return text + " ]";
  }
  text = "[\n";
  for (size_t i = 0; i < elements.size(); ++i) {
    text += "      " + elements[i] + (i + 1 < elements.size() ? ",\n" : "\n");
  }
  return text + "   ]";
}

TEST(EchoProperty, ChangePortEchoesGeneratedParametersExactly) {
  ASSERT_EQ(LoadLibrary().DoAction(0, nullptr, nullptr, 0), 1);
  ValueGenerator generator(1121);
  for (int round = 0; round < 400; ++round) {
    int count = generator.Pick(4) == 0 ? generator.Pick(31) : generator.Pick(6);
    std::vector<Generated> parameters;
    std::string list;
    for (int i = 0; i < count; ++i) {
      parameters.push_back(generator.Next());
      list += (i ? "," : "") + parameters.back().json;
    }
    Generated id = generator.Next(false);
    std::string cmdId = std::to_string(round);
    std::string command = "{\"cmdId\":\"" + cmdId +
                          "\",\"method\":\"ChangePort\",\"id\":" + id.json + ",\"parameter\":[" +
                          list + "]}";
    std::string idText = id.json[0] == '"' ? id.written : std::string("\"\"");
    if (id.json == "true" || id.json == "false") idText = "\"" + id.json + "\"";
    std::string expected =
        "{\n   \"id\" : " + idText +
        ",\n   \"method\" : \"ChangePort\",\n   \"result\" : " + ExpectedResult(parameters) +
        ",\n\t\"cmdId\" : \"" + cmdId + "\"\n}\n";
    ASSERT_EQ(Send(command).Text(), expected) << command;
  }
}

}  // namespace
}  // namespace vsm::e2e
