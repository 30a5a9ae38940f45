#include "support/string_split.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vsm {
namespace {

using Pieces = std::vector<std::string>;

// Each text split at ',' and the pieces it must give; CountParts must agree with their number.
const struct {
  const char* text;
  Pieces pieces;
} kCases[] = {
    {"", {}},
    {"a", {"a"}},
    {",", {""}},
    {",,", {"", ""}},
    {"a,b,", {"a", "b"}},
    {"a,,b", {"a", "", "b"}},
    {"a,,b,", {"a", "", "b"}},
    {",a", {"", "a"}},
    {"a,b,,", {"a", "b", ""}},
};

TEST(StringSplitTest, EveryFormFollowsTheOneRule) {
  for (const auto& c : kCases) {
    EXPECT_EQ(c.pieces, SplitString(std::string(c.text), ',')) << c.text;
    EXPECT_EQ(c.pieces, SplitString(c.text, ',')) << c.text;
    EXPECT_EQ(static_cast<int32_t>(c.pieces.size()), CountParts(c.text, ',')) << c.text;
  }
}

TEST(StringSplitTest, NullAndEmbeddedZeros) {
  EXPECT_TRUE(SplitString(nullptr, ',').empty());
  EXPECT_EQ(0, CountParts(nullptr, ','));
  // The string form splits the whole object, zeros included.
  EXPECT_EQ((Pieces{std::string("a\0b", 3), "c"}), SplitString(std::string("a\0b,c", 5), ','));
}

}  // namespace
}  // namespace vsm
