// Construction: the settings tree, the search for serial ports, and what a transport is given.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "../member_cases/scripted_host.h"
#include "driver/clsKEL4x.h"
#include "driver/settings/clsRegister.h"

namespace qkel4x {
namespace {

using member_cases::ScriptedHost;
using member_cases::ScriptedNode;
using Lines = std::vector<std::string>;

ScriptedNode& Node(clsKEL4x& driver, std::string_view path) {
  return static_cast<ScriptedNode&>(*driver.Settings()->Item(path));
}

std::string Text(clsKEL4x& driver, std::string_view path) {
  return std::get<std::string>(Node(driver, path).GetValue(-1, -1));
}

TEST(Construction, BuildsTheTreeInOrder) {
  ScriptedHost host;
  clsKEL4x driver;
  const auto root = driver.Settings();
  EXPECT_EQ(root->Name(), "General");
  EXPECT_EQ(static_cast<ScriptedNode&>(*root).codes, (std::array{4, 3}));
  Lines names;
  for (std::size_t i = 0; i < root->Count(); ++i) names.push_back(root->Child(i)->Name());
  EXPECT_EQ(names, (Lines{"Type", "Manufacturer", "Model Number", "Serial Number", "Options",
                          "Remote Control", "Log Messages", "GPIB", "RS232", "TCP/IP", "GUI"}));
  EXPECT_EQ(driver.Settings(), root) << "the same object every time";
}

TEST(Construction, GivesEachSettingItsKindAndOptions) {
  ScriptedHost host;
  clsKEL4x driver;
  for (const char* name : {"Type", "Manufacturer", "Model Number", "Serial Number"}) {
    EXPECT_EQ(Node(driver, name).codes, (std::array{1, 4})) << name;
    EXPECT_EQ(Node(driver, name).OptionList(), "") << name;
  }
  EXPECT_EQ(Node(driver, "Options").codes, (std::array{3, 2}));
  EXPECT_EQ(Node(driver, "Options").OptionList(), "KEL-B1=KEL-B1,KEL-B2=KEL-B2,KEL-B3=KEL-B3");
  EXPECT_EQ(Node(driver, "Remote Control").codes, (std::array{1, 2}));
  EXPECT_EQ(Node(driver, "Remote Control").OptionList(),
            "GPIB=QPort.clsGPIB, RS232=QPort.clsComm, TCP/IP=QPort.clsEthernet, GUI=QPort.clsGUI");
  EXPECT_EQ(Node(driver, "Log Messages").codes, (std::array{1, 2}));
  EXPECT_EQ(Node(driver, "Log Messages").OptionList(), "Yes=-1,No=0");
  for (const char* name : {"Type", "Options", "Remote Control", "Log Messages"}) {
    EXPECT_EQ(Node(driver, name).description, "") << name;
  }
}

TEST(Construction, SetsTheDefaults) {
  ScriptedHost host;
  clsKEL4x driver;
  EXPECT_EQ(Text(driver, "Type"), "KEL");
  EXPECT_EQ(Text(driver, "Manufacturer"), "HALVERN&TOSKE");
  EXPECT_EQ(Text(driver, "Model Number"), "KEL");
  EXPECT_TRUE(std::holds_alternative<std::monostate>(Node(driver, "Serial Number").GetValue(-1, -1)));
  EXPECT_TRUE(std::holds_alternative<std::monostate>(Node(driver, "Options").GetValue(-1, -1)));
  EXPECT_EQ(Text(driver, "Remote Control"), "QPort.clsGPIB");
  EXPECT_EQ(Text(driver, "Log Messages"), "-1");
}

TEST(Construction, MakesTheThreeNamesReadOnly) {
  ScriptedHost host;
  clsKEL4x driver;
  for (const char* name : {"Type", "Manufacturer", "Model Number"}) {
    EXPECT_TRUE(Node(driver, name).ReadOnly()) << name;
  }
  for (const char* name : {"Serial Number", "Options", "Remote Control", "Log Messages",
                           "GPIB.Primary Address", "RS232.Comm Port", "RS232.Baud Rate"}) {
    EXPECT_FALSE(Node(driver, name).ReadOnly()) << name;
  }
}

TEST(Construction, NarrowsTheTransportsSettings) {
  ScriptedHost host;
  clsKEL4x driver;
  EXPECT_EQ(std::get<std::int16_t>(Node(driver, "GPIB.Primary Address").GetValue(-1, -1)), 6);
  EXPECT_EQ(Node(driver, "RS232.Baud Rate").OptionList(),
            "1200=1200,2400=2400,4800=4800,9600=9600,19200=19200");
  EXPECT_EQ(Text(driver, "RS232.Baud Rate"), "19200");
  EXPECT_EQ(Node(driver, "RS232.Data Bits").OptionList(), "7=7,8=8");
  EXPECT_EQ(Node(driver, "RS232.Parity").OptionList(), "EVEN=E,NO=N,ODD=O");
  EXPECT_EQ(Node(driver, "RS232.Stop Bits").OptionList(), "1=1,2=2");
  EXPECT_EQ(Node(driver, "RS232.Handshaking").OptionList(), "NO=0,XON/XOFF=1,HARDWARE=2");
  for (const char* name : {"RS232.Data Bits", "RS232.Parity", "RS232.Stop Bits", "RS232.Handshaking"}) {
    EXPECT_EQ(Text(driver, name), "untouched") << name;
  }
  EXPECT_EQ(Text(driver, "TCP/IP.Address"), "192.0.2.1");
}

TEST(Construction, OffersThePortsThatOpen) {
  ScriptedHost host;
  host.serial_ports = {1, 3};
  clsKEL4x driver;
  EXPECT_EQ(Node(driver, "RS232.Comm Port").OptionList(), "COM1=1,COM3=3");
  EXPECT_EQ(Text(driver, "RS232.Comm Port"), "1") << "the value half of COM1";
}

TEST(Construction, TriesPorts1To16AndClosesEachAtOnce) {
  ScriptedHost host;
  host.serial_ports = {1, 16, 17};
  clsKEL4x driver;
  EXPECT_EQ(Node(driver, "RS232.Comm Port").OptionList(), "COM1=1,COM16=16");
  Lines expected;
  for (int port = 1; port <= 16; ++port) {
    const std::string number = std::to_string(port);
    expected.insert(expected.end(), {"reporting off", "open " + number, "reporting on"});
    if (port == 1 || port == 16) expected.push_back("close " + number);
  }
  EXPECT_EQ(host.events, expected);
}

TEST(Construction, FailsWithoutASerialPort) {
  ScriptedHost host;
  host.serial_ports.clear();
  try {
    clsKEL4x driver;
    FAIL();
  } catch (const host::AutomationError& error) {
    EXPECT_EQ(error.Code(), 380);
    EXPECT_EQ(error.Source(), "modParameterUtilities.GetDisplayValue");
    EXPECT_EQ(error.Description(), "Invalid Property Value (intIndex = 0)");
  }
  EXPECT_TRUE(host.reporting);
}

TEST(Construction, PutsTheReportersSwitchBack) {
  for (const bool before : {true, false}) {
    ScriptedHost host;
    host.reporting = before;
    host.serial_ports = {2};
    clsKEL4x driver;
    EXPECT_EQ(host.reporting, before);
  }
}

TEST(Construction, FailsAsTheCreationOfATransportFails) {
  for (const std::string name : {"QPort.clsGPIB", "QPort.clsComm", "QPort.clsEthernet", "QPort.clsGUI"}) {
    ScriptedHost host;
    host.unregistered.insert(name);
    try {
      clsKEL4x driver;
      ADD_FAILURE() << name;
    } catch (const host::AutomationError& error) {
      EXPECT_EQ(error.Number(), host::kCannotCreateObject) << name;
    }
  }
}

TEST(Construction, SaysNothingToAnyInstrument) {
  ScriptedHost host;
  clsKEL4x driver;
  for (const std::string& line : host.events) EXPECT_FALSE(line.starts_with(">")) << line;
  EXPECT_EQ(host.Port(), nullptr) << "the four transports are released";
}

TEST(GoingOnLine, GivesTheTransportItsNameAndSettings) {
  ScriptedHost host;
  clsKEL4x driver;
  driver.Name("Receiver 1");
  driver.Settings()->Item("GPIB.Primary Address")->SetValue(std::int16_t{22}, -1, -1);
  driver.OnLine(true);
  ASSERT_NE(host.Port(), nullptr);
  EXPECT_EQ(host.Port()->Name(), "Receiver 1");
  const auto settings = host.Port()->Settings();
  EXPECT_EQ(std::get<std::int16_t>(settings->Item("Primary Address")->GetValue(-1, -1)), 22);
  EXPECT_EQ(std::get<std::int16_t>(settings->Item("Secondary Address")->GetValue(-1, -1)), 0);
  driver.OnLine(false);
  EXPECT_EQ(host.Port(), nullptr) << "the transport is released";
}

TEST(GoingOnLine, TakesASerialPortsSettingsAsTheHostLeftThem) {
  ScriptedHost host;
  host.serial_ports = {1, 3};
  clsKEL4x driver;
  driver.Settings()->Item("Remote Control")->SetValue(std::string("RS232"), -1, -1);
  driver.Settings()->Item("RS232.Comm Port")->SetValue(std::string("COM3"), -1, -1);
  driver.Settings()->Item("RS232.Parity")->SetValue(std::string("ODD"), -1, -1);
  driver.OnLine(true);
  ASSERT_NE(host.Port(), nullptr);
  const auto settings = host.Port()->Settings();
  EXPECT_EQ(std::get<std::string>(settings->Item("Comm Port")->GetValue(-1, -1)), "3");
  EXPECT_EQ(std::get<std::string>(settings->Item("Parity")->GetValue(-1, -1)), "O");
  EXPECT_EQ(std::get<std::string>(settings->Item("Baud Rate")->GetValue(-1, -1)), "19200");
}

TEST(OnLine, FollowsATransportThatWasLost) {
  ScriptedHost host;
  clsKEL4x driver;
  driver.OnLine(true);
  ASSERT_TRUE(driver.OnLine());
  host.Port()->Drop();
  EXPECT_FALSE(driver.OnLine());
  try {
    driver.OnLine(false);
    FAIL();
  } catch (const host::AutomationError& error) {
    EXPECT_EQ(error.Number(), 2003);
    EXPECT_EQ(error.Description(), "Driver already off-line");
  }
  driver.OnLine(true);
  EXPECT_TRUE(driver.OnLine()) << "with a new transport";
}

TEST(Register, NamesTheDriverWithoutOne) {
  clsRegister first;
  clsRegister second;
  host::IRegister& names = second;
  EXPECT_EQ(first.GetClassDescription(), "KEL4x");
  EXPECT_EQ(first.GetClassName(), "clsKEL4x");
  EXPECT_EQ(names.GetClassDescription(), first.GetClassDescription());
  EXPECT_EQ(names.GetClassName(), first.GetClassName());
}

}  // namespace
}  // namespace qkel4x
