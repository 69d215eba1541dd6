// How a host sets up a driver, and a driver its transport: one interface serves both.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "host/parameter_node.h"

namespace host {

class IDriverSetup {
 public:
  virtual ~IDriverSetup() = default;

  /// The host's name for this object; empty until it is set.
  virtual std::string Name() = 0;
  virtual void Name(std::string_view name) = 0;

  /// The settings tree, the same object every time.
  virtual std::shared_ptr<ParameterNode> Settings() = 0;

  /// Whether the object is connected; writing it connects or disconnects.
  virtual bool OnLine() = 0;
  virtual void OnLine(bool on_line) = 0;
};

}  // namespace host
