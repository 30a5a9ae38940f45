// The reference host's HTTP side: raw request bytes through Beast's parser, then the host's own
// routing (target splitting, module routes and the URL translator, preflight, status, page
// files), with a stand-in module that echoes what it gets. Every response the host builds must
// serialise and parse back as HTTP with the same status.
#include <boost/asio/buffer.hpp>
#include <boost/beast/http.hpp>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "fuzz_support.h"
#include "host_context.h"
#include "host_routes.h"

namespace {

namespace http = boost::beast::http;
using vsm::fuzz::FuzzCheck;

// Request bodies past this are refused by the parser, as the host refuses them with 413.
constexpr uint64_t kBodyLimit = 1 << 16;

vsmhost::HostContext* host = nullptr;

// The request in `data`, or false when Beast refuses it or it isn't complete.
bool ParseRequest(const uint8_t* data, size_t size, vsmhost::Request* request) {
  http::request_parser<http::string_body> parser;
  parser.body_limit(kBodyLimit);
  parser.eager(true);
  boost::beast::error_code error;
  size_t used = 0;
  while (used < size && !parser.is_done()) {
    const size_t taken = parser.put(boost::asio::buffer(data + used, size - used), error);
    if (error || taken == 0) break;
    used += taken;
  }
  if (!error && !parser.is_done()) parser.put_eof(error);
  if (error || !parser.is_done()) return false;
  *request = parser.release();
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  vsmhost::HostOptions options;
  options.pageDirectory = VSM_PAGE_FOLDER;
  std::vector<std::unique_ptr<vsmhost::ModuleLibrary>> modules;
  modules.push_back(vsmhost::ModuleLibrary::Load(VSM_STAND_IN_MODULE));
  host = new vsmhost::HostContext(options, std::move(modules));
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vsmhost::Request request;
  if (!ParseRequest(data, size, &request)) return 0;
  vsmhost::WebSocketModule(*host, std::string(request.target()));
  const vsmhost::Response response = vsmhost::Route(*host, {1, -1}, request);

  std::ostringstream out;
  out << response;
  const std::string text = out.str();
  http::response_parser<http::string_body> parser;
  parser.eager(true);
  // A response to HEAD announces a body it doesn't carry.
  parser.skip(request.method() == http::verb::head);
  boost::beast::error_code error;
  parser.put(boost::asio::buffer(text), error);
  if (!error && !parser.is_done()) parser.put_eof(error);
  FuzzCheck(!error && parser.is_done() && parser.get().result() == response.result(),
            "a response parses back as HTTP", text);
  return 0;
}
