// The port registry: the plain and SSL ports of the service's modules ("vsm", "qpt").
//
// In the configuration file, section "VS", a kind ("Port" or "SSLPort") keeps a count under its
// own name and entries "<kind>_mn_<i>" (module name) and "<kind>_mp_<i>" (port). Two
// process-wide tables gather the ports set through this process; saving one writes its entries
// in name order and its size as the count, leaving entries of higher index from an earlier,
// longer table in the file. Per-user values live in user_config.ini under "<alias>",
// "<alias>_ssl", "<alias>_def", "<alias>_ssl_def". All functions are thread-safe: the process
// tables change only under the write side of configLock, and file access runs under configLock,
// except WriteUserPort, which writes user_config.ini without it. A null name or kind does
// nothing (or reads as port 0).
#ifndef VSM_CONFIG_PORT_REGISTRY_H_
#define VSM_CONFIG_PORT_REGISTRY_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vsm {

using PortTable = std::map<std::string, uint32_t>;

// Replaces `table` with the entries of `kind`. With `useStoredCount` the stored count limits the
// entries read (none below 1); without it at most 10 are read. An empty name ends the entries.
void LoadPortTable(PortTable* table, const char* kind, bool useStoredCount);
void LoadSslPortTable(PortTable* table, bool useStoredCount);
void LoadPlainPortTable(PortTable* table, bool useStoredCount);
// The port of `moduleName`, 0 for an unknown module.
uint32_t GetSslPortOf(const char* moduleName, bool useStoredCount);
uint32_t GetPlainPortOf(const char* moduleName, bool useStoredCount);
void SavePortTable(const PortTable& table, const char* kind);
// Enter the pair into the process's table and save that table.
void SetSslPortOf(uint32_t port, const char* moduleName);
void SetPlainPortOf(uint32_t port, const char* moduleName);

int32_t ReadUserPort(const std::string& user, const std::string& alias, bool wantDefault,
                     bool wantSsl);
void WriteUserPort(const std::string& user, const std::string& alias, bool alsoDefault,
                   bool wantSsl, int32_t port);
// The non-zero SSL ports of the current user (work mode 3 or 6 only).
void GetUserSslPorts(std::vector<int32_t>* ports);
// "port.lock".
std::string GetPortLockName();

}  // namespace vsm

#endif  // VSM_CONFIG_PORT_REGISTRY_H_
