// A port to an instrument in this process: "QPort.clsGUI", the front panel.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "workbench/ports/port.h"

namespace workbench {

/// An instrument in this process: takes one command line, gives the bytes of its answer, terminator included,
/// or none. Called by one thread at a time.
using EmbeddedInstrument = std::function<std::optional<std::string>(std::string_view line)>;

/// Gives out embedded instruments by name: the same name, the same instrument.
using InstrumentSource = std::function<EmbeddedInstrument(const std::string& name)>;

/// Settings, in the group "GUI": "Instrument", the name of the embedded instrument. Ports that name the same
/// one share it.
class FrontPanelPort final : public Port {
 public:
  FrontPanelPort(std::shared_ptr<Services> services, InstrumentSource source);

 protected:
  std::unique_ptr<Link> Open(const Deadline& deadline) override;

 private:
  InstrumentSource source_;
};

}  // namespace workbench
