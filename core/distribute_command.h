// The road of a DistributeCommand call up to the route front end.
//
// The body is copied before anything else is looked at, and the copy belongs to the command
// from then on. A non-zero `mustBeZero` ends the call with 0 before the singleton is touched.
// A null `url`, `text` or `origin` raises std::logic_error("basic_string::_M_construct null not
// valid"), which reaches the host: that is the contract hosts have always had. Thread-safe.
#ifndef VSM_CORE_DISTRIBUTE_COMMAND_H_
#define VSM_CORE_DISTRIBUTE_COMMAND_H_

#include "vsm.h"

namespace vsm {

int DistributeCommandCall(unsigned int sendBackKey, unsigned long long sendBackContext,
                          int mustBeZero, const char* url, const char* text, const void* body,
                          unsigned int bodyLength, unsigned int clientSupported,
                          SendBackCallback sendBackHandle, unsigned int clientSocket,
                          const char* origin, unsigned long long hostValue1,
                          unsigned long long hostValue2, unsigned long long hostValue3);

}  // namespace vsm

#endif  // VSM_CORE_DISTRIBUTE_COMMAND_H_
