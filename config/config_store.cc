#include "config/config_store.h"

#include <strings.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>

#include "config/log_writer.h"
#include "config/module_identity.h"
#include "config/path_table.h"
#include "support/profile_string.h"

namespace vsm {

namespace {

constexpr char kDefaultSection[] = "VS";
constexpr int kValueBufferSize = 2048;

// The values start-up caches. The flags are atomics and the texts sit behind a mutex of their
// own, so that the cache may be read on any thread while SetCachedServer replaces the server.
struct StartupCache {
  std::atomic<bool> scannerAccess{false};
  std::atomic<bool> fileAccess{false};
  std::atomic<bool> webcamAccess{false};
  std::atomic<bool> scannerAccessAuth{false};
  std::atomic<bool> fileAccessAuth{false};
  std::atomic<bool> webcamAccessAuth{false};
  std::atomic<bool> corsAll{false};
  std::atomic<bool> enhancedMode{false};
  std::mutex textLock;
  std::string server;
  std::string listenType;
  std::string serviceName;
};

// Never destroyed, for the same reason as the lock: threads may read it while the process exits.
StartupCache& Cache() {
  static StartupCache* cache = new StartupCache;
  return *cache;
}

std::string ReadCachedText(std::string StartupCache::*field) {
  StartupCache& cache = Cache();
  std::lock_guard<std::mutex> guard(cache.textLock);
  return cache.*field;
}

void WriteCachedText(std::string StartupCache::*field, const std::string& value) {
  StartupCache& cache = Cache();
  std::lock_guard<std::mutex> guard(cache.textLock);
  cache.*field = value;
}

bool IsTrueText(const std::string& text) { return strcasecmp(text.c_str(), "TRUE") == 0; }

const char* FlagText(bool flag) { return flag ? "TRUE" : "FALSE"; }

}  // namespace

CRWLock& GetConfigLock() {
  // Built at first use, so that static initialisers of other files may already log, and never
  // destroyed, so that a thread still logging while the process exits finds it intact.
  static CRWLock* lock = new CRWLock;
  return *lock;
}

std::string ReadConfigValue(const char* key, const char* defaultValue, const char* section,
                            const std::string& file) {
  // Two zeroed buffers: GetProfileString leaves the last byte of its output alone, and the
  // default is cut to what the value buffer could hold.
  std::unique_ptr<char[]> value(new char[kValueBufferSize]());
  std::unique_ptr<char[]> defaultBuffer(new char[kValueBufferSize]());
  if (defaultValue != nullptr) strncpy(defaultBuffer.get(), defaultValue, kValueBufferSize - 1);
  if (section == nullptr) section = kDefaultSection;

  ScopedReadLock lock(GetConfigLock());
  int length = GetProfileString(section, key, defaultBuffer.get(), value.get(), kValueBufferSize,
                                file.c_str());
  if (length != 0) return std::string(value.get());
  // An empty value counts as absent, and the default then comes back as the caller gave it.
  return defaultValue != nullptr ? std::string(defaultValue) : std::string();
}

std::string ReadDefaultConfigValue(const char* key, const char* defaultValue, const char* section) {
  return ReadConfigValue(key, defaultValue, section, GetConfigFile());
}

bool ReadConfigFlag(const char* key, const char* defaultValue) {
  return IsTrueText(ReadDefaultConfigValue(key, defaultValue, nullptr));
}

void WriteConfigValue(const char* key, const char* value, const char* section,
                      const std::string& file) {
  if (key == nullptr || value == nullptr) return;
  ScopedWriteLock lock(GetConfigLock());
  if (!WriteProfileString(section != nullptr ? section : kDefaultSection, key, value,
                          file.c_str())) {
    // WriteProfileString reports success whatever happens; the check stays for the day it
    // reports a failed save.
    LogDebug("Set configuration to init file failed. Key = %s, Value = %s. (%d)", key, value,
             errno);
  }
}

void WriteDefaultConfigValue(const char* key, const char* value, const char* section) {
  WriteConfigValue(key, value, section, GetConfigFile());
}

void WriteConfigNumber(const char* key, int number, const char* section) {
  WriteDefaultConfigValue(key, std::to_string(number).c_str(), section);
}

std::string GetConfigFilePath(ConfigFileKind file) {
  switch (file) {
    case ConfigFileKind::kService:
      return GetServiceFile();
    case ConfigFileKind::kUserConfig:
      return GetUserConfigFile();
    case ConfigFileKind::kConfiguration:
      break;
  }
  return GetConfigFile();
}

std::string ReadConfigKey(const ConfigKey& key, const char* section) {
  return ReadConfigValue(key.name, key.defaultValue, section, GetConfigFilePath(key.file));
}

bool ReadConfigKeyFlag(const ConfigKey& key, const char* section) {
  return IsTrueText(ReadConfigKey(key, section));
}

void WriteConfigKey(const ConfigKey& key, const char* value, const char* section) {
  WriteConfigValue(key.name, value, section, GetConfigFilePath(key.file));
}

std::string ReadServiceVersion() { return ReadConfigKey(kServiceVersionKey); }

bool IsSingleUser() { return ReadConfigKeyFlag(kSingleUserKey); }

bool IsUserServiceMode() { return strcasecmp(ReadConfigKey(kServiceModeKey).c_str(), "user") == 0; }

std::string GetServiceName() { return ReadCachedText(&StartupCache::serviceName); }

void SetServiceName(const std::string& name) { WriteConfigKey(kServiceNameKey, name.c_str()); }

bool ReadExitFlag(const std::string& user) { return ReadConfigKeyFlag(kExitFlagKey, user.c_str()); }

void WriteExitFlag(const std::string& user, bool flag) {
  // Deliberately without the lock, as this writer has always been; an exit request is rare and
  // comes from one place.
  WriteProfileString(user.c_str(), kExitFlagKey.name, FlagText(flag), GetUserConfigFile().c_str());
}

void SetScannerAccess(bool enabled) { WriteConfigKey(kScannerAccessKey, FlagText(enabled)); }

void SetFileAccess(bool enabled) { WriteConfigKey(kFileAccessKey, FlagText(enabled)); }

void SetWebcamAccess(bool enabled) { WriteConfigKey(kWebcamAccessKey, FlagText(enabled)); }

bool OnlyLoadSignedModules() { return ReadConfigKeyFlag(kOnlySignedModulesKey); }

bool FileContainsNumber(const std::string& path, int number) {
  FILE* file = fopen(path.c_str(), "rb");
  if (file == nullptr) return false;
  // Read whole through stdio: a folder opens but gives no bytes, and nothing throws.
  std::string content;
  char block[4096];
  for (size_t count; (count = fread(block, 1, sizeof(block), file)) > 0;)
    content.append(block, count);
  fclose(file);
  return content.find(std::to_string(number)) != std::string::npos;
}

void CacheStartupSettings() {
  StartupCache& cache = Cache();
  const std::pair<std::atomic<bool>*, const ConfigKey*> flags[] = {
      {&cache.scannerAccess, &kScannerAccessKey},
      {&cache.fileAccess, &kFileAccessKey},
      {&cache.webcamAccess, &kWebcamAccessKey},
      {&cache.scannerAccessAuth, &kScannerAccessAuthKey},
      {&cache.fileAccessAuth, &kFileAccessAuthKey},
      {&cache.webcamAccessAuth, &kWebcamAccessAuthKey},
      {&cache.corsAll, &kCorsAllKey},
      {&cache.enhancedMode, &kEnhancedModeKey},
  };
  for (const auto& flag : flags) {
    flag.first->store(ReadConfigKeyFlag(*flag.second));
  }
  WriteCachedText(&StartupCache::listenType, ReadConfigKey(kListenTypeKey));
  WriteCachedText(&StartupCache::serviceName,
                  ReadConfigValue(kServiceNameKey.name, ServiceDisplayName.c_str(), nullptr,
                                  GetConfigFilePath(kServiceNameKey.file)));
}

bool IsScannerAccessEnabled() { return Cache().scannerAccess.load(); }
bool IsFileAccessEnabled() { return Cache().fileAccess.load(); }
bool IsWebcamAccessEnabled() { return Cache().webcamAccess.load(); }
bool IsScannerAccessAuthEnabled() { return Cache().scannerAccessAuth.load(); }
bool IsFileAccessAuthEnabled() { return Cache().fileAccessAuth.load(); }
bool IsWebcamAccessAuthEnabled() { return Cache().webcamAccessAuth.load(); }
bool IsCorsAllEnabled() { return Cache().corsAll.load(); }
bool IsEnhancedModeEnabled() { return Cache().enhancedMode.load(); }

std::string GetListenType() { return ReadCachedText(&StartupCache::listenType); }

std::string GetCachedServer() { return ReadCachedText(&StartupCache::server); }

void SetCachedServer(const std::string& server) { WriteCachedText(&StartupCache::server, server); }

}  // namespace vsm
