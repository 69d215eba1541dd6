// A simulated instrument for the clients under Wine: over TCP and on a pseudo-terminal, until standard input
// ends. It settles at once.
#include <chrono>
#include <exception>
#include <iostream>
#include <limits>

#include "simulator/pty_server.h"
#include "simulator/shared_instrument.h"
#include "simulator/tcp_server.h"

int main() {
  try {
    const auto start = std::chrono::steady_clock::now();
    simulator::Configuration configuration;
    configuration.settle_scale = 0.0;
    simulator::SharedInstrument instrument(configuration, [start] {
      return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    });
    simulator::TcpServer server(instrument);
    simulator::PtyServer terminal(instrument);
    std::cout << server.Port() << ' ' << terminal.Path() << std::endl;
    std::cin.ignore(std::numeric_limits<std::streamsize>::max());
    return 0;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
