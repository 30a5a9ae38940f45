#include "host/dialog_command.h"

#include "config/path_table.h"
#include "support/checked_format.h"

namespace vsm {

namespace {

std::string DialogProgram() { return GetRootDirectory() + "quillport_dialog"; }

}  // namespace

std::string GetDialogCommandWithText(const char* text) {
  return DialogProgram() + " 1 " + (text != nullptr ? text : "");
}

std::string GetDialogCommandPlain() { return DialogProgram() + " 2"; }

std::string GetDialogCommandFull(int first, int second, const char* text) {
  char command[512] = {};
  CheckedFormat(command, sizeof(command), "%s %s %d %d \"%s\"", DialogProgram().c_str(), "3", first,
                second, text != nullptr ? text : "");
  return command;
}

}  // namespace vsm
