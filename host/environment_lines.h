// Reading NAME=VALUE lines of a process environment: the output of kProcessEnvironmentCommand
// (logon_user.h) and the user environment file that a launch applies (process_launch.h).
//
// Lines are read in pieces of at most kEnvironmentLineSize - 1 bytes, so a longer line comes as
// several. Each piece loses its last character, whatever it is: the writers end every line in
// a line feed, and a last line without one deliberately loses a real character, as it always
// has. A piece without '=' is skipped; the others are split at the first '='.
// Thread-safe; no state.
//
// No export of the module reaches this code.
#ifndef VSM_HOST_ENVIRONMENT_LINES_H_
#define VSM_HOST_ENVIRONMENT_LINES_H_

#include <cstdio>
#include <functional>

namespace vsm {

constexpr int kEnvironmentLineSize = 2560;

// Calls `visit` with the name and the value of each line of `stream`, in order, until it
// returns false or the stream ends. The stream stays open.
void ForEachEnvironmentLine(FILE* stream,
                            const std::function<bool(const char* name, const char* value)>& visit);

}  // namespace vsm

#endif  // VSM_HOST_ENVIRONMENT_LINES_H_
