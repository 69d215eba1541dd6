// Sparklines of block characters.
#include "sparkline.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace kel4x {

Extent ExtentOf(const std::deque<double>& numbers) {
  Extent extent;
  for (const double number : numbers) {
    if (!std::isfinite(number)) continue;
    if (extent.Empty()) {
      extent = {number, number};
    } else {
      extent = {std::min(extent.least, number), std::max(extent.greatest, number)};
    }
  }
  return extent;
}

std::string Sparkline(const std::deque<double>& numbers) {
  static constexpr const char* kBlocks[] = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
  const Extent extent = ExtentOf(numbers);
  std::string line;
  for (const double number : numbers) {
    if (!std::isfinite(number)) {
      line += ' ';
      continue;
    }
    const double span = extent.greatest - extent.least;
    // Numbers that are all the same lie in the middle.
    const double part = span > 0 ? (number - extent.least) / span : 0.5;
    line += kBlocks[static_cast<std::size_t>(std::lround(part * 7))];
  }
  return line;
}

std::string ShortNumber(double number) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", number);
  return text;
}

}  // namespace kel4x
