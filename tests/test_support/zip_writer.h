// Zip archives for tests, written by the zip half of the zip library (the module only reads).
#ifndef VSM_TESTS_TEST_SUPPORT_ZIP_WRITER_H_
#define VSM_TESTS_TEST_SUPPORT_ZIP_WRITER_H_

#include <string>
#include <vector>

namespace vsm::testing {

struct ZipEntry {
  std::string name;  // a name ending in '/' is a folder entry
  std::string data;
  int level = 6;  // 0 stores, 1..9 deflate
  // Year, month (1..12), day, hour, minute, second: read back as local time, in steps of 2 s.
  int date[6] = {2021, 7, 14, 9, 26, 54};
  const char* password = nullptr;  // encrypts the entry when set
};

// Writes `entries` in order into a new archive at `path`; false when the library refuses.
bool WriteZip(const std::string& path, const std::vector<ZipEntry>& entries);

}  // namespace vsm::testing

#endif  // VSM_TESTS_TEST_SUPPORT_ZIP_WRITER_H_
