#include "workbench/ports/gpib_port.h"

#include <string>
#include <utility>

#include "workbench/ports/gpib_adapter.h"
#include "workbench/ports/gpib_library.h"
#include "workbench/ports/serial_link.h"
#include "workbench/ports/tcp_link.h"

namespace workbench {

GpibPort::GpibPort(std::shared_ptr<Services> services) : Port(std::move(services), "QPort.clsGPIB", "GPIB") {
  AddPlain("Primary Address", std::int16_t{6}, "Address of the instrument on the bus").WholeNumbers(0, 30);
  AddChoice("Interface", "Library=library,Adapter over TCP=tcp,Adapter over a serial line=serial", "library",
            "What drives the bus");
  AddPlain("Board", std::int16_t{0}, "Number of the interface board").WholeNumbers(0, 31);
  AddPlain("Library", std::string(), "File of the bus library; empty for the usual ones of this system");
  AddPlain("Adapter Host", std::string("127.0.0.1"), "Name or address of a TCP adapter");
  AddPlain("Adapter Port", std::int32_t{1234}, "TCP port of a TCP adapter").WholeNumbers(1, 65535);
  AddPlain("Adapter Device", std::string(), "Serial device of a serial adapter");
}

std::unique_ptr<Link> GpibPort::Open(const Deadline& deadline) {
  const std::string interface = TextOf("Interface");
  const std::int32_t address = NumberOf("Primary Address");
  std::string why;
  if (interface == "library") {
    const std::int32_t board = NumberOf("Board");
    auto link = OpenGpibLibrary(TextOf("Library"), board, address, why);
    if (!link)
      NotOpened("address " + std::to_string(address) + " of GPIB board " + std::to_string(board), why);
    return link;
  }
  std::string peer;
  std::unique_ptr<Link> stream;
  if (interface == "tcp") {
    const std::string host_name = TextOf("Adapter Host");
    const std::string port = TextOf("Adapter Port");
    peer = PeerName(host_name, port);
    stream = ConnectTcp(host_name, port, deadline, why);
  } else {
    peer = TextOf("Adapter Device");
    LineSettings line;
    line.baud_rate = 115200;
    stream = OpenSerial(peer, line, why);
  }
  if (!stream) NotOpened("the GPIB adapter at " + peer, why);
  auto link = OpenGpibAdapter(std::move(stream), address, deadline, why);
  if (!link) NotOpened("the GPIB adapter at " + peer, why);
  return link;
}

}  // namespace workbench
