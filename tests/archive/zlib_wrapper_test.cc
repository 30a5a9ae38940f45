// CZlibWrapper against zlib's own one-call helpers: the same bytes out, the exact capacity
// needed, and null without a leak on every way of failing.
#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "support/zlib_wrapper.h"

namespace vsm {
namespace {

std::string Bytes(const uint8_t* block, uint64_t size) {
  std::string bytes(reinterpret_cast<const char*>(block), size);
  std::free(const_cast<uint8_t*>(block));
  return bytes;
}

const uint8_t* Data(const std::string& text) {
  return reinterpret_cast<const uint8_t*>(text.data());
}

std::string Deflated(const std::string& data, int level) {
  uLongf size = compressBound(data.size());
  std::string out(size, '\0');
  EXPECT_EQ(compress2(reinterpret_cast<Bytef*>(out.data()), &size, Data(data), data.size(), level),
            Z_OK);
  out.resize(size);
  return out;
}

std::vector<std::string> Samples() {
  std::mt19937 random(7);
  std::string noise(70000, '\0');
  for (char& c : noise) c = static_cast<char>(random());
  std::string text;
  while (text.size() < 200000) text += "The quick brown fox " + std::to_string(text.size());
  return {"", "a", std::string(1 << 20, '\0'), text, noise, std::string(1, '\xff')};
}

TEST(ZlibWrapper, RoundTripsWithZlibsBytesAndExactCapacity) {
  CZlibWrapper wrapper;
  for (const std::string& data : Samples()) {
    for (int level : {-1, 0, 1, 6, 9}) {
      SCOPED_TRACE("size " + std::to_string(data.size()) + " level " + std::to_string(level));
      uint64_t size = 99;
      uint8_t* packed = wrapper.Compress(Data(data), data.size(), level, &size);
      ASSERT_NE(packed, nullptr);
      const std::string stream = Bytes(packed, size);
      EXPECT_EQ(stream, Deflated(data, level));

      // Exactly the inflated length is enough and more changes nothing; one byte less fails.
      for (uint64_t capacity : {uint64_t{data.size()}, uint64_t{data.size() + 100}}) {
        uint8_t* plain = wrapper.Uncompress(Data(stream), stream.size(), capacity, &size);
        ASSERT_NE(plain, nullptr);
        EXPECT_EQ(size, data.size());
        EXPECT_EQ(Bytes(plain, size), data);
      }
      if (!data.empty()) {
        size = 99;
        EXPECT_EQ(wrapper.Uncompress(Data(stream), stream.size(), data.size() - 1, &size), nullptr);
        EXPECT_EQ(size, 0u);
      }
    }
  }
}

TEST(ZlibWrapper, FailuresGiveNullAndSizeZero) {
  CZlibWrapper wrapper;
  const std::string stream = Deflated("some text to inflate again", 6);
  std::string damaged = stream;
  damaged[4] ^= 0x55;
  std::string badCheck = stream;
  badCheck.back() ^= 1;
  const std::string plain = "plain text";
  struct Case {
    const char* name;
    const uint8_t* source;
    int64_t size;
    uint64_t capacity;
  } cases[] = {
      {"empty input", Data(stream), 0, 100},
      {"null source", nullptr, 10, 100},
      {"negative size", Data(stream), -1, 100},
      {"size past 32 bits", Data(stream), int64_t{1} << 32, 100},
      {"capacity past 32 bits", Data(stream), int64_t(stream.size()), uint64_t{1} << 32},
      {"truncated", Data(stream), int64_t(stream.size()) - 1, 100},
      {"damaged", Data(damaged), int64_t(damaged.size()), 100},
      {"bad checksum", Data(badCheck), int64_t(badCheck.size()), 100},
      {"not zlib", Data(plain), int64_t(plain.size()), 100},
      {"raw deflate", Data(stream) + 2, int64_t(stream.size()) - 6, 100},
  };
  for (const Case& c : cases) {
    uint64_t size = 99;
    EXPECT_EQ(wrapper.Uncompress(c.source, c.size, c.capacity, &size), nullptr) << c.name;
    EXPECT_EQ(size, 0u) << c.name;
    EXPECT_EQ(wrapper.Uncompress(c.source, c.size, c.capacity, nullptr), nullptr) << c.name;
  }
  for (int level : {10, -2, 100}) {
    uint64_t size = 99;
    EXPECT_EQ(wrapper.Compress(Data(stream), stream.size(), level, &size), nullptr) << level;
    EXPECT_EQ(size, 0u);
  }
  EXPECT_EQ(wrapper.Compress(nullptr, 5, 6, nullptr), nullptr);
  EXPECT_EQ(wrapper.Compress(Data(stream), uint64_t{1} << 32, 6, nullptr), nullptr);
  // Without a size pointer the block still comes back.
  uint8_t* packed = wrapper.Compress(nullptr, 0, 6, nullptr);
  ASSERT_NE(packed, nullptr);
  EXPECT_EQ(Bytes(packed, 8), Deflated("", 6));
}

}  // namespace
}  // namespace vsm
