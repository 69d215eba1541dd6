// A workbench with one port and a scripted instrument at its far end, over any bus.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

#include "host/automation_error.h"
#include "host/transport.h"
#include "workbench/tests/ports/peer.h"
#include "workbench/workbench.h"

namespace workbench::test {

enum class Bus { kTcp, kSerial, kLibrary, kAdapter, kSerialAdapter, kFrontPanel };
inline constexpr Bus kBuses[] = {Bus::kTcp,     Bus::kSerial,        Bus::kLibrary,
                                 Bus::kAdapter, Bus::kSerialAdapter, Bus::kFrontPanel};

inline std::string NameOf(Bus bus) {
  switch (bus) {
    case Bus::kTcp:
      return "Tcp";
    case Bus::kSerial:
      return "Serial";
    case Bus::kLibrary:
      return "GpibLibrary";
    case Bus::kAdapter:
      return "GpibAdapter";
    case Bus::kSerialAdapter:
      return "GpibSerialAdapter";
    case Bus::kFrontPanel:
      return "FrontPanel";
  }
  return {};
}

/// The time that a busy machine may add to any limit; sanitizers make everything slower.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
inline constexpr double kSlack = 0.6;
#else
inline constexpr double kSlack = 0.15;
#endif

inline double SecondsSince(std::chrono::steady_clock::time_point begin) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

class Bench {
 public:
  Bench(Bus bus, Script script) {
    Options options;
    std::string class_name;
    switch (bus) {
      case Bus::kTcp:
        peer = std::make_unique<TcpPeer>(std::move(script));
        class_name = "QPort.clsEthernet";
        break;
      case Bus::kSerial: {
        auto pty = std::make_unique<PtyPeer>(std::move(script));
        options.serial_devices[2] = pty->Path();
        peer = std::move(pty);
        class_name = "QPort.clsComm";
        break;
      }
      case Bus::kLibrary:
        peer = std::make_unique<LibraryPeer>(std::move(script));
        class_name = "QPort.clsGPIB";
        break;
      case Bus::kAdapter:
        peer = std::make_unique<AdapterPeer>(std::move(script));
        class_name = "QPort.clsGPIB";
        break;
      case Bus::kSerialAdapter:
        peer = std::make_unique<SerialAdapterPeer>(std::move(script));
        class_name = "QPort.clsGPIB";
        break;
      case Bus::kFrontPanel: {
        auto panel = std::make_unique<FrontPanelPeer>(std::move(script));
        options.wrap_link = panel->Between();
        peer = std::move(panel);
        class_name = "QPort.clsGUI";
        break;
      }
    }
    host = std::make_unique<Workbench>(options);
    port = host->CreateTransport(class_name);
    peer->Configure(*port->Settings());
    port->OnLine(true);
  }

  std::unique_ptr<Peer> peer;
  std::unique_ptr<Workbench> host;
  std::shared_ptr<host::Transport> port;
};

/// The error that `call` raises; number 0 where it raises none.
template <typename Call>
host::AutomationError ErrorOf(Call call) {
  try {
    call();
  } catch (const host::AutomationError& error) {
    return error;
  }
  return {0, "", "no error"};
}

}  // namespace workbench::test
