// The guard of the commands meant only for a page on this machine.
//
// An origin is local when it begins with "http://127.0.0.1" or "https://127.0.0.1". It is a
// prefix test and nothing more, on purpose: an origin that goes on with a port or further host
// labels passes; "localhost", the IPv6 loopback, other letter cases and an empty origin do not.
#ifndef VSM_COMMANDS_ORIGIN_GUARD_H_
#define VSM_COMMANDS_ORIGIN_GUARD_H_

#include <string>

namespace vsm {

class HttpParamRequest;

bool IsLocalOrigin(const std::string& origin);

// Answers the refusal (false, -1, "Only support access from local machine") and returns false
// when the request's origin is not local. The refusal goes through the envelope, so it carries
// "id" and "cmdId" even where the accepted answer is raw.
bool PassesOriginGuard(HttpParamRequest* request);

}  // namespace vsm

#endif  // VSM_COMMANDS_ORIGIN_GUARD_H_
