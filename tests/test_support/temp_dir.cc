#include "test_support/temp_dir.h"

#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace vsm::testing {

namespace fs = std::filesystem;

TempDir::TempDir() {
  const char* base = getenv("TMPDIR");
  path_ = std::string(base && *base ? base : "/tmp") + "/vsm-test-XXXXXX";
  if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
}

TempDir::~TempDir() {
  std::error_code ignored;
  // Tests may leave read-only folders behind; open them up so removal can go through.
  chmod(path_.c_str(), 0777);
  for (auto it = fs::recursive_directory_iterator(path_, ignored);
       it != fs::recursive_directory_iterator(); it.increment(ignored)) {
    if (it->is_directory(ignored)) chmod(it->path().c_str(), 0777);
  }
  fs::remove_all(path_, ignored);
}

std::string TempDir::Join(const std::string& name) const { return path_ + "/" + name; }

std::string ReadFileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

bool WriteFileBytes(const std::string& path, const std::string& bytes) {
  return static_cast<bool>(std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes);
}

bool PathExists(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0;
}

}  // namespace vsm::testing
