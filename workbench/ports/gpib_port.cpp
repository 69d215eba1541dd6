#include "workbench/ports/gpib_port.h"

#include <utility>

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

std::unique_ptr<Link> GpibPort::Open(const Deadline&) {
  NotOpened("the GPIB bus", "this build drives no bus yet");
}

}  // namespace workbench
