// Running the fixed shell commands of the host integration.
//
// The Linux side of the service learns about users, displays and certificates from ordinary
// tools (netstat, id, certutil, ...) started through the shell. The commands are texts built
// from constant formats; arguments go in unquoted, so a path with a blank breaks its command,
// which callers accept. Results of the shell are not looked at: a tool that is missing or
// fails shows only as empty output.
//
// Thread-safe; no state.
//
// No export of the module reaches this code: only the certificate, logon-user, launch and scan-file
// tools use it.
#ifndef VSM_HOST_SHELL_COMMAND_H_
#define VSM_HOST_SHELL_COMMAND_H_

#include <cstddef>
#include <string>

namespace vsm {

// The size of the buffer every formatted shell command is built in.
constexpr size_t kShellCommandSize = 256;

// printf-style formatting into a buffer of kShellCommandSize bytes through the checked
// formatter: a command that doesn't fit ends the process rather than run cut short.
std::string FormatShellCommand(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Runs `command` with system() and ignores the result. A null command does nothing.
void RunShellCommand(const char* command);

// Runs `command` with popen(), reads one line of at most kShellCommandSize - 1 bytes (line feed
// included, when it fits) and closes the stream. Empty when the command can't be started or
// writes nothing.
std::string ReadCommandLine(const char* command);

// Cuts the last character, whatever it is, as the callers do with the line feed of a tool's
// output line. An empty text stays empty.
void DropLastCharacter(std::string* text);

}  // namespace vsm

#endif  // VSM_HOST_SHELL_COMMAND_H_
