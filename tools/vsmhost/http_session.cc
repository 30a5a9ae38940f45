#include "http_session.h"

#include <boost/beast/websocket/rfc6455.hpp>
#include <chrono>
#include <cstdio>

#include "websocket_session.h"

namespace vsmhost {

namespace beast = boost::beast;

HttpSession::HttpSession(boost::asio::ip::tcp::socket socket, HostContext* host,
                         ConnectionSlot slot)
    : stream_(std::move(socket)), host_(host), slot_(std::move(slot)) {
  connection_.number = host_->NewConnectionNumber();
  connection_.socket = stream_.socket().native_handle();
}

void HttpSession::Run() { Read(); }

void HttpSession::Read() {
  parser_.emplace();
  parser_->body_limit(host_->options().maxBodyBytes);
  stream_.expires_after(std::chrono::seconds(host_->options().idleSeconds));
  http::async_read(
      stream_, buffer_, *parser_,
      [self = shared_from_this()](beast::error_code error, size_t) { self->OnRead(error); });
}

void HttpSession::OnRead(beast::error_code error) {
  if (error == http::error::body_limit) {
    return Refuse(http::status::payload_too_large, "the body is larger than the host takes");
  }
  // Parse errors share the category of http::error; anything else is the socket ending
  // (a closed peer, the idle timeout) and needs no answer.
  if (error &&
      error.category() == beast::http::make_error_code(http::error::bad_method).category() &&
      error != http::error::end_of_stream && error != http::error::partial_message) {
    return Refuse(http::status::bad_request, "malformed HTTP request");
  }
  if (error) return Close();

  Request request = parser_->release();
  if (beast::websocket::is_upgrade(request)) {
    const ModuleLibrary* module = WebSocketModule(*host_, std::string(request.target()));
    if (module != nullptr) {
      std::make_shared<WebSocketSession>(stream_.release_socket(), host_, std::move(slot_),
                                         connection_, module)
          ->Run(std::move(request));
      return;
    }
  }
  const auto start = std::chrono::steady_clock::now();
  Response response = Route(*host_, connection_, request);
  if (host_->options().verbose) {
    LogRequestLine(
        connection_, std::string(request.method_string()).c_str(), std::string(request.target()),
        response.result_int(), response.body().size(),
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
            .count());
  }
  const bool close = response.need_eof();
  Send(std::move(response), close);
}

void HttpSession::Refuse(http::status status, const char* message) {
  Response response = ErrorResponse(status, message, 11, false);
  if (host_->options().verbose) {
    LogRequestLine(connection_, "-", "-", response.result_int(), response.body().size(), 0);
  }
  Send(std::move(response), true);
}

void HttpSession::Send(Response response, bool closeAfter) {
  if (closeAfter) response.keep_alive(false);
  pending_ = std::make_shared<Response>(std::move(response));
  stream_.expires_after(std::chrono::seconds(host_->options().idleSeconds));
  http::async_write(stream_, *pending_,
                    [self = shared_from_this(), closeAfter](beast::error_code error, size_t) {
                      self->OnWrite(closeAfter, error);
                    });
}

void HttpSession::OnWrite(bool close, beast::error_code error) {
  pending_.reset();
  if (error || close) return Close();
  Read();
}

void HttpSession::Close() {
  beast::error_code ignored;
  stream_.socket().shutdown(boost::asio::ip::tcp::socket::shutdown_send, ignored);
  stream_.socket().close(ignored);
}

void LogRequestLine(const Connection& connection, const char* method, const std::string& target,
                    unsigned status, size_t bytes, double milliseconds) {
  fprintf(stderr, "vsmhost: #%u %s %s %u %zu bytes %.2f ms\n", connection.number, method,
          target.c_str(), status, bytes, milliseconds);
}

}  // namespace vsmhost
