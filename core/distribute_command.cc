#include "core/distribute_command.h"

#include <stdexcept>
#include <utility>

#include "core/byte_block.h"
#include "core/virtual_manager_client.h"

namespace vsm {

namespace {

// The standard library's words for a string made from a null pointer, as hosts have always
// received them.
const char kNullTextError[] = "basic_string::_M_construct null not valid";

}  // namespace

int DistributeCommandCall(int mustBeZero, const char* url, const char* text, const HostCall& call) {
  ByteBlock body = ByteBlock::CopyOf(call.body, call.bodyLength);
  if (mustBeZero != 0) return 0;
  VirtualManagerClient* client = VirtualManagerClient::GetInstance();
  if (url == nullptr || text == nullptr || call.origin == nullptr) {
    throw std::logic_error(kNullTextError);
  }
  return client->RouteCommand(call, url, text, std::move(body));
}

}  // namespace vsm
