// What the channel and the oscillators do to the signal: echoes, frequency response, jitter lines.
#pragma once

#include <vector>

#include "simulator/configuration.h"
#include "simulator/settings.h"

namespace simulator {

/// The channel's response over the signal's band, without the parts that do not matter: the mean gain, the
/// constant phase and the mean delay.
struct ChannelResponse {
  static constexpr int kPoints = 401;
  std::vector<double> frequency_mhz;  ///< relative to the channel centre
  std::vector<double> amplitude_db;
  std::vector<double> phase_deg;
  std::vector<double> group_delay_ns;
};

ChannelResponse ResponseOf(const Signal& signal);

/// Root mean square, or largest magnitude, of a trace.
double Detected(const std::vector<double>& trace, ResponseDetector detector);

/// The echoes inside the display range, strongest first, at most ten.
std::vector<Echo> VisibleEchoes(const Signal& signal, EchoRange range);
/// Limits in microseconds of what a range shows.
struct DelayWindow {
  double from_us;
  double to_us;
};
DelayWindow WindowOf(EchoRange range);
/// A delay in the unit of a scale: microseconds, or kilometres or miles of path difference.
double DelayIn(EchoScale scale, double delay_us);

/// The seven strongest lines, strongest first: of the discrete jitter, or of the noise in its bands, as the
/// jitter application says.
std::vector<JitterLine> PhaseLines(const Signal& signal, const Settings& settings);
std::vector<JitterLine> AmplitudeLines(const Signal& signal, const Settings& settings);

/// How the carrier loop changes phase jitter and the automatic gain control changes amplitude jitter.
double CarrierLoopFactor(LoopWidth width);
double GainControlFactor(AgcSpeed speed);

}  // namespace simulator
