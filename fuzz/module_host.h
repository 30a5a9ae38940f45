// A host for the fuzz targets that drive the module through its command road.
//
// StartModule runs the start-up once per process, as a host does before its first command, with
// the module's root in the scratch folder, so that configuration files and logs land there.
// RunHostCall hands one call to DistributeCommand's road and counts the answers. ResetModule
// drops the singleton and the configuration files, so that each input starts from the same
// state however many inputs ran before it.
#ifndef VSM_FUZZ_MODULE_HOST_H_
#define VSM_FUZZ_MODULE_HOST_H_

#include <cstdint>
#include <string>
#include <vector>

namespace vsm::fuzz {

// With `logEverything`, Error, Info and Debug lines are written, so that the log writer formats
// what the inputs carry; the log file is removed whenever it passes a few megabytes.
void StartModule(bool logEverything);

struct HostCallInput {
  std::string url = "/vsm/";
  std::string text;
  std::string origin = "http://127.0.0.1";
  std::string body;
  bool hasBody = false;
  uint32_t sendBackKey = 1;
  uint32_t clientSupported = 1;
};

struct HostCallOutcome {
  int result = 0;
  std::vector<std::string> answers;
};

// False when the call is one the host must never make, because the module ends the process or
// raises an exception to the host by design (see the body for each case); true otherwise.
bool IsCallTheHostMayMake(const HostCallInput& input);

HostCallOutcome RunHostCall(const HostCallInput& input);

void ResetModule();

}  // namespace vsm::fuzz

#endif  // VSM_FUZZ_MODULE_HOST_H_
