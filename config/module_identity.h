// Who this module is: its aliases, display names, version, plain ports and work mode.
//
// These constants appear in answers, log lines, configuration keys and the exports, so their
// texts are fixed. They are built by static initialisers before any export is entered.
// `workMode` is process-wide: DoAction writes it (action 4 sets 3), and version answers, the
// log line head, start-up and the user port query read it. Reading and writing it is
// thread-safe.
#ifndef VSM_CONFIG_MODULE_IDENTITY_H_
#define VSM_CONFIG_MODULE_IDENTITY_H_

#include <cstdint>
#include <string>

namespace vsm {

// Alias of this module: GetAlias, the "/vsm/" route, port keys.
extern const char kModuleAlias[];  // "vsm"
// Alias of the scanning module, for port keys.
extern const char kScanningModuleAlias[];  // "qpt"
// Both aliases in the order loops over the modules use: "vsm", "qpt".
extern const char* const kModuleAliasPair[2];

extern const std::string ModuleDisplayName;   // "Veldorane Service Manager Module"
extern const std::string ServiceDisplayName;  // "Veldorane Service"
extern const char kModuleVersion[];           // "16, 2, 6, 1212"
// The build banner of the version log line.
extern const char kBuildBanner[];

// The two plain ports GetPorts reports, whatever the configuration says.
constexpr unsigned kPlainPort = 18625;
constexpr unsigned kSecondPlainPort = 18626;

uint32_t GetWorkMode();
void SetWorkMode(uint32_t mode);

}  // namespace vsm

#endif  // VSM_CONFIG_MODULE_IDENTITY_H_
