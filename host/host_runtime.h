// The host's clock and mode of work.
#pragma once

namespace host {

class HostRuntime {
 public:
  virtual ~HostRuntime() = default;

  /// True while the host runs without an instrument.
  virtual bool SimulationActive() = 0;
  /// Blocks the caller for that many seconds while the host stays responsive. Throws when the host interrupts
  /// it.
  virtual void Wait(float seconds) = 0;
};

}  // namespace host
