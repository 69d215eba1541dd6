// The settings tree: the driver's own settings, and those of every port that it can use.
#include "driver/clsKEL4x.h"
#include "driver/core/number_text.h"
#include "driver/core/raise.h"
#include "driver/settings/option_list.h"
#include "host/host.h"

namespace qkel4x {
namespace {

using host::ParameterNode;
using host::Value;
using Node = std::shared_ptr<ParameterNode>;

Value Text(std::string_view text) { return Value(std::string(text)); }

void SetValue(const Node& node, const Value& value) { node->SetValue(value, -1, -1); }

Node AddText(const Node& root, std::string_view name) { return root->AddChild(name, 1, 4, "", ""); }

void AddFixedText(const Node& root, std::string_view name, std::string_view text) {
  const Node node = AddText(root, name);
  SetValue(node, Text(text));
  node->ReadOnly(true);
}

Node AddChoice(const Node& root, std::string_view name, std::string_view option_list,
               std::string_view value) {
  Node node = root->AddChild(name, 1, 2, option_list, "");
  SetValue(node, Text(value));
  return node;
}

/// The option list of the serial ports that open, "COM1=1,COM3=3". Opens and closes each in turn.
std::string ListCommPorts(host::Transport& transport) {
  const Node tree = transport.Settings();
  std::string list;
  for (std::int16_t number = 1; number <= 16; ++number) {
    const std::string digits(DecimalText(number));
    const std::string entry = Join("COM", digits, "=", digits);
    tree->Item("Comm Port")->OptionList(entry);
    SetValue(tree->Item("Comm Port"), Text(digits));
    bool reporting = true;
    const auto ignoring_errors = [](const auto& step) {
      try {
        step();
      } catch (
          const std::exception&) {  // NOLINT(bugprone-empty-catch): a port that does not open is not offered
      }
    };
    ignoring_errors([&] { reporting = host::CurrentHost().Errors().ReportingEnabled(); });
    ignoring_errors([&] { host::CurrentHost().Errors().ReportingEnabled(false); });
    ignoring_errors([&] { transport.OnLine(true); });
    ignoring_errors([&] { host::CurrentHost().Errors().ReportingEnabled(reporting); });
    if (transport.OnLine()) {
      transport.OnLine(false);
      if (!list.empty()) list += ',';
      list += entry;
    }
  }
  return list;
}

}  // namespace

void clsKEL4x::BuildSettings() {
  host::Host& host = host::CurrentHost();
  settings_ = host.CreateParameterNode();
  settings_->Initialise("General", 4, 3, "", "");
  AddFixedText(settings_, "Type", "KEL");
  AddFixedText(settings_, "Manufacturer", "HALVERN&TOSKE");
  AddFixedText(settings_, "Model Number", "KEL");
  AddText(settings_, "Serial Number");
  settings_->AddChild("Options", 3, 2, "KEL-B1=KEL-B1,KEL-B2=KEL-B2,KEL-B3=KEL-B3", "");
  Node remote_control = AddChoice(
      settings_, "Remote Control",
      "GPIB=QPort.clsGPIB, RS232=QPort.clsComm, TCP/IP=QPort.clsEthernet, GUI=QPort.clsGUI", "GPIB");
  Node log_messages = AddChoice(settings_, "Log Messages", "Yes=-1,No=0", "Yes");
  io_.UseSettings(std::move(remote_control), std::move(log_messages));

  const std::shared_ptr<host::Transport> gpib = host.CreateTransport("QPort.clsGPIB");
  const Node gpib_settings = gpib->Settings();
  SetValue(gpib_settings->Item("Primary Address"), Value(std::int16_t{6}));
  settings_->AddTree(gpib_settings, -1, -1);

  const std::shared_ptr<host::Transport> comm = host.CreateTransport("QPort.clsComm");
  const Node comm_settings = comm->Settings();
  const Node comm_port = comm_settings->Item("Comm Port");
  comm_port->OptionList(ListCommPorts(*comm));
  SetValue(comm_port, Text(GetDisplayValue(comm_port->OptionList(), 0)));
  const Node baud_rate = comm_settings->Item("Baud Rate");
  baud_rate->OptionList("1200=1200,2400=2400,4800=4800,9600=9600,19200=19200");
  SetValue(baud_rate, Text("19200"));
  comm_settings->Item("Data Bits")->OptionList("7=7,8=8");
  comm_settings->Item("Parity")->OptionList("EVEN=E,NO=N,ODD=O");
  comm_settings->Item("Stop Bits")->OptionList("1=1,2=2");
  comm_settings->Item("Handshaking")->OptionList("NO=0,XON/XOFF=1,HARDWARE=2");
  settings_->AddTree(comm_settings, -1, -1);

  const std::shared_ptr<host::Transport> ethernet = host.CreateTransport("QPort.clsEthernet");
  settings_->AddTree(ethernet->Settings(), -1, -1);
  const std::shared_ptr<host::Transport> gui = host.CreateTransport("QPort.clsGUI");
  settings_->AddTree(gui->Settings(), -1, -1);
}

}  // namespace qkel4x
