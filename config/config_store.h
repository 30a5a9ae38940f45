// The configuration store: every setting of the module, in three ini files beside the host's
// program file (names from the path table).
//
//   VSConfiguration.ini  settings of the service and the port registry (default section "VS")
//   service.ini          facts about the installed service (section "VS")
//   user_config.ini      per-user values, one section per user
//
// Each read parses the whole file and each write loads, changes and saves it, so a change by an
// outside program is seen at the next read. All access goes through `configLock`, one
// process-wide re-entrant CRWLock that the log writer and the port registry share; it is built
// at first use and never destroyed, so a thread still logging at exit finds it intact. Booleans
// are the words "TRUE" and "FALSE"; a read is true only for "TRUE" ignoring case, so " TRUE"
// and "1" read false. An empty value counts as absent. A few values are cached at start-up and
// read afterwards without the lock. All functions are thread-safe; a file that can't be read
// reads as all defaults, and a failed save is not reported (the next read shows it).
#ifndef VSM_CONFIG_CONFIG_STORE_H_
#define VSM_CONFIG_CONFIG_STORE_H_

#include <string>

#include "support/rw_lock.h"

namespace vsm {

// Which of the three files a key lives in.
enum class ConfigFileKind { kConfiguration, kService, kUserConfig };

// A key with a fixed name and the text it reads as when it is absent. Readers take the default
// from here, so that each default is written down once.
struct ConfigKey {
  ConfigFileKind file;
  const char* name;
  const char* defaultValue;

  // The same key under another name, for the families of keys that carry a number.
  constexpr ConfigKey Renamed(const char* otherName) const {
    return ConfigKey{file, otherName, defaultValue};
  }
};

// VSConfiguration.ini, section "VS" unless a section is named.
inline constexpr ConfigKey kLogLevelKey{ConfigFileKind::kConfiguration, "LogLevel", "1"};
inline constexpr ConfigKey kServerKey{ConfigFileKind::kConfiguration, "Server", ""};
inline constexpr ConfigKey kScannerAccessKey{ConfigFileKind::kConfiguration, "EnableScannerAccess",
                                             "TRUE"};
inline constexpr ConfigKey kFileAccessKey{ConfigFileKind::kConfiguration, "EnableFileAccess",
                                          "TRUE"};
inline constexpr ConfigKey kWebcamAccessKey{ConfigFileKind::kConfiguration, "EnableWebcamAccess",
                                            "TRUE"};
inline constexpr ConfigKey kScannerAccessAuthKey{ConfigFileKind::kConfiguration,
                                                 "EnableScannerAccessAuth", "FALSE"};
inline constexpr ConfigKey kFileAccessAuthKey{ConfigFileKind::kConfiguration,
                                              "EnableFileAccessAuth", "FALSE"};
inline constexpr ConfigKey kWebcamAccessAuthKey{ConfigFileKind::kConfiguration,
                                                "EnableWebcamAccessAuth", "FALSE"};
inline constexpr ConfigKey kCorsAllKey{ConfigFileKind::kConfiguration, "EnableCORSAll", "TRUE"};
inline constexpr ConfigKey kEnhancedModeKey{ConfigFileKind::kConfiguration, "EnableEnhancedMode",
                                            "FALSE"};
inline constexpr ConfigKey kListenTypeKey{ConfigFileKind::kConfiguration, "ListenType", ""};
inline constexpr ConfigKey kOnlySignedModulesKey{ConfigFileKind::kConfiguration,
                                                 "OnlyLoadVeldoraneSignedModule", "TRUE"};
inline constexpr ConfigKey kVSVersionKey{ConfigFileKind::kConfiguration, "VSVersion", "0"};
inline constexpr ConfigKey kIfUpdateKey{ConfigFileKind::kConfiguration, "IfUpdate", "0"};
// Scan source number <n> is this key renamed to "CurrentSource<n>".
inline constexpr ConfigKey kCurrentSourceKey{ConfigFileKind::kConfiguration, "CurrentSource", ""};
// These two live in a section named after a host.
inline constexpr ConfigKey kCertNameKey{ConfigFileKind::kConfiguration, "cert_name", ""};
inline constexpr ConfigKey kKeyNameKey{ConfigFileKind::kConfiguration, "key_name", ""};
// service.ini, section "VS". ServiceName reads as ServiceDisplayName when absent, a text
// built at run time; it is reached through GetServiceName and SetServiceName only.
inline constexpr ConfigKey kServiceNameKey{ConfigFileKind::kService, "ServiceName", nullptr};
inline constexpr ConfigKey kServiceVersionKey{ConfigFileKind::kService, "ServiceVersion", "16.2"};
inline constexpr ConfigKey kSingleUserKey{ConfigFileKind::kService, "SingleUser", "FALSE"};
inline constexpr ConfigKey kServiceModeKey{ConfigFileKind::kService, "ServiceMode", "system"};
// user_config.ini, in the section of a user.
inline constexpr ConfigKey kExitFlagKey{ConfigFileKind::kUserConfig, "ExitFlag", "FALSE"};

// The lock of all three files, the log file and the port registry.
CRWLock& GetConfigLock();

// The value of `key` in `section` (null: "VS") of `file`, or `defaultValue` (null: "") when it
// is missing or empty. A value longer than 2046 characters comes back cut to 2046; so does a
// default that long when the key is missing, while an empty value in the file gives the default
// uncut. A null key reads as missing.
std::string ReadConfigValue(const char* key, const char* defaultValue, const char* section,
                            const std::string& file);
// The same on the configuration file.
std::string ReadDefaultConfigValue(const char* key, const char* defaultValue, const char* section);
// A boolean of the configuration file's section "VS"; `defaultValue` is "TRUE" or "FALSE".
bool ReadConfigFlag(const char* key, const char* defaultValue);
// Sets `key` of `section` (null: "VS") in `file` under the write side of the lock, keeping the
// other entries; the file's comments, blank lines and order are lost. A null key or value
// writes nothing.
void WriteConfigValue(const char* key, const char* value, const char* section,
                      const std::string& file);
void WriteDefaultConfigValue(const char* key, const char* value, const char* section);
// Writes "%d" of `number` to the configuration file.
void WriteConfigNumber(const char* key, int number, const char* section);

// The path of one of the three files.
std::string GetConfigFilePath(ConfigFileKind file);
// ReadConfigValue and WriteConfigValue on the key's own file with its default.
std::string ReadConfigKey(const ConfigKey& key, const char* section = nullptr);
bool ReadConfigKeyFlag(const ConfigKey& key, const char* section = nullptr);
void WriteConfigKey(const ConfigKey& key, const char* value, const char* section = nullptr);

// service.ini.
std::string ReadServiceVersion();  // ServiceVersion, default "16.2"
bool IsSingleUser();               // SingleUser, default FALSE
bool IsUserServiceMode();          // ServiceMode equal to "user" ignoring case
// The ServiceName cached at start-up (empty before it).
std::string GetServiceName();
// Writes ServiceName; like the access setters it leaves the cached name, which changes at the
// next start.
void SetServiceName(const std::string& name);

// ExitFlag in the user's section of user_config.ini. The writer calls the ini file directly,
// without the lock.
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

// Reads and caches, in this order, the three access flags, their three "...Auth" flags,
// EnableCORSAll, EnableEnhancedMode, ListenType and ServiceName. Start-up calls it once; the
// accessors below read the cache without touching a file.
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
// The cached Server text, which start-up sets ("127.0.0.1" when the file has none); the setter
// changes the cache only and writes nothing.
std::string GetCachedServer();
void SetCachedServer(const std::string& server);

}  // namespace vsm

#endif  // VSM_CONFIG_CONFIG_STORE_H_
