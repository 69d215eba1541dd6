// The one absolute deadline of a transfer.
#pragma once

#include <algorithm>
#include <chrono>

#include "workbench/runtime.h"

namespace workbench {

/// Set when a transfer begins and never moved by what arrives in between. Always on the real clock: a port
/// waits for an instrument, not for simulated time.
class Deadline {
 public:
  using Clock = std::chrono::steady_clock;

  Deadline(double seconds, const Runtime& runtime)
      : runtime_(&runtime), seconds_(std::clamp(seconds, 0.0, kLongest)), begin_(Clock::now()) {}

  /// As asked for, in seconds.
  double Seconds() const { return seconds_; }
  Clock::time_point Begun() const { return begin_; }
  double Elapsed() const { return std::chrono::duration<double>(Clock::now() - begin_).count(); }
  double Remaining() const { return std::max(0.0, seconds_ - Elapsed()); }
  bool Expired() const { return Elapsed() >= seconds_; }
  bool Interrupted() const { return runtime_->Interrupted(); }
  const Runtime& HostRuntime() const { return *runtime_; }

  /// How long one attempt may block: a slice, or less where less is left.
  std::chrono::milliseconds NextSlice() const {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(Remaining()));
    return std::min(left, std::chrono::milliseconds(kSlice));
  }

 private:
  static constexpr double kLongest = 1e7;

  const Runtime* runtime_;
  double seconds_;
  Clock::time_point begin_;
};

}  // namespace workbench
