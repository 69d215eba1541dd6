// "QPort.clsGPIB": a port over a GPIB bus, through a bus library or through an adapter.
#pragma once

#include <memory>

#include "workbench/ports/port.h"

namespace workbench {

/// Settings, in the group "GPIB": "Primary Address" (0 to 30), "Interface" ("library", "tcp" or "serial": a
/// library loaded at run time, or an adapter), "Board" and "Library" for the first, "Adapter Host", "Adapter
/// Port" and "Adapter Device" for the others.
class GpibPort final : public Port {
 public:
  explicit GpibPort(std::shared_ptr<Services> services);

 protected:
  std::unique_ptr<Link> Open(const Deadline& deadline) override;
};

}  // namespace workbench
