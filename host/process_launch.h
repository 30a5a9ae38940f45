// Starting a program in the session of the user behind a browser's connection.
//
// CreateProcessAsCurrentLogonUser keeps the shape of the process-creation call of the service's
// other platform, with the client's socket added at the end; only `path`, `commandLine`,
// `extraArgument` and `socket` are read. It forks. The parent gets 1, or 0 when fork fails. The
// child, which still runs as root:
//   1. finds the peer's display and uid (SaveDisplayOfPeer, GetPeerUid of logon_user.h);
//   2. sets the user's environment from "<root directory><uid>.log" and, unless that file named
//      DISPLAY, DISPLAY from the login records (":0" when none fits);
//   3. switches to the uid with setuid (result ignored; the group stays root's) and execs
//      `path` with path, "scan", commandLine, "1", "1", the verbose logging flag (0 or 1) and
//      extraArgument.
// An empty uid (a socket without a peer) gives uid 0, so the child then stays root. Deliberately,
// when execv fails the child returns -1 from this call and runs on in the caller's code as a
// second copy of the process: callers that can't have that check for -1 and end the process.
//
// Thread-safe in the parent, which only forks and logs. The child uses the log writer and the
// path table, whose locks another thread may have held at the moment of the fork.
//
// No export of the module reaches this code.
#ifndef VSM_HOST_PROCESS_LAUNCH_H_
#define VSM_HOST_PROCESS_LAUNCH_H_

#include <cstdint>
#include <string>
#include <vector>

namespace vsm {

// The login records the child reads.
constexpr char kLoginRecordsFile[] = "/var/run/utmp";

int CreateProcessAsCurrentLogonUser(const char* path, const char* commandLine,
                                    void* processAttributes, void* threadAttributes,
                                    int inheritHandles, uint32_t creationFlags,
                                    const char* extraArgument, const char* currentDirectory,
                                    void* startupInfo, void* processInformation, uint32_t socket);

// The child's step 2 with its files given, so that it can run outside a launch. Each line of
// `environmentFile` (at most 2559 bytes) loses its last character, whatever it is, and
// NAME=VALUE is split at the first '=' and set with setenv; a line without '=' is skipped. A
// missing file sets nothing. Unless one of the names was DISPLAY, SetDisplayFromLoginRecords
// follows with `loginRecordsFile`.
void PrepareLaunchEnvironment(const std::string& environmentFile, const char* loginRecordsFile,
                              const std::string& uid);

// Sets DISPLAY to the host field of the first record, in a file of 400-byte login records,
// whose user has the uid `uid` (asked with "id -u") and whose host field isn't empty; to ":0"
// when no record fits or the file can't be opened. A partial record at the end is not read.
void SetDisplayFromLoginRecords(const char* loginRecordsFile, const std::string& uid);

// The launched program's argument vector, null-terminated. The pointers are the arguments
// themselves (a null one ends the vector early), so they must outlive the vector.
std::vector<const char*> BuildLaunchArguments(const char* path, const char* commandLine,
                                              const char* extraArgument, const char* verboseText);

}  // namespace vsm

#endif  // VSM_HOST_PROCESS_LAUNCH_H_
