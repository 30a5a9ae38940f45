// Packed DIB import: bit fields, 16 and 32 bits, the resolution rule, alpha flattening, the
// ownership rules of AttachFlattened, blocks whose header claims more than they hold, and the
// image slot. image_bmp_kit_oracle.py loads Pillow's BMP files through the same road.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "image/image.h"
#include "image/image_slot.h"
#include "support/tracked_heap.h"
#include "tests/image/test_pictures.h"

namespace vsm {
namespace {

struct Header {
  int32_t width, height;
  uint16_t bits;
  uint32_t compression = 0, colors = 0;
  int32_t xPels = 3780, yPels = 3780;
  uint32_t headerSize = 40;
};

std::vector<uint8_t> Bytes(const std::string& hex) {
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes.push_back(static_cast<uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
  }
  return bytes;
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

// A tracked block: the header, then `tail` (masks, palette, pixels as hex).
uint8_t* Block(const Header& h, const std::string& tail) {
  const std::vector<uint8_t> rest = Bytes(tail);
  uint8_t* block = static_cast<uint8_t*>(TrackedAlloc(kTrackedZeroFill, 40 + rest.size()));
  const uint32_t words[] = {h.headerSize, static_cast<uint32_t>(h.width),
                            static_cast<uint32_t>(h.height)};
  std::memcpy(block, words, 12);
  const uint16_t planes = 1;
  std::memcpy(block + 12, &planes, 2);
  std::memcpy(block + 14, &h.bits, 2);
  std::memcpy(block + 16, &h.compression, 4);
  std::memcpy(block + 24, &h.xPels, 4);
  std::memcpy(block + 28, &h.yPels, 4);
  std::memcpy(block + 32, &h.colors, 4);
  if (!rest.empty()) std::memcpy(block + 40, rest.data(), rest.size());
  return block;
}

uint32_t Field(const uint8_t* dib, size_t at) {
  uint32_t value;
  std::memcpy(&value, dib + at, 4);
  return value;
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
      // The low bits aren't replicated: 0xFFFF gives F8 FC F8.
      {"5-6-5 white", {1, 1, 16, 3}, std::string(kMasks565) + "ffff0000", true, 24, 44, "f8fcf800"},
      {"5-5-5",
       {2, 1, 16, 3},
       "007c0000e00300001f000000007c1f00",
       true,
       24,
       48,
       "0000f8f800000000"},
      {"32 bits ignore masks",
       {2, 1, 32, 3},
       "ff000000ff000000ff000000"
       "1122334455667788",
       true,
       24,
       48,
       "1122335566770000"},
      // A colour table in front of 16-bit pixels: the first pass skips it, and leaves the row's
      // padding byte; the second decodes from right behind the masks, and stands.
      {"16 bits with a table",
       {1, 1, 16, 3, 2},
       std::string(kMasks565) + "aabbccddeeeeeeee"
                                "ffff0099",
       true,
       24,
       44,
       "5074b899"},
      {"plain 24 bits copied", {1, 1, 24}, "01020300", true, 24, 44, "01020300"},
      // The source's header stays, in a block the size of a 24-bit picture.
      {"plain 32 bits", {1, 1, 32}, "0a0b0c0d", true, 32, 44, "0a0b0c0d"},
      {"plain 16 bits reads 0 past its block",
       {2, 1, 16},
       "11223344",
       true,
       16,
       48,
       "1122334400000000"},
      // Rows the block doesn't hold read as 0.
      {"short bit-field block",
       {2, 2, 32, 3},
       "ff000000ff000000ff000000"
       "010203ff",
       true,
       24,
       56,
       "0102030000000000"
       "0000000000000000"},
      {"run-length", {1, 1, 8, 1}, "", false, 0, 0, ""},
      {"JPEG", {1, 1, 24, 4}, "", false, 0, 0, ""},
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

TEST(DibImportTest, NormaliseTakesBothResolutionsFromTheHorizontalOne) {
  struct Row {
    int32_t xPels, yPels;
    uint32_t x, y;
  } rows[] = {
      {2000, 1000, 2008, 2008}, {0, 1000, 3780, 3780}, {2000, 0, 2008, 3780}, {0, 0, 3780, 3780}};
  for (const Row& row : rows) {
    Header header{1, 1, 32, 3};
    header.xPels = row.xPels;
    header.yPels = row.yPels;
    uint8_t* source = Block(header, "ff000000ff000000ff00000001020300");
    CImage normaliser;
    uint8_t* result = normaliser.NormaliseDib(source);
    ASSERT_NE(nullptr, result);
    EXPECT_EQ(row.x, Field(result, 24)) << row.xPels << " " << row.yPels;
    EXPECT_EQ(row.y, Field(result, 28)) << row.xPels << " " << row.yPels;
    TrackedFree(result);
    TrackedFree(source);
  }
}

TEST(DibImportTest, FlattenComposesOntoWhite) {
  // Per pixel: blue, green, red, alpha in; blue, green, red out.
  uint8_t* source = Block({4, 1, 32},
                          "102030ff"
                          "10203000"
                          "40804080"
                          "ffffff01");
  uint8_t* flat = CImage::FlattenAlphaDib(source);
  ASSERT_NE(nullptr, flat);
  ASSERT_NE(source, flat);
  EXPECT_EQ(24, flat[14]);
  EXPECT_EQ(52u, TrackedSize(flat));
  // (255 - a) * 255 + c * a, over 255, truncating.
  EXPECT_EQ(
      "102030"
      "ffffff"
      "9fbf9f"
      "ffffff",
      Hex(flat + 40, 12));
  TrackedFree(flat);
  TrackedFree(source);
  uint8_t* plain = Block({1, 1, 24}, "01020300");
  EXPECT_EQ(plain, CImage::FlattenAlphaDib(plain));
  uint8_t* tiny = static_cast<uint8_t*>(TrackedAlloc(kTrackedZeroFill, 39));
  EXPECT_EQ(nullptr, CImage::FlattenAlphaDib(tiny));
  TrackedFree(tiny);
  TrackedFree(plain);
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
    // A freed block has left the tracked heap's records.
    if (row.freed) {
      EXPECT_EQ(0u, TrackedSize(source));
    } else {
      if (source != nullptr) {
        EXPECT_EQ(44u, TrackedSize(source));
        TrackedFree(source);
      }
    }
  }
  // The flattening constructor copies: the caller's block stays.
  uint8_t* source = Block({1, 1, 32}, "000000ff");
  CImage image(source, kFlattenAlpha);
  EXPECT_EQ(0u, image.PixelColorAt(0, 0));
  TrackedFree(source);
}

TEST(DibImportTest, HeadersThatClaimTooMuchAreRefusedNotRead) {
  struct Row {
    const char* name;
    Header header;
    size_t tailBytes;
  } rows[] = {
      {"rows past the block", {1000, 10, 24}, 64},
      {"palette past the block", {4, 4, 8}, 32},
      {"negative height", {4, -5, 24}, 64},
      {"negative width", {-3, 4, 24}, 64},
      {"300 colours", {2, 2, 8, 0, 300}, 2048},
      {"a 124-byte header", {1, 1, 24, 0, 0, 0, 0, 124}, 128},
      {"seven bits", {8, 1, 7}, 64},
      {"four gigabytes", {1 << 30, 2, 24}, 64},
      {"zero width", {0, 4, 8}, 1100},
      {"32-bit rows past the block", {8, 8, 32}, 64},
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

TEST(DibImportTest, TheSlotKeepsACopyAndHandsOutNormalisedBlocks) {
  EXPECT_EQ(nullptr, FetchClipboardDib());
  uint8_t* source = Block({2, 1, 32, 3},
                          "ff000000ff000000ff000000"
                          "1122334455667788");
  StoreClipboardDib(source);
  std::memset(source + 52, 0, 8);  // the slot holds its own copy
  uint8_t* first = FetchClipboardDib();
  uint8_t* second = FetchClipboardDib();
  ASSERT_NE(nullptr, first);
  ASSERT_NE(first, second);
  EXPECT_EQ("112233556677", Hex(first + 40, 6));
  EXPECT_EQ(Hex(first, 48), Hex(second, 48));
  TrackedFree(first);
  TrackedFree(second);
  uint8_t untracked[64] = {};
  StoreClipboardDib(untracked);
  EXPECT_EQ(nullptr, FetchClipboardDib());
  StoreClipboardDib(source);
  StoreClipboardDib(nullptr);
  EXPECT_EQ(nullptr, FetchClipboardDib());
  TrackedFree(source);
  SetClipboardFlag(7);
  EXPECT_EQ(7, GetClipboardFlag());
  SetClipboardFlag(0);
}

}  // namespace
}  // namespace vsm
