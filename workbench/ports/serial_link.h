// A serial line as a Link: the settings of a line, the devices of this machine, and opening one.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "workbench/ports/link.h"

namespace workbench {

/// The devices behind COM1 to COM16, COM1 first; an empty text for a port that this machine does not have.
using SerialDevices = std::array<std::string, 16>;

/// What the system usually calls them: on Linux COM1 to COM4 are ttyS0 to ttyS3, COM5 to COM10 ttyUSB0 to
/// ttyUSB5, COM11 to COM16 ttyACM0 to ttyACM5; on Windows they have their own names.
SerialDevices DefaultSerialDevices();

enum class Parity { kNone, kEven, kOdd, kMark, kSpace };
enum class Handshake { kNone = 0, kXonXoff = 1, kHardware = 2 };

struct LineSettings {
  std::int32_t baud_rate = 19200;
  int data_bits = 8;
  Parity parity = Parity::kNone;
  int stop_bits = 1;
  Handshake handshake = Handshake::kNone;
};

/// Opens the device for this object alone and gives its line these settings. None on failure, with the reason
/// in `why`.
std::unique_ptr<Link> OpenSerial(const std::string& device, const LineSettings& settings, std::string& why);

/// Opens a serial line with nobody at its other end, made for the purpose: a pseudo-terminal where the system
/// has them.
std::unique_ptr<Link> OpenVirtualSerial(const LineSettings& settings, std::string& why);

/// Whether the device is there and can be opened. Leaves it closed.
bool SerialDeviceOpens(const std::string& device);

}  // namespace workbench
