// One noise budget from which all quality readings follow.
#include "simulator/signal_model.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "simulator/channel.h"

namespace simulator {
namespace {

constexpr double kNoiseFloorDbm = -98.0;  // kTB in 6 MHz plus a noise figure of 8 dB
constexpr double kOverloadDbm = -20.0;    // behind the attenuator
constexpr double kUnderDbm = -83.0;       // the weakest signal that a receiver must take (ATSC A/74)
constexpr double kPullInHz = 100e3;
constexpr double kLockRatioDb = 3.0;  // sync recovery works far below the data threshold
constexpr double kImplementationDb = -44.0;

double Tail(double x) { return 0.5 * std::erfc(x / std::numbers::sqrt2); }

std::uint64_t Mixed(std::uint64_t x) {
  x += 0x9E3779B97F4A7C15ULL;
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ULL;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBULL;
  return x ^ (x >> 31);
}

// How much of the power of the echoes the equalizer leaves.
double EchoRemainder(const Settings& settings, bool equalizer_stale) {
  if (settings.equalizer == Equalizer::kOff) return 1.0;
  if (equalizer_stale) return 1.9;  // taps for another channel add their own echoes
  double db = -28.0;
  switch (settings.equalizer_adaptation) {
    case Speed::kSlow:
      db = -31.0;
      break;
    case Speed::kMedium:
      db = -28.0;
      break;
    case Speed::kFast:
      db = -25.0;
      break;
  }
  if (settings.equalizer_mode == EqualizerMode::kReal) db += 4.0;
  return FromDb(db);
}

// Noise bandwidth of the selected filter against 6 MHz; the 2 MHz filter cuts most of the signal off.
double FilterNoise(Saw saw) {
  switch (saw) {
    case Saw::kOff:
      return 9.0 / 6.0;
    case Saw::kMhz2:
    case Saw::kMhz6:
      return 1.0;
    case Saw::kMhz7:
      return 7.0 / 6.0;
    case Saw::kMhz8:
      return 8.0 / 6.0;
  }
  return 1.0;
}

double NotchDistortion(const Settings& settings) {
  if (settings.notch == OnOff::kOff) return 0.0;
  switch (settings.notch_width) {
    case NotchWidth::k100Hz:
      return FromDb(-52.0);
    case NotchWidth::k1kHz:
      return FromDb(-44.0);
    case NotchWidth::k10kHz:
      return FromDb(-34.0);
    case NotchWidth::k100kHz:
      return FromDb(-24.0);
  }
  return 0.0;
}

double ReceiverAttenuation(const Settings& settings, double level_dbm) {
  const double extra = settings.high_adjacent_channel == OnOff::kOn ? 5.0 : 0.0;
  if (settings.attenuation_auto == OnOff::kOff) return settings.attenuation_db;
  double target_dbm = -40.0;
  switch (settings.receiver_mode) {
    case ReceiverMode::kLowNoise:
      target_dbm = -35.0;
      break;
    case ReceiverMode::kNormal:
      break;
    case ReceiverMode::kLowDistortion:
      target_dbm = -45.0;
      break;
    case ReceiverMode::kLowestDistortion:
      target_dbm = -50.0;
      break;
  }
  return std::clamp(5.0 * std::ceil((level_dbm - target_dbm) / 5.0) + extra, 0.0, 55.0);
}

// 0 low with preamplifier, 1 low with attenuator, 2 high; ten more when the instrument chose by itself.
int DemodAttenuatorCode(DemodAttenuator setting, double level_dbm) {
  switch (setting) {
    case DemodAttenuator::kLowPreamplifier:
      return 0;
    case DemodAttenuator::kLowAttenuation:
      return 1;
    case DemodAttenuator::kHigh:
      return 2;
    case DemodAttenuator::kAuto:
      break;
  }
  if (level_dbm < -55.0) return 10;
  return level_dbm < -30.0 ? 11 : 12;
}

// Attenuation that stands between the input in use and the first active stage.
double FrontAttenuation(const Settings& settings, const Reception& reception) {
  switch (settings.input_port) {
    case InputPort::kRf:
      return reception.attenuation_db;
    case InputPort::kDemodulator:
      return reception.demod_attenuator % 10 == 2 ? 30.0 : reception.demod_attenuator % 10 * 12.0;
    case InputPort::kIf:
      return 10.0;
  }
  return 0.0;
}

// Rms of the discrete lines (peak values) together with the noise part.
double JitterRms(const std::vector<JitterLine>& lines, double noise) {
  double power = noise * noise;
  for (const JitterLine& line : lines) power += line.peak * line.peak / 2.0;
  return std::sqrt(power);
}

}  // namespace

double FromDb(double db) { return std::pow(10.0, db / 10.0); }
double ToDb(double ratio) { return 10.0 * std::log10(ratio); }

double NormalDeviate(std::uint64_t seed, std::uint64_t interval, unsigned quantity) {
  const std::uint64_t bits = Mixed(Mixed(seed ^ Mixed(interval)) + quantity);
  // Irwin-Hall: the sum of four uniform deviates, scaled to variance 1. Bounded, which readings should be.
  double sum = 0.0;
  for (unsigned part = 0; part < 4; ++part) {
    sum += static_cast<double>((bits >> (16 * part)) & 0xFFFF) / 65535.0;
  }
  return (sum - 2.0) * std::sqrt(3.0);
}

double LevelIn(LevelUnit unit, double dbm, double ohm) {
  const double dbuv = dbm + 90.0 + 10.0 * std::log10(ohm);  // P = U^2 / R
  switch (unit) {
    case LevelUnit::kDbmv:
      return dbuv - 60.0;
    case LevelUnit::kDbpw:
      return dbm + 90.0;
    case LevelUnit::kDbuw:
      return dbm + 30.0;
    case LevelUnit::kDbm:
      return dbm;
    case LevelUnit::kDbuv:
      return dbuv;
    case LevelUnit::kMv:
      return std::pow(10.0, (dbuv - 60.0) / 20.0);
  }
  return dbm;
}

// The rms of the eight levels 1, 3, 5, 7 is sqrt(21); the outermost level is 7.
double EvmPercent(double error_ratio) { return 100.0 * std::sqrt(error_ratio * 21.0) / 7.0; }

ErrorRatios DecoderErrors(double signal_to_error) {
  // Trellis decoder: the free-distance term of the union bound, N Q(d/2s). The 4-state code on 8 levels has
  // d = 3 level spacings and N = 4 neighbours (G. Ungerboeck, IEEE Communications Magazine, Feb. 1987, table
  // I); with spacing 2 and signal power 21, d/2s = 3 sqrt(ratio / 21). Each event costs about 6.5 of the 2
  // bits a symbol, which puts 2.5 segment errors a second at 14.9 dB, the threshold of visibility of ATSC
  // A/54.
  constexpr double kBitErrorsPerTail = 4.0 * 6.456 / 2.0;
  ErrorRatios errors{};
  errors.ber_before_rs = std::min(0.5, kBitErrorsPerTail * Tail(3.0 * std::sqrt(signal_to_error / 21.0)));

  // Reed-Solomon (207,187), t = 10, behind an interleaver that makes byte errors independent: the segment
  // fails with 11 or more wrong bytes, and a failed segment keeps its wrong bytes.
  constexpr int kBytes = 207;
  constexpr int kCorrectable = 10;
  const double byte_error = -std::expm1(8.0 * std::log1p(-errors.ber_before_rs));
  if (byte_error <= 0.0) return errors;
  if (byte_error > 0.5) {  // where no segment survives and the sum below would underflow
    errors.segment_error_ratio = 1.0;
    errors.ber_after_rs = errors.ber_before_rs;
    return errors;
  }
  double term = std::exp(kBytes * std::log1p(-byte_error));
  double failed = 0.0;
  double wrong_bytes = 0.0;
  for (int wrong = 1; wrong <= kBytes; ++wrong) {
    term *= (kBytes - wrong + 1.0) / wrong * byte_error / (1.0 - byte_error);
    if (wrong <= kCorrectable) continue;
    failed += term;
    wrong_bytes += term * wrong;
    if (term < failed * 1e-9 && wrong > kBytes * byte_error) break;
  }
  errors.segment_error_ratio = std::min(1.0, failed);
  errors.ber_after_rs = errors.ber_before_rs * std::min(1.0, wrong_bytes / kBytes / byte_error);
  return errors;
}

Reception Receive(const Configuration& configuration, const Settings& settings, bool equalizer_stale) {
  const Signal& signal = configuration.signal;
  Reception reception;
  const double mistuning =
      signal.center_frequency_hz ? *signal.center_frequency_hz - settings.center_frequency_hz : 0.0;
  reception.carrier_offset_hz = signal.carrier_offset_hz + mistuning;
  const bool in_channel = signal.present && std::abs(mistuning) < 6e6;
  reception.level_dbm = in_channel ? signal.level_dbm : kNoiseFloorDbm;
  reception.attenuation_db = ReceiverAttenuation(settings, reception.level_dbm);
  reception.demod_attenuator = DemodAttenuatorCode(settings.demod_attenuator, reception.level_dbm);
  const double behind_dbm = reception.level_dbm - FrontAttenuation(settings, reception);
  reception.rf_state = !in_channel                       ? RfState::kNoSignal
                       : reception.level_dbm < kUnderDbm ? RfState::kUnder
                       : behind_dbm > kOverloadDbm       ? RfState::kOver
                                                         : RfState::kOk;

  double echo_power = 0.0;
  for (const Echo& echo : signal.echoes) echo_power += FromDb(-echo.attenuation_db);
  const double noise_gain = settings.equalizer == Equalizer::kOff ? 1.0 : 1.0 + echo_power;
  double noise = FromDb(-signal.carrier_to_noise_db) + FromDb(kNoiseFloorDbm - behind_dbm);
  if (settings.noise == OnOff::kOn) noise += FromDb(-settings.noise_cn_db);
  reception.white_noise = noise * FilterNoise(settings.saw) * noise_gain;

  const double phase_deg =
      JitterRms(signal.phase_lines, signal.phase_noise_deg) * CarrierLoopFactor(settings.carrier_loop);
  const double amplitude_pct =
      JitterRms(signal.amplitude_lines, signal.amplitude_noise_pct) * GainControlFactor(settings.agc);
  reception.phase_jitter_deg = phase_deg;
  reception.amplitude_jitter_pct = amplitude_pct;
  const double phase_rad = phase_deg * std::numbers::pi / 180.0;
  const double overload =
      reception.rf_state == RfState::kOver ? FromDb(2.0 * (behind_dbm - kOverloadDbm) - 25.0) : 0.0;
  // Independent errors add as powers; small phase errors turn phi radians into phi^2 of error power.
  reception.total_error = reception.white_noise + echo_power * EchoRemainder(settings, equalizer_stale) +
                          phase_rad * phase_rad + amplitude_pct * amplitude_pct * 1e-4 +
                          FromDb(-signal.transmitter_mer_db) + FromDb(kImplementationDb) +
                          NotchDistortion(settings) + overload;
  if (settings.saw == Saw::kMhz2) reception.total_error += 0.6;

  const bool sideband_fits = signal.sideband_inverted == (settings.sideband == Sideband::kInverted);
  const bool rate_fits = std::abs(settings.symbol_rate - 10762237.762) < 1000.0;
  reception.carrier_lock = settings.operating_mode == kAtsc && in_channel && sideband_fits && rate_fits &&
                           std::abs(reception.carrier_offset_hz) < kPullInHz &&
                           reception.total_error < FromDb(-kLockRatioDb);
  reception.errors = DecoderErrors(1.0 / reception.total_error);
  reception.fec_lock = reception.carrier_lock && reception.errors.segment_error_ratio < 0.9;
  return reception;
}

Readings Measure(const Configuration& configuration, const Settings& settings, const Reception& reception,
                 std::uint64_t interval, double mode_seconds) {
  const Signal& signal = configuration.signal;
  unsigned quantity = 0;
  const auto noise = [&] { return NormalDeviate(configuration.seed, interval, quantity++); };

  Readings readings;
  readings.level_dbm = reception.level_dbm + 0.04 * noise();

  // The estimate of a power from N symbols has a relative standard deviation of sqrt(2/N).
  const double spread = 1.0 + noise() * std::sqrt(2.0 / std::max(settings.symbol_count, 200.0));
  const double error = reception.total_error * spread;
  const double rms_pct = 100.0 * std::sqrt(error);
  // The largest of N normal deviates lies near sqrt(2 ln N).
  const double peak =
      std::sqrt(2.0 * std::log(std::max(settings.symbol_count, 10.0))) * (1.0 + 0.02 * noise());
  readings.mer_rms_db = -ToDb(error);
  readings.mer_rms_pct = rms_pct;
  readings.mer_peak_pct = rms_pct * peak;
  readings.evm_rms_pct = EvmPercent(error);
  readings.evm_peak_pct = readings.evm_rms_pct * peak;
  readings.snr_db = -ToDb(reception.white_noise * spread);
  readings.phase_jitter_deg = reception.phase_jitter_deg * (1.0 + 0.02 * noise());

  readings.carrier_offset_hz = reception.carrier_offset_hz + 0.8 * noise();
  readings.symbol_rate_offset = signal.symbol_rate_offset + 0.05 * noise();
  readings.ts_bitrate_mbit = TransportBitRate(settings.symbol_rate + readings.symbol_rate_offset) * 1e-6;

  readings.errors = DecoderErrors(1.0 / error);
  readings.segment_errors_per_s = readings.errors.segment_error_ratio * SegmentRate(settings.symbol_rate);

  readings.pilot_value = signal.pilot_value + 0.001 * noise();
  readings.pilot_error_db = 2.0 * ToDb(readings.pilot_value / 1.25);
  readings.signal_to_pilot_db = ToDb(21.0 / (readings.pilot_value * readings.pilot_value));

  // Receiver noise fills the gap below the shoulders.
  const double floor = reception.white_noise / 2.0;
  readings.shoulder_lower_db = -ToDb(FromDb(-signal.shoulder_lower_db) + floor) + 0.1 * noise();
  readings.shoulder_upper_db = -ToDb(FromDb(-signal.shoulder_upper_db) + floor) + 0.1 * noise();

  readings.crest_current_db = signal.crest_factor_db - 0.5 + 0.15 * noise();
  readings.crest_max_db =
      std::max(readings.crest_current_db, signal.crest_factor_db + 0.2 * std::log10(1.0 + mode_seconds));
  readings.crest_margin_db = readings.crest_max_db - readings.crest_current_db;
  readings.papr_db = signal.crest_factor_db + 0.05 * noise();
  readings.papr_delta_db =
      readings.papr_db - 7.3;  // an undistorted 8-VSB signal exceeds 7.3 dB for 0.01 % of the time
  return readings;
}

}  // namespace simulator
