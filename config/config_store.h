// The configuration store: every setting of the module, in three ini files beside the host's
// program file (names from the path table).
//
//   VSConfiguration.ini  settings of the service and the port registry (default section "VS")
//   service.ini          facts about the installed service (section "VS")
//   user_config.ini      per-user values, one section per user
//
// Each read parses the whole file and each write loads, changes and saves it, so a change by an
// outside program is seen at the next read. All access goes through `configLock`, one
// process-wide re-entrant CRWLock that the log writer and the port registry share. Booleans are
// the words "TRUE" and "FALSE"; a read is true only for "TRUE" ignoring case. An empty value
// counts as absent. A few values are cached at start-up and read afterwards without a lock.
// All functions are thread-safe.
#ifndef VSM_CONFIG_CONFIG_STORE_H_
#define VSM_CONFIG_CONFIG_STORE_H_

#include <string>

#include "support/rw_lock.h"

namespace vsm {

// The lock of all three files, the log file and the port registry.
CRWLock& GetConfigLock();

// The value of `key` in `section` (null: "VS") of `file`, or `defaultValue` (null: "") when it
// is missing or empty. A longer value comes back cut to 2046 characters.
std::string ReadConfigValue(const char* key, const char* defaultValue, const char* section,
                            const std::string& file);
// The same on the configuration file.
std::string ReadDefaultConfigValue(const char* key, const char* defaultValue,
                                   const char* section);
// A boolean of the configuration file's section "VS"; `defaultValue` is "TRUE" or "FALSE".
bool ReadConfigFlag(const char* key, const char* defaultValue);
void WriteConfigValue(const char* key, const char* value, const char* section,
                      const std::string& file);
void WriteDefaultConfigValue(const char* key, const char* value, const char* section);
// Writes "%d" of `number` to the configuration file.
void WriteConfigNumber(const char* key, int number, const char* section);

// service.ini.
std::string ReadServiceVersion();  // ServiceVersion, default "16.2"
bool IsSingleUser();               // SingleUser, default FALSE
bool IsUserServiceMode();          // ServiceMode equal to "user" ignoring case
std::string GetServiceName();      // the cached ServiceName
void SetServiceName(const std::string& name);

// ExitFlag in the user's section of user_config.ini.
bool ReadExitFlag(const std::string& user);
void WriteExitFlag(const std::string& user, bool flag);

// Write the access keys as "TRUE"/"FALSE"; the cached values change at the next start.
void SetScannerAccess(bool enabled);
void SetFileAccess(bool enabled);
void SetWebcamAccess(bool enabled);
// OnlyLoadVeldoraneSignedModule, read at each call.
bool OnlyLoadSignedModules();

// Whether the decimal text of `number` occurs anywhere in the file; false when it can't be read.
bool FileContainsNumber(const std::string& path, int number);

// Values cached by start-up (CacheStartupSettings) and read without a lock afterwards.
void CacheStartupSettings();
bool IsScannerAccessEnabled();
bool IsFileAccessEnabled();
bool IsWebcamAccessEnabled();
bool IsScannerAccessAuthEnabled();
bool IsFileAccessAuthEnabled();
bool IsWebcamAccessAuthEnabled();
bool IsCorsAllEnabled();
bool IsEnhancedModeEnabled();
std::string GetListenType();
// The cached Server text ("127.0.0.1" when the file has none); the setter changes the cache only.
std::string GetCachedServer();
void SetCachedServer(const std::string& server);

}  // namespace vsm

#endif  // VSM_CONFIG_CONFIG_STORE_H_
