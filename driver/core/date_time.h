// The date-time value of the public interface.
#pragma once

namespace qkel4x {

/// Days since 30 December 1899 as a floating-point number; also used for durations.
struct DateTime {
  double days = 0.0;

  friend constexpr bool operator==(DateTime, DateTime) = default;
};

}  // namespace qkel4x
