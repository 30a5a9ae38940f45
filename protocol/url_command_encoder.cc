#include "protocol/url_command_encoder.h"

#include <json/value.h>

#include <cstdlib>

#include "config/log_writer.h"
#include "protocol/styled_writer.h"
#include "support/string_split.h"

namespace vsm {

namespace {

const std::string& Lookup(const UrlQuery& query, const char* key) {
  static const std::string kMissing;
  const auto found = query.find(key);
  return found == query.end() ? kMissing : found->second;
}

Json::Value Number(const std::string& text) {
  return Json::Value(static_cast<Json::Int64>(strtol(text.c_str(), nullptr, 10)));
}

Json::Value ImageCommand(const std::string& id) {
  Json::Value root;
  root["id"] = id;
  root["method"] = "GetImageByIndex";
  return root;
}

std::string Succeed(const std::string& command) {
  LogDebug("Encode url succeed. cmd = [%s].", command.c_str());
  return command;
}

}  // namespace

UrlQuery UrlCommandEncoder::ParseUrlQuery(const std::string& query) const {
  UrlQuery map;
  for (const std::string& piece : SplitString(query, '&')) {
    const size_t equals = piece.find('=');
    if (equals == std::string::npos) continue;
    map.emplace(piece.substr(0, equals), piece.substr(equals + 1));  // the first key stays
  }
  return map;
}

std::string UrlCommandEncoder::EncodeMethodUrl(const std::string& method,
                                               const std::string& query) const {
  const UrlQuery map = ParseUrlQuery(query);
  if (map.empty()) {
    LogError("Encode url failed. method=%s, params = [%s].", method.c_str(), query.c_str());
    return "";
  }
  const std::string& id = Lookup(map, "id");
  if (id.empty()) return "";
  std::string command = "{\"id\":\"" + id + "\",\"method\":\"" + method + "\"";
  const std::string& parameter = Lookup(map, "p");
  if (!parameter.empty()) command += ",\"parameter\":" + parameter;
  command += "}";
  return Succeed(command);
}

std::string UrlCommandEncoder::EncodeFileUrl(const std::string& path) const {
  Json::Value root;
  root["id"] = "0";
  root["method"] = "GetFile";
  root["parameter"].append(path);
  return Succeed(StyledWrite(root));
}

std::string UrlCommandEncoder::EncodeThumbnailUrl(const std::string& query) const {
  const UrlQuery map = ParseUrlQuery(query);
  if (map.empty()) return "";
  const std::string &id = Lookup(map, "id"), &index = Lookup(map, "index"),
                    &thumbnail = Lookup(map, "thumbnail");
  if (id.empty() || index.empty() || thumbnail.empty()) {
    LogError("Parsed id = [%s], index = [%s], thumbnail = [%s].", id.c_str(), index.c_str(),
             thumbnail.c_str());
    return "";
  }
  Json::Value root = ImageCommand(id);
  root["parameter"].append(Number(index));
  root["parameter"].append(thumbnail == "true");
  return Succeed(StyledWrite(root));
}

std::string UrlCommandEncoder::EncodeImageUrl(const std::string& query) const {
  const UrlQuery map = ParseUrlQuery(query);
  if (map.empty()) return "";
  const std::string& id = Lookup(map, "id");
  if (id.empty()) {
    LogError("Invalid url: id = [%s], index = [%s].", id.c_str(), Lookup(map, "index").c_str());
    return "";
  }
  Json::Value root = ImageCommand(id);
  for (const char* key : {"index", "width", "height", "act", "webcam"}) {
    const std::string& value = Lookup(map, key);
    if (!value.empty()) root["parameter"].append(Number(value));
  }
  return Succeed(StyledWrite(root));
}

}  // namespace vsm
