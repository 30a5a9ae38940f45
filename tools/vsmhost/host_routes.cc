#include "host_routes.h"

#include <cstdio>

#include "protocol/url_command_encoder.h"

namespace vsmhost {

namespace {

const char kJsonType[] = "application/json; charset=utf-8";

struct Target {
  std::string path, query;
  bool hasQuery = false;
};

Target SplitTarget(boost::beast::string_view target) {
  Target split;
  const size_t mark = target.find('?');
  split.path = std::string(target.substr(0, mark));
  if (mark != boost::beast::string_view::npos) {
    split.query = std::string(target.substr(mark + 1));
    split.hasQuery = true;
  }
  return split;
}

// "/ALIAS" or "/ALIAS/REST" of a loaded module: the module, with REST in *rest.
const ModuleLibrary* ModuleOfPath(const HostContext& host, const std::string& path,
                                  std::string* rest) {
  if (path.size() < 2 || path[0] != '/') return nullptr;
  const size_t slash = path.find('/', 1);
  const ModuleLibrary* module = host.FindModule(path.substr(1, slash - 1));
  if (module != nullptr && rest != nullptr) {
    *rest = slash == std::string::npos ? "" : path.substr(slash + 1);
  }
  return module;
}

Response MakeResponse(const Request& request, http::status status, const std::string& type,
                      std::string body) {
  Response response(status, request.version());
  response.set(http::field::server, "vsmhost");
  if (!type.empty()) response.set(http::field::content_type, type);
  response.body() = std::move(body);
  response.keep_alive(request.keep_alive());
  return response;
}

Response JsonError(const Request& request, http::status status, const std::string& message) {
  return MakeResponse(request, status, kJsonType, "{\"error\":" + JsonQuote(message) + "}");
}

void AllowAnyOrigin(const Request& request, Response* response) {
  const auto origin = request.find(http::field::origin);
  response->set(http::field::access_control_allow_origin,
                origin == request.end() ? boost::beast::string_view("*") : origin->value());
  response->set(http::field::vary, "Origin");
}

Response Preflight(const Request& request) {
  Response response = MakeResponse(request, http::status::no_content, "", "");
  response.set(http::field::access_control_allow_methods, "GET, POST, OPTIONS");
  const auto headers = request.find(http::field::access_control_request_headers);
  if (headers != request.end()) {
    response.set(http::field::access_control_allow_headers, headers->value());
  }
  response.set(http::field::access_control_max_age, "600");
  // Chromium asks before a public page may reach the loopback interface.
  const auto privateNetwork = request.find("Access-Control-Request-Private-Network");
  if (privateNetwork != request.end() && privateNetwork->value() == "true") {
    response.set("Access-Control-Allow-Private-Network", "true");
  }
  return response;
}

Response Status(const HostContext& host, const Request& request) {
  char numbers[96];
  snprintf(numbers, sizeof numbers, "{\"port\":%u,\"connections\":%u,\"uptime\":%.1f,\"modules\":[",
           host.port(), host.openConnections(), host.UptimeSeconds());
  std::string body = numbers;
  for (const auto& module : host.modules()) {
    if (body.back() == '}') body += ",";
    snprintf(numbers, sizeof numbers, "\"ports\":[%u,%u],\"waitTimeout\":%d}", module->firstPort(),
             module->secondPort(), module->LastWaitTimeout());
    body += "{\"alias\":" + JsonQuote(module->alias()) +
            ",\"version\":" + JsonQuote(module->version()) + "," + numbers;
  }
  return MakeResponse(request, http::status::ok, kJsonType, body + "]}");
}

Response AnswerResponse(const Request& request, const ModuleLibrary& module,
                        const ModuleAnswer& answer) {
  if (!answer.answered) {
    return MakeResponse(request, http::status::bad_gateway, kJsonType, NoAnswerText(module));
  }
  if (!answer.hasBinary) return MakeResponse(request, http::status::ok, kJsonType, answer.text);
  std::string boundary = "vsm-answer";
  while (answer.text.find(boundary) != std::string::npos ||
         answer.binary.find(boundary) != std::string::npos) {
    boundary += "-x";
  }
  const std::string mark = "--" + boundary;
  return MakeResponse(request, http::status::ok, "multipart/mixed; boundary=" + boundary,
                      mark + "\r\nContent-Type: " + kJsonType + "\r\n\r\n" + answer.text + "\r\n" +
                          mark + "\r\nContent-Type: application/octet-stream\r\n\r\n" +
                          answer.binary + "\r\n" + mark + "--\r\n");
}

Response Command(const HostContext& host, const Connection& connection, const Request& request,
                 const ModuleLibrary& module, const Target& target, const std::string& method) {
  std::string text;
  if (request.method() == http::verb::post) {
    text = request.body();
  } else if (request.method() == http::verb::get) {
    text = vsm::UrlCommandEncoder().EncodeMethodUrl(method, target.query);
    if (text.empty()) {
      return JsonError(request, http::status::bad_request,
                       "no command in this URL: GET /" + module.alias() + "/METHOD?id=ID&p=JSON");
    }
  } else {
    Response response =
        JsonError(request, http::status::method_not_allowed, "a command comes by POST or GET");
    response.set(http::field::allow, "GET, POST, OPTIONS");
    return response;
  }
  const std::string origin(request[http::field::origin]);
  return AnswerResponse(request, module,
                        module.Distribute(connection, std::string(request.target()), text, origin));
}

}  // namespace

std::string JsonQuote(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      quoted += '\\';
      quoted += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char escape[8];
      snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned char>(c));
      quoted += escape;
    } else {
      quoted += c;
    }
  }
  return quoted + "\"";
}

std::string NoAnswerText(const ModuleLibrary& module) {
  return "{\"error\":\"the module gave no answer\",\"module\":" + JsonQuote(module.alias()) + "}";
}

Response ErrorResponse(http::status status, const std::string& message, unsigned version,
                       bool keepAlive) {
  Request request(http::verb::get, "/", version);
  request.keep_alive(keepAlive);
  return JsonError(request, status, message);
}

const ModuleLibrary* WebSocketModule(const HostContext& host, const std::string& target) {
  std::string rest;
  const ModuleLibrary* module = ModuleOfPath(host, SplitTarget(target).path, &rest);
  return rest == "ws" ? module : nullptr;
}

Response Route(const HostContext& host, const Connection& connection, const Request& request) {
  const Target target = SplitTarget(request.target());
  Response response;
  std::string rest;
  if (request.method() == http::verb::options) {
    response = Preflight(request);
  } else if (const ModuleLibrary* module = ModuleOfPath(host, target.path, &rest)) {
    response = Command(host, connection, request, *module, target, rest);
  } else if (request.method() != http::verb::get && request.method() != http::verb::head) {
    response = JsonError(request, http::status::not_found, "no such route");
  } else if (target.path == "/status") {
    response = Status(host, request);
  } else if (const PageFile* file =
                 host.FindPageFile(target.path == "/" ? "index.html" : target.path.substr(1))) {
    response = MakeResponse(request, http::status::ok, file->type, file->bytes);
    response.set(http::field::cache_control, "no-cache");
  } else {
    response = JsonError(request, http::status::not_found, "no such route");
  }
  AllowAnyOrigin(request, &response);
  if (request.method() == http::verb::head) {
    response.content_length(response.body().size());
    response.body().clear();
    return response;
  }
  response.prepare_payload();
  return response;
}

}  // namespace vsmhost
