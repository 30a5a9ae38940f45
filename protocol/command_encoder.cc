#include "protocol/command_encoder.h"

#include "protocol/styled_writer.h"

namespace vsm {

namespace {

void AppendResults(const ResultList& results, Json::Value* root) {
  if (results.empty()) return;  // no "result" member at all
  Json::Value& result = (*root)["result"];
  for (const Json::Value* value : results) result.append(value ? *value : Json::Value());
}

}  // namespace

std::string EncodeCommandResult(const std::string& id, const std::string& name,
                                const ResultList& results, bool isEvent, int32_t exception,
                                const std::string& description) {
  Json::Value root;
  root["id"] = id;
  root[isEvent ? "event" : "method"] = name;
  if (exception != 0) {
    root["exception"] = exception;
    root["description"] = description;
  }
  AppendResults(results, &root);
  return StyledWrite(root);
}

std::string EncodeSessionResult(const std::string& session, const std::string& object,
                                const std::string& name, const ResultList& results, bool isEvent,
                                int32_t exception, const std::string& description) {
  Json::Value root;
  root["session"] = session;
  root["object"] = object;
  root[isEvent ? "event" : "method"] = name;
  root["exception"] = exception;
  root["description"] = exception == 0 ? std::string("Successful") : description;
  AppendResults(results, &root);
  return StyledWrite(root);
}

}  // namespace vsm
