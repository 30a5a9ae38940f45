#include "support/punycode.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace vsm {
namespace {

// Encodes with room to spare; "" stands for a result of 0.
std::string Encode(const std::wstring& input, uint32_t* nonBasic = nullptr,
                   const uint8_t* flags = nullptr) {
  char output[2048] = {};
  uint32_t length = PunycodeEncode(input.c_str(), kPunycodeZeroTerminated, output, sizeof(output),
                                   flags, 0, nonBasic);
  return std::string(output, length);
}

TEST(PunycodeTest, KnownEncodings) {
  const struct {
    std::wstring label;
    const char* encoded;
    uint32_t nonBasic;
  } cases[] = {
      {L"b\x00FC"
       L"cher",
       "bcher-kva", 1},
      {L"M\x00FCnchen", "Mnchen-3ya", 1},  // basic code points keep their case
      {L"\x65E5\x672C\x8A9E", "wgv71a119e", 3},
      {L"\xD83D\xDE00", "e28h", 1},  // a surrogate pair is one code point
      {L"a\xD83D\xDE00"
       L"b",
       "ab-no82a", 1},
      {L"3\x5E74"
       L"B\x7D44\x91D1\x516B\x5148\x751F",
       "3B-ww4c5e180e575a65lsy2b", 6},
      {L"\x5B89\x5BA4\x5948\x7F8E\x6075-with-SUPER-MONKEYS",
       "-with-SUPER-MONKEYS-pc58ag80a8qai00g7n9n", 5},
      {L"-> $1.00 <-", "-> $1.00 <-", 0},  // all basic: unchanged, no '-' behind
      {L"Example", "Example", 0},
      {std::wstring(1, wchar_t(0x10FFFF)), "dn32g", 1},
  };
  for (const auto& c : cases) {
    uint32_t nonBasic = 99;
    EXPECT_EQ(c.encoded, Encode(c.label, &nonBasic)) << c.encoded;
    EXPECT_EQ(c.nonBasic, nonBasic) << c.encoded;
  }
}

TEST(PunycodeTest, RefusedInput) {
  const struct {
    const char* name;
    std::wstring label;
  } cases[] = {
      {"empty", L""},
      {"high surrogate at the end", L"a\xD83D"},
      {"high surrogate before a letter",
       L"\xD83D"
       L"a"},
      {"two high surrogates", L"\xD83D\xD83D\xDE00"},
      {"lone low surrogate", L"a\xDE00"},
      {"513 code points", std::wstring(513, L'a')},
      {"513 astral code points",
       [] {
         std::wstring pairs;
         for (int i = 0; i < 513; ++i) pairs += L"\xD83D\xDE00";
         return pairs;
       }()},
      {"past the overflow limit", std::wstring(1, wchar_t(0x7FFFFF00))},
  };
  for (const auto& c : cases) {
    uint32_t nonBasic = 99;
    EXPECT_EQ("", Encode(c.label, &nonBasic)) << c.name;
  }
  uint32_t nonBasic = 99;
  Encode(L"", &nonBasic);
  EXPECT_EQ(0u, nonBasic);
}

TEST(PunycodeTest, LimitsAndArguments) {
  EXPECT_EQ(512u, Encode(std::wstring(512, L'a')).size());
  EXPECT_EQ(514u, Encode(std::wstring(512, wchar_t(0x4E2D))).size());
  char output[8];
  EXPECT_EQ(0u, PunycodeEncode(L"abc", 3, output, sizeof(output), nullptr, 0, nullptr));
  EXPECT_EQ(0u, PunycodeEncode(nullptr, kPunycodeZeroTerminated, output, 8, nullptr, 0, nullptr));
  EXPECT_EQ(0u, PunycodeEncode(L"abc", kPunycodeZeroTerminated, nullptr, 8, nullptr, 0, nullptr));
  // A null output with size 0 asks for the length.
  EXPECT_EQ(9u, PunycodeEncode(L"b\x00FC"
                               L"cher",
                               kPunycodeZeroTerminated, nullptr, 0, nullptr, 0, nullptr));
}

TEST(PunycodeTest, WritesPastTheSizeAreDroppedButCounted) {
  char output[8];
  std::memset(output, '#', sizeof(output));
  EXPECT_EQ(9u, PunycodeEncode(L"b\x00FC"
                               L"cher",
                               kPunycodeZeroTerminated, output, 4, nullptr, 0, nullptr));
  EXPECT_EQ("bche####", std::string(output, sizeof(output)));
}

TEST(PunycodeTest, CaseFlags) {
  // Flags per code point: basic letters follow their flag, a flagged non-basic code point
  // ends in an upper-case digit.
  const uint8_t flags[] = {0, 1, 1, 1, 0, 0};
  EXPECT_EQ("bCHer-kvA", Encode(L"B\x00FC"
                                L"cHer",
                                nullptr, flags));
  const uint8_t none[] = {0, 0, 0};
  EXPECT_EQ("tdaaa", Encode(L"\x00FC\x00FC\x00FC", nullptr, none));
  const uint8_t last[] = {0, 0, 1};
  EXPECT_EQ("tdaaA", Encode(L"\x00FC\x00FC\x00FC", nullptr, last));
}

}  // namespace
}  // namespace vsm
