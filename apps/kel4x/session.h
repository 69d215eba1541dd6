// One driver and the host around it, from construction to the moment when the instrument is local again.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "driver/clsKEL4x.h"
#include "host/automation_error.h"
#include "resource.h"
#include "traffic.h"
#include "workbench/workbench.h"

namespace kel4x {

/// What a session is made with.
struct SessionOptions {
  Resource resource;
  std::optional<double> timeout;  ///< seconds; the driver's own where none is given
  std::vector<std::pair<std::string, std::string>> settings;  ///< of the driver: path and value
  bool simulate_host = false;
  bool virtual_time = false;
  /// Look at the serial ports of the machine whatever the resource is. Without it a session opens none but
  /// its own, since opening a port may disturb what hangs on it.
  bool all_serial_ports = false;
  /// A serial resource takes any line that opens; for replaying, where nothing goes over it.
  bool any_serial_port = false;
  /// Puts something in the place of the port, given the port; for replaying.
  std::function<std::shared_ptr<host::Transport>(std::shared_ptr<host::Transport>)> replace_port;
  /// Puts something between the port and its link; for looking at the bytes.
  workbench::LinkWrapper wrap_link;
};

/// Why a call failed.
struct Failure {
  std::int32_t number = 0;  ///< as raised
  std::string source;
  std::string description;
  std::string link;        ///< what the port said; empty where the link did its work
  bool link_lost = false;  ///< the port is closed, or its last transfer failed

  /// The number without the object-error base where it has it.
  std::int32_t Code() const;
  /// One line for people: description, what the link said, number.
  std::string Text() const;
};

/// The host, the driver and the link of one run. There is one at a time in a process.
class Session {
 public:
  /// Builds the host and the driver and fills in the settings; nothing is opened for use yet. Throws a
  /// UsageError for a setting that is not there or a value that it does not take.
  explicit Session(SessionOptions options);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// Throws a NoLinkError that says why.
  void GoOnLine();
  /// Makes the instrument local again and closes the port; nothing happens off line. An interruption does not
  /// keep it from doing so.
  void GoOffLine() noexcept;
  bool OnLine();

  qkel4x::clsKEL4x& Driver() { return *driver_; }
  workbench::Workbench& Host() { return host_; }
  Traffic& Link() { return traffic_; }
  const Resource& Target() const { return options_.resource; }

  /// The settings of the driver as paths and values, in the order of the tree.
  std::vector<std::pair<std::string, std::string>> Settings();

  /// Runs a call of the driver; the failure where it fails.
  template <class Call>
  std::optional<Failure> Attempt(const Call& call) {
    traffic_.BeginCall();
    try {
      call();
      return std::nullopt;
    } catch (const host::AutomationError& error) {
      return Explain(error);
    }
  }

  /// Whether Ctrl-C was pressed or the process was asked to end.
  static bool Interrupted();
  /// The same for the session to be: a session that goes on line late notices an early Ctrl-C.
  static void ListenForInterrupts();

 private:
  Failure Explain(const host::AutomationError& error);
  void CapturePort(const std::string& class_name);
  void ApplySettings();

  SessionOptions options_;
  Traffic traffic_;
  workbench::Workbench host_;
  host::Host* previous_ = nullptr;
  std::weak_ptr<host::Transport> port_;
  std::unique_ptr<qkel4x::clsKEL4x> driver_;
};

}  // namespace kel4x
