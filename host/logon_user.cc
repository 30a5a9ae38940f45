#include "host/logon_user.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <pwd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "config/log_writer.h"
#include "host/environment_lines.h"
#include "host/shell_command.h"

namespace vsm {

namespace {

// The peer's port of `socket` in host byte order; false when the socket has no peer.
bool GetPeerPort(uint32_t socket, int* port) {
  sockaddr_storage address = {};
  socklen_t length = sizeof(address);
  if (getpeername(static_cast<int>(socket), reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    return false;
  }
  // The port stands at the same place for IPv4 and IPv6 peers.
  *port = ntohs(reinterpret_cast<const sockaddr_in*>(&address)->sin_port);
  return true;
}

// The browser's process: on a loopback connection the peer's port is the browser's own.
long FindPortProcess(int port) {
  std::string command = FormatShellCommand(kPortProcessCommand, port);
  return ParsePidField(ReadCommandLine(command.c_str()).c_str());
}

}  // namespace

long ParsePidField(const char* text) {
  if (text == nullptr) return 0;
  std::string field(text);
  size_t first = field.find_first_of("0123456789");
  if (first == std::string::npos) return 0;
  // Meant to cut the name and its line feed off; strtol stops at the '/' anyway, except for a
  // field without a name or a line feed, whose number is cut short. Callers have always got this.
  long cut = static_cast<long>(field.size()) - 3;
  if (cut >= 0 && first + cut < field.size()) field[first + cut] = '\0';
  return std::strtol(field.c_str() + first, nullptr, 10);
}

void SaveDisplayOfPeer(uint32_t socket) {
  int port = 0;
  if (!GetPeerPort(socket, &port)) return;
  long pid = FindPortProcess(port);
  // Deliberately run a second time with its output unread: the sequence of shell runs stays
  // as deployed services have always made it.
  RunShellCommand(FormatShellCommand(kPortProcessCommand, port).c_str());

  std::string command = FormatShellCommand(kProcessEnvironmentCommand, static_cast<int>(pid));
  FILE* stream = popen(command.c_str(), "r");
  if (stream == nullptr) return;
  ForEachEnvironmentLine(stream, [](const char* name, const char* value) {
    if (std::strcmp(name, "DISPLAY") != 0) return true;
    RunShellCommand(FormatShellCommand(kSaveDisplayCommand, value).c_str());
    return false;
  });
  pclose(stream);
}

std::string GetPeerUid(uint32_t socket) {
  int port = 0;
  if (!GetPeerPort(socket, &port)) return std::string();
  int pid = static_cast<int>(FindPortProcess(port));
  // Opened to all first, so that the read below works whichever user the shell runs as.
  RunShellCommand(FormatShellCommand(kOpenProcessStatusCommand, pid).c_str());
  std::string uid = ReadCommandLine(FormatShellCommand(kProcessUidCommand, pid).c_str());
  DropLastCharacter(&uid);
  return uid;
}

int name_to_uid(const char* name, uid_t* uid, gid_t* gid) {
  if (name == nullptr || uid == nullptr || gid == nullptr) return -1;
  long size = sysconf(_SC_GETPW_R_SIZE_MAX);
  if (size == -1) return -1;
  std::vector<char> buffer(static_cast<size_t>(size));
  passwd entry = {};
  passwd* found = nullptr;
  int error = getpwnam_r(name, &entry, buffer.data(), buffer.size(), &found);
  if (error != 0 || found == nullptr) {
    LogError("name_to_uid failed.");
    return -1;
  }
  *uid = entry.pw_uid;
  *gid = entry.pw_gid;
  return 0;
}

void OpenToAll(const char* path) {
  if (path == nullptr) return;
  RunShellCommand(FormatShellCommand(kOpenToAllCommand, path).c_str());
}

}  // namespace vsm
