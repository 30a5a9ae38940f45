#include "host/socket_user.h"

namespace vsm {

void GetUserOfSocket(uint32_t socket, std::string* user, uint32_t* session, uint32_t* process) {
  if (user != nullptr) user->clear();
  if (session != nullptr) *session = 0;
  if (process != nullptr) *process = 0;
}

}  // namespace vsm
