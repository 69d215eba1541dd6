// Resource strings: every form that is accepted, and what is said of the others.
#include "apps/kel4x/resource.h"

#include <gtest/gtest.h>

#include "apps/kel4x/exit_code.h"

namespace kel4x {
namespace {

std::string Refusal(std::string_view text) {
  try {
    ParseResource(text);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "accepted";
}

TEST(Resource, TakesATcpSocket) {
  const Resource resource = ParseResource("TCPIP::kel40.lab::5025::SOCKET");
  EXPECT_EQ(resource.port, Resource::Port::kTcp);
  EXPECT_EQ(resource.host, "kel40.lab");
  EXPECT_EQ(resource.tcp_port, 5025);
  EXPECT_EQ(resource.text, "TCPIP::kel40.lab::5025::SOCKET");
}

TEST(Resource, TakesABoardNumberAndAnyLetterCase) {
  const Resource resource = ParseResource("tcpip0::192.168.0.40::1025::socket");
  EXPECT_EQ(resource.host, "192.168.0.40");
  EXPECT_EQ(resource.tcp_port, 1025);
}

TEST(Resource, TakesAnIpv6AddressInBrackets) {
  EXPECT_EQ(ParseResource("TCPIP::[::1]::5025::SOCKET").host, "::1");
  EXPECT_EQ(ParseResource("TCPIP0::[fe80::1%eth0]::5025::SOCKET").host, "fe80::1%eth0");
}

TEST(Resource, TakesSerialDevicesAndNumbers) {
  const Resource device = ParseResource("ASRL::/dev/ttyUSB0::INSTR");
  EXPECT_EQ(device.port, Resource::Port::kSerial);
  EXPECT_EQ(device.device, "/dev/ttyUSB0");
  EXPECT_EQ(device.comm_port, 0);
  EXPECT_EQ(ParseResource("ASRL/dev/ttyS1::INSTR").device, "/dev/ttyS1");
  EXPECT_EQ(ParseResource("ASRL1::INSTR").comm_port, 1);
  EXPECT_EQ(ParseResource("ASRL16::INSTR").comm_port, 16);
  EXPECT_EQ(ParseResource("ASRL::COM3::INSTR").comm_port, 3);
}

TEST(Resource, TakesGpib) {
  const Resource resource = ParseResource("GPIB0::6::INSTR");
  EXPECT_EQ(resource.port, Resource::Port::kGpib);
  EXPECT_EQ(resource.gpib_board, 0);
  EXPECT_EQ(resource.gpib_address, 6);
  EXPECT_EQ(ParseResource("GPIB::30::INSTR").gpib_address, 30);
  EXPECT_EQ(ParseResource("GPIB2::0").gpib_board, 2);
}

TEST(Resource, TakesTheSimulatedInstrument) {
  EXPECT_EQ(ParseResource("SIM").port, Resource::Port::kSimulated);
  EXPECT_EQ(ParseResource("sim").port, Resource::Port::kSimulated);
}

TEST(Resource, SaysWhatIsWrongAndWhatWouldBeRight) {
  EXPECT_EQ(Refusal("TCPIP::host::SOCKET"),
            "resource \"TCPIP::host::SOCKET\": the port number is missing, as in "
            "TCPIP::192.168.0.40::5025::SOCKET");
  EXPECT_EQ(Refusal("TCPIP::host::INSTR"),
            "resource \"TCPIP::host::INSTR\": this instrument has a raw socket, not VXI-11: write "
            "TCPIP::host::5025::SOCKET");
  EXPECT_EQ(Refusal("GPIB0::31::INSTR"),
            "resource \"GPIB0::31::INSTR\": \"31\" is no primary address (0 to 30), as in GPIB0::6::INSTR");
  EXPECT_EQ(Refusal("ASRL17::INSTR"),
            "resource \"ASRL17::INSTR\": \"17\" is no serial port number (1 to 16)");
}

TEST(Resource, RefusesWhatIsNone) {
  for (const char* text : {"",
                           "TCPIP",
                           "TCPIP::",
                           "TCPIP::::5025::SOCKET",
                           "TCPIP::h::0::SOCKET",
                           "TCPIP::h::65536::SOCKET",
                           "TCPIP::h::+5::SOCKET",
                           "TCPIP::h::5025",
                           "TCPIP::h::5025::SOCKET::x",
                           "TCPIP::[::1::5025::SOCKET",
                           "TCPIP::::1::5025::SOCKET",
                           "TCPIPx::h::1::SOCKET",
                           "ASRL::INSTR",
                           "ASRL::/dev/x",
                           "ASRL0::INSTR",
                           "GPIB::INSTR",
                           "GPIB0::6::2::INSTR",
                           "GPIB0::-1::INSTR",
                           "SIM::1",
                           "USB0::1::2::INSTR",
                           "hostname"}) {
    EXPECT_NE(Refusal(text), "accepted") << text;
  }
  EXPECT_NE(Refusal(std::string(2000, 'x')), "accepted");
  EXPECT_NE(Refusal(std::string_view("TCPIP::a\0b::1::SOCKET", 21)), "accepted");
}

}  // namespace
}  // namespace kel4x
