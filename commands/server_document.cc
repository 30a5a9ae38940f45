#include "commands/server_document.h"

namespace vsm {

std::string BuildServerDocument(const std::string& host, int32_t qptPort, int32_t qptSslPort,
                                int32_t vsmPort, int32_t vsmSslPort) {
  return "{\"Host\":\"" + host + "\"" + ",\"qpt\":{\"port\":\"" + std::to_string(qptPort) +
         "\",\"sslPort\":\"" + std::to_string(qptSslPort) + "\"}" + ",\"vsm\":{\"port\":\"" +
         std::to_string(vsmPort) + "\",\"sslPort\":\"" + std::to_string(vsmSslPort) + "\"}" + "}";
}

std::string BuildPortsObject(const std::map<std::string, std::pair<int32_t, int32_t>>& ports) {
  std::string text = "{";
  bool first = true;
  for (const auto& [alias, numbers] : ports) {
    if (!first) text += ",";
    first = false;
    text += "\"" + alias + "\":{\"port\":" + std::to_string(numbers.first) +
            ",\"sslPort\":" + std::to_string(numbers.second) + "}";
  }
  return text + "}";
}

}  // namespace vsm
