// How a host asks any driver what instrument it is talking to.
#pragma once

#include <string>

namespace host {

class IDriverIdentify {
 public:
  virtual ~IDriverIdentify() = default;

  virtual std::string Manufacturer() = 0;
  virtual std::string ModelNumber() = 0;
  virtual std::string SerialNumber() = 0;
  virtual std::string FirmwareVersion() = 0;
  /// The installed options as comma-separated codes, for example "KEL-B1,KEL-B3,EXTREF".
  virtual std::string InstalledHardware() = 0;
};

}  // namespace host
