#include "support/process_memory.h"

#include <vector>

#include "gtest/gtest.h"

namespace vsm {
namespace {

TEST(ProcessMemoryTest, ResidentSetCountsBytesAndGrowsWithTouchedMemory) {
  uint64_t before = GetResidentSetBytes();
  EXPECT_EQ(before % 1024, 0u);
  std::vector<char> block(64 << 20, 1);
  EXPECT_GE(GetResidentSetBytes(), before + block.size() / 2);
}

}  // namespace
}  // namespace vsm
