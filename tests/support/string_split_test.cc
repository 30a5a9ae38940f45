#include "support/string_split.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/tracked_heap.h"

namespace vsm {
namespace {

using Pieces = std::vector<std::string>;

TEST(StringSplitTest, EveryFormFollowsTheOneRule) {
  const struct {
    const char* text;
    Pieces pieces;
  } cases[] = {
      {"", {}},
      {",", {""}},
      {"a,b,", {"a", "b"}},
      {"a,,b", {"a", "", "b"}},
      {",a", {"", "a"}},
      {"a,b,,", {"a", "b", ""}},
      {"a,,b,", {"a", "", "b"}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.pieces, SplitString(std::string(c.text), ',')) << c.text;
    EXPECT_EQ(c.pieces, SplitString(c.text, ',')) << c.text;
    EXPECT_EQ(static_cast<int32_t>(c.pieces.size()), CountParts(c.text, ',')) << c.text;
    ArrayOfStrings array = nullptr;
    int32_t count = -1;
    ASSERT_EQ(1, SplitToArray(c.text, ',', &array, &count)) << c.text;
    EXPECT_EQ(c.pieces, Pieces(array, array + count)) << c.text;
    for (int32_t i = 0; i < count; ++i) EXPECT_EQ(c.pieces[i].size() + 1, TrackedSize(array[i]));
    FreeArray(array, count);
  }
  EXPECT_TRUE(SplitString(nullptr, ',').empty());
  EXPECT_EQ((Pieces{std::string("a\0b", 3), "c"}), SplitString(std::string("a\0b,c", 5), ','));
}

}  // namespace
}  // namespace vsm
