#include "support/number_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace vsm {
namespace {

TEST(NumberTextTest, ParseIntString) {
  const struct {
    const char* text;
    int32_t expected;
  } cases[] = {
      {"12x", 12},
      {"-7", -7},
      {"x1", 0},
      {"--7", 0},
      {"---7", -7},
      {"-12", -12},
      {"0", 0},
      {"007", 7},
      {"-", 0},
      {"", 0},
      {"1-2", 1},
      {" 1", 0},
      {"-1x2", -1},
      {"2147483647", 2147483647},
      {"-2147483648", INT32_MIN},
      {"4294967297", 1},  // wraps in 32 bits
  };
  for (const auto& c : cases) EXPECT_EQ(c.expected, ParseIntString(c.text)) << c.text;
  EXPECT_EQ(0, ParseIntString(nullptr));
}

TEST(NumberTextTest, ParseIntHonoursTheCount) {
  EXPECT_EQ(12, ParseInt("1234", 2));
  EXPECT_EQ(-1, ParseInt("-1234", 2));
  EXPECT_EQ(0, ParseInt("-1234", 1));
  EXPECT_EQ(0, ParseInt("1234", 0));
  EXPECT_EQ(0, ParseInt("1234", -3));
  EXPECT_EQ(-5, ParseInt("-5", 64));  // a count past the zero stops at it
}

TEST(NumberTextTest, HexToBytes) {
  const struct {
    const char* text;
    std::string bytes;
  } cases[] = {
      {"0a", std::string(1, '\0')},  // lower case counts as 0
      {"1A", "\x1A"},
      {"FF00", std::string("\xFF\x00", 2)},
      {"ABC", "\xAB"},  // an odd last digit is ignored
      {"G1zz", std::string("\x01\x00", 2)},
      {"", ""},
  };
  for (const auto& c : cases) {
    uint8_t output[8] = {};
    int32_t size = static_cast<int32_t>(c.bytes.size());
    EXPECT_EQ(size, HexToBytes(c.text, nullptr)) << c.text;
    ASSERT_EQ(size, HexToBytes(c.text, output)) << c.text;
    EXPECT_EQ(0, std::memcmp(c.bytes.data(), output, c.bytes.size())) << c.text;
  }
  EXPECT_EQ(0, HexToBytes(nullptr, nullptr));
}

TEST(NumberTextTest, BytesToHex) {
  const uint8_t data[] = {0x00, 0x1A, 0xFF, 0x80};
  char output[16];
  std::memset(output, 'x', sizeof(output));
  EXPECT_EQ(9, BytesToHex(data, 4, nullptr));
  EXPECT_EQ(9, BytesToHex(data, 4, output));
  EXPECT_STREQ("001AFF80", output);
  EXPECT_EQ(1, BytesToHex(data, 0, output));
  EXPECT_STREQ("", output);
  EXPECT_EQ(0, BytesToHex(nullptr, 4, output));
}

TEST(NumberTextTest, UrlDecode) {
  // Every case keeps a '%' away from the last two characters: the decoder reads two bytes
  // behind a '%' without looking for the end.
  const struct {
    const char* source;
    std::string expected;
  } cases[] = {
      {"a+b%20c", "a b c"},
      {"%41%6a%4A", "AjJ"},
      {"%2F%2f", "//"},
      {"%00x", std::string("\0x", 2)},
      {"%zz!", std::string(1, static_cast<char>(('Z' - 55) * 16 + ('Z' - 55))) + "!"},
      {"%%%x", std::string(1, static_cast<char>(('%' - '0') * 16 + ('%' - '0'))) + "x"},
      {"plain", "plain"},
      {"", ""},
  };
  for (const auto& c : cases) {
    char target[32];
    std::memset(target, 'x', sizeof(target));
    UrlDecode(c.source, target);
    EXPECT_EQ(c.expected, std::string(target, c.expected.size())) << c.source;
    EXPECT_EQ('\0', target[c.expected.size()]) << "the decoder stops at the source's zero";
  }
  UrlDecode(nullptr, nullptr);
}

}  // namespace
}  // namespace vsm
