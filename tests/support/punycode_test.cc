#include "support/punycode.h"

#include <gtest/gtest.h>

#include <string>

namespace vsm {
namespace {

// punycode_oracle.py compares labels and host names with Python's codec; these are the
// particulars it can't reach. Encodes with room to spare; "" stands for a result of 0.
std::string Encode(const std::wstring& input, const uint8_t* flags = nullptr) {
  char output[2048];
  uint32_t length = PunycodeEncode(input.c_str(), kPunycodeZeroTerminated, output, sizeof(output),
                                   flags, 0, nullptr);
  return std::string(output, length);
}

TEST(PunycodeTest, RefusedLabels) {
  std::wstring pairs;
  for (int i = 0; i < 513; ++i) pairs += L"\xD83D\xDE00";
  for (const std::wstring& label :
       {std::wstring(), std::wstring(L"a\xD83D"),
        std::wstring(L"\xD83D"
                     L"a\xDE00"),
        std::wstring(L"a\xDE00"), std::wstring(513, L'a'), pairs,
        std::wstring(1, wchar_t(0x7FFFFF00))}) {  // past the overflow limit
    EXPECT_EQ("", Encode(label)) << label.size();
  }
  EXPECT_NE("", Encode(pairs.substr(0, 1024)));  // 512 astral code points fit
  EXPECT_EQ(512u, Encode(std::wstring(512, L'a')).size());
}

TEST(PunycodeTest, ArgumentsAndShortOutput) {
  char output[8] = "#######";
  EXPECT_EQ(0u, PunycodeEncode(L"abc", 3, output, 8, nullptr, 0, nullptr));
  EXPECT_EQ(0u, PunycodeEncode(L"abc", kPunycodeZeroTerminated, nullptr, 8, nullptr, 0, nullptr));
  EXPECT_EQ(9u, PunycodeEncode(L"b\xFC"
                               L"cher",
                               kPunycodeZeroTerminated, nullptr, 0, nullptr, 0, nullptr));
  // Writes beyond the size are dropped but counted.
  EXPECT_EQ(9u, PunycodeEncode(L"b\xFC"
                               L"cher",
                               kPunycodeZeroTerminated, output, 4, nullptr, 0, nullptr));
  EXPECT_STREQ("bche###", output);
}

TEST(PunycodeTest, CaseFlagsPerCodePoint) {
  const uint8_t flags[] = {0, 1, 1, 1, 0, 0};
  EXPECT_EQ("bCHer-kvA", Encode(L"B\xFC"
                                L"cHer",
                                flags));
  EXPECT_EQ("Mnchen-3ya", Encode(L"M\xFCnchen"));  // without flags, as they are
}

// Both calls of a caller, the size and then the text; "" stands for a failure.
std::string HostName(const std::string& host) {
  uint32_t size = HostNameToPunycode(host.c_str(), nullptr);
  if (size == 0) return "";
  std::string output(size, '#');
  EXPECT_EQ(size - 1, HostNameToPunycode(host.c_str(), &output[0])) << host;
  return output;
}

TEST(PunycodeTest, HostNameToPunycode) {
  EXPECT_EQ(std::string("www.xn--Mnchen-3ya.de\0", 22), HostName("www.M\xC3\xBCnchen.de."));
  EXPECT_EQ(std::string("HTTP://Example.test\0", 20), HostName("HTTP://Example.test"));
  for (const char* host : {"a..b", ".a", "a.\xC3", "a.\xC0\x80"}) EXPECT_EQ("", HostName(host));
  EXPECT_EQ("", HostName("a." + std::string(513, 'a')));
  EXPECT_EQ(0u, HostNameToPunycode(nullptr, nullptr));
  EXPECT_EQ(1u, HostNameToPunycode("", nullptr));  // an empty host is an empty text
  // 500 scattered CJK code points encode to more than 1024 bytes: the label is cut there.
  std::string label;
  for (int i = 0; i < 500; ++i) {
    unsigned cp = 0x4E00 + (i * 37) % 20000;
    label += {char(0xE0 | cp >> 12), char(0x80 | (cp >> 6 & 0x3F)), char(0x80 | (cp & 0x3F))};
  }
  EXPECT_EQ(4u + 1024u + 1u, HostName(label).size());
}

}  // namespace
}  // namespace vsm
