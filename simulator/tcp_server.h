// Serves an instrument to many clients over TCP.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "simulator/shared_instrument.h"

namespace simulator {

struct TcpServerOptions {
  std::string address =
      "127.0.0.1";         ///< numeric IPv4 or IPv6 address of the interface; loopback unless told otherwise
  std::uint16_t port = 0;  ///< 0: any free port
  std::size_t most_clients = 500;     ///< further ones are closed as soon as they connect
  std::size_t longest_line = 65'536;  ///< bytes; a longer line is dropped with error -363
  std::chrono::milliseconds stall{
      30'000};  ///< a client that reads nothing of its replies for so long is dropped
};

/// Listens from construction on and serves in a thread of its own until Stop() or destruction.
class TcpServer {
 public:
  /// Throws std::runtime_error, naming address and port, when the address is none or cannot be listened on.
  explicit TcpServer(SharedInstrument& instrument, TcpServerOptions options = {});
  ~TcpServer();
  TcpServer(const TcpServer&) = delete;
  TcpServer& operator=(const TcpServer&) = delete;

  std::uint16_t Port() const;
  std::size_t Clients() const;
  /// Closes the port and every connection; may be called from any thread and more than once.
  void Stop();

 private:
  class Service;
  std::unique_ptr<Service> service_;
};

}  // namespace simulator
