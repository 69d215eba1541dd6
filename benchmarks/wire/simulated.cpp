// The simulated instrument behind a port, in a process of its own. Prints its port, and ends when its
// standard input does.
#include <chrono>
#include <iostream>
#include <string>

#include "simulator/tcp_server.h"

int main() {
  simulator::SharedInstrument instrument({}, [] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
  });
  const simulator::TcpServer server(instrument);
  std::cout << server.Port() << std::endl;
  std::string line;
  while (std::getline(std::cin, line)) {
  }
}
