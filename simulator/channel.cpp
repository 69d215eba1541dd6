// Echoes, frequency response and jitter lines.
#include "simulator/channel.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

namespace simulator {
namespace {

constexpr double kHalfBandMhz = 2.69;  // a quarter of the symbol rate
constexpr std::size_t kJitterLines = 7;
constexpr std::size_t kMostEchoes = 10;

void RemoveMean(std::vector<double>& trace) {
  double sum = 0.0;
  for (const double value : trace) sum += value;
  for (double& value : trace) value -= sum / static_cast<double>(trace.size());
}

// A constant slope of the phase is a delay of the whole signal, which nobody sees.
void RemoveLine(std::vector<double>& trace, const std::vector<double>& x) {
  RemoveMean(trace);
  double xy = 0.0;
  double xx = 0.0;
  for (std::size_t i = 0; i < trace.size(); ++i) {
    xy += x[i] * trace[i];
    xx += x[i] * x[i];
  }
  for (std::size_t i = 0; i < trace.size(); ++i) trace[i] -= xy / xx * x[i];
}

std::vector<JitterLine> Strongest(std::vector<JitterLine> lines, double factor) {
  std::stable_sort(lines.begin(), lines.end(), [](const auto& a, const auto& b) { return a.peak > b.peak; });
  if (lines.size() > kJitterLines) lines.resize(kJitterLines);
  for (JitterLine& line : lines) line.peak *= factor;
  return lines;
}

// Noise that falls with 1/f: equal power in each octave from 30 Hz on.
std::vector<JitterLine> NoiseBands(double rms, double factor) {
  std::vector<JitterLine> bands;
  for (std::size_t i = 0; i < kJitterLines; ++i) {
    bands.push_back({30.0 * std::pow(4.0, static_cast<double>(i)),
                     rms * factor / std::sqrt(static_cast<double>(kJitterLines))});
  }
  return bands;
}

}  // namespace

ChannelResponse ResponseOf(const Signal& signal) {
  using std::numbers::pi;
  ChannelResponse response;
  double unwrapped = 0.0;
  double last_phase = 0.0;
  for (int i = 0; i < ChannelResponse::kPoints; ++i) {
    const double mhz = kHalfBandMhz * (2.0 * i / (ChannelResponse::kPoints - 1) - 1.0);
    // H(f) = 1 + sum a exp(j (phi - 2 pi f tau)); the group delay -dphi/domega is the real part of the paths'
    // delays weighted by their share of H.
    std::complex<double> sum = 1.0;
    std::complex<double> weighted_us = 0.0;
    for (const Echo& echo : signal.echoes) {
      const double amplitude = std::pow(10.0, -echo.attenuation_db / 20.0);
      const auto path = std::polar(amplitude, echo.phase_deg * pi / 180.0 - 2.0 * pi * mhz * echo.delay_us);
      sum += path;
      weighted_us += path * echo.delay_us;
    }
    const double phase = std::arg(sum);
    if (i > 0) unwrapped += std::remainder(phase - last_phase, 2.0 * pi);
    last_phase = phase;
    response.frequency_mhz.push_back(mhz);
    response.amplitude_db.push_back(20.0 * std::log10(std::max(std::abs(sum), 1e-6)));
    response.phase_deg.push_back(unwrapped * 180.0 / pi);
    response.group_delay_ns.push_back((weighted_us / sum).real() * 1000.0);
  }
  RemoveMean(response.amplitude_db);
  RemoveLine(response.phase_deg, response.frequency_mhz);
  RemoveMean(response.group_delay_ns);
  return response;
}

double Detected(const std::vector<double>& trace, ResponseDetector detector) {
  double largest = 0.0;
  double power = 0.0;
  for (const double value : trace) {
    largest = std::max(largest, std::abs(value));
    power += value * value;
  }
  return detector == ResponseDetector::kPeak ? largest : std::sqrt(power / static_cast<double>(trace.size()));
}

DelayWindow WindowOf(EchoRange range) {
  switch (range) {
    case EchoRange::kFull:
      return {-10.0, 50.0};
    case EchoRange::kRange1:
      return {-10.0, 10.0};
    case EchoRange::kRange2:
      return {0.0, 25.0};
    case EchoRange::kRange3:
      return {25.0, 50.0};
    case EchoRange::kZoom1:
      return {-2.5, 2.5};
    case EchoRange::kZoom2:
      return {-1.0, 1.0};
  }
  return {0.0, 0.0};
}

std::vector<Echo> VisibleEchoes(const Signal& signal, EchoRange range) {
  const DelayWindow window = WindowOf(range);
  std::vector<Echo> visible;
  for (const Echo& echo : signal.echoes) {
    if (echo.delay_us >= window.from_us && echo.delay_us <= window.to_us) visible.push_back(echo);
  }
  std::stable_sort(visible.begin(), visible.end(),
                   [](const auto& a, const auto& b) { return a.attenuation_db < b.attenuation_db; });
  if (visible.size() > kMostEchoes) visible.resize(kMostEchoes);
  return visible;
}

double DelayIn(EchoScale scale, double delay_us) {
  switch (scale) {
    case EchoScale::kMicroseconds:
      return delay_us;
    case EchoScale::kKilometres:
      return delay_us * 0.299792458;  // the speed of light
    case EchoScale::kMiles:
      return delay_us * 0.299792458 / 1.609344;
  }
  return delay_us;
}

double CarrierLoopFactor(LoopWidth width) {
  switch (width) {
    case LoopWidth::kLow:
      return 1.25;
    case LoopWidth::kMedium:
      return 1.0;
    case LoopWidth::kHigh:
      return 0.8;
  }
  return 1.0;
}

double GainControlFactor(AgcSpeed speed) { return speed == AgcSpeed::kFast ? 0.7 : 1.0; }

std::vector<JitterLine> PhaseLines(const Signal& signal, const Settings& settings) {
  const double factor = CarrierLoopFactor(settings.carrier_loop);
  return settings.jitter_application == 0.0 ? Strongest(signal.phase_lines, factor)
                                            : NoiseBands(signal.phase_noise_deg, factor);
}

std::vector<JitterLine> AmplitudeLines(const Signal& signal, const Settings& settings) {
  const double factor = GainControlFactor(settings.agc);
  return settings.jitter_application == 0.0 ? Strongest(signal.amplitude_lines, factor)
                                            : NoiseBands(signal.amplitude_noise_pct, factor);
}

}  // namespace simulator
