// What a simulated instrument is and which signal it receives. Every default belongs to a healthy instrument
// on a good 8-VSB signal.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

/// One path of the channel beside the main path.
struct Echo {
  double attenuation_db;   ///< below the main path, greater than 0
  double delay_us;         ///< after the main path; negative for a path that arrives earlier
  double phase_deg = 0.0;  ///< carrier phase relative to the main path
};

/// One discrete line of the jitter spectrum of the transmitter.
struct JitterLine {
  double frequency_hz;
  double peak;  ///< degrees for phase jitter, per cent for amplitude jitter
};

/// The signal at the instrument's input.
struct Signal {
  bool present = true;
  double level_dbm = -43.2;
  double carrier_to_noise_db = 34.0;
  double transmitter_mer_db = 39.0;  ///< modulator quality: the ceiling of every MER reading
  /// Channel centre in hertz; without one the signal is wherever the receiver is tuned to.
  std::optional<double> center_frequency_hz;
  double carrier_offset_hz = 85.0;
  double symbol_rate_offset = 3.5;  ///< symbols per second
  bool sideband_inverted = false;
  double pilot_value = 1.247;         ///< in units of half the level spacing; nominal 1.25 (ATSC A/53 part 2)
  double phase_noise_deg = 0.32;      ///< rms, without the discrete lines
  double amplitude_noise_pct = 0.15;  ///< rms, without the discrete lines
  double shoulder_lower_db = 46.5;
  double shoulder_upper_db = 47.2;
  double crest_factor_db = 7.3;  ///< peak to average power ratio exceeded for 0.01 % of the time
  std::vector<Echo> echoes = {{19.5, 1.35, 40.0}, {23.0, -0.62, 200.0}, {26.4, 4.1, 310.0},
                              {29.1, 7.85, 95.0}, {31.7, 12.4, 150.0},  {33.2, 2.2, 265.0},
                              {35.8, 18.9, 20.0}, {37.5, -2.7, 130.0},  {39.4, 27.35, 230.0},
                              {41.0, 36.2, 75.0}};
  std::vector<JitterLine> phase_lines = {{60.0, 0.21},   {120.0, 0.14},   {180.0, 0.06},  {1000.0, 0.05},
                                         {4200.0, 0.03}, {10500.0, 0.02}, {21300.0, 0.01}};
  std::vector<JitterLine> amplitude_lines = {{60.0, 0.32},   {120.0, 0.27},   {360.0, 0.09},  {1000.0, 0.07},
                                             {4200.0, 0.04}, {10500.0, 0.03}, {15734.0, 0.02}};
};

/// The limits beyond which the alarm statistics count.
struct AlarmLimits {
  double level_dbm = -70.0;
  double mer_db = 24.0;
  double evm_pct = 4.4;
  double ber_before_rs = 2e-4;
};

/// SAW filters that are fitted.
struct SawFilters {
  bool mhz2 = false;
  bool mhz6 = true;
  bool mhz7 = false;
  bool mhz8 = true;
};

struct Configuration {
  std::string manufacturer = "HALVERN&TOSKE";
  std::string model = "KEL 40";
  std::string serial_number = "100123";
  /// Version text as *IDN? reports it. Below 5.0 the instrument is of the older generation.
  std::string firmware = "5.10";
  /// Mask of the installed options as READ:INFO:DATA? reports it; bit 0 is the impedance switch KEL-B3.
  std::int32_t options = 1 + 16 + 32;
  SawFilters saw_filters;
  /// Reply to SYSTEM:SERVICE:GET:BOARD:INFO?; empty: made from the SAW filters.
  std::string boards;
  Signal signal;
  AlarmLimits alarm_limits;
  bool external_reference_present = false;
  /// Multiplies every settle time; 0 makes all results valid at once.
  double settle_scale = 1.0;
  /// Start of the instrument's calendar in seconds since 1970 (UTC); without one, the machine's present time.
  std::optional<std::int64_t> clock_start;
  /// Seed of the measurement noise: equal seeds and equal times give equal readings.
  std::uint64_t seed = 1;
};

}  // namespace simulator
