// The reference host: everything that the driver needs from a host application, in one object.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "host/host.h"
#include "simulator/shared_instrument.h"
#include "workbench/error_reporter.h"
#include "workbench/message_log.h"
#include "workbench/parameters/parameter.h"
#include "workbench/ports/serial_link.h"
#include "workbench/runtime.h"
#include "workbench/services.h"
#include "workbench/trace_writer.h"
#include "workbench/transfer_observer.h"

namespace workbench {

/// Makes a transport.
using TransportFactory = std::function<std::shared_ptr<host::Transport>()>;

/// What a workbench is made with.
struct Options {
  /// Virtual: waits move simulated time ahead, which the front panel's instrument shares, and return at once.
  bool virtual_clock = false;
  /// The devices behind COM1 to COM16.
  SerialDevices serial_devices = DefaultSerialDevices();
  /// Where none of these devices opens, COM1 is a serial line of its own with nobody at the other end, so
  /// that the driver can be created on a machine without a serial port.
  bool virtual_com1 = true;
  /// The instruments behind the front panel.
  simulator::Configuration simulator{};
  /// Wraps each link when it opens, so that faults can be put between a port and its instrument.
  LinkWrapper wrap_link{};
  /// Where every transfer is recorded, as TraceWriter::Open takes it; empty for nowhere.
  std::filesystem::path trace_file{};
  /// What the recording begins with.
  TraceHeader trace_header{};
};

/// A complete host. Any thread may call any member; a driver object with its transport and its settings
/// belongs to one thread at a time. Transports may outlive the workbench, the rest may not.
class Workbench final : public host::Host {
 public:
  /// Fails with 75 where the trace file cannot be opened.
  explicit Workbench(Options options = {});
  ~Workbench() override;
  Workbench(const Workbench&) = delete;
  Workbench& operator=(const Workbench&) = delete;

  ErrorReporter& Errors() override;
  class Runtime& Runtime() override {
    return *runtime_;
  }
  MessageLog& Log() override { return log_; }

  std::shared_ptr<host::ParameterNode> CreateParameterNode() override;
  /// Any letter case. "QPort.clsGPIB", "QPort.clsComm", "QPort.clsEthernet" and "QPort.clsGUI" are there from
  /// the beginning. An unknown name fails with 429; the text lists the known ones.
  std::shared_ptr<host::Transport> CreateTransport(std::string_view class_name) override;

  /// Makes `factory` the maker of that class and returns the one before it, empty where there was none.
  TransportFactory RegisterTransport(std::string_view class_name, TransportFactory factory);
  /// Takes the class away and returns its maker, empty where there was none.
  TransportFactory UnregisterTransport(std::string_view class_name);

  /// Ends every wait and transfer, and each new one, until ClearInterrupt. A signal handler may call it.
  void Interrupt() noexcept { runtime_->Interrupt(); }
  void ClearInterrupt() noexcept { runtime_->ClearInterrupt(); }

  /// Shows every transfer of every port to `observer`, beside the trace; null for nobody. Set it while no
  /// transfer is going on, and keep it alive until it is replaced or the last port is gone.
  void Observe(TransferObserver* observer);

  /// The trace of Options::trace_file; null where there is none. When it loses lines, the message log says so
  /// once.
  std::shared_ptr<TraceWriter> Trace() const;

  /// The simulated instrument of that name, made on first use. It keeps the time of this workbench's clock.
  std::shared_ptr<simulator::SharedInstrument> FrontPanel(const std::string& name = "SIM");
  /// Makes `class_name` a port to these instruments too, for use as any other bus, with the settings tree
  /// `group` of which only "Instrument" counts.
  void RegisterEmbedded(std::string_view class_name, std::string_view group);

  /// Whether COM1 is the workbench's own serial line because no device of this machine opened.
  bool HasVirtualCom1();

 private:
  class Tracing;
  struct Registered {
    std::string name;
    TransportFactory make;
  };

  const Options options_;
  const std::shared_ptr<Services> services_;
  Tracing* tracing_ = nullptr;  // of services_
  class Runtime* const runtime_;
  MessageLog log_;

  std::mutex classes_mutex_;
  std::map<std::string, Registered> classes_;  // by the name in small letters

  struct Instruments;
  const std::shared_ptr<Instruments> instruments_;

  std::once_flag serial_ports_seen_;
  bool has_virtual_com1_ = false;
};

}  // namespace workbench
