// The log mask, read from the configuration file at each call, against a plain profile read of
// the same file into the 64-byte buffer that decides how much of the value counts.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "config/log_writer.h"
#include "config/path_table.h"
#include "support/profile_string.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

uint32_t PlainMask(const std::string& file) {
  char value[64] = {};
  GetProfileString("VS", "LogLevel", "1", value, sizeof(value), file.c_str());
  return value[0] == '\0' ? 1 : static_cast<uint32_t>(strtol(value, nullptr, 10));
}

TEST(LogMaskTest, ReadsAsAPlainProfileReadOfTheFileDoes) {
  testing::TempDir dir;
  BuildPathTable(dir.Join("prog"));
  SetVerboseLogging(false);
  const std::string config = dir.Join("VSConfiguration.ini");
  const std::string zeros(61, '0');
  // The file (null: none) and the mask it gives.
  const struct {
    const char* name;
    const char* head;
    std::string rest;
    uint32_t mask;
  } rows[] = {
      {"NoFile", nullptr, "", 1},
      {"Empty", "", "", 1},
      {"EmptyValue", "[VS]\nLogLevel=\n", "", 1},
      {"Words", "[VS]\nLogLevel=abc\n", "", 0},
      {"CaseBlindWithBlanksAndCrLf", "[ vs ]\r\n LOGLEVEL\t= 6 \r\n", "", 6},
      {"LastAssignmentInAnyMergedSection", "[VS]\nLogLevel=8\n[Other]\nLogLevel=2\n[vs]\n",
       "loglevel=12", 12},
      {"KeyOutsideAnySection", "LogLevel=14\n[VS]\n", "", 1},
      {"BlankAfterBracketOpensAnotherSection", "[VS] \nLogLevel=14\n", "", 1},
      {"SixtySecondCharacterCounts", "[VS]\nLogLevel=", zeros + "6", 6},
      {"SixtyThirdCharacterIsCut", "[VS]\nLogLevel=", zeros + "06", 0},
      {"NulEndsTheValue", "[VS]\nLogLevel=",
       std::string("4\0"
                   "2",
                   3),
       4},
      {"LeadingNulReadsAsEmpty", "[VS]\nLogLevel=",
       std::string("\0"
                   "2",
                   2),
       1},
      {"Negative", "[VS]\nLogLevel=-1", "", 0xFFFFFFFF},
  };
  for (const auto& row : rows) {
    std::remove(config.c_str());
    if (row.head != nullptr) {
      ASSERT_TRUE(testing::WriteFileBytes(config, row.head + row.rest));
    }
    EXPECT_EQ(GetLogMask(), row.mask) << row.name;
    EXPECT_EQ(GetLogMask(), PlainMask(config)) << row.name;
  }
}

}  // namespace
}  // namespace vsm
