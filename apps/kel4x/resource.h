// Resource strings: which instrument, over which port. VISA forms, and SIM for the embedded instrument.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kel4x {

/// A parsed resource string.
struct Resource {
  enum class Port { kSimulated, kTcp, kSerial, kGpib };

  Port port = Port::kSimulated;
  std::string text = "SIM";    ///< as it was given
  std::string host;            ///< kTcp: name or address, without brackets
  std::uint16_t tcp_port = 0;  ///< kTcp
  std::string device;          ///< kSerial by device: "/dev/ttyUSB0"; empty where a number was given
  int comm_port = 0;           ///< kSerial by number: 1 to 16 for COM1 to COM16; 0 where a device was given
  int gpib_board = 0;          ///< kGpib: 0 to 99
  int gpib_address = 0;        ///< kGpib: primary address, 0 to 30
};

/// Reads "SIM", "TCPIP::host::5025::SOCKET" (a board number after TCPIP, an IPv6 address in brackets),
/// "ASRL::/dev/ttyUSB0::INSTR", "ASRL1::INSTR", "GPIB0::6::INSTR"; letter case of the key words is free.
/// Throws a UsageError that names the piece that does not fit and shows a form that does.
Resource ParseResource(std::string_view text);

}  // namespace kel4x
