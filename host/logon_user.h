// The user and the display behind a browser's loopback connection, found through shell tools.
//
// A page talks to the service over a loopback TCP connection. The peer's port leads, through
// netstat, to the browser's process; that process's environment holds the display of the
// user's session, and /proc/<pid>/status its real uid. Everything goes through popen() and
// system() on the fixed commands below, formatted with FormatShellCommand (256 bytes; an
// argument too long for that ends the process). Names and paths go in unquoted.
//
// Nothing reports a failure: a query that finds nothing gives an empty text or a pid of 0 and
// the caller goes on. Thread-safe; no state of its own.
//
// No export of the module reaches this code.
#ifndef VSM_HOST_LOGON_USER_H_
#define VSM_HOST_LOGON_USER_H_

#include <sys/types.h>

#include <cstdint>
#include <string>

namespace vsm {

// The process behind a local port ("%d": the port). The service's own process is left out.
constexpr char kPortProcessCommand[] =
    "netstat -aopn | grep -v VeldoraneS | grep 127.0.0.1:%d | awk -F' ' {'print $7'}";
// A process's environment, one variable per line ("%d": the pid).
constexpr char kProcessEnvironmentCommand[] = "sed 's/\\x0/\\n/g' /proc/%d/environ";
// Remembers the display for the service's other programs ("%s": the display).
constexpr char kSaveDisplayCommand[] = "echo %s > /opt/veldorane/VeldoraneService/DISPLAY.log";
// Makes a process's status file readable ("%d": the pid).
constexpr char kOpenProcessStatusCommand[] = "chmod 777 /proc/%d/status";
// The real uid of a process ("%d": the pid).
constexpr char kProcessUidCommand[] = "cat /proc/%d/status | grep Uid | awk -F' ' {'print $2'}";
// The uid of a user name ("%s": the name).
constexpr char kUserUidCommand[] = "id -u %s";
// Opens a path to everybody ("%s": the path).
constexpr char kOpenToAllCommand[] = "chmod 777 %s";

// The number at the front of a netstat program field such as "1234/prog\n". The field is cut
// at its length minus 3, counted from the first digit, before the number is read. That cut
// assumes a name of one character or more and a line feed behind the name; without them the
// number deliberately loses its last digits, as it always has. 0 for a text without a digit.
long ParsePidField(const char* text);

// Finds the peer's process of `socket` and, when its environment names DISPLAY, writes that
// value to the display file with kSaveDisplayCommand. Returns quietly at the first failure.
void SaveDisplayOfPeer(uint32_t socket);

// The real uid of the peer's process of `socket`, as text; empty when the socket has no peer.
std::string GetPeerUid(uint32_t socket);

// Looks `name` up in the user database. 0 with *uid and *gid filled, or -1 for a null
// argument, an unknown user or a failed lookup (logged as "name_to_uid failed.").
int name_to_uid(const char* name, uid_t* uid, gid_t* gid);

// Runs kOpenToAllCommand on `path`. A null path does nothing.
void OpenToAll(const char* path);

}  // namespace vsm

#endif  // VSM_HOST_LOGON_USER_H_
