#include "core/distribute_command.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>

#include "core/virtual_manager_client.h"

namespace vsm {

namespace {

// The standard library's words for a string made from a null pointer, as hosts have always
// received them.
const char kNullTextError[] = "basic_string::_M_construct null not valid";

std::string CopyText(const char* text) {
  if (text == nullptr) throw std::logic_error(kNullTextError);
  return text;
}

}  // namespace

int DistributeCommandCall(unsigned int sendBackKey, unsigned long long sendBackContext,
                          int mustBeZero, const char* url, const char* text, const void* body,
                          unsigned int bodyLength, unsigned int clientSupported,
                          SendBackCallback sendBackHandle, unsigned int clientSocket,
                          const char* origin, unsigned long long hostValue1,
                          unsigned long long hostValue2, unsigned long long hostValue3) {
  uint8_t* bodyCopy = nullptr;
  if (body != nullptr) {
    bodyCopy = static_cast<uint8_t*>(std::malloc(bodyLength > 0 ? bodyLength : 1));
    if (bodyCopy == nullptr) throw std::bad_alloc();
    if (bodyLength > 0) std::memcpy(bodyCopy, body, bodyLength);
  }
  if (mustBeZero != 0) {
    std::free(bodyCopy);
    return 0;
  }
  VirtualManagerClient* client = VirtualManagerClient::GetInstance();
  std::string urlText, commandText, originText;
  try {
    urlText = CopyText(url);
    commandText = CopyText(text);
    originText = CopyText(origin);
  } catch (...) {
    std::free(bodyCopy);
    throw;
  }
  return client->RouteCommand(sendBackKey, sendBackContext, urlText, commandText, clientSupported,
                              sendBackHandle, clientSocket, originText, bodyCopy, bodyLength,
                              hostValue1, hostValue2, hostValue3);
}

}  // namespace vsm
