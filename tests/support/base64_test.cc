// CBase64: the standard's test vectors, the decoder's lenient rules, the reservation rule, the
// steps a subclass replaces, and the fast loop held to the step-by-step one. base64_oracle.py
// compares vsmkit's streams with Python's base64 and binascii.
#include "support/base64.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace vsm {
namespace {

std::string Encoded(CBase64& codec, const std::string& plain) {
  const uint32_t length = codec.Encode(reinterpret_cast<const uint8_t*>(plain.data()),
                                       static_cast<uint32_t>(plain.size()));
  return length == 0 ? "" : std::string(codec.GetTextBuffer(), length);
}

std::string Decoded(CBase64& codec, const std::string& text) {
  codec.Decode(text.data(), static_cast<uint32_t>(text.size()));
  uint32_t length = 0;
  const uint8_t* plain = codec.GetPlain(&length);
  return length == 0 ? "" : std::string(reinterpret_cast<const char*>(plain), length);
}

// Overrides nothing: the object's steps are the class's own, but it takes the step-by-step path.
class StepByStep : public CBase64 {};

TEST(Base64Test, StandardVectorsAndTheDecodersLenientRules) {
  const std::pair<std::string, std::string> cases[] = {
      // plain, text: both ways
      {"", ""},
      {"f", "Zg=="},
      {"fo", "Zm8="},
      {"foobar", "Zm9vYmFy"},
      // plain, text: decoding only
      {"A", "QQ=="},                     // 3 bytes, then 2 fewer for the two `=`
      {std::string("AB\0", 3), "QUI"},   // a trailing group counts its characters
      {"foo\xFD\x89\x85", "Zm9v=YmFy"},  // `=` first in a group reads as 63; the trailing
                                         // "y" adds a byte, the `=` takes one off the end
      {"", "===="},                      // never below 0
  };
  for (size_t i = 0; i < sizeof cases / sizeof cases[0]; ++i) {
    const auto& c = cases[i];
    CBase64 codec, decoder;
    StepByStep steps;
    if (i < 4) {
      EXPECT_EQ(Encoded(codec, c.first), c.second);
      EXPECT_EQ(Encoded(steps, c.first), c.second);
      EXPECT_EQ(codec.GetTextBuffer() == nullptr, c.first.empty());  // 0 bytes reserve nothing
    }
    EXPECT_EQ(Decoded(decoder, c.second), c.first) << c.second;
    EXPECT_EQ(Decoded(steps, c.second), c.first) << c.second;
  }
  CBase64 codec;
  EXPECT_EQ(codec.EncodeString(nullptr) + codec.DecodeString(nullptr), 0u);
  EXPECT_EQ(codec.EncodeString("foob"), 8u);
}

TEST(Base64Test, ReservationsGrowInPagesAndKeepNothing) {
  CBase64 codec;
  EXPECT_EQ(codec.ReserveText(4096), 1);
  EXPECT_EQ(codec.textCapacity(), 8192u);
  std::memset(codec.GetTextBuffer(), 'x', 8192);
  EXPECT_EQ(codec.ReserveText(100), 1);  // fits: the same block, content as it was
  EXPECT_EQ(codec.GetTextBuffer()[0], 'x');
  EXPECT_EQ(codec.ReserveText(8193), 1);
  EXPECT_EQ(codec.textCapacity(), 12288u);
  EXPECT_EQ(codec.GetTextBuffer()[0], '\0');
  // Encode doesn't terminate its text: a short text after a long one leaves the old tail.
  CBase64 reused;
  EXPECT_EQ(Encoded(reused, "foobar"), "Zm9vYmFy");
  EXPECT_EQ(Encoded(reused, "f"), "Zg==");
  EXPECT_STREQ(reused.GetTextBuffer(), "Zg==YmFy");
  reused.SetPlain(reinterpret_cast<const uint8_t*>("abc"), 3);
  EXPECT_EQ(reused.plainLength(), 3u);
  EXPECT_EQ(reused.plainCapacity(), 4096u);
}

// A subclass that treats '.' as white space, writes '~' as padding and counts the blocks.
class Dotted : public CBase64 {
 public:
  int IsWhiteSpace(char character) override {
    return character == '.' ? 1 : CBase64::IsWhiteSpace(character);
  }
  void EncodeBlock(const Base64Block& block, char* target) override {
    ++encoded;
    CBase64::EncodeBlock(block, target);
    for (int i = 0; i < 4; ++i) target[i] = target[i] == '=' ? '~' : target[i];
  }
  int DecodeBlock(const Base64Block& block, uint8_t* target) override {
    counts.push_back(CBase64::DecodeBlock(block, target));
    return counts.back();
  }
  int encoded = 0;
  std::vector<int> counts;
};

TEST(Base64Test, ReplacedStepsAreCalled) {
  Dotted codec;
  EXPECT_EQ(Encoded(codec, "foobar!"), "Zm9vYmFyIQ~~");
  EXPECT_EQ(codec.encoded, 3);
  Dotted decoder;
  EXPECT_EQ(Decoded(decoder, "Zm.9v.YmFy.IQ=="), "foobar!");
  EXPECT_EQ(decoder.counts, (std::vector<int>{4, 4, 4}));
  Dotted first;
  Decoded(first, "==QQ");  // `=` keeps 255 in the first two places: two values below it
  EXPECT_EQ(first.counts, (std::vector<int>{2}));
}

// Both buffers whole, all lengths and capacities.
bool SameState(CBase64& a, CBase64& b) {
  return a.textCapacity() == b.textCapacity() && a.plainCapacity() == b.plainCapacity() &&
         a.textLength() == b.textLength() && a.plainLength() == b.plainLength() &&
         (a.textCapacity() == 0 ||
          std::memcmp(a.GetTextBuffer(), b.GetTextBuffer(), a.textCapacity()) == 0) &&
         (a.plainCapacity() == 0 ||
          std::memcmp(a.GetPlainBuffer(), b.GetPlainBuffer(), a.plainCapacity()) == 0);
}

// The fast loops against the step-by-step path, on random bytes and on their text with white
// space, invalid characters, `=` and bit 7 mixed in.
TEST(Base64Test, FastLoopsLeaveWhatTheStepsLeave) {
  std::mt19937 random(64);
  const std::string noise = "=\t\n \a\b!*\x80\xBD\xFF-_";
  for (int i = 0; i < 300; ++i) {
    std::string plain(random() % 200, '\0');
    for (char& c : plain) c = static_cast<char>(random());
    CBase64 fast, fastDecoder;
    StepByStep steps, stepDecoder;
    const std::string text = Encoded(fast, plain);
    ASSERT_EQ(text, Encoded(steps, plain));
    ASSERT_TRUE(SameState(fast, steps));
    std::string mangled;
    for (char c : text) {
      if (random() % 8 == 0) mangled += noise[random() % noise.size()];
      mangled += random() % 10 == 0 ? static_cast<char>(c | 0x80) : c;
    }
    Decoded(fastDecoder, mangled);
    Decoded(stepDecoder, mangled);
    ASSERT_TRUE(SameState(fastDecoder, stepDecoder)) << mangled;
  }
}

// Decode, then Encode: the decoded block is lost to the object but stays readable, and the
// capacity stays. (A later Decode that fits it would write through null; not done here.)
TEST(Base64Test, EncodeAfterDecodeLosesThePlainBlock) {
  CBase64 codec;
  codec.DecodeString("Zm9vYmFy");
  const uint8_t* decoded = codec.GetPlainBuffer();
  EXPECT_EQ(Encoded(codec, "x"), "eA==");
  EXPECT_EQ(codec.GetPlainBuffer(), nullptr);
  EXPECT_EQ(codec.plainCapacity(), 4096u);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(decoded), 6), "foobar");
}

}  // namespace
}  // namespace vsm
