// vsmhost: a reference host for modules of the local device-access service.
//
// It loads each module with dlopen (only through the ten exports of vsm.h), reads its alias,
// version and ports, starts it with DoAction(0), and serves it to web pages on the loopback
// interface alone: HTTP/1.1 and WebSocket on 127.0.0.1 and, where the system has it, ::1. It
// prints "listening on http://127.0.0.1:PORT" once ready. A command runs on the I/O thread that
// read it. GetWaitTimeout is polled once a second for the status route. SIGINT or SIGTERM stop
// the listeners and the I/O threads, and only then does each module hear DoAction(3), so the
// tear-down overlaps no command. Exit 0 after a clean stop, 1 when a module or the port fails,
// 2 on a usage error.
//
// The URL translator of GET commands is the one piece of the code base the host links: it is
// the host's side of the boundary, and no module state lies behind it.
#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cstdio>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "host_context.h"
#include "host_options.h"
#include "listener.h"
#include "module_library.h"

namespace vsmhost {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;

std::vector<std::unique_ptr<ModuleLibrary>> LoadModules(const HostOptions& options) {
  std::vector<std::unique_ptr<ModuleLibrary>> modules;
  for (const std::string& path : options.modules) {
    std::unique_ptr<ModuleLibrary> module = ModuleLibrary::Load(path);
    for (const auto& loaded : modules) {
      if (loaded->alias() == module->alias()) {
        throw ModuleLoadError(path + " has the alias of " + loaded->path() + ": " +
                              loaded->alias());
      }
    }
    modules.push_back(std::move(module));
  }
  return modules;
}

// 127.0.0.1 on the port asked for (or a free one), then ::1 on the same port when the system
// has IPv6 on loopback; a missing ::1 is no failure.
std::vector<std::shared_ptr<Listener>> Listen(asio::io_context& context, HostContext* host,
                                              unsigned short port) {
  std::vector<std::shared_ptr<Listener>> listeners;
  listeners.push_back(std::make_shared<Listener>(
      context, tcp::endpoint(asio::ip::address_v4::loopback(), port), host));
  port = listeners[0]->port();
  try {
    listeners.push_back(std::make_shared<Listener>(
        context, tcp::endpoint(asio::ip::address_v6::loopback(), port), host));
  } catch (const boost::system::system_error& error) {
    if (host->options().verbose) fprintf(stderr, "vsmhost: no [::1]:%u: %s\n", port, error.what());
  }
  return listeners;
}

int Serve(HostContext* host) {
  const HostOptions& options = host->options();
  const unsigned threads =
      options.threads != 0 ? options.threads : std::max(1u, std::thread::hardware_concurrency());
  auto context = std::make_unique<asio::io_context>(static_cast<int>(threads));
  const unsigned short port = static_cast<unsigned short>(
      options.port >= 0 ? options.port : static_cast<int>(host->modules()[0]->firstPort()));
  std::vector<std::shared_ptr<Listener>> listeners;
  try {
    listeners = Listen(*context, host, port);
  } catch (const boost::system::system_error& error) {
    fprintf(stderr, "vsmhost: cannot listen on 127.0.0.1:%u: %s\n", port, error.what());
    return 1;
  }
  host->set_port(listeners[0]->port());
  for (const auto& listener : listeners) listener->Run();

  {  // the timer and the signal set go before the context they belong to
    asio::steady_timer poll(*context);
    std::function<void()> pollWaitTimeout = [&] {
      for (const auto& module : host->modules()) module->PollWaitTimeout();
      poll.expires_after(std::chrono::seconds(1));
      poll.async_wait([&](boost::system::error_code error) {
        if (!error) pollWaitTimeout();
      });
    };
    asio::post(*context, pollWaitTimeout);

    asio::signal_set signals(*context, SIGINT, SIGTERM);
    signals.async_wait([&](boost::system::error_code, int) {
      for (const auto& listener : listeners) listener->Stop();
      poll.cancel();
      context->stop();
    });

    printf("listening on http://127.0.0.1:%u\n", host->port());
    fflush(stdout);
    std::vector<std::thread> runners;
    for (unsigned i = 1; i < threads; ++i) runners.emplace_back([&] { context->run(); });
    context->run();
    for (std::thread& runner : runners) runner.join();
  }
  // Destroying the context ends every session still open, and with them their WebSockets'
  // CloseWebSocket calls, before the modules stop.
  listeners.clear();
  context.reset();
  return 0;
}

int Main(int argc, char** argv) {
  HostOptions options;
  try {
    options = ParseHostOptions(argc, argv);
  } catch (const HostUsageError& error) {
    fprintf(stderr, "vsmhost: %s\n%s", error.what(), kHostUsage);
    return 2;
  }
  if (options.help) {
    fputs(kHostUsage, stdout);
    return 0;
  }
  std::vector<std::unique_ptr<ModuleLibrary>> modules;
  try {
    modules = LoadModules(options);
  } catch (const ModuleLoadError& error) {
    fprintf(stderr, "vsmhost: %s\n", error.what());
    return 1;
  }
  for (const auto& module : modules) {
    const int started = module->Start();
    fprintf(stderr, "vsmhost: module %s (%s), ports %u %u, DoAction(0): %d\n",
            module->alias().c_str(), module->version().c_str(), module->firstPort(),
            module->secondPort(), started);
  }
  HostContext host(std::move(options), std::move(modules));
  const int status = Serve(&host);
  for (const auto& module : host.modules()) module->Stop();
  return status;
}

}  // namespace
}  // namespace vsmhost

int main(int argc, char** argv) { return vsmhost::Main(argc, argv); }
