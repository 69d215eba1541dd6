// Plots as SVG: lines that stand at their places on two axes with units.
#pragma once

#include <string>
#include <vector>

namespace kel4x {

/// One line of a plot.
struct Stem {
  double x = 0;
  double y = 0;
  std::string label;
};

struct StemPlot {
  std::string title;  ///< for readers that do not see the picture
  std::string x_label;
  std::string y_label;
  std::vector<Stem> stems;
  bool logarithmic_x = false;  ///< decades; stems at 0 and below are left out
  bool downwards = false;      ///< 0 is at the top, as attenuations are drawn: the higher, the stronger
};

/// The ticks of an axis: steps of 1, 2 or 5 times a power of ten, from at or below `least` to at or above
/// `greatest`, about `wanted` of them. Both must be finite.
std::vector<double> Ticks(double least, double greatest, int wanted);

/// The plot as an <svg> element. Numbers that are not finite are left out.
std::string PlotSvg(const StemPlot& plot);

}  // namespace kel4x
