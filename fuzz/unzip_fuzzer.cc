// Zip extraction: the input is an archive, written to a file and extracted into a folder three
// levels down in the scratch folder. Whatever the archive holds, nothing may appear outside the
// target folder, and the process must come through; the folder is emptied after each run.
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "fuzz_support.h"
#include "support/unzipper.h"

namespace {

namespace fs = std::filesystem;
using vsm::fuzz::FuzzCheck;

struct Paths {
  std::string archive;
  std::string target;
};

const Paths& GetPaths() {
  static const Paths paths = [] {
    const std::string root = vsm::fuzz::ScratchFolder();
    Paths made{root + "/archive.zip", root + "/a/b/target"};
    fs::create_directories(made.target);
    return made;
  }();
  return paths;
}

// Everything in the scratch folder other than the archive, the target and the folders that
// lead to it.
std::string FirstStrayEntry() {
  const std::string root = vsm::fuzz::ScratchFolder();
  const fs::path target(GetPaths().target);
  std::error_code error;
  for (auto it = fs::recursive_directory_iterator(root, error);
       it != fs::recursive_directory_iterator(); it.increment(error)) {
    const fs::path& path = it->path();
    if (path == target) {
      it.disable_recursion_pending();
      continue;
    }
    if (path == GetPaths().archive || path == root + "/a" || path == root + "/a/b") continue;
    return path.string();
  }
  return std::string();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const Paths& paths = GetPaths();
  std::ofstream(paths.archive, std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  vsm::CUnzipper unzipper;
  unzipper.Extract(paths.archive.c_str(), paths.target.c_str());
  const std::string stray = FirstStrayEntry();
  FuzzCheck(stray.empty(), "nothing is written outside the target folder", stray);
  vsm::fuzz::EmptyFolder(paths.target);
  return 0;
}
