// SendBackThunk: the module's one way to the host.
//
// It stamps the activity time of the singleton (so GetWaitTimeout counts idleness from the last
// answer), then calls the host's `callback` with the remaining arguments and gives back its
// byte. A null `callback` sends nothing and gives 0. Thread-safe.
#ifndef VSM_CORE_SEND_BACK_H_
#define VSM_CORE_SEND_BACK_H_

#include <cstdint>

#include "vsm.h"

namespace vsm {

using SendBackThunkFunction = char (*)(SendBackCallback callback, unsigned int sendBackKey,
                                       unsigned long long sendBackContext, const char* text,
                                       const void* binary, unsigned int binaryLength,
                                       long long extra);

char SendBackThunk(SendBackCallback callback, unsigned int sendBackKey,
                   unsigned long long sendBackContext, const char* text, const void* binary,
                   unsigned int binaryLength, long long extra);

}  // namespace vsm

#endif  // VSM_CORE_SEND_BACK_H_
