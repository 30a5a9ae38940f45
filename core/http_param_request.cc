#include "core/http_param_request.h"

#include <memory>
#include <utility>

#include "config/log_writer.h"
#include "config/module_identity.h"
#include "protocol/json_reader.h"
#include "support/checked_format.h"
#include "support/clock.h"

namespace vsm {

HttpParamRequest::HttpParamRequest(const HostCall& call, const std::string& command,
                                   SendBackThunkFunction sendBackThunk, ByteBlock body,
                                   uint8_t bodyFlag)
    : hostValue1_(call.hostValue1),
      hostValue2_(call.hostValue2),
      hostValue3_(call.hostValue3),
      sendBackKey_(call.sendBackKey),
      sendBackContext_(call.sendBackContext),
      command_(command),
      clientSupported_(call.clientSupported),
      clientSocket_(call.clientSocket),
      origin_(call.origin != nullptr ? call.origin : ""),
      commandKind_(kCommandNone),
      parameterCount_(0),
      sendBackThunk_(sendBackThunk),
      sendBackHandle_(call.sendBackHandle),
      startTick_(GetTickMilliseconds()),
      lapTick_(startTick_),
      response_(std::make_unique<HttpParamResponse>(std::move(body), bodyFlag)) {
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
    // Moved, not copied: the parsed command is dropped at the end of this constructor.
    parameters_.push_back(parsed.TakeParameter(index));
  }
}

HttpParamRequest::~HttpParamRequest() {
  response_.reset();
  ClearParameters();
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

void HttpParamRequest::AppendResult(std::unique_ptr<Json::Value> value) {
  parameters_.push_back(value.get());
  value.release();
}

void HttpParamRequest::Encode(bool asEvent, int32_t code, const std::string& description) {
  response_->text = EncodeCommandResult(id_, method_, parameters_, asEvent, code, description);
}

void HttpParamRequest::SetResultValue(std::unique_ptr<Json::Value> value, const void* data,
                                      uint32_t dataLength, int32_t code,
                                      const std::string& description) {
  AppendResult(std::move(value));
  if (code == 0 && !description.empty()) {
    AppendResult(std::make_unique<Json::Value>(description));
    AppendResult(std::make_unique<Json::Value>(ModuleDisplayName));
  }
  binary_ = ByteBlock::CopyOf(data, dataLength);
  // The encoder drops the description of a successful answer, so this word never reaches a
  // client; it stays for the sake of the log and of callers that read the text.
  std::string text = description;
  if (code == 0 && text.empty()) text = "Successful";
  Encode(false, code, text);
}

void HttpParamRequest::SetResult(const std::string& value, const void* data, uint32_t dataLength,
                                 int32_t code, const std::string& description) {
  SetResultValue(std::make_unique<Json::Value>(value), data, dataLength, code, description);
}

void HttpParamRequest::SetResult(const char* value, const void* data, uint32_t dataLength,
                                 int32_t code, const std::string& description) {
  SetResult(std::string(value ? value : ""), data, dataLength, code, description);
}

void HttpParamRequest::SetResult(bool value, const void* data, uint32_t dataLength, int32_t code,
                                 const std::string& description) {
  SetResultValue(std::make_unique<Json::Value>(value), data, dataLength, code, description);
}

void HttpParamRequest::SetResult(int32_t value, const void* data, uint32_t dataLength, int32_t code,
                                 const std::string& description) {
  SetResultValue(std::make_unique<Json::Value>(value), data, dataLength, code, description);
}

void HttpParamRequest::AddResult(const std::string& value, bool asEvent, int32_t code,
                                 const std::string& description) {
  AppendResult(std::make_unique<Json::Value>(value));
  Encode(asEvent, code, description);
}

void HttpParamRequest::AddJsonResult(const std::string& jsonText, bool asEvent, int32_t code,
                                     const std::string& description) {
  auto value = std::make_unique<Json::Value>();
  if (!ParseJsonText(jsonText, value.get(), true)) return;
  AppendResult(std::move(value));
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
    value = sendBackThunk_(sendBackHandle_, sendBackKey_, sendBackContext_, result.c_str(),
                           binary_.data(), binary_.length(), 0);
  }
  binary_.reset();
  return static_cast<int>(static_cast<int8_t>(value));
}

}  // namespace vsm
