// The road of a DistributeCommand call up to the route front end.
//
// The body is copied before anything else is looked at, and the copy belongs to the command
// from then on. A non-zero `mustBeZero` ends the call with 0 before the singleton is touched.
// A null `url`, `text` or `call.origin` raises std::logic_error("basic_string::_M_construct
// null not valid"), which reaches the host: that is the contract hosts have always had.
// Thread-safe.
#ifndef VSM_CORE_DISTRIBUTE_COMMAND_H_
#define VSM_CORE_DISTRIBUTE_COMMAND_H_

#include "core/host_call.h"

namespace vsm {

int DistributeCommandCall(int mustBeZero, const char* url, const char* text, const HostCall& call);

}  // namespace vsm

#endif  // VSM_CORE_DISTRIBUTE_COMMAND_H_
