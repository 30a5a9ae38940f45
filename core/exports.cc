// The ten exports of libvsm.so. Each is thin and forwards at once; the contracts are in vsm.h.
#include <cstring>

#include "config/module_identity.h"
#include "core/distribute_command.h"
#include "core/module_lifecycle.h"
#include "core/virtual_manager_client.h"
#include "vsm.h"

#define VSM_EXPORT extern "C" __attribute__((visibility("default")))

VSM_EXPORT int DoAction(unsigned int action, const char* firstText, const char* secondText,
                        unsigned int instanceNumber) {
  return vsm::RunAction(action, firstText, secondText, instanceNumber);
}

VSM_EXPORT void CloseWebSocket(unsigned int connection) {}

VSM_EXPORT int GetWaitTimeout(void) {
  return vsm::VirtualManagerClient::GetInstance()->GetWaitValue();
}

VSM_EXPORT int GetAlias(char* out) {
  if (out != nullptr) std::memcpy(out, vsm::kModuleAlias, 4);
  return 4;
}

VSM_EXPORT int GetVersionDesc(char* out) {
  const std::string description = vsm::BuildVersionDescription();
  if (out != nullptr) std::memcpy(out, description.c_str(), description.size() + 1);
  return static_cast<int>(description.size()) + 1;
}

VSM_EXPORT int GetPorts(unsigned char secondPort, unsigned int* out) {
  if (out != nullptr) *out = secondPort != 0 ? vsm::kSecondPlainPort : vsm::kPlainPort;
  return 1;
}

VSM_EXPORT int DistributeCommand(unsigned int sendBackKey, unsigned long long sendBackContext,
                                 int mustBeZero, const char* url, const char* text,
                                 const void* body, unsigned int bodyLength,
                                 unsigned int clientSupported, SendBackCallback sendBackHandle,
                                 unsigned int clientSocket, const char* origin,
                                 unsigned long long hostValue1, unsigned long long hostValue2,
                                 unsigned long long hostValue3) {
  return vsm::DistributeCommandCall(
      mustBeZero, url, text,
      {sendBackKey, sendBackContext, body, bodyLength, clientSupported, sendBackHandle,
       clientSocket, origin, hostValue1, hostValue2, hostValue3});
}

VSM_EXPORT int GetImage(const char* url, void* out, unsigned int* outLength) {
  return vsm::VirtualManagerClient::GetInstance()->GetImage(url, out, outLength);
}

VSM_EXPORT int SetImage(const char* url, const void* data, unsigned int dataLength) {
  return vsm::VirtualManagerClient::GetInstance()->SetImage(url, data, dataLength);
}

VSM_EXPORT int Reserved(const char* subCommand, const char* argument, const void* mustBeNull) {
  return vsm::VirtualManagerClient::GetInstance()->Reserved(subCommand, argument, mustBeNull);
}
