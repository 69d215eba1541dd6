// The published error numbers.
#pragma once

#include <cstdint>

namespace qkel4x {

/// Error numbers of this driver. Every raise adds host::kObjectErrorBase; a host that catches an error
/// subtracts it.
enum ErrorConstants : std::int32_t {
  qkelInvalidPropertyValue = 380,  ///< argument out of range, or a reply that cannot be mapped back
  qkelArgumentNotOptional = 449,   ///< a left-out required argument; published, raised by no member
  qkelQueryFailed = 2004,          ///< wrapping failure of property reads
  qkelCommandFailed = 2005,        ///< wrapping failure of property writes and methods
  qkelBadMeasureMode = 2016,       ///< the measurement mode does not allow the member
  qkelBadInputPort = 2018,         ///< the selected input port does not allow the member
  qkelFuntionNotAvailable =
      2019,                     ///< the function is not available in the current state (published spelling)
  qkelBadEqualiserMode = 2023,  ///< the equaliser state does not allow the member
  qkelBadRemoteControlPort = 2024,  ///< "Remote Control" names no port that can do this
};

}  // namespace qkel4x
