// Raises errors for the driver and the ports, and keeps the last of them for people to look at.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "host/error_reporter.h"

namespace workbench {

/// One error that was raised.
struct RecordedError {
  std::chrono::system_clock::time_point time;
  std::int32_t number = 0;
  std::string source;
  std::string description;
};

/// The error reporter of the workbench. Any thread may call any member.
class ErrorReporter final : public host::ErrorReporter {
 public:
  static constexpr std::size_t kKept = 64;

  /// Keeps the error, unless reporting is off on this thread, and throws it as an AutomationError in any
  /// case.
  [[noreturn]] void Raise(std::int32_t number, std::string_view source, std::string_view description,
                          std::optional<std::string_view> help_file = {},
                          std::optional<std::int32_t> help_context = {}) override;

  /// One switch for each thread, on at first, so that a probe on one thread hides no error of another.
  bool ReportingEnabled() override;
  void ReportingEnabled(bool enabled) override;

  /// The last errors, oldest first, kKept at most.
  std::vector<RecordedError> Recorded() const;
  void Forget();

 private:
  mutable std::mutex mutex_;
  std::deque<RecordedError> recorded_;
  std::set<std::thread::id> silenced_;
};

}  // namespace workbench
