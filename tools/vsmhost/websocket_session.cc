#include "websocket_session.h"

#include <chrono>

#include "http_session.h"

namespace vsmhost {

namespace beast = boost::beast;
namespace websocket = boost::beast::websocket;

namespace {

// Browsers drop a connection whose text message is not UTF-8, and the module's answers pass its
// bytes through as they are; such an answer travels as a binary message instead.
bool IsUtf8(const std::string& text) {
  for (size_t i = 0; i < text.size();) {
    const unsigned char lead = static_cast<unsigned char>(text[i]);
    const size_t length = lead < 0x80         ? 1
                          : (lead >> 5) == 6  ? 2
                          : (lead >> 4) == 14 ? 3
                          : (lead >> 3) == 30 ? 4
                                              : 0;
    if (length == 0 || i + length > text.size()) return false;
    uint32_t code = length == 1 ? lead : lead & (0x7F >> length);
    for (size_t k = 1; k < length; ++k) {
      const unsigned char next = static_cast<unsigned char>(text[i + k]);
      if ((next & 0xC0) != 0x80) return false;
      code = code << 6 | (next & 0x3F);
    }
    static const uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < kLeast[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
      return false;
    }
    i += length;
  }
  return true;
}

}  // namespace

WebSocketSession::WebSocketSession(boost::asio::ip::tcp::socket socket, HostContext* host,
                                   ConnectionSlot slot, Connection connection,
                                   const ModuleLibrary* module)
    : socket_(std::move(socket)),
      host_(host),
      slot_(std::move(slot)),
      connection_(connection),
      module_(module) {}

WebSocketSession::~WebSocketSession() {
  if (accepted_) module_->CloseWebSocket(connection_.number);
}

void WebSocketSession::Run(Request upgrade) {
  url_ = std::string(upgrade.target());
  origin_ = std::string(upgrade[http::field::origin]);
  // The WebSocket's own timer replaces the stream's: no pings, so a silent peer counts as idle.
  beast::get_lowest_layer(socket_).expires_never();
  websocket::stream_base::timeout timeout;
  timeout.handshake_timeout = std::chrono::seconds(30);
  timeout.idle_timeout = std::chrono::seconds(host_->options().idleSeconds);
  timeout.keep_alive_pings = false;
  socket_.set_option(timeout);
  socket_.set_option(websocket::stream_base::decorator(
      [](websocket::response_type& response) { response.set(http::field::server, "vsmhost"); }));
  socket_.read_message_max(host_->options().maxBodyBytes);
  if (host_->options().verbose) LogRequestLine(connection_, "WS", url_, 101, 0, 0);
  socket_.async_accept(upgrade, [self = shared_from_this()](beast::error_code error) {
    if (error) return;
    self->accepted_ = true;
    self->Read();
  });
}

void WebSocketSession::Read() {
  buffer_.clear();
  socket_.async_read(buffer_, [self = shared_from_this()](beast::error_code error, size_t) {
    self->OnRead(error);
  });
}

void WebSocketSession::OnRead(beast::error_code error) {
  if (error) return;  // closed, timed out or refused (a message above the limit): the end
  const auto start = std::chrono::steady_clock::now();
  const ModuleAnswer answer =
      module_->Distribute(connection_, url_, beast::buffers_to_string(buffer_.data()), origin_);
  if (host_->options().verbose) {
    LogRequestLine(
        connection_, "MESSAGE", url_, answer.answered ? 200 : 502, answer.text.size(),
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
            .count());
  }
  hasBinary_ = answer.hasBinary;
  binary_ = answer.binary;
  std::string message = answer.answered ? answer.text : NoAnswerText(*module_);
  const bool binary = !IsUtf8(message);
  Write(binary, std::move(message));
}

void WebSocketSession::Write(bool binary, std::string message) {
  text_ = std::move(message);
  socket_.text(!binary);
  socket_.async_write(
      boost::asio::buffer(text_),
      [self = shared_from_this()](beast::error_code error, size_t) { self->OnWrite(error); });
}

void WebSocketSession::OnWrite(beast::error_code error) {
  if (error) return;
  if (hasBinary_) {
    hasBinary_ = false;
    Write(true, std::move(binary_));
    return;
  }
  Read();
}

}  // namespace vsmhost
