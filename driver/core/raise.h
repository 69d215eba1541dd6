// How this driver raises an error: always through the host's error reporter.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "driver/core/error_constants.h"
#include "host/automation_error.h"

namespace qkel4x {

/// Raises a plain number, without the object-error base.
[[noreturn]] void RaisePlain(std::int32_t number, std::string_view source, std::string_view description);

/// Raises a published error: the object-error base plus its value.
[[noreturn]] void Raise(ErrorConstants number, std::string_view source, std::string_view description);

/// Fails as the platform's runtime does: a plain number, not through the reporter, since no member raised it.
[[noreturn]] void RaiseFault(host::RuntimeFault fault);

/// Whether the host runs without an instrument.
bool SimulationActive();

/// The texts one after another.
template <class... Texts>
std::string Join(const Texts&... texts) {
  std::string joined;
  joined.reserve((std::string_view(texts).size() + ...));
  (joined.append(std::string_view(texts)), ...);
  return joined;
}

}  // namespace qkel4x
