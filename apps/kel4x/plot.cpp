// Drawing of plots.
#include "plot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "report.h"

namespace kel4x {
namespace {

// The drawing area in user units; the page scales it.
constexpr double kWidth = 640;
constexpr double kHeight = 280;
constexpr double kLeft = 62;
constexpr double kRight = 16;
constexpr double kTop = 18;
constexpr double kBottom = 46;

std::string Format(const char* format, double a) {
  char text[64];
  std::snprintf(text, sizeof text, format, a);
  return text;
}

std::string At(double number) { return Format("%.1f", number); }

// A tick without superfluous digits, and never "-0".
std::string TickText(double number, double step) {
  if (std::fabs(number) < step * 1e-9) number = 0;
  return Format("%.10g", std::round(number / step * 1e6) / 1e6 * step);
}

struct Axis {
  double from = 0;  // value at the start of the axis
  double to = 1;
  double begin = 0;  // where that is drawn
  double end = 1;
  bool logarithmic = false;

  double Place(double value) const {
    const double part = logarithmic
                            ? (std::log10(value) - std::log10(from)) / (std::log10(to) - std::log10(from))
                            : (value - from) / (to - from);
    return begin + part * (end - begin);
  }
};

std::string Line(double x1, double y1, double x2, double y2, const char* kind) {
  return "<line class=\"" + std::string(kind) + "\" x1=\"" + At(x1) + "\" y1=\"" + At(y1) + "\" x2=\"" +
         At(x2) + "\" y2=\"" + At(y2) + "\"/>\n";
}

std::string Text(double x, double y, const char* anchor, const std::string& text,
                 const std::string& more = {}) {
  return "<text x=\"" + At(x) + "\" y=\"" + At(y) + "\" text-anchor=\"" + anchor + "\"" + more + ">" +
         HtmlText(text) + "</text>\n";
}

}  // namespace

std::vector<double> Ticks(double least, double greatest, int wanted) {
  if (!(greatest > least)) greatest = least + 1;
  const double raw = (greatest - least) / std::max(wanted, 1);
  const double power = std::pow(10.0, std::floor(std::log10(raw)));
  const double part = raw / power;
  const double step = power * (part <= 1 ? 1 : part <= 2 ? 2 : part <= 5 ? 5 : 10);
  std::vector<double> ticks;
  const double first = std::floor(least / step + 1e-9) * step;
  for (int i = 0; i < 1000; ++i) {
    ticks.push_back(first + i * step);
    if (ticks.back() >= greatest - step * 1e-9) break;
  }
  return ticks;
}

std::string PlotSvg(const StemPlot& plot) {
  std::vector<Stem> stems;
  for (const Stem& stem : plot.stems) {
    if (std::isfinite(stem.x) && std::isfinite(stem.y) && (!plot.logarithmic_x || stem.x > 0))
      stems.push_back(stem);
  }
  double x_least = plot.logarithmic_x ? 10 : 0;
  double x_greatest = plot.logarithmic_x ? 100 : 1;
  double y_greatest = 0;
  if (!stems.empty()) {
    const auto [low, high] = std::minmax_element(stems.begin(), stems.end(),
                                                 [](const Stem& a, const Stem& b) { return a.x < b.x; });
    x_least = low->x;
    x_greatest = high->x;
    for (const Stem& stem : stems) y_greatest = std::max(y_greatest, stem.y);
  }
  if (!(y_greatest > 0)) y_greatest = 1;

  std::vector<double> x_ticks;
  Axis x{.begin = kLeft, .end = kWidth - kRight, .logarithmic = plot.logarithmic_x};
  if (plot.logarithmic_x) {
    const int first = static_cast<int>(std::floor(std::log10(x_least * 0.95)));
    const int last = std::max(static_cast<int>(std::ceil(std::log10(x_greatest * 1.05))), first + 1);
    for (int decade = first; decade <= last; ++decade) x_ticks.push_back(std::pow(10.0, decade));
  } else {
    const double margin = std::max((x_greatest - x_least) * 0.04, 1e-9);
    x_ticks = Ticks(x_least - margin, x_greatest + margin, 10);
  }
  x.from = x_ticks.front();
  x.to = x_ticks.back();
  // Above the highest stem there is room for its label; below the weakest echo for its line.
  const std::vector<double> y_ticks = Ticks(0, y_greatest * 1.12, 6);
  const double step = y_ticks[1] - y_ticks[0];
  Axis y{.from = 0, .to = y_ticks.back(), .begin = kHeight - kBottom, .end = kTop};
  if (plot.downwards) std::swap(y.begin, y.end);
  const double floor = kHeight - kBottom;

  std::string svg = "<svg class=\"plot\" viewBox=\"0 0 640 280\" role=\"img\" aria-label=\"" +
                    HtmlText(plot.title) + "\" xmlns=\"http://www.w3.org/2000/svg\">\n";
  for (const double tick : y_ticks) {
    svg += Line(kLeft, y.Place(tick), kWidth - kRight, y.Place(tick), "grid");
    svg += Text(kLeft - 8, y.Place(tick) + 4, "end", TickText(tick, step));
  }
  const double x_step = x_ticks.size() > 1 ? x_ticks[1] - x_ticks[0] : 1;
  for (std::size_t i = 0; i < x_ticks.size(); ++i) {
    const double place = x.Place(x_ticks[i]);
    svg += Line(place, kTop, place, floor, "grid");
    const bool kilo = plot.logarithmic_x && x_ticks[i] >= 1000;
    svg += Text(place, floor + 17, "middle",
                kilo ? Format("%g k", x_ticks[i] / 1000)
                     : TickText(x_ticks[i], plot.logarithmic_x ? x_ticks[i] : x_step));
    if (plot.logarithmic_x && i + 1 < x_ticks.size()) {
      for (int minor = 2; minor < 10; ++minor) {
        const double at = x.Place(x_ticks[i] * minor);
        svg += Line(at, floor, at, floor + 4, "axis");
      }
    }
  }
  svg += Line(kLeft, floor, kWidth - kRight, floor, "axis");
  svg += Line(kLeft, kTop, kLeft, floor, "axis");
  svg += Text((kLeft + kWidth - kRight) / 2, kHeight - 8, "middle", plot.x_label);
  const std::string turned = " transform=\"rotate(-90 14 " + At((kTop + floor) / 2) + ")\"";
  svg += Text(14, (kTop + floor) / 2, "middle", plot.y_label, turned);

  // A label gives way to a stronger neighbour that it would cover.
  std::sort(stems.begin(), stems.end(),
            [&](const Stem& a, const Stem& b) { return plot.downwards ? a.y < b.y : a.y > b.y; });
  std::vector<std::pair<double, double>> labelled;
  for (const Stem& stem : stems) {
    const double px = x.Place(stem.x);
    const double py = y.Place(stem.y);
    svg += Line(px, floor, px, py, "stem");
    svg += "<circle class=\"head\" cx=\"" + At(px) + "\" cy=\"" + At(py) + "\" r=\"3\"/>\n";
    const bool covered = std::any_of(labelled.begin(), labelled.end(), [&](const auto& other) {
      return std::fabs(other.first - px) < 16 && std::fabs(other.second - py) < 12;
    });
    if (stem.label.empty() || covered) continue;
    labelled.emplace_back(px, py);
    svg += Text(px, std::max(py - 7, kTop - 4), "middle", stem.label, " class=\"mark\"");
  }
  return svg + "</svg>\n";
}

}  // namespace kel4x
