#include "workbench/ports/serial_port.h"

#include <string>
#include <utility>

#include "workbench/ports/serial_link.h"

namespace workbench {
namespace {

constexpr std::string_view kCommPorts =
    "COM1=1,COM2=2,COM3=3,COM4=4,COM5=5,COM6=6,COM7=7,COM8=8,COM9=9,COM10=10,COM11=11,COM12=12,COM13=13,"
    "COM14=14,"
    "COM15=15,COM16=16";
constexpr std::string_view kBaudRates =
    "300=300,600=600,1200=1200,2400=2400,4800=4800,9600=9600,19200=19200,38400=38400,57600=57600,115200="
    "115200,"
    "230400=230400";

Parity ParityOf(std::string_view letter) {
  if (letter == "E") return Parity::kEven;
  if (letter == "O") return Parity::kOdd;
  if (letter == "M") return Parity::kMark;
  if (letter == "S") return Parity::kSpace;
  return Parity::kNone;
}

}  // namespace

SerialPort::SerialPort(std::shared_ptr<Services> services, SerialPorts ports)
    : Port(std::move(services), "QPort.clsComm", "RS232"), ports_(std::move(ports)) {
  AddChoice("Comm Port", kCommPorts, "1", "Serial port");
  AddChoice("Baud Rate", kBaudRates, "19200", "Bits per second");
  AddChoice("Data Bits", "5=5,6=6,7=7,8=8", "8", "Data bits of a character");
  AddChoice("Parity", "EVEN=E,NO=N,ODD=O,MARK=M,SPACE=S", "N", "Parity bit of a character");
  AddChoice("Stop Bits", "1=1,2=2", "1", "Stop bits of a character");
  AddChoice("Handshaking", "NO=0,XON/XOFF=1,HARDWARE=2", "0", "Flow control");
}

std::unique_ptr<Link> SerialPort::Open(const Deadline&) {
  const std::int32_t number = NumberOf("Comm Port");
  const std::string name = "COM" + std::to_string(number);
  LineSettings settings;
  settings.baud_rate = NumberOf("Baud Rate");
  settings.data_bits = NumberOf("Data Bits");
  settings.parity = ParityOf(TextOf("Parity"));
  settings.stop_bits = NumberOf("Stop Bits");
  settings.handshake = static_cast<Handshake>(NumberOf("Handshaking"));

  std::string why;
  if (number == 1 && ports_.virtual_com1) {
    auto link = OpenVirtualSerial(settings, why);
    if (!link) NotOpened(name, why);
    return link;
  }
  if (number < 1 || number > static_cast<std::int32_t>(ports_.devices.size()) ||
      ports_.devices[static_cast<std::size_t>(number - 1)].empty()) {
    NotOpened(name, "no device is set for it");
  }
  const std::string& device = ports_.devices[static_cast<std::size_t>(number - 1)];
  auto link = OpenSerial(device, settings, why);
  if (!link) NotOpened(name + " (" + device + ")", why);
  return link;
}

}  // namespace workbench
