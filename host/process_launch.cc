#include "host/process_launch.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "config/log_writer.h"
#include "config/path_table.h"
#include "host/environment_lines.h"
#include "host/logon_user.h"
#include "host/shell_command.h"
#include "support/checked_format.h"

namespace vsm {

namespace {

// The system's login record: 400 bytes, the user name at byte 44 (32 bytes) and the host,
// which holds the display of a graphical login, at byte 76 (256 bytes). Neither field needs a
// terminating zero when it is full.
constexpr size_t kLoginRecordSize = 400;
constexpr size_t kLoginUserOffset = 44;
constexpr size_t kLoginUserSize = 32;
constexpr size_t kLoginHostOffset = 76;
constexpr size_t kLoginHostSize = 256;

std::string RecordField(const char* record, size_t offset, size_t size) {
  return std::string(record + offset, strnlen(record + offset, size));
}

// Sets each NAME=VALUE line of `path`; true when one of the names was DISPLAY.
bool ApplyEnvironmentFile(const std::string& path) {
  FILE* file = std::fopen(path.c_str(), "r");
  if (file == nullptr) return false;
  bool sawDisplay = false;
  ForEachEnvironmentLine(file, [&sawDisplay](const char* name, const char* value) {
    setenv(name, value, 1);
    if (std::strcmp(name, "DISPLAY") == 0) sawDisplay = true;
    return true;
  });
  std::fclose(file);
  return sawDisplay;
}

int RunLaunchChild(const char* path, const char* commandLine, const char* extraArgument,
                   uint32_t socket) {
  SaveDisplayOfPeer(socket);
  std::string uid = GetPeerUid(socket);
  // The environment file: "%s%s.log" of the root directory and the uid.
  PrepareLaunchEnvironment(GetRootDirectory() + uid + ".log", kLoginRecordsFile, uid);
  // Deliberately unchecked: a host that isn't root can't switch, and the program then simply
  // runs as the host's user.
  int ignored = setuid(static_cast<uid_t>(std::strtol(uid.c_str(), nullptr, 10)));
  (void)ignored;

  char verboseText[16];
  CheckedFormat(verboseText, sizeof(verboseText), "%d", IsVerboseLogging() ? 1 : 0);
  std::vector<const char*> arguments =
      BuildLaunchArguments(path, commandLine, extraArgument, verboseText);
  execv(path, const_cast<char* const*>(arguments.data()));
  LogDebug("CreateProcessAsCurrentLogonUser fork child process end\n");
  LogError("execve failed: Something wrong with child !");
  return -1;
}

}  // namespace

int CreateProcessAsCurrentLogonUser(const char* path, const char* commandLine,
                                    void* processAttributes, void* threadAttributes,
                                    int inheritHandles, uint32_t creationFlags,
                                    const char* extraArgument, const char* currentDirectory,
                                    void* startupInfo, void* processInformation, uint32_t socket) {
  pid_t child = fork();
  if (child > 0) {
    LogDebug("CreateProcessAsCurrentLogonUser return: %d", static_cast<int>(child));
    return 1;
  }
  if (child < 0) {
    // The misspelling is deliberate: the line stands as existing logs have it.
    LogError("fork() fialed(%d)", static_cast<int>(child));
    return 0;
  }
  return RunLaunchChild(path, commandLine, extraArgument, socket);
}

void PrepareLaunchEnvironment(const std::string& environmentFile, const char* loginRecordsFile,
                              const std::string& uid) {
  if (ApplyEnvironmentFile(environmentFile)) return;
  SetDisplayFromLoginRecords(loginRecordsFile, uid);
}

void SetDisplayFromLoginRecords(const char* loginRecordsFile, const std::string& uid) {
  FILE* file = loginRecordsFile != nullptr ? std::fopen(loginRecordsFile, "rb") : nullptr;
  if (file == nullptr) {
    setenv("DISPLAY", ":0", 1);
    return;
  }
  bool found = false;
  char record[kLoginRecordSize];
  while (!found && std::fread(record, sizeof(record), 1, file) == 1) {
    std::string user = RecordField(record, kLoginUserOffset, kLoginUserSize);
    std::string host = RecordField(record, kLoginHostOffset, kLoginHostSize);
    std::string recordUid =
        ReadCommandLine(FormatShellCommand(kUserUidCommand, user.c_str()).c_str());
    DropLastCharacter(&recordUid);
    if (recordUid == uid && !host.empty()) {
      setenv("DISPLAY", host.c_str(), 1);
      found = true;
    }
  }
  std::fclose(file);
  if (!found) setenv("DISPLAY", ":0", 1);
}

std::vector<const char*> BuildLaunchArguments(const char* path, const char* commandLine,
                                              const char* extraArgument, const char* verboseText) {
  return {path, "scan", commandLine, "1", "1", verboseText, extraArgument, nullptr};
}

}  // namespace vsm
