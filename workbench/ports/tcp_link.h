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

}  // namespace workbench
