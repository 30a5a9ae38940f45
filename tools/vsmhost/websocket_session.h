// One WebSocket connection of vsmhost, on a module's route /ALIAS/ws.
//
// Each message the page sends is one command for the module, with the upgrade request's target
// as its URL and its Origin header as origin. The answer goes back as one text message (and a
// binary message behind it when the answer carries a binary block) before the next message is
// read, so answers keep the order of the commands. A command without answer gets the host's JSON
// error as its message. When the connection ends, the module hears CloseWebSocket with the
// connection's number. A connection idle for the idle timeout is closed.
#ifndef VSM_TOOLS_VSMHOST_WEBSOCKET_SESSION_H_
#define VSM_TOOLS_VSMHOST_WEBSOCKET_SESSION_H_

#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/websocket.hpp>
#include <memory>
#include <string>

#include "host_context.h"
#include "host_routes.h"

namespace vsmhost {

class WebSocketSession : public std::enable_shared_from_this<WebSocketSession> {
 public:
  WebSocketSession(boost::asio::ip::tcp::socket socket, HostContext* host, ConnectionSlot slot,
                   Connection connection, const ModuleLibrary* module);
  ~WebSocketSession();
  void Run(Request upgrade);

 private:
  void Read();
  void OnRead(boost::beast::error_code error);
  void Write(bool binary, std::string message);
  void OnWrite(boost::beast::error_code error);

  boost::beast::websocket::stream<boost::beast::tcp_stream> socket_;
  boost::beast::flat_buffer buffer_;
  HostContext* host_;
  ConnectionSlot slot_;
  Connection connection_;
  const ModuleLibrary* module_;
  std::string url_, origin_;
  std::string text_, binary_;
  bool hasBinary_ = false, accepted_ = false;
};

}  // namespace vsmhost

#endif  // VSM_TOOLS_VSMHOST_WEBSOCKET_SESSION_H_
