// HttpParamRequest: one command in flight, from its JSON text to the answer sent back.
//
// The constructor parses the command once and keeps its id, cmdId, method name, kind, version
// and parameters (owned JSON values; an argument that can't be read as one is a null entry).
// `parameters` does double duty on purpose: the result operations append to it and the encoder
// writes all of it as "result", so a command's parameters are echoed in front of its results
// unless a handler clears them. Each result operation re-encodes the whole answer into
// `response.text`, so the last one decides. SendBack inserts "cmdId" into the styled text and
// calls the host once through the thunk.
// A request lives for one DistributeCommand call on one thread: not thread-safe. Allocation
// failures raise the standard exception; nothing else is thrown, except that a cmdId over 1008
// bytes ends the process in SendBack (it cannot fit the fixed 1024-byte buffer).
#ifndef VSM_CORE_HTTP_PARAM_REQUEST_H_
#define VSM_CORE_HTTP_PARAM_REQUEST_H_

#include <json/value.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/byte_block.h"
#include "core/host_call.h"
#include "core/http_param_response.h"
#include "core/send_back.h"
#include "protocol/command_encoder.h"
#include "protocol/json_command.h"

namespace vsm {

class HttpParamRequest {
 public:
  // `command` arrived with `call` (whose own body is not read; `body` is the command's, and
  // goes to the response). A null origin reads as empty.
  HttpParamRequest(const HostCall& call, const std::string& command,
                   SendBackThunkFunction sendBackThunk, ByteBlock body, uint8_t bodyFlag);
  virtual ~HttpParamRequest();
  HttpParamRequest(const HttpParamRequest&) = delete;
  HttpParamRequest& operator=(const HttpParamRequest&) = delete;

  std::string GetMethod() const { return method_; }
  std::string GetId() const { return id_; }
  std::string GetCmdId() const { return cmdId_; }
  std::string GetCommand() const { return command_; }
  std::string GetOrigin() const { return origin_; }
  std::string GetVersion() const { return version_; }
  uint32_t IsClientSupported() const { return clientSupported_; }
  uint32_t GetClientSocket() const { return clientSocket_; }
  uint32_t GetStartTick() const { return startTick_; }
  uint32_t GetCommandKind() const { return commandKind_; }
  int32_t GetParameterCount() const { return parameterCount_; }
  ResultList& GetParameters() { return parameters_; }
  HttpParamResponse* GetResponse() const { return response_.get(); }
  const uint8_t* GetBinary() const { return binary_.data(); }
  uint32_t GetBinaryLength() const { return binary_.length(); }

  // Deletes the parameters and empties the array, so that they are not echoed.
  void ClearParameters();

  // Returns the previous lap tick and stamps a new one.
  uint32_t GetLap();

  // Appends `value`; with code 0 and a non-empty description also the description and the
  // module's name; replaces the binary with a copy of `data`; encodes the answer.
  void SetResult(const std::string& value, const void* data, uint32_t dataLength, int32_t code,
                 const std::string& description);
  void SetResult(const char* value, const void* data, uint32_t dataLength, int32_t code,
                 const std::string& description);
  void SetResult(bool value, const void* data, uint32_t dataLength, int32_t code,
                 const std::string& description);
  void SetResult(int32_t value, const void* data, uint32_t dataLength, int32_t code,
                 const std::string& description);
  // Appends the string and encodes, as an event when `asEvent` (the key "event" then stands in
  // place of "method").
  void AddResult(const std::string& value, bool asEvent, int32_t code,
                 const std::string& description);
  // Parses `jsonText` (comments kept) and appends it as AddResult does; text that does not
  // parse changes nothing.
  void AddJsonResult(const std::string& jsonText, bool asEvent, int32_t code,
                     const std::string& description);
  // The answer becomes `text` as it stands, with no envelope (and so no cmdId).
  HttpParamRequest* SetRawResult(const std::string& text);

  // Sends the answer once. 0 when no send-back is possible (no callback or key 0); otherwise the
  // host's byte, widened from a signed 8-bit value.
  int SendBack();

 private:
  void AppendResult(std::unique_ptr<Json::Value> value);
  void SetResultValue(std::unique_ptr<Json::Value> value, const void* data, uint32_t dataLength,
                      int32_t code, const std::string& description);
  void Encode(bool asEvent, int32_t code, const std::string& description);

  uint64_t hostValue1_;
  uint64_t hostValue2_;
  uint64_t hostValue3_;
  uint32_t sendBackKey_;
  uint64_t sendBackContext_;
  std::string command_;
  uint32_t clientSupported_;
  uint32_t clientSocket_;
  std::string origin_;
  std::string id_;
  std::string cmdId_;
  std::string method_;
  uint32_t commandKind_;
  int32_t parameterCount_;
  ResultList parameters_;
  ByteBlock binary_;
  SendBackThunkFunction sendBackThunk_;
  SendBackCallback sendBackHandle_;
  uint32_t startTick_;
  uint32_t lapTick_;
  std::unique_ptr<HttpParamResponse> response_;
  std::string version_;
};

}  // namespace vsm

#endif  // VSM_CORE_HTTP_PARAM_REQUEST_H_
