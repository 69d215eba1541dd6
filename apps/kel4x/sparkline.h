// Small pictures of a few numbers, made of text.
#pragma once

#include <deque>
#include <string>

namespace kel4x {

/// The least and the greatest of some numbers; NaN counts as no number.
struct Extent {
  double least = 0;
  double greatest = -1;
  bool Empty() const { return greatest < least; }
};
Extent ExtentOf(const std::deque<double>& numbers);

/// One column a number, as high as it lies between the least and the greatest; a blank for NaN.
std::string Sparkline(const std::deque<double>& numbers);

/// At most six significant digits.
std::string ShortNumber(double number);

}  // namespace kel4x
