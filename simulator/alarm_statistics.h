// Counts how long each alarm condition lasts, in the instrument's time.
#pragma once

#include <array>
#include <string>

#include "simulator/configuration.h"
#include "simulator/signal_model.h"

namespace simulator {

class AlarmStatistics {
 public:
  /// Counts `seconds` in which the conditions did not change; `locked` says whether the demodulator was
  /// locked.
  void Count(double seconds, bool locked, const Reception& reception, const AlarmLimits& limits,
             double symbol_rate);
  void Clear() { *this = AlarmStatistics(); }

  /// Appends the report of 15 fields: monitoring time; then for level, transport stream sync, MER, EVM, bit
  /// errors before Reed-Solomon and data errors the duration and how often the alarm began; then the bytes
  /// that were corrected and the segments that were not.
  void AppendReport(std::string& text) const;

 private:
  enum Alarm { kLevel, kSync, kMer, kEvm, kBer, kData, kAlarms };
  struct Duration {
    double seconds = 0.0;
    long long begun = 0;
    bool active = false;
  };

  double monitored_ = 0.0;
  std::array<Duration, kAlarms> alarms_{};
  double corrected_bytes_ = 0.0;
  double failed_segments_ = 0.0;
};

}  // namespace simulator
