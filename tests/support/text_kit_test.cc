// The text kit, and the memory buffer and tracked heap under it. punycode_oracle.py and
// utf_oracle.py compare the UTF and punycode conversions with Python's codecs over thousands of
// cases; the tests here hold the corners those can't reach, and the odd rules of the rest of the
// kit that callers depend on.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "support/c_string.h"
#include "support/image_type.h"
#include "support/mem_buffer.h"
#include "support/number_text.h"
#include "support/punycode.h"
#include "support/random_id.h"
#include "support/string_affix.h"
#include "support/string_split.h"
#include "support/text_search.h"
#include "support/tracked_heap.h"
#include "support/utf_convert.h"

namespace vsm {
namespace {

// The text after an in-place edit of a copy of `input`.
template <typename Edit>
std::string Edited(const char* input, Edit edit) {
  char buffer[64];
  std::strcpy(buffer, input);
  edit(buffer);
  return buffer;
}

// Results of calls made in order (a braced list is evaluated from left to right).
std::string Results(std::initializer_list<int64_t> values) {
  std::string joined;
  for (int64_t value : values) joined += (joined.empty() ? "" : " ") + std::to_string(value);
  return joined;
}

TEST(CStringTest, EditsSearchesCopiesLoginSplitsAndAffixesStayInsideTheTextAndItsRules) {
  EXPECT_EQ("16 2 6 1212", Edited("16, 2, 6, 1212", [](char* t) { RemoveChar(t, ','); }));
  EXPECT_EQ("a//b", Edited("a//b//", [](char* t) { TrimRightChar(t, '/'); }));
  EXPECT_EQ("a b", Edited(" \t a b \t ", TrimBlanks));
  EXPECT_EQ("cdef", Edited("", [](char* out) { Mid("abcdef", 2, 10, out); }));
  EXPECT_EQ("", Edited("x", [](char* out) { Mid("abcdef", 9, 1, out); }));
  // Past the end is not read; the zero is not found, and IsAllDigits stops at it. FindText goes
  // on at the character that failed ("ababc"); FindInRange's match would end past `end`.
  EXPECT_EQ(
      Results({IndexOfChar("a/b/c", 'a', 9), IndexOfChar("a/b/c", '\0', 0),
               ReverseFindChar("a/b/c", '/'), IsAllDigits("12", 8), FindText("aaab", "aab", true),
               FindText("xAAB", "aab", false), FindText("xAAB", "aab", true),
               FindText("ababc", "abc", true), FindText("hell", "hello", true),
               FindText("abc", "", true), FindText("\xC4", "\xE4", false),
               FindInRange("abXabX", "abX", 3, 5, true), CountTextBlocks("a\r\n\r\r\n\r\nb")}),
      "-1 -1 3 0 -1 1 -1 2 -1 -1 -1 -1 2");
  char target[4], login[1024] = "unchanged";
  SafeStringCopy(target, "abcdef", sizeof(target));
  SafeStringCopy(target, "q", 0);
  EXPECT_STREQ("abc", target);
  ::testing::internal::CaptureStdout();
  GetLoginName(login);
  std::string printed = ::testing::internal::GetCapturedStdout();
  EXPECT_TRUE(printed.empty() || printed == "getlogin_r failed.\n") << printed;
  EXPECT_EQ(printed.empty(), std::strcmp("unchanged", login) != 0);
  // Each text and its pieces, joined by '|' ("-" for none).
  // clang-format off
  const std::pair<const char*, const char*> cases[] = {{"", "-"}, {",", ""}, {"a,b,", "a|b"},
      {"a,,b", "a||b"}, {",a", "|a"}, {"a,b,,", "a|b|"}, {"a,,b,", "a||b"}};
  // clang-format on
  for (const auto& c : cases) {
    std::vector<std::string> pieces = SplitString(c.first, ',');
    std::string joined = pieces.empty() ? "-" : pieces[0];
    for (size_t i = 1; i < pieces.size(); ++i) joined += "|" + pieces[i];
    EXPECT_EQ(joined, c.second) << c.first;
    EXPECT_EQ(SplitString(std::string(c.first), ','), pieces) << c.first;
    EXPECT_EQ(static_cast<int32_t>(pieces.size()), CountParts(c.first, ',')) << c.first;
    ArrayOfStrings array = nullptr;
    int32_t count = -1;
    ASSERT_EQ(1, SplitToArray(c.first, ',', &array, &count)) << c.first;
    EXPECT_EQ(pieces, std::vector<std::string>(array, array + count)) << c.first;
    for (int32_t i = 0; i < count; ++i) EXPECT_EQ(pieces[i].size() + 1, TrackedSize(array[i]));
    FreeArray(array, count);
  }
  EXPECT_TRUE(SplitString(nullptr, ',').empty());
  EXPECT_EQ(std::vector<std::string>({std::string("a\0b", 3), "c"}),
            SplitString(std::string("a\0b,c", 5), ','));
  // EndsWith in its three forms, then StartsWith; bytes compare, and a longer `other` gives 0
  // (the text on the heap, so that ASan sees a look before or past it).
  // clang-format off
  const std::string affixes[][3] = {{"index.html", ".html", "1 1 1 0 0 0"},
      {"index.html", "index", "0 0 0 1 1 1"}, {"abc", "", "1 1 1 1 1 1"},
      {"ABC", "c", "0 0 0 0 0 0"}, {"a/long/index.html", "//a/long/index.html", "0 0 0 0 0 0"}};
  // clang-format on
  for (const auto& [text, o, expected] : affixes) {
    EXPECT_EQ(Results({EndsWith(text, o), EndsWith(text, o.data(), o.size()),
                       EndsWith(text, o.c_str()), StartsWith(text, o),
                       StartsWith(text, o.data(), o.size()), StartsWith(text, o.c_str())}),
              expected)
        << text << " " << o;
  }
}

TEST(NumberTextTest, ParseIntStopsAtSecondMinusHexCountsLowerCaseAsZeroIdsArePaddedImageTypes) {
  // clang-format off
  const std::pair<const char*, int32_t> numbers[] = {{"12x", 12}, {"-7", -7}, {"x1", 0}, {"--7", 0},
      {"---7", -7}, {"1-2", 1}, {"4294967297", 1}, {"-2147483648", INT32_MIN}};
  // clang-format on
  for (const auto& c : numbers) EXPECT_EQ(c.second, ParseIntString(c.first)) << c.first;
  EXPECT_EQ(-5, ParseInt("-5", 64));  // a count past the zero stops at it
  uint8_t bytes[2] = {0xEE, 0xEE};
  char hex[8] = "#######";
  // An odd length drops the last digit. BytesToHex gives the size also when only asked for it.
  EXPECT_EQ(Results({HexToBytes("0a1A", bytes), bytes[0], bytes[1], BytesToHex(bytes, 2, nullptr),
                     BytesToHex(bytes, 2, hex), BytesToHex(nullptr, 2, hex),
                     HexToBytes("ABC", bytes), bytes[0]}),
            "2 0 26 5 5 0 1 171");
  EXPECT_STREQ(hex, "001A");
  // Not validated: "%zz" is (35 * 16 + 35) & 0xFF. No '%' among the last two characters, where
  // the decoder would read past the zero.
  std::string text(16, '#');
  UrlDecode("a+b%20c%6a%zz%00!", text.data());
  EXPECT_EQ(std::string("a b cjS\0!\0#", 11), text.substr(0, 11));
  std::string random = GenerateRandomHexString(4096);
  ASSERT_EQ(8192u, random.size());
  EXPECT_EQ(std::string::npos, random.find_first_not_of("0123456789abcdef"));
  std::set<std::string> seen;
  for (size_t i = 0; i < random.size(); i += 2) seen.insert(random.substr(i, 2));
  EXPECT_GT(seen.size(), 240u);  // the whole range, small values padded
  // clang-format off
  const std::pair<std::string, int> signatures[] = {
      {"\xFF\xD8\xFF\xE0", kImageJpeg}, {"\xFF\xD8\xFF", kImageUnknown}, {"\x89PNG", kImagePng},
      {"BM\x36\x10", kImageBmp}, {{"MM\0\x2A", 4}, kImageTiff}, {{"II\x2A\0", 4}, kImageTiff},
      {{"II\0\x2A", 4}, kImageUnknown}, {"%pDf", kImagePdf}, {"GIF87a", kImageGif},
      {"GIF89a", kImageGif}, {"GIF8", kImageUnknown}, {"GIF88a", kImageUnknown},
      {{"\0\0\0\x0CjP ", 7}, kImageJpeg2000}, {{"\0\0\0\x0CjP", 6}, kImageUnknown},
      {"\xFF\x4F\xFF\x51", kImageJpeg2000}};
  // clang-format on
  for (const auto& [text, type] : signatures) {
    std::vector<uint8_t> bytes(text.begin(), text.end());  // exact, so that ASan sees overreads
    EXPECT_EQ(DetectImageType(bytes.data(), bytes.size()), type) << ::testing::PrintToString(text);
  }
  EXPECT_EQ(kImageUnknown, DetectImageType(nullptr, 8));
}

TEST(UtfAndPunycodeTest, CleanTextIsAppendedRefusedLabelsArgumentsCaseFlagsAndHostNames) {
  std::wstring wide = L"x";
  Utf8ToWide("ab\xF0\x9F\x98\x80", 6, wide);
  EXPECT_EQ(L"xab\xD83D\xDE00", wide);
  Utf8ToWide("\xC1\x81", 2, wide);  // an overlong form: the lenient result replaces
  EXPECT_EQ(L"A", wide);
  Utf8ToWide("\xED\xA0\x80", 3, wide);  // refused by both: empty
  Utf8ToWide("abc", 2, wide);           // the length counts, not the zero
  EXPECT_EQ(L"ab", wide);
  std::string narrow = "stale";
  WideToUtf8(std::wstring(1, wchar_t(0x10041)).c_str(), narrow);  // the low 16 bits count
  EXPECT_EQ("A", narrow);
  WideToUtf8(nullptr, narrow);
  EXPECT_EQ("", narrow);
  char output[2048];
  auto encode = [&](const std::wstring& input, uint32_t size, const uint8_t* flags) {
    return PunycodeEncode(input.c_str(), kPunycodeZeroTerminated, output, size, flags, 0, nullptr);
  };
  // Lone or misplaced surrogates, and a value past the overflow limit. (The oracle holds the
  // 512-code-point limit.)
  for (const std::wstring& label :
       {std::wstring(), std::wstring{L'a', 0xD83D}, std::wstring{0xD83D, L'a', 0xDE00},
        std::wstring{L'a', 0xDE00}, std::wstring(1, 0x7FFFFF00)}) {
    EXPECT_EQ(0u, encode(label, sizeof(output), nullptr)) << label.size();
  }
  EXPECT_EQ(0u, PunycodeEncode(L"abc", 3, output, 8, nullptr, 0, nullptr));
  EXPECT_EQ(0u, PunycodeEncode(L"abc", kPunycodeZeroTerminated, nullptr, 8, nullptr, 0, nullptr));
  std::memset(output, '#', 8);
  EXPECT_EQ(9u, encode(L"b\u00FCcher", 4, nullptr));  // writes past the size dropped, counted
  EXPECT_EQ("bche####", std::string(output, 8));
  const uint8_t flags[] = {0, 1, 1, 1, 0, 0};
  EXPECT_EQ(9u, encode(L"B\u00FCcHer", sizeof(output), flags));
  EXPECT_EQ("bCHer-kvA", std::string(output, 9));
  // Both calls of a caller, the size and then the text; "" stands for a failure.
  auto convert = [](const std::string& host) {
    uint32_t size = HostNameToPunycode(host.c_str(), nullptr);
    if (size == 0) return std::string();
    std::string output(size, '#');
    EXPECT_EQ(size - 1, HostNameToPunycode(host.c_str(), &output[0])) << host;
    return output;
  };
  EXPECT_EQ(std::string("www.xn--Mnchen-3ya.de\0", 22), convert("www.M\xC3\xBCnchen.de."));
  for (const char* host : {"a..b", "a.\xC3", "a.\xC0\x80"}) EXPECT_EQ("", convert(host));
  EXPECT_EQ("", convert("a." + std::string(513, 'a')));
  EXPECT_EQ(0u, HostNameToPunycode(nullptr, nullptr));
  EXPECT_EQ(std::string(1, '\0'), convert(""));  // an empty host is an empty text
  // 500 scattered CJK code points encode to more than 1024 bytes: the label is cut there.
  std::string label;
  for (int i = 0; i < 500; ++i) {
    unsigned cp = 0x4E00 + (i * 37) % 20000;
    label += {char(0xE0 | cp >> 12), char(0x80 | (cp >> 6 & 0x3F)), char(0x80 | (cp & 0x3F))};
  }
  EXPECT_EQ(4u + 1024u + 1u, convert(label).size());
}

TEST(MemBufferTest, TrackedSizesResizeOrderDetachCopyBlocksLinearGrowthFixedBlocksAndSeeks) {
  auto* zeroed = static_cast<unsigned char*>(TrackedAlloc(kTrackedZeroFill, 24));
  EXPECT_EQ(TrackedSize(zeroed), 24u);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(zeroed), 24), std::string(24, '\0'));
  // The new address is entered before the old one is removed: an unmoved block loses its size.
  void* shrunk = TrackedRealloc(zeroed, 16, 0);
  ASSERT_NE(shrunk, nullptr);
  EXPECT_EQ(TrackedSize(shrunk), shrunk == zeroed ? 0u : 16u);
  void* grown = TrackedRealloc(shrunk, 1 << 20, 0);
  EXPECT_EQ(TrackedSize(grown), grown == shrunk ? 0u : uint64_t{1} << 20);
  void* emptied = TrackedRealloc(grown, 0, 0);
  ASSERT_NE(emptied, nullptr);  // never freed behind the caller's back
  TrackedFree(emptied);
  void* outside = std::malloc(8);
  EXPECT_EQ(TrackedSize(outside), 0u);
  TrackedFree(outside);  // forgets the entry TrackedSize made, and frees
  CMemBuffer blocks(8);
  uint8_t* copy = blocks.DetachCopy();
  EXPECT_EQ(TrackedSize(copy), 1u);  // one zero byte for no content
  EXPECT_EQ(copy[0], 0);
  TrackedFree(copy);
  EXPECT_EQ(Results({blocks.WriteBlockString("hello"), blocks.WriteBlock(nullptr, 3),
                     blocks.WriteBlockString(""), blocks.WriteBlockString("abcdef")}),
            "1 0 1 1");
  copy = blocks.DetachCopy();  // and closes: a block left behind would leak
  blocks.Attach(copy, 23, true, 0);
  uint8_t* hello = nullptr;
  char target[9] = "--------";
  uint8_t* into = reinterpret_cast<uint8_t*>(target);
  // The empty block reads nothing; what is left after "abc" is no block.
  EXPECT_EQ(
      Results({blocks.ReadBlock(&hello, 0, 0xFFFFFFFF), blocks.ReadBlock(&hello, 0, 0xFFFFFFFF),
               blocks.ReadBlock(&into, 2, 3), blocks.ReadBlock(&into, 0, 0xFFFFFFFF),
               blocks.SetLength(2), blocks.position()}),
      "5 0 3 0 1 2");
  EXPECT_STREQ(reinterpret_cast<char*>(hello), "hello");
  EXPECT_STREQ(target, "--abc---");
  TrackedFree(hello);
  CMemBuffer buffer(100);
  std::string bytes(350, 'a');
  // Writes and capacities: one step at a time, not doubled; then the length.
  EXPECT_EQ(Results({buffer.Write(bytes.data(), 100), buffer.capacity(), buffer.Write("b", 1),
                     buffer.capacity(), buffer.Write(bytes.data(), 350), buffer.capacity(),
                     buffer.length()}),
            "100 100 1 200 350 500 451");
  char block[9] = "abcdefgh", read[9] = {};
  CMemBuffer fixed(reinterpret_cast<uint8_t*>(block), 8, false, 0);
  // It can't grow: the write fails, and Seek stops at the length.
  EXPECT_EQ(
      Results({fixed.Read(read, 20), fixed.Write("x", 1), fixed.SetLength(9), fixed.Seek(20, 0)}),
      "8 0 0 8");
  EXPECT_STREQ(read, "abcdefgh");
  // A block that claims nearly 4 GiB: a write that would pass 32 bits is refused untouched.
  fixed.Attach(reinterpret_cast<uint8_t*>(block), 0xFFFFFFF8u, false, 0);
  EXPECT_EQ(Results({fixed.Seek(0xFFFFFFF0u, 0), fixed.Write(block, 0x20)}), "4294967280 0");
  // Offset, origin, and the result, which is also the new position; the length stays 10, and
  // past it nothing is read.
  // clang-format off
  const struct { int64_t offset; uint32_t origin, result; } seeks[] = {{7, 0, 7}, {3, 1, 7},
      {-3, 2, 7}, {5, 2, 4}, {-5, 1, 4}, {1, 3, 4}, {40, 0, 40}, {int64_t{1} << 32, 0, 4}};
  // clang-format on
  for (const auto& [offset, origin, result] : seeks) {
    CMemBuffer from(16);
    EXPECT_EQ(Results({from.Write("0123456789", 10), from.Seek(4, 0), from.Seek(offset, origin),
                       from.GetPosition(), from.GetLength(), from.Read(read, 1)}),
              Results({10, 4, result, result, 10, result < 10}))
        << offset << "," << origin;
  }
}

}  // namespace
}  // namespace vsm
