#include "listener.h"

#include <boost/asio/ip/v6_only.hpp>
#include <boost/asio/strand.hpp>
#include <boost/asio/write.hpp>
#include <chrono>
#include <cstdio>

#include "http_session.h"

namespace vsmhost {

namespace asio = boost::asio;
using asio::ip::tcp;

Listener::Listener(asio::io_context& context, const tcp::endpoint& endpoint, HostContext* host)
    : context_(context), acceptor_(context), retry_(context), host_(host) {
  acceptor_.open(endpoint.protocol());
  acceptor_.set_option(asio::socket_base::reuse_address(true));
  if (endpoint.address().is_v6()) acceptor_.set_option(asio::ip::v6_only(true));
  acceptor_.bind(endpoint);
  acceptor_.listen(asio::socket_base::max_listen_connections);
}

void Listener::Run() { Accept(); }

void Listener::Stop() {
  boost::system::error_code ignored;
  acceptor_.close(ignored);
  retry_.cancel();
}

void Listener::Accept() {
  acceptor_.async_accept(
      asio::make_strand(context_),
      [self = shared_from_this()](boost::system::error_code error, tcp::socket socket) {
        if (error == asio::error::operation_aborted || !self->acceptor_.is_open()) return;
        if (error) {
          // Out of descriptors or a similar passing trouble: try again shortly, not in a loop.
          if (self->host_->options().verbose) {
            fprintf(stderr, "vsmhost: accept: %s\n", error.message().c_str());
          }
          self->retry_.expires_after(std::chrono::milliseconds(100));
          self->retry_.async_wait([self](boost::system::error_code waited) {
            if (!waited) self->Accept();
          });
          return;
        }
        if (std::optional<ConnectionSlot> slot = self->host_->TakeSlot()) {
          std::make_shared<HttpSession>(std::move(socket), self->host_, std::move(*slot))->Run();
        } else {
          static const char kBusy[] =
              "HTTP/1.1 503 Service Unavailable\r\nServer: vsmhost\r\nContent-Length: 0\r\n"
              "Connection: close\r\n\r\n";
          boost::system::error_code ignored;
          asio::write(socket, asio::buffer(kBusy, sizeof kBusy - 1), ignored);
          socket.shutdown(tcp::socket::shutdown_both, ignored);
          socket.close(ignored);
        }
        self->Accept();
      });
}

}  // namespace vsmhost
