#include "support/random_id.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

namespace vsm {
namespace {

TEST(RandomIdTest, TwoPaddedLowerCaseDigitsPerByte) {
  std::string text = GenerateRandomHexString(4096);
  ASSERT_EQ(8192u, text.size());
  EXPECT_EQ(std::string::npos, text.find_first_not_of("0123456789abcdef"));
  std::set<std::string> seen;
  for (size_t i = 0; i < text.size(); i += 2) seen.insert(text.substr(i, 2));
  EXPECT_GT(seen.size(), 240u);  // the whole range, small values padded
  EXPECT_EQ("", GenerateRandomHexString(0));
}

TEST(RandomIdTest, GetRandomIdFillsAZeroedBuffer) {
  char first[1024], second[1024];
  std::memset(first, 'x', sizeof(first));
  GetRandomId(first);
  GetRandomId(second);
  EXPECT_EQ(32u, std::strlen(first));
  EXPECT_EQ(std::string(1024 - 32, '\0'), std::string(first + 32, 1024 - 32));
  EXPECT_STRNE(first, second);
}

}  // namespace
}  // namespace vsm
