// "QPort.clsEthernet": a port over TCP.
#pragma once

#include <memory>

#include "workbench/ports/port.h"

namespace workbench {

/// Settings, in the group "TCP/IP": "Host" (a name or an IPv4 or IPv6 address), "Port" (1 to 65535, 5025 at
/// first) and "Connect Timeout" (whole seconds, 5 at first).
class TcpPort final : public Port {
 public:
  explicit TcpPort(std::shared_ptr<Services> services);

 protected:
  std::unique_ptr<Link> Open(const Deadline& deadline) override;
  double OpenTimeout() const override;
};

}  // namespace workbench
