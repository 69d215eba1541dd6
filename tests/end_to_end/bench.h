// A driver, a workbench with a real port, and the simulated instrument at its other end, over any bus.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "driver/clsKEL4x.h"
#include "host/host.h"
#include "simulator/pty_server.h"
#include "simulator/tcp_server.h"
#include "workbench/tests/ports/bench.h"
#include "workbench/workbench.h"

namespace end_to_end {

using qkel4x::clsKEL4x;

using workbench::test::Bus;
using workbench::test::kBuses;
using workbench::test::NameOf;

inline std::string ClassOf(Bus bus) {
  switch (bus) {
    case Bus::kTcp:
      return "QPort.clsEthernet";
    case Bus::kSerial:
      return "QPort.clsComm";
    case Bus::kFrontPanel:
      return "QPort.clsGUI";
    case Bus::kLibrary:
    case Bus::kAdapter:
    case Bus::kSerialAdapter:
      break;
  }
  return "QPort.clsGPIB";
}

/// A workbench in simulated time, one simulated instrument, and a driver that is set up to reach it.
class Bench {
 public:
  /// `wrap` puts something between the port and its link.
  explicit Bench(Bus bus, const workbench::LinkWrapper& wrap = {}) {
    workbench::Options options;
    options.wrap_link = wrap;
    options.virtual_clock = true;
    options.serial_devices = {};
    if (bus == Bus::kSerial) {
      pty_ = std::make_unique<simulator::PtyServer>(*instrument_);
      options.serial_devices[2] = pty_->Path();
    }
    host_ = std::make_unique<workbench::Workbench>(options);
    clock_.store(host_.get(), std::memory_order_release);
    host::SetCurrentHost(host_.get());
    const std::string class_name = ClassOf(bus);
    host_->RegisterTransport(class_name, [this, make = host_->UnregisterTransport(class_name)] {
      auto port = make();
      port_ = port;
      return port;
    });
    driver_ = std::make_unique<clsKEL4x>();
    switch (bus) {
      case Bus::kTcp:
        tcp_ = std::make_unique<simulator::TcpServer>(*instrument_);
        Set("Remote Control", "TCP/IP");
        Set("TCP/IP.Port", std::to_string(tcp_->Port()));
        break;
      case Bus::kSerial:
        Set("Remote Control", "RS232");
        Set("RS232.Comm Port", "COM3");
        break;
      case Bus::kLibrary:
        Set("Remote Control", "GPIB");
        library_ = std::make_unique<workbench::test::LibraryPeer>(OnTheBus());
        library_->Configure(*driver_->Settings()->Item("GPIB"));
        break;
      case Bus::kAdapter:
        Set("Remote Control", "GPIB");
        adapter_ = std::make_unique<workbench::test::AdapterPeer>(OnTheBus());
        adapter_->Configure(*driver_->Settings()->Item("GPIB"));
        break;
      case Bus::kSerialAdapter:
        Set("Remote Control", "GPIB");
        adapter_ = std::make_unique<workbench::test::SerialAdapterPeer>(OnTheBus());
        adapter_->Configure(*driver_->Settings()->Item("GPIB"));
        break;
      case Bus::kFrontPanel:
        Set("Remote Control", "GUI");
        break;
    }
  }

  ~Bench() {
    driver_.reset();
    host::SetCurrentHost(nullptr);
  }
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  clsKEL4x& Driver() { return *driver_; }
  workbench::Workbench& Host() { return *host_; }
  /// The port that the driver made last.
  std::shared_ptr<host::Transport> Port() { return port_.lock(); }
  simulator::SharedInstrument& Instrument() { return *instrument_; }
  /// What the port said last; empty where it said nothing.
  std::string LastLinkError() {
    const auto recorded = host_->Errors().Recorded();
    return recorded.empty() ? std::string() : recorded.back().description;
  }

 private:
  void Set(std::string_view path, const std::string& value) {
    driver_->Settings()->Item(path)->SetValue(value, -1, -1);
  }

  /// The simulated instrument as a device on a bus.
  workbench::test::Script OnTheBus() {
    return [this](std::string_view line, workbench::test::Wire& wire) {
      simulator::Instrument::Answer answer;
      instrument_->Execute(line, answer);
      if (answer.has_reply) wire.Send(answer.bytes + "\n");
    };
  }

  std::unique_ptr<workbench::Workbench> host_;         // before the instrument, which reads its clock
  std::atomic<workbench::Workbench*> clock_{nullptr};  // a server's thread may ask before there is a host
  std::shared_ptr<simulator::SharedInstrument> instrument_ =
      std::make_shared<simulator::SharedInstrument>(simulator::Configuration{}, [this] {
        workbench::Workbench* clock = clock_.load(std::memory_order_acquire);
        return clock != nullptr ? clock->Runtime().Now() : 0.0;
      });
  std::unique_ptr<simulator::PtyServer> pty_;
  std::unique_ptr<simulator::TcpServer> tcp_;
  std::unique_ptr<workbench::test::LibraryPeer> library_;
  std::unique_ptr<workbench::test::Peer> adapter_;
  std::weak_ptr<host::Transport> port_;
  std::unique_ptr<clsKEL4x> driver_;
};

}  // namespace end_to_end
