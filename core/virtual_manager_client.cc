#include "core/virtual_manager_client.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

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

struct FreeBlock {
  void operator()(uint8_t* block) const { std::free(block); }
};
using Body = std::unique_ptr<uint8_t, FreeBlock>;

// Where the name of "URL encoding" once turned query texts into commands; the command arrives
// ready now, so the step is a copy that never fails.
std::string EncodeUrlCommand(const std::string& command) { return command; }

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

VirtualManagerClient::VirtualManagerClient() : lastCommandTime_(0), manager_(nullptr) {
  manager_ = new ManagerClient();
}

VirtualManagerClient::~VirtualManagerClient() {
  delete manager_;
  manager_ = nullptr;
}

std::string VirtualManagerClient::ExtractClientVersion(const std::string& url) {
  size_t key = url.find("vsver=");
  if (key == std::string::npos) return std::string();
  size_t ampersand = url.find('&', key + 1);
  if (ampersand == std::string::npos) return std::string();
  return url.substr(key + 6, ampersand - key - 6);
}

VirtualManagerClient::RoutedCommand VirtualManagerClient::RouteText(const std::string& url,
                                                                    const std::string& text,
                                                                    uint8_t* bodyCopy,
                                                                    uint32_t bodyLength) {
  Body body(bodyCopy);
  auto dropBody = [&] {
    body.reset();
    bodyLength = 0;
  };
  RoutedCommand routed;
  if (url.find("/LoadZipFromBytes") != std::string::npos) {
    // Without "?type=" the search result -1 plus 6 points at the URL's sixth character; that
    // reading stays. The type is written bare, so only a digit makes the command parse.
    size_t typeKey = url.find("?type=");
    size_t position = typeKey == std::string::npos ? 5 : typeKey + 6;
    std::string type = url.substr(position, 1);
    routed.command = "{\"id\":\"1\",\"method\":\"LoadZipFromBytes\",\"parameter\":[" + type +
                     ",\"" + ExtractClientVersion(url) + "\"]}";
  } else if (url.find("/CheckUpdateFile") != std::string::npos) {
    // The caller's text ends in a comma and the two closing characters; the version becomes
    // the last parameter.
    std::string shortened = text.size() >= 2 ? text.substr(0, text.size() - 2) : text;
    routed.command = shortened + "\"" + ExtractClientVersion(url) + "\"]}";
    dropBody();
  } else if (url.compare(0, 5, "/vsm/") == 0) {
    size_t blankLine = text.find("\r\n\r\n");
    if (blankLine == std::string::npos) {
      routed.command = text;
      dropBody();
    } else {
      routed.command = text.substr(0, blankLine);
      size_t bodyStart = blankLine + 4;
      if (text.size() > bodyStart) {
        size_t length = text.size() - bodyStart;
        Body textBody(static_cast<uint8_t*>(std::malloc(length)));
        if (!textBody) throw std::bad_alloc();
        std::memcpy(textBody.get(), text.data() + bodyStart, length);
        body = std::move(textBody);
        bodyLength = static_cast<uint32_t>(length);
      } else {
        dropBody();
      }
    }
  } else {
    dropBody();
  }
  routed.body = body.release();
  routed.bodyLength = bodyLength;
  return routed;
}

int VirtualManagerClient::RouteCommand(uint32_t sendBackKey, uint64_t sendBackContext,
                                       const std::string& url, const std::string& text,
                                       uint32_t clientSupported, SendBackCallback sendBackHandle,
                                       uint32_t clientSocket, const std::string& origin,
                                       uint8_t* bodyCopy, uint32_t bodyLength, uint64_t hostValue1,
                                       uint64_t hostValue2, uint64_t hostValue3) {
  RoutedCommand routed = RouteText(url, text, bodyCopy, bodyLength);
  Body body(routed.body);
  if (routed.command.empty()) {
    body.reset();
    return static_cast<int8_t>(SendBackThunk(sendBackHandle, sendBackKey, sendBackContext,
                                             "Invalid command", nullptr, 0, 0));
  }
  const std::string jsonCommand = EncodeUrlCommand(routed.command);
  std::unique_ptr<HttpParamRequest> request(
      new HttpParamRequest(sendBackKey, sendBackContext, jsonCommand, clientSupported, clientSocket,
                           origin, &SendBackThunk, sendBackHandle, hostValue1, hostValue2,
                           hostValue3, body.release(), routed.bodyLength, 1));
  LogDebug("Url encode json command succeed. Processing...");
  LogDebug("cmd = [%s]", jsonCommand.c_str());
  return RunCommand(request.get());
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
