// Serves a simulated instrument over TCP and on a pseudo-terminal. Prints the port and the terminal, and ends
// with its standard input. Arguments: the seconds of its clock that pass in one second (default 1), a
// time-lapse for slow modes.
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <limits>

#include "simulator/pty_server.h"
#include "simulator/shared_instrument.h"
#include "simulator/tcp_server.h"

int main(int argc, char** argv) {
  const double speed = argc > 1 ? std::strtod(argv[1], nullptr) : 1.0;
  const auto begin = std::chrono::steady_clock::now();
  simulator::SharedInstrument instrument({}, [=] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count() * speed;
  });
  simulator::TcpServer tcp(instrument);
  simulator::PtyServer serial(instrument);
  std::cout << tcp.Port() << ' ' << serial.Path() << std::endl;
  std::cin.ignore(std::numeric_limits<std::streamsize>::max());
}
