#include "support/random_id.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

namespace vsm {
namespace {

bool IsLowerHex(const std::string& text) {
  return text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

TEST(RandomIdTest, TwoLowerCaseDigitsPerByte) {
  for (int32_t count : {0, 1, 3, 16}) {
    std::string text = GenerateRandomHexString(count);
    EXPECT_EQ(static_cast<size_t>(2 * count), text.size());
    EXPECT_TRUE(IsLowerHex(text)) << text;
  }
  EXPECT_EQ("", GenerateRandomHexString(-1));
}

TEST(RandomIdTest, EveryByteValueCanAppear) {
  // 4096 bytes cover small values (which need the padding zero) and the whole range.
  std::string text = GenerateRandomHexString(4096);
  std::set<std::string> seen;
  for (size_t i = 0; i < text.size(); i += 2) seen.insert(text.substr(i, 2));
  EXPECT_GT(seen.size(), 240u);
  EXPECT_TRUE(seen.count("00") + seen.count("01") + seen.count("0a") > 0);
}

TEST(RandomIdTest, GetRandomIdFillsAZeroedBuffer) {
  char first[1024], second[1024];
  std::memset(first, 'x', sizeof(first));
  GetRandomId(first);
  GetRandomId(second);
  EXPECT_EQ(32u, std::strlen(first));
  EXPECT_TRUE(IsLowerHex(first));
  for (size_t i = 32; i < sizeof(first); ++i) ASSERT_EQ('\0', first[i]) << i;
  EXPECT_STRNE(first, second);
}

}  // namespace
}  // namespace vsm
