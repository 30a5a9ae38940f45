#include "commands/user_hash.h"

namespace vsm {

uint32_t HashUserName(const std::string& user) {
  uint32_t value = 0;
  for (const char* c = user.c_str(); *c != '\0'; ++c) {
    value = value + (static_cast<unsigned char>(*c) + value * 32);
  }
  return value;
}

}  // namespace vsm
