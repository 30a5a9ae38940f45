// The hand-built JSON answers of the server and port commands.
//
// They are concatenated, not encoded: no blanks, no escaping of the host text (a host with a
// double quote breaks the document, and that stays), and no envelope, so they reach the client
// as they stand. In the server document the ports are JSON strings; in the ports object they
// are bare numbers.
#ifndef VSM_COMMANDS_SERVER_DOCUMENT_H_
#define VSM_COMMANDS_SERVER_DOCUMENT_H_

#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace vsm {

// {"Host":"<host>","qpt":{"port":"<n>","sslPort":"<n>"},"vsm":{"port":"<n>","sslPort":"<n>"}}
std::string BuildServerDocument(const std::string& host, int32_t qptPort, int32_t qptSslPort,
                                int32_t vsmPort, int32_t vsmSslPort);

// {"<alias>":{"port":<n>,"sslPort":<n>},...} in the map's order; "{}" when empty.
std::string BuildPortsObject(const std::map<std::string, std::pair<int32_t, int32_t>>& ports);

}  // namespace vsm

#endif  // VSM_COMMANDS_SERVER_DOCUMENT_H_
