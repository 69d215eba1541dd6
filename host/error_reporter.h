// The host object through which errors are raised.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace host {

class ErrorReporter {
 public:
  virtual ~ErrorReporter() = default;

  /// Records the error for the host and fails the current call: throws an AutomationError with just these
  /// parts.
  virtual void Raise(std::int32_t number, std::string_view source, std::string_view description,
                     std::optional<std::string_view> help_file = {},
                     std::optional<std::int32_t> help_context = {}) = 0;

  /// A switch that probes turn off for their duration; what the reporter does while it is off is the host's.
  virtual bool ReportingEnabled() = 0;
  virtual void ReportingEnabled(bool enabled) = 0;
};

}  // namespace host
