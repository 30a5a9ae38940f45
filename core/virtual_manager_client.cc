#include "core/virtual_manager_client.h"

#include <atomic>
#include <memory>
#include <utility>

#include "config/log_writer.h"
#include "core/send_back.h"

namespace vsm {

namespace {

// Built before any export is entered and never destroyed, so a host thread that calls in while
// the process exits still finds it.
CRWLock* const instanceLock = new CRWLock();
VirtualManagerClient* instance = nullptr;

time_t SystemSeconds() { return time(nullptr); }
std::atomic<VirtualManagerClient::SecondsClock> secondsClock{&SystemSeconds};

}  // namespace

VirtualManagerClient* VirtualManagerClient::GetInstance() {
  instanceLock->ReadLock(INFINITE_WAIT);
  VirtualManagerClient* existing = instance;
  instanceLock->ReadUnlock();
  if (existing != nullptr) return existing;
  ScopedWriteLock hold(*instanceLock);
  if (instance == nullptr) instance = new VirtualManagerClient();
  return instance;
}

void VirtualManagerClient::DestroyInstance() {
  ScopedWriteLock hold(*instanceLock);
  delete instance;
  instance = nullptr;
}

void VirtualManagerClient::SetClockForTesting(SecondsClock clock) {
  secondsClock.store(clock ? clock : &SystemSeconds);
}

VirtualManagerClient::VirtualManagerClient()
    : lastCommandTime_(0), manager_(std::make_unique<ManagerClient>()) {}

VirtualManagerClient::~VirtualManagerClient() = default;

std::string VirtualManagerClient::ExtractClientVersion(const std::string& url) {
  size_t key = url.find("vsver=");
  if (key == std::string::npos) return std::string();
  size_t ampersand = url.find('&', key + 1);
  if (ampersand == std::string::npos) return std::string();
  return url.substr(key + 6, ampersand - key - 6);
}

VirtualManagerClient::RoutedCommand VirtualManagerClient::RouteText(const std::string& url,
                                                                    const std::string& text,
                                                                    ByteBlock bodyCopy) {
  RoutedCommand routed;
  if (url.find("/LoadZipFromBytes") != std::string::npos) {
    // Without "?type=" the search result -1 plus 6 points at the URL's sixth character; that
    // reading stays. The type is written bare, so only a digit makes the command parse.
    size_t typeKey = url.find("?type=");
    size_t position = typeKey == std::string::npos ? 5 : typeKey + 6;
    std::string type = url.substr(position, 1);
    routed.command = "{\"id\":\"1\",\"method\":\"LoadZipFromBytes\",\"parameter\":[" + type +
                     ",\"" + ExtractClientVersion(url) + "\"]}";
    routed.body = std::move(bodyCopy);
  } else if (url.find("/CheckUpdateFile") != std::string::npos) {
    // The caller's text ends in a comma and the two closing characters; the version becomes
    // the last parameter.
    std::string shortened = text.size() >= 2 ? text.substr(0, text.size() - 2) : text;
    routed.command = shortened + "\"" + ExtractClientVersion(url) + "\"]}";
  } else if (url.compare(0, 5, "/vsm/") == 0) {
    size_t blankLine = text.find("\r\n\r\n");
    routed.command = text.substr(0, blankLine);
    size_t bodyStart = blankLine == std::string::npos ? text.size() : blankLine + 4;
    if (text.size() > bodyStart) {
      routed.body = ByteBlock::CopyOf(text.data() + bodyStart,
                                      static_cast<uint32_t>(text.size() - bodyStart));
    }
  }
  return routed;
}

int VirtualManagerClient::RouteCommand(const HostCall& call, const std::string& url,
                                       const std::string& text, ByteBlock bodyCopy) {
  RoutedCommand routed = RouteText(url, text, std::move(bodyCopy));
  if (routed.command.empty()) {
    return static_cast<int8_t>(SendBackThunk(call.sendBackHandle, call.sendBackKey,
                                             call.sendBackContext, "Invalid command", nullptr, 0,
                                             0));
  }
  // The command arrives ready; the log line keeps the name of the URL-encoding step it once had.
  HttpParamRequest request(call, routed.command, &SendBackThunk, std::move(routed.body), 1);
  LogDebug("Url encode json command succeed. Processing...");
  LogDebug("cmd = [%s]", routed.command.c_str());
  return RunCommand(&request);
}

int VirtualManagerClient::RunCommand(HttpParamRequest* request) {
  if (request == nullptr) {
    LogError("HttpParamRequest is NULL");
    return 0;
  }
  {
    // 0 means a command is running; no count of running commands exists, so the end of one
    // command stamps the time while another may still run.
    ScopedWriteLock hold(stateLock_);
    lastCommandTime_ = 0;
  }
  LogDebug("Receive Command: %s", request->GetCommand().c_str());
  int value = manager_->DoCommand(request);
  MarkActivity();
  return static_cast<int8_t>(value);
}

void VirtualManagerClient::MarkActivity() {
  ScopedWriteLock hold(stateLock_);
  lastCommandTime_ = secondsClock.load()();
}

int VirtualManagerClient::GetWaitValue() {
  ScopedReadLock hold(stateLock_);
  time_t now = secondsClock.load()();
  if (lastCommandTime_ == 0) return 1;
  if (now - lastCommandTime_ < 31) return 1;
  return 100;
}

}  // namespace vsm
