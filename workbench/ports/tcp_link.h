// A TCP connection as a Link. Plain blocking sockets: one send and one receive are all the system calls of an
// exchange, the deadline and the interruption included.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "workbench/ports/link.h"

namespace workbench {

/// "host:port", with an IPv6 address in brackets.
std::string PeerName(std::string_view host_name, std::string_view port);

/// Connects to the first address of `host_name` that takes the connection. None on failure, with the reason
/// in `why`; ends by the deadline and in under 100 ms when the host interrupts.
std::unique_ptr<Link> ConnectTcp(const std::string& host_name, const std::string& port,
                                 const Deadline& deadline, std::string& why);

/// How far a connection gets.
struct TcpLayers {
  enum class Layer { kName, kReachability, kPort, kAll };
  Layer fails = Layer::kAll;  ///< the first that fails; kAll where none does
  std::string addresses;      ///< of the name, where it was found
  std::string why;            ///< it fails
};

/// Tries name, host and port of a connection one by one, and closes it again.
TcpLayers ExamineTcp(const std::string& host_name, const std::string& port, const Deadline& deadline);

}  // namespace workbench
