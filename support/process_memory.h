// The memory this process holds in RAM, for diagnostics.
//
// Read from the kernel's status file at each call; no state, thread-safe, never fails loudly.
#ifndef VSM_SUPPORT_PROCESS_MEMORY_H_
#define VSM_SUPPORT_PROCESS_MEMORY_H_

#include <cstdint>

namespace vsm {

// The resident set size in bytes (the "VmRSS:" line of /proc/self/status, which counts in
// KiB). 0 when the file can't be read or has no such line.
uint64_t GetResidentSetBytes();

}  // namespace vsm

#endif  // VSM_SUPPORT_PROCESS_MEMORY_H_
