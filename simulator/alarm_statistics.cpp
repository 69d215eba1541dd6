// The alarm statistics.
#include "simulator/alarm_statistics.h"

#include <algorithm>
#include <cmath>

#include "simulator/number_text.h"

namespace simulator {
namespace {

void AppendTwoDigits(std::string& text, long long value) {
  if (value < 10) text.push_back('0');
  AppendInteger(text, value);
}

void AppendDuration(std::string& text, double seconds) {
  const auto whole = static_cast<long long>(seconds);
  AppendTwoDigits(text, whole / 3600);
  text.push_back(':');
  AppendTwoDigits(text, whole / 60 % 60);
  text.push_back(':');
  AppendTwoDigits(text, whole % 60);
}

}  // namespace

void AlarmStatistics::Count(double seconds, bool locked, const Reception& reception,
                            const AlarmLimits& limits, double symbol_rate) {
  if (seconds <= 0.0) return;
  monitored_ += seconds;
  const double segments = SegmentRate(symbol_rate) * seconds;
  const double segment_errors = reception.errors.segment_error_ratio * SegmentRate(symbol_rate);
  // The share of seconds that hold at least one error, errors being independent.
  const double errored_share = locked ? -std::expm1(-segment_errors) : 1.0;

  const auto count = [&](Alarm alarm, bool raised, double share = 1.0) {
    Duration& duration = alarms_[alarm];
    if (raised) duration.seconds += seconds * share;
    if (raised && !duration.active) ++duration.begun;
    duration.active = raised;
  };
  const double mer_db = -ToDb(reception.total_error);
  const double evm_pct = EvmPercent(reception.total_error);
  count(kLevel, reception.level_dbm < limits.level_dbm);
  count(kSync, !locked || !reception.fec_lock);
  count(kMer, locked && mer_db < limits.mer_db);
  count(kEvm, locked && evm_pct > limits.evm_pct);
  count(kBer, locked && reception.errors.ber_before_rs > limits.ber_before_rs);
  count(kData, errored_share > 1e-6, errored_share);
  if (!locked) return;
  failed_segments_ += segments * reception.errors.segment_error_ratio;
  corrected_bytes_ += segments * 207.0 * std::min(1.0, 8.0 * reception.errors.ber_before_rs) *
                      (1.0 - reception.errors.segment_error_ratio);
}

void AlarmStatistics::AppendReport(std::string& text) const {
  AppendDuration(text, monitored_);
  for (const Duration& duration : alarms_) {
    text.push_back(',');
    AppendDuration(text, duration.seconds);
    text.push_back(',');
    AppendInteger(text, duration.begun);
  }
  text.push_back(',');
  AppendFixed(text, std::floor(corrected_bytes_), 0);
  text.push_back(',');
  AppendFixed(text, std::floor(failed_segments_), 0);
}

}  // namespace simulator
