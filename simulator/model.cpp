// The instrument's state.
#include "simulator/model.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "simulator/number_text.h"
#include "simulator/pcx.h"
#include "simulator/screen.h"

namespace simulator {
namespace {

constexpr double kIntervalSeconds = 0.4;
constexpr double kAcquireSeconds = 0.5;
constexpr double kOperatingModeSeconds = 8.0;
constexpr double kRestartSeconds = 12.0;

// Seconds until a measurement mode has its first results.
double SettleSeconds(MeasureMode mode) {
  switch (mode) {
    case MeasureMode::kNorm:
      return 4.0;
    case MeasureMode::kPar:
      return 8.0;
    case MeasureMode::kSp1:
    case MeasureMode::kSp2:
    case MeasureMode::kSp3:
      return 8.5;
    case MeasureMode::kCcdf:
      return 1.5;
    case MeasureMode::kAph:
    case MeasureMode::kAgd:
      return 1.2;
    case MeasureMode::kEpat:
      return 0.0;  // the equalizer's taps are there already
    case MeasureMode::kCdi:
    case MeasureMode::kPjit:
    case MeasureMode::kAjit:
    case MeasureMode::kPol:
    case MeasureMode::kAdis:
    case MeasureMode::kCenv:
    case MeasureMode::kEyem:
    case MeasureMode::kHist:
    case MeasureMode::kHii:
    case MeasureMode::kHiq:
    case MeasureMode::kPv:
      return 2.0;
  }
  return 0.0;
}

double MachineTime() {
  return static_cast<double>(
      std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
          .count());
}

}  // namespace

Model::Model(Configuration configuration, std::function<double()> now_seconds)
    : configuration_(std::move(configuration)), now_seconds_(std::move(now_seconds)), now_(now_seconds_()) {
  std::string_view rest;
  firmware_version_ = LeadingNumber(configuration_.firmware, rest).value_or(0.0);
  calendar_offset_ =
      (configuration_.clock_start ? static_cast<double>(*configuration_.clock_start) : MachineTime()) - now_;
  loaded_ = acquired_ = measure_ready_ = restart_ready_ = ber_start_ = now_;
  Preset();
}

bool Model::HasSaw(Saw saw) const {
  switch (saw) {
    case Saw::kOff:
      return true;
    case Saw::kMhz2:
      return configuration_.saw_filters.mhz2;
    case Saw::kMhz6:
      return configuration_.saw_filters.mhz6;
    case Saw::kMhz7:
      return configuration_.saw_filters.mhz7;
    case Saw::kMhz8:
      return configuration_.saw_filters.mhz8;
  }
  return false;
}

double Model::InputOhm() const {
  return HasImpedanceSwitch() && settings_.impedance == Impedance::k75Ohm ? 75.0 : 50.0;
}

void Model::Advance() {
  const double now = std::max(now_, now_seconds_());
  if (now > now_ && settings_.operating_mode == kAtsc) {
    const Reception& reception = Received();
    // While the demodulator is loaded nothing is monitored.
    const double from = std::clamp(loaded_, now_, now);
    const double locked_from = std::clamp(acquired_, from, now);
    const double symbol_rate = settings_.symbol_rate;
    alarms_.Count(locked_from - from, false, reception, configuration_.alarm_limits, symbol_rate);
    alarms_.Count(now - locked_from, reception.carrier_lock, reception, configuration_.alarm_limits,
                  symbol_rate);
  }
  now_ = now;
}

void Model::Changed(Effect effect) {
  ++revision_;
  if (effect == Effect::kNone) return;
  reception_known_ = readings_known_ = false;
  const auto from_now = [this](double seconds) { return now_ + seconds * configuration_.settle_scale; };
  switch (effect) {
    case Effect::kRestart:
      alarms_.Clear();
      restart_ready_ = loaded_ = acquired_ = measure_ready_ = from_now(kRestartSeconds);
      break;
    case Effect::kOperatingMode:
      loaded_ = acquired_ = measure_ready_ = from_now(kOperatingModeSeconds);
      break;
    case Effect::kMeasureMode:
      measure_ready_ = std::max(acquired_, from_now(SettleSeconds(settings_.measure_mode)));
      return;
    case Effect::kAcquire:
      acquired_ = std::max(acquired_, from_now(kAcquireSeconds));
      measure_ready_ = std::max(measure_ready_, acquired_);
      break;
    case Effect::kSignal:
    case Effect::kNone:
      return;
  }
  ber_start_ = acquired_;
  equalizer_stale_ = settings_.equalizer == Equalizer::kFreeze;
}

void Model::Preset() {
  settings_ = Settings();
  for (const Saw saw : {Saw::kMhz6, Saw::kMhz8, Saw::kMhz7, Saw::kOff}) {
    settings_.saw = saw;
    if (HasSaw(saw)) break;
  }
  equalizer_stale_ = false;
  reception_known_ = readings_known_ = false;
}

void Model::ReplaceSignal(Signal signal) {
  configuration_.signal = std::move(signal);
  response_.reset();
  Changed(Effect::kSignal);
}

const Reception& Model::Received() {
  if (!reception_known_) {
    reception_ = Receive(configuration_, settings_, equalizer_stale_);
    reception_known_ = true;
  }
  return reception_;
}

const ChannelResponse& Model::Response() {
  if (!response_) response_ = std::make_shared<const ChannelResponse>(ResponseOf(configuration_.signal));
  return *response_;
}

void Model::CaptureScreen() {
  // What is shown changes with the state and the measurement interval only.
  if (screen_revision_ == revision_ && screen_interval_ == Interval()) return;
  captured_.reset();
  screen_.clear();
  Response();  // computed once, not in every copy
  captured_ = std::make_shared<Model>(*this);
  screen_revision_ = revision_;
  screen_interval_ = Interval();
}

const std::string& Model::Screen() {
  if (captured_) screen_ = EncodePcx(DrawScreen(*std::exchange(captured_, nullptr)));
  return screen_;
}

std::uint64_t Model::Interval() const {
  return static_cast<std::uint64_t>(std::max(0.0, now_ / kIntervalSeconds));
}

const Readings& Model::Current() {
  const std::uint64_t interval = Interval();
  if (!readings_known_ || interval != interval_) {
    readings_ = Measure(configuration_, settings_, Received(), interval, std::max(0.0, ModeSeconds()));
    interval_ = interval;
    readings_known_ = true;
  }
  return readings_;
}

double Model::BerBits() const {
  static constexpr double kWindowMegabits[] = {1e9, 1.0, 10.0, 100.0, 1000.0};
  const double window = kWindowMegabits[settings_.ber_integration] * 1e6;
  return std::min(window, std::max(0.0, now_ - ber_start_) * CodedBitRate(settings_.symbol_rate));
}

std::int64_t Model::Calendar() const {
  return static_cast<std::int64_t>(std::floor(now_ + calendar_offset_));
}

void Model::Fail(ScpiError error) {
  errors_.Push(error);
  event_status |= EventStatusBit(error);
}

}  // namespace simulator
