#include "config/working_paths.h"

#include <cstdlib>

#include "config/config_store.h"
#include "config/log_writer.h"
#include "config/module_identity.h"
#include "config/path_table.h"
#include "support/file_stream.h"
#include "support/file_tree.h"
#include "support/module_path.h"
#include "support/random_id.h"

namespace vsm {

namespace {

constexpr size_t kTokenBufferSize = 1024;

// Drawn once at start-up. Nothing in the module reads it back; it stays for hosts and tools that
// tell module instances apart.
char instanceToken[kTokenBufferSize];

void OpenToEverybody(const std::string& directory) {
  // The modes of "chmod 777 -R", set by system calls rather than through a shell: no folder name,
  // however long or strange, can end the start or run a command, and no link is followed. The
  // result is ignored: a folder that keeps its mode is no reason to stop the start.
  ChangeTreeMode(directory.c_str(), 0777);
}

}  // namespace

void InitializeWorkingPaths(bool adjustPermissions) {
  char programPath[kPathBufferSize] = {};
  GetModulePath(programPath);
  InitializeWorkingPathsFrom(programPath, adjustPermissions);
}

void InitializeWorkingPathsFrom(const std::string& programPath, bool adjustPermissions) {
  if (!GetRootDirectory().empty()) return;
  BuildPathTable(programPath);

  // A folder that exists and one that can't be made are treated alike.
  CreateDirectory(GetCacheDirectory().c_str());
  CreateDirectory(GetLogDirectory().c_str());
  CreateDirectory(GetUploadDirectory().c_str());

  // No line can be logged before this point: until now there is no log path.
  const std::string logDirectory = GetLogDirectory();
  SetServiceLogFile(ChooseLogPath(logDirectory, "vss.log"));
  SetUpdaterLogFile(ChooseLogPath(logDirectory, "vsu.log"));

  if (adjustPermissions) {
    OpenToEverybody(logDirectory);
    CreateDirectory(GetDumpDirectory().c_str());
    OpenToEverybody(GetDumpDirectory());
  }

  SetVerboseLogging(strtol(ReadConfigKey(kLogLevelKey).c_str(), nullptr, 10) == 14);

  std::string server = ReadConfigKey(kServerKey);
  SetCachedServer(server.empty() ? "127.0.0.1" : server);

  GetRandomId(instanceToken);

  CacheStartupSettings();

  // Written only when the configuration file already turns Debug on.
  const uint32_t mode = GetWorkMode();
  LogDebug(
      "Version info:%s, %s---%s, \r\n\t\tis64:%d, isScanning=%d, workMode=%d, "
      "isQPTActiveX=%d\r\n",
      ModuleDisplayName.c_str(), kBuildBanner, kModuleVersion, 1, IsScanning() ? 1 : 0,
      static_cast<int>(mode), mode == 4 ? 1 : 0);
}

const char* GetInstanceToken() { return instanceToken; }

int RemoveCacheDirectory() { return RemoveTree(GetCacheDirectory().c_str()); }

}  // namespace vsm
