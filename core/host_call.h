// HostCall: what the host hands over with one command besides its URL and text, bundled at the
// export so that it travels as one value down to the request.
//
// Who gets the answer (send-back key, context and callback), who asked (the client's socket,
// its origin, and whether the host supports the client), the host's three values (stored,
// never read), and the body. `origin` and `body` point into the host's memory and are valid
// for the call only: whoever keeps them copies them. A plain value with no behaviour.
#ifndef VSM_CORE_HOST_CALL_H_
#define VSM_CORE_HOST_CALL_H_

#include <cstdint>

#include "vsm.h"

namespace vsm {

// The fields keep the order of DistributeCommand's arguments.
struct HostCall {
  uint32_t sendBackKey = 0;  // 0: no answer can be sent
  uint64_t sendBackContext = 0;
  const void* body = nullptr;
  uint32_t bodyLength = 0;
  uint32_t clientSupported = 0;  // 0: the command is refused with -2205
  SendBackCallback sendBackHandle = nullptr;
  uint32_t clientSocket = 0;
  const char* origin = nullptr;
  uint64_t hostValue1 = 0;
  uint64_t hostValue2 = 0;
  uint64_t hostValue3 = 0;
};

}  // namespace vsm

#endif  // VSM_CORE_HOST_CALL_H_
