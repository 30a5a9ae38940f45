#include "support/number_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace vsm {
namespace {

TEST(NumberTextTest, ParseInt) {
  const struct {
    const char* text;
    int32_t expected;
  } cases[] = {{"12x", 12},      {"-7", -7}, {"x1", 0}, {"--7", 0},   {"---7", -7},
               {"-", 0},         {"1-2", 1}, {" 1", 0}, {"-1x2", -1}, {"-2147483648", INT32_MIN},
               {"4294967297", 1}};
  for (const auto& c : cases) EXPECT_EQ(c.expected, ParseIntString(c.text)) << c.text;
  EXPECT_EQ(-1, ParseInt("-1234", 2));
  EXPECT_EQ(0, ParseInt("1234", 0));
  EXPECT_EQ(-5, ParseInt("-5", 64));  // a count past the zero stops at it
}

TEST(NumberTextTest, Hexadecimal) {
  const struct {
    const char* text;
    std::string bytes;
  } cases[] = {{"0a", std::string(1, '\0')},
               {"1A", "\x1A"},
               {"ABC", "\xAB"},
               {"G1zz", std::string("\x01\x00", 2)}};
  for (const auto& c : cases) {
    uint8_t output[4] = {};
    EXPECT_EQ(static_cast<int32_t>(c.bytes.size()), HexToBytes(c.text, nullptr));
    ASSERT_EQ(static_cast<int32_t>(c.bytes.size()), HexToBytes(c.text, output));
    EXPECT_EQ(0, std::memcmp(c.bytes.data(), output, c.bytes.size())) << c.text;
  }
  const uint8_t data[] = {0x00, 0x1A, 0xFF};
  char text[8];
  EXPECT_EQ(7, BytesToHex(data, 3, nullptr));
  EXPECT_EQ(7, BytesToHex(data, 3, text));
  EXPECT_STREQ("001AFF", text);
  EXPECT_EQ(0, BytesToHex(nullptr, 3, text));
}

TEST(NumberTextTest, UrlDecodeStopsAtTheZero) {
  // No case puts a '%' among the last two characters: the decoder would read past the zero.
  const struct {
    const char* source;
    std::string expected;
  } cases[] = {{"a+b%20c", "a b c"},
               {"%41%6a%4A", "AjJ"},
               {"%00x", std::string("\0x", 2)},
               {"%zz!", "S!"},  // unvalidated: (35 * 16 + 35) & 0xFF
               {"", ""}};
  for (const auto& c : cases) {
    char target[16];
    std::memset(target, '#', sizeof(target));
    UrlDecode(c.source, target);
    EXPECT_EQ(c.expected + '\0' + '#', std::string(target, c.expected.size() + 2)) << c.source;
  }
}

}  // namespace
}  // namespace vsm
