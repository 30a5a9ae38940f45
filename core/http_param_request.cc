#include "core/http_param_request.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "config/log_writer.h"
#include "config/module_identity.h"
#include "protocol/json_reader.h"
#include "support/checked_format.h"
#include "support/clock.h"

namespace vsm {

HttpParamRequest::HttpParamRequest(uint32_t sendBackKey, uint64_t sendBackContext,
                                   const std::string& command, uint32_t clientSupported,
                                   uint32_t clientSocket, const std::string& origin,
                                   SendBackThunkFunction sendBackThunk,
                                   SendBackCallback sendBackHandle, uint64_t hostValue1,
                                   uint64_t hostValue2, uint64_t hostValue3, uint8_t* body,
                                   uint32_t bodyLength, uint8_t bodyFlag)
    : hostValue1_(hostValue1),
      hostValue2_(hostValue2),
      hostValue3_(hostValue3),
      sendBackKey_(sendBackKey),
      sendBackContext_(sendBackContext),
      command_(command),
      clientSupported_(clientSupported),
      clientSocket_(clientSocket),
      origin_(origin),
      commandKind_(kCommandNone),
      parameterCount_(0),
      binary_(nullptr),
      binaryLength_(0),
      sendBackThunk_(sendBackThunk),
      sendBackHandle_(sendBackHandle),
      startTick_(GetTickMilliseconds()),
      lapTick_(startTick_),
      response_(new HttpParamResponse(body, bodyLength, bodyFlag)) {
  // A text that does not parse leaves everything empty; dispatch then fails on the empty name.
  JsonCommand parsed(command_);
  id_ = parsed.GetId();
  cmdId_ = parsed.GetCmdId();
  method_ = parsed.GetName();
  commandKind_ = parsed.GetKind();
  parameterCount_ = parsed.GetParameterCount();
  version_ = parsed.GetVersion();
  parameters_.reserve(parameterCount_ > 0 ? static_cast<size_t>(parameterCount_) : 0);
  for (int32_t index = 0; index < parameterCount_; ++index) {
    parameters_.push_back(parsed.GetParameter(index));
  }
}

HttpParamRequest::~HttpParamRequest() {
  delete response_;
  response_ = nullptr;
  ClearParameters();
  std::free(binary_);
  binary_ = nullptr;
}

void HttpParamRequest::ClearParameters() {
  while (!parameters_.empty()) {
    delete parameters_.back();
    parameters_.pop_back();
  }
}

uint32_t HttpParamRequest::GetLap() {
  uint32_t previous = lapTick_;
  lapTick_ = GetTickMilliseconds();
  return previous;
}

void HttpParamRequest::AppendResult(Json::Value* value) {
  std::unique_ptr<Json::Value> owned(value);
  parameters_.push_back(owned.get());
  owned.release();
}

void HttpParamRequest::Encode(bool asEvent, int32_t code, const std::string& description) {
  response_->text = EncodeCommandResult(id_, method_, parameters_, asEvent, code, description);
}

void HttpParamRequest::SetResultValue(Json::Value* value, const void* data, uint32_t dataLength,
                                      int32_t code, const std::string& description) {
  AppendResult(value);
  if (code == 0 && !description.empty()) {
    AppendResult(new Json::Value(description));
    AppendResult(new Json::Value(ModuleDisplayName));
  }
  std::free(binary_);
  binary_ = nullptr;
  binaryLength_ = 0;
  if (data != nullptr) {
    binary_ = static_cast<uint8_t*>(std::malloc(dataLength > 0 ? dataLength : 1));
    if (binary_ == nullptr) throw std::bad_alloc();
    if (dataLength > 0) std::memcpy(binary_, data, dataLength);
    binaryLength_ = dataLength;
  }
  // The encoder drops the description of a successful answer, so this word never reaches a
  // client; it stays for the sake of the log and of callers that read the text.
  std::string text = description;
  if (code == 0 && text.empty()) text = "Successful";
  Encode(false, code, text);
}

void HttpParamRequest::SetResult(const std::string& value, const void* data, uint32_t dataLength,
                                 int32_t code, const std::string& description) {
  SetResultValue(new Json::Value(value), data, dataLength, code, description);
}

void HttpParamRequest::SetResult(const char* value, const void* data, uint32_t dataLength,
                                 int32_t code, const std::string& description) {
  SetResult(std::string(value ? value : ""), data, dataLength, code, description);
}

void HttpParamRequest::SetResult(bool value, const void* data, uint32_t dataLength, int32_t code,
                                 const std::string& description) {
  SetResultValue(new Json::Value(value), data, dataLength, code, description);
}

void HttpParamRequest::SetResult(int32_t value, const void* data, uint32_t dataLength, int32_t code,
                                 const std::string& description) {
  SetResultValue(new Json::Value(value), data, dataLength, code, description);
}

void HttpParamRequest::AddResult(const std::string& value, bool asEvent, int32_t code,
                                 const std::string& description) {
  AppendResult(new Json::Value(value));
  Encode(asEvent, code, description);
}

void HttpParamRequest::AddJsonResult(const std::string& jsonText, bool asEvent, int32_t code,
                                     const std::string& description) {
  std::unique_ptr<Json::Value> value(new Json::Value());
  if (!ParseJsonText(jsonText, value.get(), true)) return;
  AppendResult(value.release());
  Encode(asEvent, code, description);
}

HttpParamRequest* HttpParamRequest::SetRawResult(const std::string& text) {
  response_->text = text;
  return this;
}

int HttpParamRequest::SendBack() {
  std::string result = response_->text;
  if (sendBackHandle_ == nullptr || sendBackKey_ == 0) {
    LogError("Invalid send back handle. Function must be call in wesocket!");
    return 0;
  }
  if (id_.empty()) {
    LogDebug("Invalid json command format. cmd = [%s][%d].", command_.c_str(),
             static_cast<int>(sendBackKey_));
  }
  // cmdId goes in front of the line feed before the closing brace of the styled text, as its
  // last member. A raw answer has no such line feed and gets none: the insertion is tied to the
  // styled layout on purpose, and the value is not escaped.
  size_t brace = result.rfind('}');
  if (brace != std::string::npos) {
    size_t lineFeed = result.rfind('\n', brace);
    if (lineFeed != std::string::npos) {
      char member[1024] = {0};
      CheckedFormat(member, sizeof(member), ",\n\t\"cmdId\" : \"%s\"", cmdId_.c_str());
      result.insert(lineFeed, member);
    }
  }
  LogDebug("result json = [%s].", result.c_str());
  char value = 0;
  if (sendBackThunk_ != nullptr) {
    value = sendBackThunk_(sendBackHandle_, sendBackKey_, sendBackContext_, result.c_str(), binary_,
                           binaryLength_, 0);
  }
  std::free(binary_);
  binary_ = nullptr;
  binaryLength_ = 0;
  return static_cast<int>(static_cast<int8_t>(value));
}

}  // namespace vsm
