#include "host/scan_files.h"

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "config/path_table.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

using testing::ReadFileBytes;

TEST(ScanFilesTest, CurrentSourcePerScannerNumber) {
  testing::TempDir dir;
  BuildPathTable(dir.Join("prog"));
  WriteCurrentSource(3, "X");
  WriteCurrentSource(4294967295u, "Y");
  EXPECT_EQ(ReadCurrentSource(3) + "|" + ReadCurrentSource(4), "X|");
  std::string file = ReadFileBytes(dir.Join("VSConfiguration.ini"));
  EXPECT_NE(file.find("CurrentSource-1=Y"), std::string::npos) << file;  // "%d" of the number
}

TEST(ScanFilesTest, TemporaryImagePathsAndConversion) {
  testing::TempDir dir;
  BuildPathTable(dir.Join("prog"));
  std::string root = dir.path() + "/";
  char* paths[] = {MakeScanPnmPath(), MakeScanBmpPath()};
  EXPECT_EQ(std::string(paths[0]) + "|" + paths[1], root + "linuxQPT" + std::to_string(getpid()) +
                                                        ".pnm|" + root + "linuxQPT" +
                                                        std::to_string(getpid()) + ".bmp");
  for (char* path : paths) free(path);

  EXPECT_EQ(GetPnmToBmpCommand("a.pnm", "b.bmp"), root + "pnm2bmp a.pnm > b.bmp");
  ASSERT_TRUE(testing::WriteFileBytes(root + "pnm2bmp", "#!/bin/sh\necho \"bmp of $1\"\n"));
  chmod((root + "pnm2bmp").c_str(), 0755);
  ConvertPnmToBmp((root + "a.pnm").c_str(), (root + "b.bmp").c_str());
  EXPECT_EQ(ReadFileBytes(root + "b.bmp"), "bmp of " + root + "a.pnm\n");
}

}  // namespace
}  // namespace vsm
