#include "support/process_memory.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace vsm {

uint64_t GetResidentSetBytes() {
  FILE* status = std::fopen("/proc/self/status", "r");
  if (status == nullptr) return 0;
  uint64_t bytes = 0;
  char line[128];
  while (std::fgets(line, sizeof(line), status) != nullptr) {
    if (std::strncmp(line, "VmRSS:", 6) != 0) continue;
    const char* digits = line + 6;
    while (*digits != '\0' && !std::isdigit(static_cast<unsigned char>(*digits))) ++digits;
    bytes = std::strtoull(digits, nullptr, 10) * 1024;
    break;
  }
  std::fclose(status);
  return bytes;
}

}  // namespace vsm
