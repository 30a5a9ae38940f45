#include "host/scan_files.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "config/config_store.h"
#include "config/path_table.h"
#include "host/shell_command.h"
#include "support/checked_format.h"

namespace vsm {

namespace {

// "%d" keeps the names that stored files hold for numbers above 2^31 - 1.
std::string CurrentSourceName(uint32_t n) {
  char number[16] = {};
  CheckedFormat(number, sizeof(number), "%d", static_cast<int>(n));
  return kCurrentSourceKey.name + std::string(number);
}

char* MakeScanPath(const char* suffix) {
  char pid[16] = {};
  CheckedFormat(pid, sizeof(pid), "%d", static_cast<int>(getpid()));
  std::string path = GetRootDirectory() + "linuxQPT" + pid + suffix;
  char* copy = static_cast<char*>(std::malloc(path.size() + 1));
  if (copy != nullptr) std::memcpy(copy, path.c_str(), path.size() + 1);
  return copy;
}

const char* OrEmpty(const char* text) { return text != nullptr ? text : ""; }

}  // namespace

std::string ReadCurrentSource(uint32_t n) {
  return ReadConfigKey(kCurrentSourceKey.Renamed(CurrentSourceName(n).c_str()));
}

void WriteCurrentSource(uint32_t n, const char* name) {
  WriteConfigKey(kCurrentSourceKey.Renamed(CurrentSourceName(n).c_str()), OrEmpty(name));
}

char* MakeScanPnmPath() { return MakeScanPath(".pnm"); }

char* MakeScanBmpPath() { return MakeScanPath(".bmp"); }

std::string GetPnmToBmpCommand(const char* inputPath, const char* outputPath) {
  return GetRootDirectory() + "pnm2bmp " + OrEmpty(inputPath) + " > " + OrEmpty(outputPath);
}

void ConvertPnmToBmp(const char* inputPath, const char* outputPath) {
  RunShellCommand(GetPnmToBmpCommand(inputPath, outputPath).c_str());
}

}  // namespace vsm
