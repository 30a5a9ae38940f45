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

TEST(CStringTest, EditsSearchesAndCopiesStayInsideTheText) {
  EXPECT_EQ("16 2 6 1212", Edited("16, 2, 6, 1212", [](char* t) { RemoveChar(t, ','); }));
  EXPECT_EQ("a//b", Edited("a//b//", [](char* t) { TrimRightChar(t, '/'); }));
  EXPECT_EQ("a b", Edited(" \t a b \t ", TrimBlanks));
  EXPECT_EQ(-1, IndexOfChar("a/b/c", 'a', 9));  // past the end, not read
  EXPECT_EQ(-1, IndexOfChar("a/b/c", '\0', 0));
  EXPECT_EQ(3, ReverseFindChar("a/b/c", '/'));
  EXPECT_EQ("cdef", Edited("", [](char* out) { Mid("abcdef", 2, 10, out); }));
  EXPECT_EQ("", Edited("x", [](char* out) { Mid("abcdef", 9, 1, out); }));
  char target[4];
  SafeStringCopy(target, "abcdef", sizeof(target));
  SafeStringCopy(target, "q", 0);
  EXPECT_STREQ("abc", target);
  EXPECT_EQ(0, IsAllDigits("12", 8));  // stops at the zero
}

TEST(CStringTest, GetLoginNameLeavesTheTargetAloneOnFailure) {
  char target[1024] = "unchanged";
  ::testing::internal::CaptureStdout();
  GetLoginName(target);
  std::string printed = ::testing::internal::GetCapturedStdout();
  EXPECT_TRUE(printed.empty() || printed == "getlogin_r failed.\n") << printed;
  EXPECT_EQ(printed.empty(), std::strcmp("unchanged", target) != 0);
}

TEST(NumberTextTest, ParseIntStopsAtASecondMinusAndHexCountsLowerCaseAsZero) {
  const std::pair<const char*, int32_t> numbers[] = {
      {"12x", 12},  {"-7", -7}, {"x1", 0},         {"--7", 0},
      {"---7", -7}, {"1-2", 1}, {"4294967297", 1}, {"-2147483648", INT32_MIN}};
  for (const auto& c : numbers) EXPECT_EQ(c.second, ParseIntString(c.first)) << c.first;
  EXPECT_EQ(-5, ParseInt("-5", 64));  // a count past the zero stops at it
  uint8_t bytes[2] = {0xEE, 0xEE};
  EXPECT_EQ(2, HexToBytes("0a1A", bytes));
  EXPECT_EQ(0x001A, bytes[0] << 8 | bytes[1]);
  EXPECT_EQ(1, HexToBytes("ABC", bytes));  // an odd length drops the last digit
  EXPECT_EQ(0xAB, bytes[0]);
  // Not validated: "%zz" is (35 * 16 + 35) & 0xFF. No '%' among the last two characters, where
  // the decoder would read past the zero.
  char text[16];
  std::memset(text, '#', sizeof(text));
  UrlDecode("a+b%20c%6a%zz%00!", text);
  EXPECT_EQ(std::string("a b cjS\0!\0#", 11), std::string(text, 11));
}

TEST(StringSplitTest, EveryFormKeepsInnerEmptyPiecesAndDropsOneAtTheEnd) {
  // Each text and its pieces, joined by '|' ("-" for none).
  const std::pair<const char*, const char*> cases[] = {
      {"", "-"},    {",", ""},         {"a,b,", "a|b"},  {"a,,b", "a||b"},
      {",a", "|a"}, {"a,b,,", "a|b|"}, {"a,,b,", "a||b"}};
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
}

TEST(TextSearchTest, FindTextNeverStepsBackAndFoldsOnlyAscii) {
  EXPECT_EQ(-1, FindText("aaab", "aab", true));
  EXPECT_EQ(1, FindText("xAAB", "aab", false));
  EXPECT_EQ(-1, FindText("xAAB", "aab", true));
  EXPECT_EQ(2, FindText("ababc", "abc", true));  // goes on at the character that failed
  EXPECT_EQ(-1, FindText("hell", "hello", true));
  EXPECT_EQ(-1, FindText("abc", "", true));
  EXPECT_EQ(-1, FindText("\xC4", "\xE4", false));
  EXPECT_EQ(-1, FindInRange("abXabX", "abX", 3, 5, true));  // would end past `end`
  EXPECT_EQ(2, CountTextBlocks("a\r\n\r\r\n\r\nb"));
}

TEST(UtfConvertTest, CleanTextIsAppendedAnythingElseReplaces) {
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
}

TEST(PunycodeTest, RefusedLabelsArgumentsShortOutputAndCaseFlags) {
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
}

TEST(PunycodeTest, HostNameToPunycodeAsCallersUseIt) {
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

TEST(RandomIdTest, TwoPaddedLowerCaseDigitsPerByte) {
  std::string text = GenerateRandomHexString(4096);
  ASSERT_EQ(8192u, text.size());
  EXPECT_EQ(std::string::npos, text.find_first_not_of("0123456789abcdef"));
  std::set<std::string> seen;
  for (size_t i = 0; i < text.size(); i += 2) seen.insert(text.substr(i, 2));
  EXPECT_GT(seen.size(), 240u);  // the whole range, small values padded
}

TEST(ImageTypeTest, SignaturesNeedTheirWholeLength) {
  const uint8_t jpeg[] = {0xFF, 0xD8, 0xFF, 0xE0}, jpeg2000[] = {0, 0, 0, 0x0C, 'j', 'P', ' '};
  EXPECT_EQ(kImageJpeg, DetectImageType(jpeg, 4));
  EXPECT_EQ(kImageUnknown, DetectImageType(jpeg, 3));
  EXPECT_EQ(kImageJpeg2000, DetectImageType(jpeg2000, 7));  // seven bytes are enough
  EXPECT_EQ(kImageUnknown, DetectImageType(jpeg2000, 6));
  EXPECT_EQ(kImageUnknown, DetectImageType(nullptr, 8));
}

TEST(TrackedHeapTest, SizesZeroFillUnknownBlocksAndTheResizeOrder) {
  auto* block = static_cast<unsigned char*>(TrackedAlloc(kTrackedZeroFill, 24));
  EXPECT_EQ(TrackedSize(block), 24u);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(block), 24), std::string(24, '\0'));
  // The new address is entered before the old one is removed: an unmoved block loses its size.
  void* shrunk = TrackedRealloc(block, 16, 0);
  ASSERT_NE(shrunk, nullptr);
  EXPECT_EQ(TrackedSize(shrunk), shrunk == block ? 0u : 16u);
  void* grown = TrackedRealloc(shrunk, 1 << 20, 0);
  EXPECT_EQ(TrackedSize(grown), grown == shrunk ? 0u : uint64_t{1} << 20);
  void* emptied = TrackedRealloc(grown, 0, 0);
  ASSERT_NE(emptied, nullptr);  // never freed behind the caller's back
  TrackedFree(emptied);
  void* outside = std::malloc(8);
  EXPECT_EQ(TrackedSize(outside), 0u);
  TrackedFree(outside);  // forgets the entry TrackedSize made, and frees
}

TEST(MemBufferTest, GrowsLinearlyAndAFixedBlockRefusesToGrow) {
  CMemBuffer buffer(100);
  std::string bytes(350, 'a');
  buffer.Write(bytes.data(), 100);
  EXPECT_EQ(buffer.capacity(), 100u);
  EXPECT_EQ(buffer.Write("b", 1), 1u);
  EXPECT_EQ(buffer.capacity(), 200u);
  EXPECT_EQ(buffer.Write(bytes.data(), 350), 350u);
  EXPECT_EQ(buffer.capacity(), 500u);  // not doubled
  EXPECT_EQ(buffer.length(), 451u);

  char block[9] = "abcdefgh";
  CMemBuffer fixed(reinterpret_cast<uint8_t*>(block), 8, false, 0);
  char read[9] = {};
  EXPECT_EQ(fixed.Read(read, 20), 8u);
  EXPECT_STREQ(read, "abcdefgh");
  EXPECT_EQ(fixed.Write("x", 1), 0u);
  EXPECT_EQ(fixed.SetLength(9), 0);
  EXPECT_EQ(fixed.Seek(20, 0), 8u);  // can't grow: stops at the length
  // A block that claims nearly 4 GiB: a write that would pass 32 bits is refused untouched.
  fixed.Attach(reinterpret_cast<uint8_t*>(block), 0xFFFFFFF8u, false, 0);
  EXPECT_EQ(fixed.Seek(0xFFFFFFF0u, 0), 0xFFFFFFF0u);
  EXPECT_EQ(fixed.Write(block, 0x20), 0u);
}

TEST(MemBufferTest, SeeksFromStartPositionOrEnd) {
  // offset, origin, and the result, which is also the new position; the length stays 10.
  const struct {
    int64_t offset;
    uint32_t origin, result;
  } rows[] = {{7, 0, 7},  {3, 1, 7}, {-3, 2, 7},  {5, 2, 4},
              {-5, 1, 4}, {1, 3, 4}, {40, 0, 40}, {int64_t{1} << 32, 0, 4}};
  for (const auto& row : rows) {
    CMemBuffer buffer(16);
    buffer.Write("0123456789", 10);
    buffer.Seek(4, 0);
    EXPECT_EQ(buffer.Seek(row.offset, row.origin), row.result) << row.offset << "," << row.origin;
    EXPECT_EQ(buffer.GetPosition(), row.result);
    EXPECT_EQ(buffer.GetLength(), 10u);
    char target[4] = {};
    EXPECT_EQ(buffer.Read(target, 1), row.result < 10 ? 1u : 0u);
  }
}

TEST(MemBufferTest, DetachCopyAndBlocksHandOverTheContent) {
  CMemBuffer buffer(8);
  uint8_t* copy = buffer.DetachCopy();
  EXPECT_EQ(TrackedSize(copy), 1u);  // one zero byte for no content
  EXPECT_EQ(copy[0], 0);
  TrackedFree(copy);
  EXPECT_EQ(buffer.WriteBlockString("hello"), 1);
  EXPECT_EQ(buffer.WriteBlock(nullptr, 3), 0);
  EXPECT_EQ(buffer.WriteBlockString(""), 1);
  EXPECT_EQ(buffer.WriteBlockString("abcdef"), 1);
  copy = buffer.DetachCopy();  // and closes: a block left behind would leak
  buffer.Attach(copy, 23, true, 0);
  uint8_t* block = nullptr;
  EXPECT_EQ(buffer.ReadBlock(&block, 0, 0xFFFFFFFF), 5u);
  EXPECT_STREQ(reinterpret_cast<char*>(block), "hello");
  EXPECT_EQ(buffer.ReadBlock(&block, 0, 0xFFFFFFFF), 0u);  // the empty one reads nothing
  TrackedFree(block);
  char target[9] = "--------";
  uint8_t* into = reinterpret_cast<uint8_t*>(target);
  EXPECT_EQ(buffer.ReadBlock(&into, 2, 3), 3u);
  EXPECT_STREQ(target, "--abc---");
  EXPECT_EQ(buffer.ReadBlock(&into, 0, 0xFFFFFFFF), 0u);  // the rest is no block
  EXPECT_EQ(buffer.SetLength(2), 1);
  EXPECT_EQ(buffer.position(), 2u);
}

}  // namespace
}  // namespace vsm
