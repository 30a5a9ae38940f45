// The user behind a client's socket.
//
// On this platform no session query exists: the user is always empty and the session and
// process numbers 0, whatever the socket. The rest of the version flow works unchanged with a
// real answer. Thread-safe.
#ifndef VSM_HOST_SOCKET_USER_H_
#define VSM_HOST_SOCKET_USER_H_

#include <cstdint>
#include <string>

namespace vsm {

void GetUserOfSocket(uint32_t socket, std::string* user, uint32_t* session, uint32_t* process);

}  // namespace vsm

#endif  // VSM_HOST_SOCKET_USER_H_
