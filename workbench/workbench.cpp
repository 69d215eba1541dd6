#include "workbench/workbench.h"

#include <algorithm>
#include <utility>

#include "host/automation_error.h"
#include "workbench/ports/front_panel_port.h"
#include "workbench/ports/gpib_port.h"
#include "workbench/ports/serial_port.h"
#include "workbench/ports/tcp_port.h"
#include "workbench/services.h"
#include "workbench/text.h"

namespace workbench {

Workbench::Workbench(Options options)
    : options_(std::move(options)),
      services_(std::make_shared<Services>(options_.virtual_clock ? Runtime::Clock::kVirtual
                                                                  : Runtime::Clock::kReal)),
      runtime_(&services_->runtime) {
  RegisterTransport("QPort.clsGPIB", [services = services_] { return std::make_shared<GpibPort>(services); });
  RegisterTransport("QPort.clsComm", [this] {
    return std::make_shared<SerialPort>(services_, SerialPorts{options_.serial_devices, HasVirtualCom1()});
  });
  RegisterTransport("QPort.clsEthernet",
                    [services = services_] { return std::make_shared<TcpPort>(services); });
  RegisterTransport("QPort.clsGUI", [services = services_] {
    return std::make_shared<FrontPanelPort>(services,
                                            [](const std::string&) { return EmbeddedInstrument(); });
  });
}

Workbench::~Workbench() = default;

ErrorReporter& Workbench::Errors() { return services_->errors; }

std::shared_ptr<host::ParameterNode> Workbench::CreateParameterNode() {
  return std::make_shared<Parameter>();
}

std::shared_ptr<host::Transport> Workbench::CreateTransport(std::string_view class_name) {
  TransportFactory make;
  std::string known;
  {
    const std::lock_guard lock(classes_mutex_);
    if (const auto found = classes_.find(Lower(class_name)); found != classes_.end())
      make = found->second.make;
    if (!make) {
      for (const auto& [key, registered] : classes_) {
        if (!known.empty()) known += ", ";
        known += registered.name;
      }
    }
  }
  if (make) return make();
  throw host::AutomationError(
      host::kCannotCreateObject, "Host",
      "There is no transport class " + Quoted(class_name) + "; there is " + (known.empty() ? "none" : known));
}

TransportFactory Workbench::RegisterTransport(std::string_view class_name, TransportFactory factory) {
  const std::lock_guard lock(classes_mutex_);
  Registered& entry = classes_[Lower(class_name)];
  entry.name = class_name;
  return std::exchange(entry.make, std::move(factory));
}

TransportFactory Workbench::UnregisterTransport(std::string_view class_name) {
  const std::lock_guard lock(classes_mutex_);
  auto taken = classes_.extract(Lower(class_name));
  return taken ? std::move(taken.mapped().make) : TransportFactory();
}

void Workbench::Observe(TransferObserver* observer) {
  services_->observer.store(observer, std::memory_order_release);
}

bool Workbench::HasVirtualCom1() {
  std::call_once(serial_ports_seen_, [this] {
    has_virtual_com1_ =
        options_.virtual_com1 && std::ranges::none_of(options_.serial_devices, SerialDeviceOpens);
  });
  return has_virtual_com1_;
}

}  // namespace workbench
