// Building the host and the driver, and going on line and off line whatever happens.
#include "session.h"

#include <atomic>
#include <cmath>

#include "exit_code.h"
#include "host/automation_error.h"
#include "host/host.h"
#include "terminal.h"

namespace kel4x {
namespace {

std::atomic<bool> interrupted{false};
std::atomic<workbench::Workbench*> interruptible{nullptr};

void HandleInterrupt() {
  interrupted.store(true, std::memory_order_relaxed);
  if (workbench::Workbench* host = interruptible.load(std::memory_order_acquire)) host->Interrupt();
}

std::string PortClass(Resource::Port port) {
  switch (port) {
    case Resource::Port::kTcp:
      return "QPort.clsEthernet";
    case Resource::Port::kSerial:
      return "QPort.clsComm";
    case Resource::Port::kGpib:
      return "QPort.clsGPIB";
    case Resource::Port::kSimulated:
      break;
  }
  return "QPort.clsGUI";
}

workbench::Options HostOptions(const SessionOptions& options) {
  workbench::Options made;
  made.wrap_link = options.wrap_link;
  made.virtual_clock = options.virtual_time || options.resource.port == Resource::Port::kSimulated;
  const Resource& resource = options.resource;
  if (options.any_serial_port) {
    made.serial_devices = {};
  } else if (!options.all_serial_ports) {
    const workbench::SerialDevices usual = made.serial_devices;
    made.serial_devices = {};
    if (resource.port == Resource::Port::kSerial) {
      if (!resource.device.empty()) {
        made.serial_devices[0] = resource.device;
      } else {
        const auto number = static_cast<std::size_t>(resource.comm_port);
        made.serial_devices[number - 1] = usual[number - 1];
      }
    }
  }
  return made;
}

}  // namespace

std::int32_t Failure::Code() const {
  const std::int64_t offset = std::int64_t{number} - host::kObjectErrorBase;
  return offset >= 0 && offset <= 0xFFFF ? static_cast<std::int32_t>(offset) : number;
}

std::string Failure::Text() const {
  std::string text = description;
  while (text.ends_with(' ')) text.pop_back();
  // A failed query ends in "Error : " and the instrument's queue entry; what the link said is the cause.
  if (!link.empty() && text.find(link) == std::string::npos) text += "; " + link;
  return text + " (" + std::to_string(Code()) + ")";
}

bool Session::Interrupted() { return interrupted.load(std::memory_order_relaxed); }

void Session::ListenForInterrupts() { terminal::OnInterrupt(HandleInterrupt); }

Session::Session(SessionOptions options) : options_(std::move(options)), host_(HostOptions(options_)) {
  previous_ = host::SetCurrentHost(&host_);
  try {
    host_.Observe(&traffic_);
    host_.Runtime().SimulationActive(options_.simulate_host);
    const Resource& resource = options_.resource;
    if (resource.port == Resource::Port::kSerial && !options_.any_serial_port && host_.HasVirtualCom1()) {
      throw NoLinkError(
          resource.text + ": the serial device " +
          (resource.device.empty() ? "behind COM" + std::to_string(resource.comm_port) : resource.device) +
          " cannot be opened: not there, in use, or no permission");
    }
    CapturePort(PortClass(resource.port));
    driver_ = std::make_unique<qkel4x::clsKEL4x>();
    ApplySettings();
  } catch (...) {
    driver_.reset();
    host_.Observe(nullptr);
    host::SetCurrentHost(previous_);
    throw;
  }
  interruptible.store(&host_, std::memory_order_release);
  if (Interrupted()) host_.Interrupt();
}

Session::~Session() {
  GoOffLine();
  interruptible.store(nullptr, std::memory_order_release);
  driver_.reset();
  host_.Observe(nullptr);
  host::SetCurrentHost(previous_);
}

void Session::CapturePort(const std::string& class_name) {
  auto make = host_.UnregisterTransport(class_name);
  host_.RegisterTransport(class_name, [this, make = std::move(make)] {
    std::shared_ptr<host::Transport> port = make();
    if (options_.replace_port) port = options_.replace_port(std::move(port));
    port_ = port;
    return port;
  });
}

void Session::ApplySettings() {
  const Resource& resource = options_.resource;
  const auto settings = driver_->Settings();
  const auto set = [&](const std::string& name, const host::Value& value) {
    try {
      settings->Item(name)->SetValue(value, -1, -1);
    } catch (const host::AutomationError& error) {
      throw UsageError("setting " + name + ": " + error.Description());
    }
  };
  for (const auto& [name, value] : options_.settings) set(name, value);

  set("Remote Control", PortClass(resource.port));
  switch (resource.port) {
    case Resource::Port::kTcp:
      set("TCP/IP.Host", resource.host);
      set("TCP/IP.Port", std::int32_t{resource.tcp_port});
      if (options_.timeout) {
        set("TCP/IP.Connect Timeout", static_cast<std::int32_t>(std::ceil(*options_.timeout)));
      }
      break;
    case Resource::Port::kSerial:
      set("RS232.Comm Port", "COM" + std::to_string(resource.device.empty() ? resource.comm_port : 1));
      break;
    case Resource::Port::kGpib:
      set("GPIB.Primary Address", static_cast<std::int16_t>(resource.gpib_address));
      set("GPIB.Board", static_cast<std::int16_t>(resource.gpib_board));
      break;
    case Resource::Port::kSimulated:
      break;
  }
}

bool Session::OnLine() { return driver_->OnLine(); }

void Session::GoOnLine() {
  traffic_.Heading("going on line: " + options_.resource.text);
  const auto failure = Attempt([&] { driver_->OnLine(true); });
  if (!driver_->OnLine()) {
    std::string why = traffic_.LinkText();
    if (failure) why = failure->Text();
    if (Interrupted()) why = "interrupted";
    if (why.empty()) why = "the port did not open";
    throw NoLinkError(options_.resource.text + ": no link: " + why);
  }
  if (options_.timeout) {
    if (const auto port = port_.lock()) port->Timeout(static_cast<float>(*options_.timeout));
  }
}

void Session::GoOffLine() noexcept {
  try {
    if (!driver_ || !driver_->OnLine()) return;
    // The instrument goes local even when the reason to stop was Ctrl-C; pressing it again ends this too.
    host_.ClearInterrupt();
    traffic_.Heading("going off line");
    driver_->OnLine(false);
  } catch (const std::exception&) {
    // Going off line never fails because of the instrument; what else may fail leaves nothing to do.
    return;
  }
}

Failure Session::Explain(const host::AutomationError& error) {
  return {.number = error.Number(),
          .source = error.Source(),
          .description = error.Description(),
          .link = traffic_.LinkText(),
          .link_lost = traffic_.LinkFailed() || !driver_->OnLine()};
}

std::vector<std::pair<std::string, std::string>> Session::Settings() {
  return workbench::SettingTextsOf(*driver_->Settings());
}

}  // namespace kel4x
