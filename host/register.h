// How a host learns which driver class a driver library offers.
#pragma once

#include <string>

namespace host {

class IRegister {
 public:
  virtual ~IRegister() = default;

  /// What the host shows people.
  virtual std::string GetClassDescription() = 0;
  /// The class that the host is to create.
  virtual std::string GetClassName() = 0;
};

}  // namespace host
