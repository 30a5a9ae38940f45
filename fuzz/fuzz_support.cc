#include "fuzz_support.h"

#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <system_error>

namespace vsm::fuzz {

namespace {

namespace fs = std::filesystem;

class Folder {
 public:
  Folder() {
    // In memory where the machine has it: targets write files on every run, and a file system
    // on disk turns each rewrite into a flush.
    const char* base = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : getenv("TMPDIR");
    path_ = std::string(base && *base ? base : "/tmp") + "/vsm-fuzz-XXXXXX";
    if (mkdtemp(path_.data()) == nullptr) {
      std::perror("mkdtemp");
      abort();
    }
  }
  ~Folder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace

const std::string& ScratchFolder() {
  static const Folder folder;
  return folder.path();
}

void EmptyFolder(const std::string& folder) {
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    fs::remove_all(entry.path(), error);
  }
}

std::vector<std::string> SplitFields(const uint8_t* data, size_t size, size_t count) {
  std::vector<std::string> fields;
  const char* text = reinterpret_cast<const char*>(data);
  for (size_t start = 0; start <= size && fields.size() < count;) {
    size_t end = start;
    if (fields.size() + 1 < count) {
      while (end < size && text[end] != '\0') ++end;
    } else {
      end = size;
    }
    fields.emplace_back(text + start, end - start);
    start = end + 1;
  }
  return fields;
}

void FuzzCheck(bool holds, const char* what, const std::string& detail) {
  if (holds) return;
  std::fprintf(stderr, "broken: %s\n%s\n", what, detail.c_str());
  abort();
}

}  // namespace vsm::fuzz
