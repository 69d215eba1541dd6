// The instrument's screen, drawn from the model's present state.
#include "simulator/screen.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <numbers>
#include <string>

#include "simulator/channel.h"
#include "simulator/number_text.h"

namespace simulator {
namespace {

// Text white, traces yellow, grid blue-grey, bars dark blue; text wins over a trace, a trace over the grid.
Picture::Palette Colours() {
  Picture::Palette palette{};
  for (std::size_t planes = 0; planes < palette.size(); ++planes) {
    auto& colour = palette[planes];
    if ((planes >> Picture::kText & 1) != 0) {
      colour = {255, 255, 255};
    } else if ((planes >> Picture::kTrace & 1) != 0) {
      colour = {255, 214, 51};
    } else if ((planes >> Picture::kGrid & 1) != 0) {
      colour = {92, 110, 140};
    } else if ((planes >> Picture::kBar & 1) != 0) {
      colour = {24, 60, 128};
    } else {
      colour = {6, 12, 28};
    }
  }
  return palette;
}

constexpr int kScale = 2;
constexpr int kCell = 6 * kScale;
constexpr int kRow = 20;

constexpr std::string_view kModeTitles[] = {
    "MEASURE",          "CONST DIAGRAM I", "SPECTRUM 1",  "SPECTRUM 2", "SPECTRUM 3",   "AMPL & PHASE",
    "AMPL & GROUP DEL", "PHASE JITTER",    "AMPL JITTER", "POLAR PLOT", "AMPL DISTRIB", "CCDF",
    "CENVELOPE",        "ECHO PATTERN",    "EYE MONITOR", "HISTOGRAM",  "HISTOGRAM I",  "HISTOGRAM I/Q",
    "PARAMETERS",       "PILOT VALUE"};

std::string Fixed(double value, int decimals, std::string_view unit) {
  std::string text;
  AppendFixed(text, value, decimals);
  return text.append(unit);
}

std::string Ratio(double value, double bits) {
  std::string text;
  AppendErrorRatio(text, value, bits);
  return text;
}

// Date and time, for example 2009-01-05 14:03:09.
std::string Clock(std::int64_t seconds) {
  const auto day = std::chrono::floor<std::chrono::days>(std::chrono::seconds(seconds));
  const std::chrono::year_month_day date{std::chrono::sys_days(day)};
  const std::int64_t time = seconds - std::chrono::seconds(day).count();
  std::string text;
  const auto part = [&text](char separator, long long value) {
    if (separator != '\0') text.push_back(separator);
    if (value < 10) text.push_back('0');
    AppendInteger(text, value);
  };
  part('\0', static_cast<int>(date.year()));
  part('-', static_cast<unsigned>(date.month()));
  part('-', static_cast<unsigned>(date.day()));
  part(' ', time / 3600);
  part(':', time / 60 % 60);
  part(':', time % 60);
  return text;
}

// A plot's frame, its axes and the mapping from values to dots.
class Plot {
 public:
  Plot(Picture& picture, double left, double right, double bottom, double top)
      : picture_(picture), left_(left), right_(right), bottom_(bottom), top_(top) {
    picture_.Frame(kX, kY, kWidth, kHeight, Picture::kGrid);
    for (int i = 1; i < 4; ++i) {
      for (int dot = 0; dot < kWidth; dot += 8) picture_.Dot(kX + dot, kY + i * kHeight / 4, Picture::kGrid);
      for (int dot = 0; dot < kHeight; dot += 8) picture_.Dot(kX + i * kWidth / 4, kY + dot, Picture::kGrid);
    }
  }

  void Labels(std::string_view x_unit, std::string_view y_unit, int x_decimals, int y_decimals) {
    picture_.Text(kX, kY - 12, y_unit, 1);
    picture_.Text(kX - 34, kY, Fixed(top_, y_decimals, ""), 1);
    picture_.Text(kX - 34, kY + kHeight - 8, Fixed(bottom_, y_decimals, ""), 1);
    picture_.Text(kX, kY + kHeight + 6, Fixed(left_, x_decimals, ""), 1);
    const std::string end = Fixed(right_, x_decimals, " ").append(x_unit);
    picture_.Text(kX + kWidth - static_cast<int>(end.size()) * 6, kY + kHeight + 6, end, 1);
  }

  void Point(double x, double y) { picture_.Fill(X(x), Y(y), 2, 2, Picture::kTrace); }
  void Stem(double x, double y) {
    picture_.Line(X(x), Y(bottom_), X(x), Y(y), Picture::kTrace);
    picture_.Fill(X(x) - 2, Y(y) - 2, 5, 5, Picture::kTrace);
  }
  void Bar(double x, double width, double y) {
    picture_.Fill(X(x), Y(y), std::max(1, X(x + width) - X(x) - 1), Y(bottom_) - Y(y), Picture::kTrace);
  }
  // Joins the points of a function over the whole width.
  template <typename Function>
  void Curve(Function function) {
    int before = Y(function(left_));
    for (int dot = 1; dot < kWidth; ++dot) {
      const int y = Y(function(left_ + (right_ - left_) * dot / (kWidth - 1)));
      picture_.Line(kX + dot - 1, before, kX + dot, y, Picture::kTrace);
      before = y;
    }
  }

 private:
  static constexpr int kX = 340;
  static constexpr int kY = 104;
  static constexpr int kWidth = 288;
  static constexpr int kHeight = 312;

  int X(double x) const {
    const double share = std::clamp((x - left_) / (right_ - left_), 0.0, 1.0);
    return kX + static_cast<int>(share * (kWidth - 1));
  }
  int Y(double y) const {
    const double share = std::clamp((y - bottom_) / (top_ - bottom_), 0.0, 1.0);
    return kY + static_cast<int>((1.0 - share) * (kHeight - 1));
  }

  Picture& picture_;
  double left_, right_, bottom_, top_;
};

// Lines of "name value" below each other on the left of the screen.
class Table {
 public:
  explicit Table(Picture& picture) : picture_(picture) {}
  void Row(std::string_view name, std::string_view value) {
    picture_.Text(8, y_, name, kScale);
    picture_.Text(8 + 10 * kCell, y_, value, kScale);
    y_ += kRow;
  }

 private:
  Picture& picture_;
  int y_ = 104;
};

void DrawTable(Picture& picture, Model& model) {
  Table table(picture);
  if (!model.CarrierLocked()) {
    table.Row("DEMOD", "NO LOCK");
    return;
  }
  const Readings& now = model.Current();
  table.Row("MER", Fixed(now.mer_rms_db, 1, " dB"));
  table.Row("MER", Fixed(now.mer_rms_pct, 2, " %"));
  table.Row("EVM", Fixed(now.evm_rms_pct, 2, " %"));
  table.Row("SNR", Fixed(now.snr_db, 1, " dB"));
  table.Row("BER BRS", Ratio(now.errors.ber_before_rs, model.BerBits()));
  table.Row("BER ARS", Ratio(now.errors.ber_after_rs, model.BerBits()));
  table.Row("SEG ERR", Fixed(now.segment_errors_per_s, 0, " /s"));
  table.Row("CARRIER", Fixed(now.carrier_offset_hz, 1, " Hz"));
  table.Row("SYMBOL", Fixed(now.symbol_rate_offset, 2, " S/s"));
  table.Row("PH JITTER", Fixed(now.phase_jitter_deg, 2, " deg"));
  table.Row("PILOT", Fixed(now.pilot_value, 3, ""));
  table.Row("SHOULD L", Fixed(now.shoulder_lower_db, 1, " dB"));
  table.Row("SHOULD U", Fixed(now.shoulder_upper_db, 1, " dB"));
  table.Row("CREST", Fixed(now.crest_current_db, 2, " dB"));
  table.Row("TS RATE", model.FecLocked() ? Fixed(now.ts_bitrate_mbit, 4, " Mb/s") : "---");
}

// The in-phase axis of 8-VSB carries the eight levels, the quadrature axis whatever the filter makes of them.
void PlotConstellation(Picture& picture, Model& model) {
  Plot plot(picture, -9.0, 9.0, -9.0, 9.0);
  plot.Labels("I", "Q", 0, 0);
  const double sigma = std::sqrt(21.0) / std::pow(10.0, model.Current().mer_rms_db / 20.0);
  constexpr unsigned kSymbols = 400;
  for (unsigned i = 0; i < kSymbols; ++i) {
    const auto deviate = [&](unsigned part) {
      return NormalDeviate(model.Setup().seed, model.Interval(), 1000U + 3 * i + part);
    };
    const double level = static_cast<int>(i % 8) * 2 - 7;
    plot.Point(level + sigma * deviate(0), 3.0 * deviate(1));
  }
}

void PlotHistogram(Picture& picture, Model& model) {
  Plot plot(picture, -9.0, 9.0, 0.0, 1.1);
  plot.Labels("I", "density", 0, 1);
  const double sigma = std::max(0.08, std::sqrt(21.0) / std::pow(10.0, model.Current().mer_rms_db / 20.0));
  for (int bin = 0; bin < 72; ++bin) {
    const double x = -9.0 + 0.25 * bin;
    double density = 0.0;
    for (int level = -7; level <= 7; level += 2) {
      const double offset = (x + 0.125 - level) / sigma;
      density += std::exp(-offset * offset / 2.0);
    }
    plot.Bar(x, 0.25, density);
  }
}

// Flat over 5.38 MHz with root-raised-cosine edges of 11.5 % (ATSC A/53 part 2), the pilot at the lower edge
// and the shoulders beside.
void PlotSpectrum(Picture& picture, Model& model) {
  const Settings& set = model.Set();
  Plot plot(picture, set.spectrum_start_mhz, set.spectrum_stop_mhz, -70.0, 15.0);
  plot.Labels("MHz", "dB", 2, 0);
  const Readings& now = model.Current();
  unsigned dot = 0;
  plot.Curve([&](double mhz) {
    const double ripple = 0.4 * NormalDeviate(model.Setup().seed, model.Interval(), 3000U + dot++);
    const double edge = std::abs(mhz) - 2.69;
    double db = 0.0;
    if (edge > -0.31) {
      const double inside = std::clamp((0.31 - edge) / 0.62, 1e-4, 1.0);
      db = 20.0 * std::log10(std::sin(inside * std::numbers::pi / 2.0));
    }
    db = std::max(db, -(mhz < 0.0 ? now.shoulder_lower_db : now.shoulder_upper_db));
    if (std::abs(mhz + 2.69) < 0.02) db = 11.0;
    return db + ripple;
  });
}

void PlotEchoes(Picture& picture, Model& model) {
  const DelayWindow window = WindowOf(model.Set().echo_range);
  Plot plot(picture, DelayIn(model.Set().echo_scale, window.from_us),
            DelayIn(model.Set().echo_scale, window.to_us), -60.0, 5.0);
  static constexpr std::string_view kUnits[] = {"us", "km", "mi"};
  plot.Labels(kUnits[static_cast<std::size_t>(model.Set().echo_scale)], "dB", 1, 0);
  if (window.from_us <= 0.0) plot.Stem(0.0, 0.0);
  if (model.Set().equalizer == Equalizer::kOff) return;
  for (const Echo& echo : VisibleEchoes(model.Setup().signal, model.Set().echo_range)) {
    plot.Stem(DelayIn(model.Set().echo_scale, echo.delay_us), -echo.attenuation_db);
  }
}

void PlotJitter(Picture& picture, Model& model, bool phase) {
  const auto lines = phase ? PhaseLines(model.Setup().signal, model.Set())
                           : AmplitudeLines(model.Setup().signal, model.Set());
  double top = 0.01;
  for (const JitterLine& line : lines) top = std::max(top, line.peak * 1.2);
  Plot plot(picture, 1.0, 5.0, 0.0, top);
  plot.Labels("log Hz", phase ? "deg" : "%", 0, 2);
  for (const JitterLine& line : lines) plot.Stem(std::log10(std::max(line.frequency_hz, 1.0)), line.peak);
}

void PlotResponse(Picture& picture, Model& model) {
  const ChannelResponse& response = model.Response();
  const bool delay = model.Set().measure_mode == MeasureMode::kAgd;
  const auto& trace = delay ? response.group_delay_ns : response.amplitude_db;
  const double top = std::max(0.5, 1.2 * Detected(trace, ResponseDetector::kPeak));
  const double first = response.frequency_mhz.front();
  const double span = response.frequency_mhz.back() - first;
  Plot plot(picture, first, first + span, -top, top);
  plot.Labels("MHz", delay ? "group delay ns" : "amplitude dB", 2, delay ? 0 : 1);
  const double last = static_cast<double>(trace.size() - 1);
  plot.Curve([&](double mhz) {
    const double place = std::clamp((mhz - first) / span * last, 0.0, last);
    return trace[static_cast<std::size_t>(std::lround(place))];
  });
}

// Share of time above the mean power by x dB, bent to reach 0.01 % at the crest factor.
void PlotCcdf(Picture& picture, Model& model) {
  Plot plot(picture, 0.0, 12.0, -6.0, 0.0);
  plot.Labels("dB", "log share", 0, 0);
  const double crest = model.Current().papr_db;
  plot.Curve([&](double db) { return -4.0 * std::pow(db / crest, 1.6); });
}

// The distance of each quality reading from its limit, as bars.
void PlotMargins(Picture& picture, Model& model) {
  Plot plot(picture, 0.0, 4.0, 0.0, 50.0);
  plot.Labels("MER SNR SHL SHU", "dB", 0, 0);
  const Readings& now = model.Current();
  const double bars[] = {now.mer_rms_db, now.snr_db, now.shoulder_lower_db, now.shoulder_upper_db};
  for (std::size_t i = 0; i < std::size(bars); ++i) plot.Bar(0.2 + static_cast<double>(i), 0.6, bars[i]);
}

void DrawPlot(Picture& picture, Model& model) {
  if (!model.CarrierLocked() || model.Set().operating_mode != kAtsc) return;
  switch (model.Set().measure_mode) {
    case MeasureMode::kSp1:
    case MeasureMode::kSp2:
    case MeasureMode::kSp3:
      PlotSpectrum(picture, model);
      break;
    case MeasureMode::kEpat:
      PlotEchoes(picture, model);
      break;
    case MeasureMode::kPjit:
      PlotJitter(picture, model, true);
      break;
    case MeasureMode::kAjit:
      PlotJitter(picture, model, false);
      break;
    case MeasureMode::kAph:
    case MeasureMode::kAgd:
      PlotResponse(picture, model);
      break;
    case MeasureMode::kCcdf:
    case MeasureMode::kCenv:
      PlotCcdf(picture, model);
      break;
    case MeasureMode::kAdis:
    case MeasureMode::kHist:
    case MeasureMode::kHii:
    case MeasureMode::kHiq:
      PlotHistogram(picture, model);
      break;
    case MeasureMode::kPar:
    case MeasureMode::kPv:
    case MeasureMode::kEyem:
      PlotMargins(picture, model);
      break;
    case MeasureMode::kNorm:
    case MeasureMode::kCdi:
    case MeasureMode::kPol:
      PlotConstellation(picture, model);
      break;
  }
}

}  // namespace

Picture DrawScreen(Model& model) {
  Picture picture(kScreenWidth, kScreenHeight, Colours());
  const Settings& set = model.Set();
  const bool atsc = set.operating_mode == kAtsc;

  picture.Fill(0, 0, kScreenWidth, 28, Picture::kBar);
  const std::string_view mode = kOperatingModes[static_cast<std::size_t>(set.operating_mode)].answer;
  std::string title = model.Setup().model;
  title.append("  ").append(mode).append("  ");
  if (atsc) title.append(kModeTitles[static_cast<std::size_t>(set.measure_mode)]);
  picture.Text(8, 7, title, kScale);
  picture.Text(kScreenWidth - 8 - 6 * kCell, 7, model.remote ? "REMOTE" : "LOCAL", kScale);

  std::string tuning = "CENTER ";
  AppendFixed(tuning, set.center_frequency_hz * 1e-6, 3);
  tuning.append(" MHz   INPUT ").append(kInputPorts[static_cast<std::size_t>(set.input_port)].answer);
  tuning.append("   ATT ");
  AppendFixed(tuning, model.Received().attenuation_db, 0);
  tuning.append(" dB");
  picture.Text(8, 36, tuning, kScale);

  std::string level = "LEVEL ";
  if (model.Received().rf_state == RfState::kNoSignal) {
    level.append("NO RF");
  } else {
    AppendFixed(level, model.Current().level_dbm, 1);
    level.append(" dBm");
  }
  level.append("   EQUALIZER ").append(kEqualizers[static_cast<std::size_t>(set.equalizer)].answer);
  level.append(model.FecLocked() ? "   TS LOCK" : "   TS UNLOCK");
  picture.Text(8, 60, level, kScale);
  picture.Fill(0, 82, kScreenWidth, 1, Picture::kGrid);

  if (atsc) {
    DrawTable(picture, model);
    DrawPlot(picture, model);
  }
  picture.Fill(0, kScreenHeight - 28, kScreenWidth, 28, Picture::kBar);
  picture.Text(8, kScreenHeight - 21, model.MeasureModeSettled() ? "MEASURING" : "SETTLING", kScale);
  const std::string clock = Clock(model.Calendar());
  picture.Text(kScreenWidth - 8 - static_cast<int>(clock.size()) * kCell, kScreenHeight - 21, clock, kScale);
  return picture;
}

}  // namespace simulator
