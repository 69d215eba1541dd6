// "QPort.clsComm": a port over RS-232.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "workbench/ports/port.h"
#include "workbench/ports/serial_link.h"

namespace workbench {

/// The serial ports that a workbench offers.
struct SerialPorts {
  SerialDevices devices;
  bool virtual_com1 = false;  ///< COM1 is a line of its own with nobody at the other end
};

/// Settings, in the group "RS232": "Comm Port" (COM1=1 to COM16=16), "Baud Rate", "Data Bits", "Parity",
/// "Stop Bits" and "Handshaking".
class SerialPort final : public Port {
 public:
  SerialPort(std::shared_ptr<Services> services, SerialPorts ports);

 protected:
  std::unique_ptr<Link> Open(const Deadline& deadline) override;

 private:
  SerialPorts ports_;
};

}  // namespace workbench
