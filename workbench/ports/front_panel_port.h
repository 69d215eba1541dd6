// A port to a simulated instrument in this process: "QPort.clsGUI", the front panel.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "simulator/shared_instrument.h"
#include "workbench/ports/port.h"

namespace workbench {

/// Gives out simulated instruments by name: the same name, the same instrument.
using InstrumentSource = std::function<std::shared_ptr<simulator::SharedInstrument>(const std::string& name)>;

/// Settings, in the group "GUI": "Instrument", the name of the instrument. Ports that name the same one share
/// it.
class FrontPanelPort final : public Port {
 public:
  FrontPanelPort(std::shared_ptr<Services> services, InstrumentSource source,
                 std::string_view class_name = "QPort.clsGUI", std::string_view group = "GUI");

 protected:
  std::unique_ptr<Link> Open(const Deadline& deadline) override;

 private:
  InstrumentSource source_;
};

}  // namespace workbench
