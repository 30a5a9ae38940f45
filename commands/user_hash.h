// The number a page receives in place of the user's name.
//
// value * 33 + byte over the bytes (unsigned) up to the first NUL, in unsigned 32 bits,
// starting at 0: "ab" gives 3299, the empty name 0. Pages send the number back to name the user
// again (see the GetPorts command), so it must not change.
#ifndef VSM_COMMANDS_USER_HASH_H_
#define VSM_COMMANDS_USER_HASH_H_

#include <cstdint>
#include <string>

namespace vsm {

uint32_t HashUserName(const std::string& user);

}  // namespace vsm

#endif  // VSM_COMMANDS_USER_HASH_H_
