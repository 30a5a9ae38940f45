// Temporary folders and small file helpers for tests.
//
// A TempDir is a fresh folder under $TMPDIR (or /tmp), removed with everything in it when the
// object goes. Tests that touch the path table, the configuration or the log give the module a
// folder of their own, so that test processes running side by side never share a file.
#ifndef VSM_TESTS_TEST_SUPPORT_TEMP_DIR_H_
#define VSM_TESTS_TEST_SUPPORT_TEMP_DIR_H_

#include <string>

namespace vsm::testing {

class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  // The folder, without a trailing slash.
  const std::string& path() const { return path_; }
  // path() + "/" + name.
  std::string Join(const std::string& name) const;

 private:
  std::string path_;
};

// Whole file as bytes; empty when the file can't be read.
std::string ReadFileBytes(const std::string& path);
// Replaces the file with `bytes`; returns false when it can't be written.
bool WriteFileBytes(const std::string& path, const std::string& bytes);
bool PathExists(const std::string& path);

}  // namespace vsm::testing

#endif  // VSM_TESTS_TEST_SUPPORT_TEMP_DIR_H_
