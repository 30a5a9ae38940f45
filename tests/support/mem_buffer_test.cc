#include "support/mem_buffer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "support/tracked_heap.h"

namespace vsm {
namespace {

TEST(MemBufferTest, GrowsLinearlyByItsStep) {
  CMemBuffer buffer(100);
  std::string bytes(350, 'a');
  buffer.Write(bytes.data(), 100);
  EXPECT_EQ(buffer.capacity(), 100u);
  EXPECT_EQ(buffer.Write("b", 1), 1u);
  EXPECT_EQ(buffer.capacity(), 200u);
  EXPECT_EQ(buffer.Write(bytes.data(), 350), 350u);
  EXPECT_EQ(buffer.capacity(), 500u);  // not doubled
  EXPECT_EQ(buffer.length(), 451u);
}

TEST(MemBufferTest, FixedBlockIsReadableAndRefusesToGrow) {
  char block[9] = "abcdefgh";
  CMemBuffer buffer(reinterpret_cast<uint8_t*>(block), 8, false, 0);
  char read[9] = {};
  EXPECT_EQ(buffer.Read(read, 20), 8u);
  EXPECT_STREQ(read, "abcdefgh");
  EXPECT_EQ(buffer.Write("x", 1), 0u);
  EXPECT_EQ(buffer.SetLength(9), 0);
  EXPECT_EQ(buffer.Seek(20, 0), 8u);  // can't grow: stops at the length
  // A block that claims nearly 4 GiB: a write that would pass 32 bits is refused untouched.
  buffer.Attach(reinterpret_cast<uint8_t*>(block), 0xFFFFFFF8u, false, 0);
  EXPECT_EQ(buffer.Seek(0xFFFFFFF0u, 0), 0xFFFFFFF0u);
  EXPECT_EQ(buffer.Write(block, 0x20), 0u);
}

struct SeekCase {
  int64_t offset;
  uint32_t origin;
  uint32_t result;  // and the new position; the length stays 10
};

class MemBufferSeekTest : public ::testing::TestWithParam<SeekCase> {};

TEST_P(MemBufferSeekTest, MovesFromStartPositionOrEnd) {
  CMemBuffer buffer(16);
  buffer.Write("0123456789", 10);
  buffer.Seek(4, 0);
  EXPECT_EQ(buffer.Seek(GetParam().offset, GetParam().origin), GetParam().result);
  EXPECT_EQ(buffer.GetPosition(), GetParam().result);
  EXPECT_EQ(buffer.GetLength(), 10u);
  char target[4] = {};
  EXPECT_EQ(buffer.Read(target, 1), GetParam().result < 10 ? 1u : 0u);
}

INSTANTIATE_TEST_SUITE_P(Cases, MemBufferSeekTest,
                         ::testing::Values(SeekCase{7, 0, 7}, SeekCase{3, 1, 7}, SeekCase{-3, 2, 7},
                                           SeekCase{5, 2, 4}, SeekCase{-5, 1, 4}, SeekCase{1, 3, 4},
                                           SeekCase{40, 0, 40}, SeekCase{int64_t{1} << 32, 0, 4}));

TEST(MemBufferTest, DetachAndDetachCopyHandOverTheContent) {
  CMemBuffer buffer(16);
  uint8_t* empty = buffer.DetachCopy();
  EXPECT_EQ(TrackedSize(empty), 1u);
  EXPECT_EQ(empty[0], 0);
  TrackedFree(empty);
  EXPECT_EQ(buffer.WriteString("hello"), 1);
  uint8_t* copy = buffer.DetachCopy();
  EXPECT_EQ(std::string(reinterpret_cast<char*>(copy), 5), "hello");
  EXPECT_EQ(buffer.buffer(), nullptr);
  TrackedFree(copy);
  buffer.WriteString("again");
  EXPECT_EQ(buffer.SetLength(2), 1);
  EXPECT_EQ(buffer.position(), 2u);
  uint8_t* block = buffer.Detach();
  EXPECT_EQ(buffer.capacity(), 0u);
  TrackedFree(block);
}

TEST(MemBufferTest, BlocksRoundTrip) {
  CMemBuffer buffer(8);
  const char* texts[] = {"", "a", "hello world"};
  for (const char* text : texts) EXPECT_EQ(buffer.WriteBlockString(text), 1);
  EXPECT_EQ(buffer.WriteBlock(nullptr, 3), 0);
  EXPECT_EQ(buffer.WriteBlockString("abcdef"), 1);
  buffer.Seek(0, 0);
  for (const char* text : texts) {
    uint8_t* block = nullptr;
    EXPECT_EQ(buffer.ReadBlock(&block, 0, 0xFFFFFFFF), std::strlen(text));
    EXPECT_STREQ(block == nullptr ? "" : reinterpret_cast<char*>(block), text);
    TrackedFree(block);
  }
  char target[9] = "--------";
  uint8_t* into = reinterpret_cast<uint8_t*>(target);
  EXPECT_EQ(buffer.ReadBlock(&into, 2, 3), 3u);
  EXPECT_STREQ(target, "--abc---");
  EXPECT_EQ(buffer.ReadBlock(&into, 0, 0xFFFFFFFF), 0u);  // the rest is no block
}

}  // namespace
}  // namespace vsm
