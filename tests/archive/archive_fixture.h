// What the archive tests share: a temporary folder, zips written into it, and the working
// directory put back after each test, since extraction moves it for the whole process.
#ifndef VSM_TESTS_ARCHIVE_ARCHIVE_FIXTURE_H_
#define VSM_TESTS_ARCHIVE_ARCHIVE_FIXTURE_H_

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "test_support/temp_dir.h"
#include "test_support/zip_writer.h"

namespace vsm::testing {

class ArchiveTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(getcwd(startFolder_, sizeof(startFolder_)), nullptr); }
  void TearDown() override { ASSERT_EQ(chdir(startFolder_), 0); }

  std::string Path(const std::string& name) const { return folder_.Join(name); }
  // Writes the entries into `name` below the folder and returns its path.
  std::string Zip(const std::vector<ZipEntry>& entries, const std::string& name = "test.zip") {
    EXPECT_TRUE(WriteZip(Path(name), entries)) << name;
    return Path(name);
  }
  // A fresh, empty folder below the folder.
  std::string Folder(const std::string& name) {
    EXPECT_EQ(mkdir(Path(name).c_str(), 0755), 0) << name;
    return Path(name);
  }

  TempDir folder_;

 private:
  char startFolder_[4096] = {0};
};

}  // namespace vsm::testing

#endif  // VSM_TESTS_ARCHIVE_ARCHIVE_FIXTURE_H_
