#include "workbench/ports/tcp_port.h"

#include <utility>

#include "workbench/ports/tcp_link.h"

namespace workbench {

TcpPort::TcpPort(std::shared_ptr<Services> services)
    : Port(std::move(services), "QPort.clsEthernet", "TCP/IP") {
  AddPlain("Host", std::string("127.0.0.1"), "Name or address of the instrument");
  AddPlain("Port", std::int32_t{5025}, "TCP port of the instrument").WholeNumbers(1, 65535);
  AddPlain("Connect Timeout", std::int32_t{5}, "Seconds that connecting may take").WholeNumbers(1, 3600);
}

double TcpPort::OpenTimeout() const { return NumberOf("Connect Timeout"); }

std::unique_ptr<Link> TcpPort::Open(const Deadline& deadline) {
  const std::string host_name = TextOf("Host");
  const std::string port = TextOf("Port");
  std::string why;
  auto link = ConnectTcp(host_name, port, deadline, why);
  if (!link) NotOpened(PeerName(host_name, port), why);
  return link;
}

}  // namespace workbench
