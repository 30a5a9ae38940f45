#include "core/send_back.h"

#include "core/virtual_manager_client.h"

namespace vsm {

char SendBackThunk(SendBackCallback callback, unsigned int sendBackKey,
                   unsigned long long sendBackContext, const char* text, const void* binary,
                   unsigned int binaryLength, long long extra) {
  VirtualManagerClient::GetInstance()->MarkActivity();
  // The host passes its callback with every command; without one there is nobody to answer.
  if (callback == nullptr) return 0;
  return callback(sendBackKey, sendBackContext, text, binary, binaryLength, extra);
}

}  // namespace vsm
