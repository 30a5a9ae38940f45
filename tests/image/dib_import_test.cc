// Packed DIB import beyond what image_bmp_kit_oracle.py feeds through vsmkit: colour tables in
// front of bit fields, plain 16- and 32-bit blocks, refused compressions, the ownership rules
// of AttachFlattened, and blocks whose header claims more than they hold.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "image/image.h"
#include "support/tracked_heap.h"
#include "tests/image/test_pictures.h"

namespace vsm {
namespace {

struct Header {
  int32_t width, height;
  uint16_t bits;
  uint32_t compression = 0, colors = 0, headerSize = 40;
};

// A tracked block: the header, then `tail` (masks, palette, pixels) given as hex.
uint8_t* Block(const Header& h, const std::string& tail) {
  uint8_t* block = static_cast<uint8_t*>(TrackedAlloc(kTrackedZeroFill, 40 + tail.size() / 2));
  const uint32_t fields[] = {h.headerSize,
                             static_cast<uint32_t>(h.width),
                             static_cast<uint32_t>(h.height),
                             1u | h.bits << 16,
                             h.compression,
                             0,
                             0,
                             0,
                             h.colors};
  std::memcpy(block, fields, sizeof fields);
  for (size_t i = 0; i < tail.size() / 2; ++i) {
    block[40 + i] = static_cast<uint8_t>(std::stoi(tail.substr(2 * i, 2), nullptr, 16));
  }
  return block;
}

std::string Hex(const uint8_t* bytes, size_t length) {
  std::string text;
  char digits[3];
  for (size_t i = 0; i < length; ++i) {
    snprintf(digits, sizeof digits, "%02x", bytes[i]);
    text += digits;
  }
  return text;
}

constexpr char kMasks565[] = "00f80000e00700001f000000";

TEST(DibImportTest, NormaliseDecodesBitFieldsAndCopiesPlainBlocks) {
  struct Row {
    const char* name;
    Header header;
    std::string tail;
    bool made;
    uint16_t depth;      // what the result's header says
    uint32_t size;       // of the result block
    std::string pixels;  // the result's bytes from offset 40 + 4 * palette entries
  } rows[] = {
      // clang-format off
      // The low bits aren't replicated: 0xFFFF gives F8 FC F8.
      {"5-6-5 white", {1, 1, 16, 3}, std::string(kMasks565) + "ffff0000", true, 24, 44, "f8fcf800"},
      // A colour table in front of 16-bit pixels: the first pass skips it, and leaves the row's
      // padding byte; the second decodes from right behind the masks, and stands.
      {"16 bits with a table", {1, 1, 16, 3, 2}, std::string(kMasks565) + "aabbccddeeeeeeeeffff0099", true, 24, 44, "5074b899"},
      // The source's header stays, in a block the size of a 24-bit picture, read as 0 past the source.
      {"plain 32 bits", {1, 1, 32}, "0a0b0c0d", true, 32, 44, "0a0b0c0d"},
      {"plain 16 bits", {2, 1, 16}, "11223344", true, 16, 48, "1122334400000000"},
      {"short bit-field block", {2, 2, 32, 3}, "ff000000ff000000ff000000010203ff", true, 24, 56, "01020300000000000000000000000000"},
      {"run-length", {1, 1, 8, 1}, "", false, 0, 0, ""},
      {"JPEG", {1, 1, 24, 4}, "", false, 0, 0, ""},
      // clang-format on
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    uint8_t* source = Block(row.header, row.tail);
    CImage normaliser;
    uint8_t* result = normaliser.NormaliseDib(source);
    EXPECT_EQ(0u, normaliser.GetLastError());
    EXPECT_EQ(nullptr, normaliser.GetInfo()->dib);  // left empty
    ASSERT_EQ(row.made, result != nullptr);
    if (result != nullptr) {
      uint16_t depth;
      std::memcpy(&depth, result + 14, 2);
      EXPECT_EQ(row.depth, depth);
      EXPECT_EQ(row.size, TrackedSize(result));
      EXPECT_EQ(row.pixels, Hex(result + 40, TrackedSize(result) - 40));
    }
    TrackedFree(result);
    TrackedFree(source);
  }
  CImage normaliser;
  EXPECT_EQ(nullptr, normaliser.NormaliseDib(nullptr));
  EXPECT_EQ(3u, normaliser.GetLastError());
  uint8_t untracked[64] = {40};
  EXPECT_EQ(nullptr, normaliser.NormaliseDib(untracked));
  EXPECT_EQ(3u, normaliser.GetLastError());
}

TEST(DibImportTest, AttachFlattenedOwnsWhatItWasHandedAndCopiesOrBorrowsTheRest) {
  struct Row {
    uint16_t bits;
    bool copy, external;
    bool adopts;     // the image works on the given block itself
    bool freed;      // the given block is gone afterwards
    bool external2;  // the image's own flag
  } rows[] = {
      {32, false, false, false, true, false}, {32, true, false, false, false, false},
      {32, false, true, false, false, false}, {24, false, false, true, false, false},
      {24, true, false, false, false, false}, {24, false, true, true, false, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    uint8_t* source = Block({1, 1, row.bits}, "0102037f");
    {
      CImage image(source, row.copy, row.external);
      ASSERT_TRUE(image.IsValid());
      EXPECT_EQ(row.adopts, image.GetInfo()->dib == source);
      EXPECT_EQ(row.external2, image.IsExternal());
      EXPECT_EQ(24, image.GetInfo()->bitCount);
      if (row.adopts && !row.external) source = nullptr;  // the image frees it
    }
    // A freed block has left the tracked heap's records; a kept one is still whole.
    EXPECT_EQ(row.freed ? 0u : 44u, source == nullptr ? 44u : TrackedSize(source));
    if (!row.freed) TrackedFree(source);
  }
  // The flattening constructor copies: the caller's block stays. Below 32 bits there is
  // nothing to compose, and a block under a header's size isn't read.
  uint8_t* source = Block({1, 1, 32}, "000000ff");
  CImage image(source, kFlattenAlpha);
  EXPECT_EQ(0u, image.PixelColorAt(0, 0));
  TrackedFree(source);
  uint8_t* plain = Block({1, 1, 24}, "01020300");
  EXPECT_EQ(plain, CImage::FlattenAlphaDib(plain));
  TrackedFree(plain);
  uint8_t* tiny = static_cast<uint8_t*>(TrackedAlloc(kTrackedZeroFill, 39));
  EXPECT_EQ(nullptr, CImage::FlattenAlphaDib(tiny));
  TrackedFree(tiny);
}

TEST(DibImportTest, HeadersThatClaimTooMuchAreRefusedNotRead) {
  struct Row {
    const char* name;
    Header header;
    size_t tailBytes;
  } rows[] = {
      // clang-format off
      {"rows past the block", {1000, 10, 24}, 64},       {"palette past the block", {4, 4, 8}, 32},
      {"negative height", {4, -5, 24}, 64},              {"negative width", {-3, 4, 24}, 64},
      {"300 colours", {2, 2, 8, 0, 300}, 2048},          {"a 124-byte header", {1, 1, 24, 0, 0, 124}, 128},
      {"seven bits", {8, 1, 7}, 64},                     {"four gigabytes", {1 << 30, 2, 24}, 64},
      {"zero width", {0, 4, 8}, 1100},                   {"32-bit rows past the block", {8, 8, 32}, 64},
      // clang-format on
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string zeros(2 * row.tailBytes, '0');
    uint8_t* block = Block(row.header, zeros);
    CImage copied(block, true, false);
    EXPECT_FALSE(copied.IsValid());
    EXPECT_EQ(3u, copied.GetLastError());
    CImage target;
    target.Create(4, 4, target.GetInfo(), 24);
    EXPECT_FALSE(target.Paste(0, 0, block));
    EXPECT_EQ(3u, target.GetLastError());
    CImage normaliser;
    TrackedFree(normaliser.NormaliseDib(block));  // whatever it makes, it reads only the block
    // Handed over and refused: freed all the same, so nothing leaks.
    CImage adopted(block, false, false);
    EXPECT_FALSE(adopted.IsValid());
  }
}

}  // namespace
}  // namespace vsm
