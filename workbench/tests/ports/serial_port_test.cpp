// RS-232: every setting on the line, one user at a time, pulled plugs, the virtual COM1.
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "workbench/tests/ports/bench.h"
#include "workbench/workbench.h"

namespace workbench::test {
namespace {

using namespace std::chrono_literals;

void Echo(std::string_view line, Wire& wire) { wire.Send(std::string(line) + "\n"); }

class SerialPortTest : public testing::Test {
 protected:
  SerialPortTest() {
    Options options;
    options.serial_devices = {};
    options.serial_devices[2] = peer_.Path();
    options.virtual_com1 = false;
    host_ = std::make_unique<Workbench>(options);
    port_ = host_->CreateTransport("QPort.clsComm");
    Set("Comm Port", "3");
  }

  void Set(const char* name, const char* value) {
    port_->Settings()->Item(name)->SetValue(std::string(value), -1, -1);
  }

  /// The line as a second opener sees it: the lock holds among programs that ask for it, and the terminal's
  /// own exclusion is lifted for the look.
  // The other end of the pair shows the line's settings also while the port holds its own end exclusively.
  termios Line() const { return peer_.Line(); }

  PtyPeer peer_{Echo};
  std::unique_ptr<Workbench> host_;
  std::shared_ptr<host::Transport> port_;
};

TEST_F(SerialPortTest, OffersSixteenPortsAndAllLineSettings) {
  const auto settings = port_->Settings();
  for (int number = 1; number <= 16; ++number) {
    settings->Item("Comm Port")->SetValue("COM" + std::to_string(number), -1, -1);
    EXPECT_EQ(settings->Item("Comm Port")->GetValue(-1, -1), host::Value(std::to_string(number)));
  }
  EXPECT_THROW(Set("Comm Port", "COM17"), host::AutomationError);
  for (const char* rate : {"1200", "2400", "4800", "9600", "19200"}) EXPECT_NO_THROW(Set("Baud Rate", rate));
  for (const char* bits : {"7", "8"}) EXPECT_NO_THROW(Set("Data Bits", bits));
  for (const char* parity : {"EVEN", "NO", "ODD", "E", "N", "O"}) EXPECT_NO_THROW(Set("Parity", parity));
  for (const char* bits : {"1", "2"}) EXPECT_NO_THROW(Set("Stop Bits", bits));
  for (const char* kind : {"NO", "XON/XOFF", "HARDWARE", "0", "1", "2"})
    EXPECT_NO_THROW(Set("Handshaking", kind));
}

TEST_F(SerialPortTest, SettingsTakeEffectOnTheLine) {
  const struct {
    const char* text;
    speed_t code;
  } rates[] = {{"1200", B1200}, {"2400", B2400}, {"4800", B4800}, {"9600", B9600}, {"19200", B19200}};
  for (const auto& rate : rates) {
    Set("Baud Rate", rate.text);
    port_->OnLine(true);
    const termios line = Line();
    EXPECT_EQ(::cfgetospeed(&line), rate.code);
    EXPECT_EQ(::cfgetispeed(&line), rate.code);
    EXPECT_EQ(line.c_lflag & static_cast<tcflag_t>(ICANON | ECHO | ISIG), 0U);
    EXPECT_EQ(line.c_oflag & static_cast<tcflag_t>(OPOST), 0U);
    port_->OnLine(false);
  }
  Set("Stop Bits", "2");
  Set("Handshaking", "XON/XOFF");
  port_->OnLine(true);
  termios line = Line();
  EXPECT_NE(line.c_cflag & static_cast<tcflag_t>(CSTOPB), 0U);
  EXPECT_EQ(line.c_iflag & static_cast<tcflag_t>(IXON | IXOFF), static_cast<tcflag_t>(IXON | IXOFF));
  EXPECT_EQ(line.c_cflag & static_cast<tcflag_t>(CRTSCTS), 0U);
  port_->OnLine(false);
  Set("Stop Bits", "1");
  Set("Handshaking", "HARDWARE");
  port_->OnLine(true);
  line = Line();
  EXPECT_EQ(line.c_cflag & static_cast<tcflag_t>(CSTOPB), 0U);
  EXPECT_EQ(line.c_iflag & static_cast<tcflag_t>(IXON | IXOFF), 0U);
  EXPECT_NE(line.c_cflag & static_cast<tcflag_t>(CRTSCTS), 0U);
  port_->OnLine(false);
  // A pseudo-terminal keeps the flags of parity off and the size at eight bits; it takes the rest.
  Set("Parity", "E");
  Set("Data Bits", "7");
  port_->OnLine(true);
  EXPECT_EQ(port_->Query("A?"), "A?");
}

TEST_F(SerialPortTest, SecondUserIsTurnedAway) {
  port_->OnLine(true);
  const auto second = host_->CreateTransport("QPort.clsComm");
  second->Settings()->Item("Comm Port")->SetValue(std::string("COM3"), -1, -1);
  const auto error = ErrorOf([&] { second->OnLine(true); });
  EXPECT_EQ(error.Code(), 2010);
  EXPECT_EQ(error.Description(), "QPort.clsComm cannot open COM3 (" + peer_.Path() + "): it is in use");
  port_->OnLine(false);
  EXPECT_NO_THROW(second->OnLine(true));
  EXPECT_EQ(second->Query("A?"), "A?");
}

TEST_F(SerialPortTest, UsersThatTakeTurnsAllGetThePort) {
  std::vector<std::thread> threads;
  threads.reserve(8);
  std::atomic<int> opened{0};
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([this, &opened] {
      const auto port = host_->CreateTransport("QPort.clsComm");
      port->Settings()->Item("Comm Port")->SetValue(std::string("COM3"), -1, -1);
      port->OnLine(true);
      ++opened;
      port->OnLine(false);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(opened, 8);
}

TEST_F(SerialPortTest, PulledPlugIsALinkError) {
  port_->OnLine(true);
  EXPECT_EQ(port_->Query("A?"), "A?");
  peer_.Unplug();
  const auto error = ErrorOf([&] { port_->Query("B?"); });
  EXPECT_EQ(error.Code(), 2010) << error.Description();
  EXPECT_NE(error.Description().find("the link was lost"), std::string::npos) << error.Description();
  EXPECT_FALSE(port_->OnLine());
  EXPECT_EQ(ErrorOf([&] { port_->OnLine(true); }).Code(), 2010);
}

TEST_F(SerialPortTest, PortWithoutADeviceSaysSo) {
  Set("Comm Port", "4");
  EXPECT_EQ(ErrorOf([&] { port_->OnLine(true); }).Description(),
            "QPort.clsComm cannot open COM4: no device is set for it");
}

TEST_F(SerialPortTest, ADeviceThatIsNoSerialLineIsRefused) {
  Options options;
  options.serial_devices[0] = "/dev/null";
  options.virtual_com1 = false;
  Workbench host(options);
  const auto port = host.CreateTransport("QPort.clsComm");
  const auto error = ErrorOf([&] { port->OnLine(true); });
  EXPECT_EQ(error.Code(), 2010);
  EXPECT_EQ(error.Description().find("QPort.clsComm cannot open COM1 (/dev/null): "), 0U)
      << error.Description();
}

TEST(VirtualCom1Test, IsOfferedWhereNoDeviceOpensAndNowhereElse) {
  Options options;
  options.serial_devices = {};
  Workbench bare(options);
  EXPECT_TRUE(bare.HasVirtualCom1());
  const auto first = bare.CreateTransport("QPort.clsComm");
  const auto second = bare.CreateTransport("QPort.clsComm");
  first->OnLine(true);
  second->OnLine(true);  // each has a line of its own, so that several drivers can be created at once
  EXPECT_TRUE(first->OnLine() && second->OnLine());
  first->Timeout(0.05F);
  EXPECT_EQ(ErrorOf([&] { first->Query("*IDN?"); }).Code(), 2013);
  EXPECT_EQ(ErrorOf([&] {
              second->OnLine(false);
              second->Settings()->Item("Comm Port")->SetValue(std::string("COM2"), -1, -1);
              second->OnLine(true);
            }).Code(),
            2010);

  options.virtual_com1 = false;
  EXPECT_FALSE(Workbench(options).HasVirtualCom1());

  PtyPeer peer(Echo);
  options.virtual_com1 = true;
  options.serial_devices[4] = peer.Path();
  EXPECT_FALSE(Workbench(options).HasVirtualCom1());
}

}  // namespace
}  // namespace workbench::test
