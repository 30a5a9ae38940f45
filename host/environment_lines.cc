#include "host/environment_lines.h"

#include <cstring>

namespace vsm {

void ForEachEnvironmentLine(FILE* stream,
                            const std::function<bool(const char* name, const char* value)>& visit) {
  char line[kEnvironmentLineSize];
  while (std::fgets(line, sizeof(line), stream) != nullptr) {
    size_t length = std::strlen(line);
    if (length > 0) line[length - 1] = '\0';
    char* equals = std::strchr(line, '=');
    if (equals == nullptr) continue;
    *equals = '\0';
    if (!visit(line, equals + 1)) return;
  }
}

}  // namespace vsm
