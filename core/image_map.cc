// The host's store inside VirtualManagerClient: image records keyed by GUID and the file white
// list. The module never looks inside a record or uses a path; it only keeps them under
// mapLock.
#include <cstring>
#include <stdexcept>

#include "config/log_writer.h"
#include "core/virtual_manager_client.h"
#include "support/checked_format.h"

namespace vsm {

namespace {

constexpr char kGetImageRoute[] = "/GetEncryptedImageMap?";
constexpr char kSetImageRoute[] = "/SetEncryptedImageMap?";
constexpr char kIsListedCommand[] = "fileInQPTWhiteList";
constexpr char kAddCommand[] = "addFileToWhiteList";
// Both sub-command names are 18 bytes long, and the comparison covers exactly that many, so a
// longer text that begins with a name selects it.
constexpr size_t kSubCommandLength = 18;

}  // namespace

std::string VirtualManagerClient::ExtractGuid(const char* url, const char* routeText) {
  if (url == nullptr) throw std::logic_error("basic_string::_M_construct null not valid");
  std::string text(url);
  if (text.find(routeText) == std::string::npos) return std::string();
  size_t key = text.find("GUID=");
  if (key == std::string::npos) return std::string();
  // Everything to the end: no "&" ends the value and nothing is decoded.
  return text.substr(key + 5);
}

std::string VirtualManagerClient::NormalisePathKey(const std::string& path) {
  std::string key = path;
  for (char& c : key) {
    if (c == '\\') c = '/';
  }
  return key;
}

int VirtualManagerClient::GetImage(const char* url, void* out, uint32_t* outLength) {
  std::string key = ExtractGuid(url, kGetImageRoute);
  if (key.empty()) return 0;
  ImageMapEntry copy;
  {
    ScopedReadLock hold(mapLock_);
    auto entry = imageMap_.find(key);
    if (entry == imageMap_.end()) return 0;
    copy = entry->second;
  }
  // The caller's buffer is written outside the lock; its size is the caller's promise.
  // outLength is required; a host that passes none still gets no crash, just no length.
  if (outLength != nullptr) *outLength = sizeof(ImageMapEntry);
  if (out != nullptr) std::memcpy(out, &copy, sizeof(copy));
  return 1;
}

int VirtualManagerClient::SetImage(const char* url, const void* data, uint32_t dataLength) {
  std::string key = ExtractGuid(url, kSetImageRoute);
  if (key.empty()) return 0;
  if (data == nullptr) {
    ScopedWriteLock hold(mapLock_);
    imageMap_.erase(key);
    return 1;
  }
  ImageMapEntry record;
  std::memset(&record, 0, sizeof(record));
  // A record longer than 2052 bytes ends the process: the host and this module agree on the
  // size, and a longer one means the host is broken.
  CheckedCopy(&record, sizeof(record), data, dataLength);
  ScopedWriteLock hold(mapLock_);
  imageMap_[key] = record;
  return 1;
}

int VirtualManagerClient::IsFileInWhiteList(const char* path) {
  ScopedReadLock hold(mapLock_);
  std::string key = NormalisePathKey(path);
  LogDebug("FileIsInWhiteList: [%s][%s].", path, key.c_str());
  return fileWhiteList_.count(key) != 0 ? 1 : 0;
}

void VirtualManagerClient::AddFileToWhiteList(const char* path) {
  ScopedWriteLock hold(mapLock_);
  fileWhiteList_[NormalisePathKey(path)] = '0';
}

int VirtualManagerClient::Reserved(const char* subCommand, const char* argument,
                                   const void* mustBeNull) {
  if (argument == nullptr || mustBeNull != nullptr || subCommand == nullptr) return -1;
  // strncmp gives the same answer as comparing 18 bytes, without reading past a shorter text.
  if (std::strncmp(subCommand, kIsListedCommand, kSubCommandLength) == 0) {
    return IsFileInWhiteList(argument) - 1;
  }
  if (std::strncmp(subCommand, kAddCommand, kSubCommandLength) == 0) {
    AddFileToWhiteList(argument);
    return 0;
  }
  return -1;
}

}  // namespace vsm
