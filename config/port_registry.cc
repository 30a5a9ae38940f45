#include "config/port_registry.h"

#include <cstdlib>

#include "config/config_store.h"
#include "config/module_identity.h"
#include "config/path_table.h"
#include "support/checked_format.h"
#include "support/profile_string.h"
#include "support/rw_lock.h"

namespace vsm {

namespace {

constexpr int kKeyBufferSize = 1024;
// Without the stored count a load reads at most this many entries.
constexpr int kUnstoredLimit = 10;
constexpr char kPlainKind[] = "Port";
constexpr char kSslKind[] = "SSLPort";

// The ports set through this process, one table per kind. They start empty in each process and
// are never filled from the file, so the first save of a process writes only what it set.
// Changed only under the write side of configLock. Never destroyed, like the lock.
PortTable& PlainPortTable() {
  static PortTable* table = new PortTable;
  return *table;
}

PortTable& SslPortTable() {
  static PortTable* table = new PortTable;
  return *table;
}

std::string EntryKey(const char* format, const char* kind, int index) {
  char key[kKeyBufferSize] = {};
  CheckedFormat(key, sizeof(key), format, kind, index);
  return key;
}

long TextToLong(const std::string& text) { return strtol(text.c_str(), nullptr, 10); }

uint32_t PortOf(const char* kind, const char* moduleName, bool useStoredCount) {
  if (moduleName == nullptr) return 0;
  PortTable table;
  LoadPortTable(&table, kind, useStoredCount);
  auto entry = table.find(moduleName);
  return entry == table.end() ? 0 : entry->second;
}

void SetPortOf(PortTable& table, const char* kind, uint32_t port, const char* moduleName) {
  if (moduleName == nullptr) return;
  // The table is process-wide and command threads set ports side by side; the write side of
  // the (re-entrant) lock covers the change and the save together.
  ScopedWriteLock lock(GetConfigLock());
  table[moduleName] = port;
  SavePortTable(table, kind);
}

std::string UserPortKey(const std::string& alias, bool wantSsl) {
  return wantSsl ? alias + "_ssl" : alias;
}

}  // namespace

void LoadPortTable(PortTable* table, const char* kind, bool useStoredCount) {
  if (table == nullptr || kind == nullptr) return;
  ScopedReadLock lock(GetConfigLock());
  table->clear();
  long limit = TextToLong(ReadDefaultConfigValue(kind, "0", nullptr));
  if (useStoredCount) {
    if (limit < 1) return;
  } else {
    limit = kUnstoredLimit;
  }
  for (int i = 0; i < limit; ++i) {
    std::string name = ReadDefaultConfigValue(EntryKey("%s_mn_%d", kind, i).c_str(), "", nullptr);
    if (name.empty()) break;
    std::string port = ReadDefaultConfigValue(EntryKey("%s_mp_%d", kind, i).c_str(), "", nullptr);
    (*table)[name] = static_cast<uint32_t>(TextToLong(port));
  }
}

void LoadSslPortTable(PortTable* table, bool useStoredCount) {
  LoadPortTable(table, kSslKind, useStoredCount);
}

void LoadPlainPortTable(PortTable* table, bool useStoredCount) {
  LoadPortTable(table, kPlainKind, useStoredCount);
}

uint32_t GetSslPortOf(const char* moduleName, bool useStoredCount) {
  return PortOf(kSslKind, moduleName, useStoredCount);
}

uint32_t GetPlainPortOf(const char* moduleName, bool useStoredCount) {
  return PortOf(kPlainKind, moduleName, useStoredCount);
}

void SavePortTable(const PortTable& table, const char* kind) {
  if (kind == nullptr) return;
  ScopedWriteLock lock(GetConfigLock());
  int i = 0;
  for (const auto& entry : table) {
    WriteDefaultConfigValue(EntryKey("%s_mn_%d", kind, i).c_str(), entry.first.c_str(), nullptr);
    WriteConfigNumber(EntryKey("%s_mp_%d", kind, i).c_str(), static_cast<int>(entry.second),
                      nullptr);
    ++i;
  }
  // Entries of a higher index from an earlier, longer table deliberately stay in the file; the
  // count is what tells them apart.
  WriteConfigNumber(kind, static_cast<int>(table.size()), nullptr);
}

void SetSslPortOf(uint32_t port, const char* moduleName) {
  SetPortOf(SslPortTable(), kSslKind, port, moduleName);
}

void SetPlainPortOf(uint32_t port, const char* moduleName) {
  SetPortOf(PlainPortTable(), kPlainKind, port, moduleName);
}

int32_t ReadUserPort(const std::string& user, const std::string& alias, bool wantDefault,
                     bool wantSsl) {
  std::string key = UserPortKey(alias, wantSsl);
  if (wantDefault) key += "_def";
  return static_cast<int32_t>(
      TextToLong(ReadConfigValue(key.c_str(), "0", user.c_str(), GetUserConfigFile())));
}

void WriteUserPort(const std::string& user, const std::string& alias, bool alsoDefault,
                   bool wantSsl, int32_t port) {
  const std::string key = UserPortKey(alias, wantSsl);
  const std::string text = std::to_string(port);
  const std::string file = GetUserConfigFile();
  // Deliberately without the lock, as this writer has always been.
  WriteProfileString(user.c_str(), key.c_str(), text.c_str(), file.c_str());
  if (alsoDefault) {
    WriteProfileString(user.c_str(), (key + "_def").c_str(), text.c_str(), file.c_str());
  }
}

void GetUserSslPorts(std::vector<int32_t>* ports) {
  if (ports == nullptr) return;
  ports->clear();
  const uint32_t mode = GetWorkMode();
  if (mode != 3 && mode != 6) return;
  // The current user's section; this platform names no user here, so it is the empty one.
  for (const char* alias : kModuleAliasPair) {
    int32_t port = ReadUserPort("", alias, false, true);
    if (port != 0) ports->push_back(port);
  }
}

std::string GetPortLockName() { return "port.lock"; }

}  // namespace vsm
