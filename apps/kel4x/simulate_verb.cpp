// simulate: the instrument for other programs, over TCP and as a serial device.
#include <chrono>
#include <cstdio>
#include <optional>
#include <string>
#include <thread>

#include "output.h"
#include "session.h"
#include "simulator/configuration.h"
#include "simulator/shared_instrument.h"
#include "simulator/tcp_server.h"
#include "verbs.h"
#ifndef _WIN32
#include "simulator/pty_server.h"
#endif

namespace kel4x {
namespace {

void Announce(const Arguments& arguments, const std::string& resource) {
  if (arguments.json) {
    PrintLine(TextsJson({{"resource", resource}}));
  } else {
    PrintLine(resource);
  }
}

std::string TcpResource(const std::string& address, std::uint16_t port) {
  const bool ipv6 = address.find(':') != std::string::npos;
  return "TCPIP::" + (ipv6 ? "[" + address + "]" : address) + "::" + std::to_string(port) + "::SOCKET";
}

}  // namespace

ExitCode Simulate(const Arguments& arguments) {
  simulator::Configuration configuration;
  configuration.firmware = arguments.firmware;
  configuration.options = arguments.options;
  configuration.signal.carrier_to_noise_db = arguments.carrier_to_noise;
  configuration.signal.level_dbm = arguments.level;
  configuration.settle_scale = arguments.settle;
  configuration.seed = arguments.seed;

  const auto start = std::chrono::steady_clock::now();
  simulator::SharedInstrument instrument(configuration, [start, scale = arguments.time_scale] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() * scale;
  });

  try {
    std::optional<simulator::TcpServer> tcp;
    if (!arguments.no_tcp) {
      simulator::TcpServerOptions options;
      options.address = arguments.address;
      options.port = static_cast<std::uint16_t>(arguments.port);
      tcp.emplace(instrument, options);
      Announce(arguments, TcpResource(arguments.address, tcp->Port()));
    }
#ifndef _WIN32
    std::optional<simulator::PtyServer> pty;
    if (arguments.no_tcp || !arguments.pty.empty()) {
      simulator::PtyServerOptions options;
      options.link = arguments.pty;
      pty.emplace(instrument, options);
      Announce(arguments, "ASRL::" + (arguments.pty.empty() ? pty->Path() : arguments.pty) + "::INSTR");
    }
#else
    if (arguments.no_tcp || !arguments.pty.empty()) {
      throw UsageError("this system has no pseudo-terminals: leave out --pty and --no-tcp");
    }
#endif
    while (!Session::Interrupted()) std::this_thread::sleep_for(std::chrono::milliseconds(50));
  } catch (const std::runtime_error& error) {
    // The address, the port or the link is not to be had.
    throw UsageError(error.what());
  }
  return kDone;
}

}  // namespace kel4x
