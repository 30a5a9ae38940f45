// Command lines of the dialog helper, the program "quillport_dialog" in the root directory that
// shows messages in the user's session.
//
// The texts go into the command lines as they are: the first form doesn't quote its text, so a
// caller's blanks split it into several arguments. Thread-safe; no state.
//
// No export of the module reaches this code.
#ifndef VSM_HOST_DIALOG_COMMAND_H_
#define VSM_HOST_DIALOG_COMMAND_H_

#include <string>

namespace vsm {

// "<root>quillport_dialog 1 <text>". A null text counts as empty.
std::string GetDialogCommandWithText(const char* text);
// "<root>quillport_dialog 2".
std::string GetDialogCommandPlain();
// "<root>quillport_dialog 3 <first> <second> \"<text>\"", formatted with the checked formatter
// into 512 bytes: a longer command ends the process. A null text counts as empty.
std::string GetDialogCommandFull(int first, int second, const char* text);

}  // namespace vsm

#endif  // VSM_HOST_DIALOG_COMMAND_H_
