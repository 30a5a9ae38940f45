#include "protocol/command_encoder.h"

#include "protocol/styled_writer.h"

namespace vsm {

namespace {

// The results are written in the place of "result" straight from the list: an answer is
// encoded again at every result operation, and copying every value into the tree each time
// would cost more than writing it.
std::string WriteWithResults(Json::Value* root, const ResultList& results) {
  if (results.empty()) return StyledWrite(*root);  // no "result" member at all
  const Json::Value& standIn = (*root)["result"];
  return StyledWriteWithArray(*root, &standIn, results);
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
  return WriteWithResults(&root, results);
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
  return WriteWithResults(&root, results);
}

}  // namespace vsm
