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

using namespace std::string_literals;

uint32_t PlainMask(const std::string& file) {
  char value[64] = {};
  GetProfileString("VS", "LogLevel", "1", value, sizeof(value), file.c_str());
  return value[0] == '\0' ? 1 : static_cast<uint32_t>(strtol(value, nullptr, 10));
}

TEST(LogMaskTest, ReadsAsAPlainProfileReadOfTheFileDoes) {
  testing::TempDir dir;
  BuildPathTable(dir.Join("prog"));
  SetVerboseLogging(false);
  const std::string config = dir.Join("VSConfiguration.ini"), zeros(61, '0'), v = "[VS]\nLogLevel=";
  // The file ("none": no file) and the mask it gives.
  const std::pair<std::string, uint32_t> rows[] = {
      {"none", 1},
      {v + "\n", 1},  // empty counts as absent
      {"[ vs ]\r\n LOGLEVEL\t= 6 \r\n", 6},
      {"[VS] \nLogLevel=14\n", 1},  // in the section "VS]"
      {v + zeros + "6", 6},         // the 62nd character counts
      {v + zeros + "06", 0},        // the 63rd does not
      {v + "4\0002"s, 4},
      {v + "\0002"s, 1}};
  for (const auto& [file, mask] : rows) {
    std::remove(config.c_str());
    if (file != "none") {
      ASSERT_TRUE(testing::WriteFileBytes(config, file));
    }
    EXPECT_EQ(GetLogMask(), mask) << ::testing::PrintToString(file);
    EXPECT_EQ(GetLogMask(), PlainMask(config)) << ::testing::PrintToString(file);
  }
}

}  // namespace
}  // namespace vsm
