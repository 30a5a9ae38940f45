// One HTTP/1.1 connection of vsmhost: reads requests one after another (keep-alive), answers
// each through Route, and hands the socket to a WebSocketSession when a request upgrades to a
// module's WebSocket route.
//
// Limits: a body above the host's maximum answers 413 and a request that doesn't parse 400,
// both closing the connection; a connection idle for the idle timeout is closed. A command runs
// on the I/O thread that read its request, and the next request is read only after the answer
// is written, so answers on one connection keep their order.
#ifndef VSM_TOOLS_VSMHOST_HTTP_SESSION_H_
#define VSM_TOOLS_VSMHOST_HTTP_SESSION_H_

#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <memory>
#include <optional>

#include "host_context.h"
#include "host_routes.h"

namespace vsmhost {

class HttpSession : public std::enable_shared_from_this<HttpSession> {
 public:
  HttpSession(boost::asio::ip::tcp::socket socket, HostContext* host, ConnectionSlot slot);
  void Run();

 private:
  void Read();
  void OnRead(boost::beast::error_code error);
  // Answers a request the host won't route, then closes.
  void Refuse(http::status status, const char* message);
  void Send(Response response, bool closeAfter);
  void OnWrite(bool close, boost::beast::error_code error);
  void Close();

  boost::beast::tcp_stream stream_;
  boost::beast::flat_buffer buffer_;
  std::optional<http::request_parser<http::string_body>> parser_;
  std::shared_ptr<Response> pending_;
  HostContext* host_;
  ConnectionSlot slot_;
  Connection connection_;
};

// One line on standard error, for --verbose.
void LogRequestLine(const Connection& connection, const char* method, const std::string& target,
                    unsigned status, size_t bytes, double milliseconds);

}  // namespace vsmhost

#endif  // VSM_TOOLS_VSMHOST_HTTP_SESSION_H_
