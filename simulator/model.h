// The instrument's state: settings, clock, settle times and what is measured at present.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "simulator/alarm_statistics.h"
#include "simulator/channel.h"
#include "simulator/configuration.h"
#include "simulator/error_queue.h"
#include "simulator/settings.h"
#include "simulator/signal_model.h"

namespace simulator {

/// What a setting disturbs when it is written.
enum class Effect {
  kNone,           ///< nothing that is measured
  kSignal,         ///< the readings change, the demodulator stays locked
  kAcquire,        ///< the demodulator loses the signal and acquires it again
  kMeasureMode,    ///< the results of the new measurement mode need time
  kOperatingMode,  ///< the demodulator is loaded anew
  kRestart,        ///< the whole instrument starts again
};

class Model {
 public:
  Model(Configuration configuration, std::function<double()> now_seconds);

  const Configuration& Setup() const { return configuration_; }
  const Settings& Set() const { return settings_; }
  /// For the setters of the command table, which announce their effect through Changed().
  Settings& Set() { return settings_; }

  double FirmwareVersion() const { return firmware_version_; }
  bool HasImpedanceSwitch() const { return (configuration_.options & 1) != 0; }
  bool HasSaw(Saw saw) const;
  double InputOhm() const;

  /// Brings the clock and what counts in time up to the present; to be called before any setting changes.
  void Advance();
  void Changed(Effect effect);
  /// Power-on state of all settings.
  void Preset();
  void ReplaceSignal(Signal signal);

  double Now() const { return now_; }
  /// Seconds that the measurement mode has delivered results.
  double ModeSeconds() const { return now_ - measure_ready_; }
  bool MeasureModeSettled() const { return now_ >= measure_ready_; }
  bool Restarted() const { return now_ >= restart_ready_; }
  bool CarrierLocked() { return now_ >= acquired_ && Received().carrier_lock; }
  bool FecLocked() { return now_ >= acquired_ && Received().fec_lock; }
  /// Says whether the equalizer's taps fit the present channel.
  void EqualizerFits(bool fits) { equalizer_stale_ = !fits; }

  const Reception& Received();
  /// The results of the present measurement interval.
  const Readings& Current();

  const ChannelResponse& Response();
  /// Keeps the present state as what the screen shows from now on. Drawing waits until somebody wants the
  /// picture: captures are cheap, however many a line holds.
  void CaptureScreen();
  /// The screen of the last capture as PCX; empty before the first.
  const std::string& Screen();
  AlarmStatistics& Alarms() { return alarms_; }
  /// The number of the present measurement interval.
  std::uint64_t Interval() const;

  void RestartBer() { ber_start_ = now_; }
  /// Bits in the present bit error window.
  double BerBits() const;

  /// Seconds since 1970 on the instrument's own calendar.
  std::int64_t Calendar() const;
  void SetCalendar(std::int64_t seconds) { calendar_offset_ = static_cast<double>(seconds) - now_; }

  void Fail(ScpiError error);
  ErrorQueue& Errors() { return errors_; }

  unsigned event_status = 0x80;  ///< power on
  unsigned event_enable = 0;
  unsigned service_enable = 0;
  bool remote = false;

 private:
  Configuration configuration_;
  std::function<double()> now_seconds_;
  double firmware_version_;
  Settings settings_;
  ErrorQueue errors_;

  double now_ = 0.0;
  double loaded_ = 0.0;
  double acquired_ = 0.0;
  double measure_ready_ = 0.0;
  double restart_ready_ = 0.0;
  double ber_start_ = 0.0;
  double calendar_offset_ = 0.0;

  AlarmStatistics alarms_;
  std::uint64_t revision_ = 1;  ///< counts every change of settings, signal or state

  bool equalizer_stale_ = false;
  bool reception_known_ = false;
  Reception reception_;
  bool readings_known_ = false;
  std::uint64_t interval_ = 0;
  Readings readings_;
  std::shared_ptr<const ChannelResponse> response_;

  std::shared_ptr<Model> captured_;  ///< what the screen shows, until it is drawn
  std::string screen_;
  std::uint64_t screen_revision_ = 0;
  std::uint64_t screen_interval_ = 0;
};

}  // namespace simulator
