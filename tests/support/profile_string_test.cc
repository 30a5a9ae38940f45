#include "support/profile_string.h"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <string>

#include "test_support/temp_dir.h"

namespace vsm {
namespace {

using testing::ReadFileBytes;
using testing::TempDir;
using testing::WriteFileBytes;

TEST(ProfileStringTest, CopyIsTwoShortAndResultIsFullLength) {
  TempDir dir;
  std::string file = dir.Join("c.ini");
  ASSERT_TRUE(WriteFileBytes(file, "[VS]\nKey=abcdefghijklmnopqrst\n"));
  char output[16];
  memset(output, 'z', sizeof(output));
  EXPECT_EQ(GetProfileString("vs", "KEY", "", output, 8, file.c_str()), 20);
  EXPECT_EQ(std::string(output, 8), std::string("abcdef\0z", 8));
}

TEST(ProfileStringTest, MissingFileAndNullsGiveTheDefault) {
  TempDir dir;
  std::string missing = dir.Join("none.ini");
  char output[64] = {};
  EXPECT_EQ(GetProfileString("VS", "Key", "fallback", output, 64, missing.c_str()), 8);
  EXPECT_STREQ(output, "fallback");
  EXPECT_EQ(GetProfileString("VS", "Key", nullptr, output, 64, dir.path().c_str()), 0);
  EXPECT_STREQ(output, "");
  EXPECT_EQ(GetProfileString(nullptr, nullptr, "d", output, 1, nullptr), 1);
  EXPECT_STREQ(output, "");
  EXPECT_EQ(GetProfileString("VS", "Key", "d", nullptr, 64, missing.c_str()), 1);
  EXPECT_EQ(GetProfileString("VS", "Key", "d", output, 0, missing.c_str()), 1);
}

TEST(ProfileStringTest, WriteCreatesFileAndKeepsOtherKeys) {
  TempDir dir;
  std::string file = dir.Join("new.ini");
  std::string longValue(3000, 'v');
  EXPECT_EQ(WriteProfileString("VS", "Port", "1", file.c_str()), 1);
  EXPECT_EQ(WriteProfileString("VS", "Long", longValue.c_str(), file.c_str()), 1);
  EXPECT_EQ(WriteProfileString("user", "ExitFlag", "TRUE", file.c_str()), 1);
  EXPECT_EQ(ReadFileBytes(file), "[user]\nExitFlag=TRUE\n[VS]\nLong=" + longValue + "\nPort=1\n");
  char output[4096] = {};
  EXPECT_EQ(GetProfileString("VS", "Long", "", output, sizeof(output), file.c_str()), 3000);
  EXPECT_EQ(output, longValue);
  // A folder can't be written; the call still gives 1.
  EXPECT_EQ(WriteProfileString("VS", "Port", "2", dir.path().c_str()), 1);
}

TEST(ProfileStringTest, WriteWithNullArgumentThrowsBeforeTouchingFile) {
  TempDir dir;
  std::string file = dir.Join("c.ini");
  ASSERT_TRUE(WriteFileBytes(file, "[VS]\nPort=1\n"));
  const char* f = file.c_str();
  EXPECT_THROW(WriteProfileString(nullptr, "k", "v", f), std::logic_error);
  EXPECT_THROW(WriteProfileString("VS", nullptr, "v", f), std::logic_error);
  EXPECT_THROW(WriteProfileString("VS", "k", nullptr, f), std::logic_error);
  EXPECT_THROW(WriteProfileString("VS", "k", "v", nullptr), std::logic_error);
  EXPECT_EQ(ReadFileBytes(file), "[VS]\nPort=1\n");
}

}  // namespace
}  // namespace vsm
