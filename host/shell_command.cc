#include "host/shell_command.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "support/checked_format.h"

namespace vsm {

std::string FormatShellCommand(const char* format, ...) {
  char buffer[kShellCommandSize] = {};
  va_list arguments;
  va_start(arguments, format);
  CheckedFormatV(buffer, sizeof(buffer), format, arguments);
  va_end(arguments);
  return buffer;
}

void RunShellCommand(const char* command) {
  if (command == nullptr) return;
  int ignored = std::system(command);
  (void)ignored;
}

std::string ReadCommandLine(const char* command) {
  if (command == nullptr) return std::string();
  FILE* stream = popen(command, "r");
  if (stream == nullptr) return std::string();
  char line[kShellCommandSize] = {};
  if (std::fgets(line, sizeof(line), stream) == nullptr) line[0] = '\0';
  pclose(stream);
  return line;
}

void DropLastCharacter(std::string* text) {
  if (!text->empty()) text->pop_back();
}

}  // namespace vsm
