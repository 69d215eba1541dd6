// The receiver's view of the signal: one noise budget from which MER, EVM, SNR, bit and segment error ratios
// follow together.
#pragma once

#include <array>
#include <cstdint>

#include "simulator/configuration.h"
#include "simulator/settings.h"

namespace simulator {

enum class RfState { kOk, kUnder, kNoSignal, kOver };

/// Error ratios at a signal-to-error ratio, after the trellis and the Reed-Solomon decoder.
struct ErrorRatios {
  double ber_before_rs;
  double ber_after_rs;
  double segment_error_ratio;
};

/// What the receiver makes of the signal at the present settings: constant until something is set.
struct Reception {
  RfState rf_state = RfState::kOk;
  double level_dbm = 0.0;
  double attenuation_db = 0.0;  ///< receiver attenuator in use
  int demod_attenuator = 10;    ///< code of INPUT:ATTENUATION:DEM:VAL?
  double carrier_offset_hz = 0.0;
  bool carrier_lock = false;
  bool fec_lock = false;
  double white_noise = 1.0;  ///< noise power over signal power
  double total_error = 1.0;  ///< all that moves the symbols, over signal power
  double phase_jitter_deg = 0.0;
  double amplitude_jitter_pct = 0.0;
  ErrorRatios errors{};  ///< at total_error
};

/// All single-value results of one measurement interval.
struct Readings {
  double level_dbm = 0.0;
  double mer_rms_db = 0.0, mer_rms_pct = 0.0, mer_peak_pct = 0.0;
  double evm_rms_pct = 0.0, evm_peak_pct = 0.0;
  double snr_db = 0.0;
  double phase_jitter_deg = 0.0;
  double carrier_offset_hz = 0.0;
  double symbol_rate_offset = 0.0;
  double ts_bitrate_mbit = 0.0;
  ErrorRatios errors{};
  double segment_errors_per_s = 0.0;
  double pilot_value = 0.0, pilot_error_db = 0.0, signal_to_pilot_db = 0.0;
  double shoulder_lower_db = 0.0, shoulder_upper_db = 0.0;
  double crest_current_db = 0.0, crest_max_db = 0.0, crest_margin_db = 0.0;
  double papr_db = 0.0, papr_delta_db = 0.0;
};

/// `equalizer_stale`: the taps were frozen before the channel changed.
Reception Receive(const Configuration& configuration, const Settings& settings, bool equalizer_stale);

/// One interval's readings: `interval` numbers it, `mode_seconds` is how long the measurement mode has run.
Readings Measure(const Configuration& configuration, const Settings& settings, const Reception& reception,
                 std::uint64_t interval, double mode_seconds);

ErrorRatios DecoderErrors(double signal_to_error);

/// Error vector magnitude in per cent of the outermost level, from the error power over the signal power.
double EvmPercent(double error_ratio);

/// A level in dBm in another unit at the given impedance.
double LevelIn(LevelUnit unit, double dbm, double ohm);

/// Segments per second: 832 symbols each (ATSC A/53 part 2).
inline double SegmentRate(double symbol_rate) { return symbol_rate / 832.0; }
/// Bits per second between trellis and Reed-Solomon decoder: 207 bytes a segment, and one segment in 313 is
/// the field sync.
inline double CodedBitRate(double symbol_rate) {
  return SegmentRate(symbol_rate) * 312.0 / 313.0 * 207.0 * 8.0;
}
/// Transport stream bits per second: 188 bytes a data segment, 19.392658 Mbit/s at the nominal rate.
inline double TransportBitRate(double symbol_rate) {
  return SegmentRate(symbol_rate) * 312.0 / 313.0 * 188.0 * 8.0;
}

double FromDb(double db);
double ToDb(double ratio);
/// A normal deviate that depends on nothing but its arguments.
double NormalDeviate(std::uint64_t seed, std::uint64_t interval, unsigned quantity);

}  // namespace simulator
