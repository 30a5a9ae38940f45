// The answers of vsmhost to HTTP requests, apart from the sockets that carry them.
//
//   OPTIONS any             a CORS preflight: 204 with the methods and headers asked for, and
//                           Access-Control-Allow-Private-Network when the browser asks for it
//   GET /                   the demo page; GET /NAME a file of the page's folder
//   GET /status             JSON: port, open connections, uptime, and per module alias,
//                           version, ports and the last GetWaitTimeout value
//   POST /ALIAS/...         the body is one command for the module, the request target its URL
//   GET /ALIAS/METHOD?Q     the command the URL translator makes of METHOD and Q; 400 when
//                           it makes none
// A command's answer is the module's text as application/json, or, when the answer carries a
// binary block, a multipart/mixed body of the text and the block (application/octet-stream).
// A command that got no answer is a 502 with a JSON error of the host's own. Every response
// allows any origin: the module's own origin guard decides what a page may do.
// Thread-safe: the handlers read the shared context only.
#ifndef VSM_TOOLS_VSMHOST_HOST_ROUTES_H_
#define VSM_TOOLS_VSMHOST_HOST_ROUTES_H_

#include <boost/beast/http.hpp>
#include <string>

#include "host_context.h"

namespace vsmhost {

namespace http = boost::beast::http;
using Request = http::request<http::string_body>;
using Response = http::response<http::string_body>;

// The answer to `request`, which came on `connection`. Upgrades are the caller's.
Response Route(const HostContext& host, const Connection& connection, const Request& request);

// The module whose WebSocket route `target` is ("/ALIAS/ws", any query), or null.
const ModuleLibrary* WebSocketModule(const HostContext& host, const std::string& target);

// A JSON error {"error":MESSAGE} with `status`, for requests the host refuses before routing.
Response ErrorResponse(http::status status, const std::string& message, unsigned version,
                       bool keepAlive);

// The host's JSON error for a command the module did not answer.
std::string NoAnswerText(const ModuleLibrary& module);

// `text` as a JSON string, quotes included.
std::string JsonQuote(const std::string& text);

}  // namespace vsmhost

#endif  // VSM_TOOLS_VSMHOST_HOST_ROUTES_H_
