#include "workbench/workbench.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "host/automation_error.h"
#include "workbench/ports/front_panel_port.h"
#include "workbench/ports/gpib_port.h"
#include "workbench/ports/serial_port.h"
#include "workbench/ports/tcp_port.h"
#include "workbench/services.h"
#include "workbench/text.h"

namespace workbench {

/// The simulated instruments by name; the ports hold it too.
struct Workbench::Instruments {
  std::shared_ptr<simulator::SharedInstrument> Find(const std::string& name) {
    const std::lock_guard lock(mutex);
    auto& instrument = by_name[name];
    if (!instrument) {
      instrument = std::make_shared<simulator::SharedInstrument>(
          configuration, [runtime = services] { return runtime->runtime.Now(); });
    }
    return instrument;
  }

  simulator::Configuration configuration;
  std::shared_ptr<Services> services;
  std::mutex mutex;
  std::map<std::string, std::shared_ptr<simulator::SharedInstrument>> by_name;
};

/// Shows a transfer to the trace and to the user's observer.
class Workbench::Tracing final : public TransferObserver {
 public:
  Tracing(std::shared_ptr<TraceWriter> trace, MessageLog* log) : trace_(std::move(trace)), log_(log) {}

  void Observe(const TransferRecord& record) noexcept override {
    trace_->Observe(record);
    if (trace_->HasLost()) [[unlikely]] {
      Complain();
    }
    if (TransferObserver* const other = other_.load(std::memory_order_acquire)) other->Observe(record);
  }

  const std::shared_ptr<TraceWriter>& Trace() const { return trace_; }
  void Other(TransferObserver* observer) { other_.store(observer, std::memory_order_release); }
  /// The workbench ends; its ports may go on.
  void LeaveLog() {
    const std::lock_guard lock(log_mutex_);
    log_ = nullptr;
  }

 private:
  void Complain() noexcept {
    const std::lock_guard lock(log_mutex_);
    MessageLog* const log = std::exchange(log_, nullptr);
    if (log == nullptr) return;
    try {
      log->Append(kNotice, "Trace", trace_->File().string() + " is not complete", trace_->Lost());
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): a transfer goes on without the notice
    }
  }

  static constexpr std::int32_t kNotice = 0;

  const std::shared_ptr<TraceWriter> trace_;
  std::atomic<TransferObserver*> other_{nullptr};
  std::mutex log_mutex_;
  MessageLog* log_;
};

Workbench::Workbench(Options options)
    : options_(std::move(options)),
      services_(std::make_shared<Services>(
          options_.virtual_clock ? Runtime::Clock::kVirtual : Runtime::Clock::kReal, options_.wrap_link)),
      runtime_(&services_->runtime),
      instruments_(std::make_shared<Instruments>()) {
  instruments_->configuration = options_.simulator;
  instruments_->services = services_;
  if (!options_.trace_file.empty()) {
    auto tracing =
        std::make_unique<Tracing>(TraceWriter::Open(options_.trace_file, options_.trace_header), &log_);
    tracing_ = tracing.get();
    services_->tracing = std::move(tracing);
    Observe(nullptr);
  }
  RegisterTransport("QPort.clsGPIB", [services = services_] { return std::make_shared<GpibPort>(services); });
  RegisterTransport("QPort.clsComm", [this] {
    return std::make_shared<SerialPort>(services_, SerialPorts{options_.serial_devices, HasVirtualCom1()});
  });
  RegisterTransport("QPort.clsEthernet",
                    [services = services_] { return std::make_shared<TcpPort>(services); });
  RegisterEmbedded("QPort.clsGUI", "GUI");
}

Workbench::~Workbench() {
  if (tracing_ != nullptr) tracing_->LeaveLog();
}

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
  if (tracing_ != nullptr) {
    tracing_->Other(observer);
    observer = tracing_;
  }
  services_->observer.store(observer, std::memory_order_release);
}

std::shared_ptr<TraceWriter> Workbench::Trace() const {
  return tracing_ != nullptr ? tracing_->Trace() : nullptr;
}

std::shared_ptr<simulator::SharedInstrument> Workbench::FrontPanel(const std::string& name) {
  return instruments_->Find(name);
}

void Workbench::RegisterEmbedded(std::string_view class_name, std::string_view group) {
  RegisterTransport(class_name, [services = services_, instruments = instruments_,
                                 class_text = std::string(class_name), group_text = std::string(group)] {
    return std::make_shared<FrontPanelPort>(
        services, [instruments](const std::string& name) { return instruments->Find(name); }, class_text,
        group_text);
  });
}

bool Workbench::HasVirtualCom1() {
  std::call_once(serial_ports_seen_, [this] {
    has_virtual_com1_ =
        options_.virtual_com1 && std::ranges::none_of(options_.serial_devices, SerialDeviceOpens);
  });
  return has_virtual_com1_;
}

}  // namespace workbench
