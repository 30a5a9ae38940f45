// The accepting side of vsmhost: one acceptor per loopback address, each handing new
// connections to HttpSession while the host is under its connection cap. A connection over the
// cap gets a short 503 and is closed at once.
#ifndef VSM_TOOLS_VSMHOST_LISTENER_H_
#define VSM_TOOLS_VSMHOST_LISTENER_H_

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <memory>

#include "host_context.h"

namespace vsmhost {

class Listener : public std::enable_shared_from_this<Listener> {
 public:
  // Binds `endpoint` (throws boost::system::system_error when it can't).
  Listener(boost::asio::io_context& context, const boost::asio::ip::tcp::endpoint& endpoint,
           HostContext* host);
  unsigned short port() const { return acceptor_.local_endpoint().port(); }
  void Run();
  void Stop();

 private:
  void Accept();

  boost::asio::io_context& context_;
  boost::asio::ip::tcp::acceptor acceptor_;
  boost::asio::steady_timer retry_;
  HostContext* host_;
};

}  // namespace vsmhost

#endif  // VSM_TOOLS_VSMHOST_LISTENER_H_
