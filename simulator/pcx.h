// Pictures of sixteen colours and their PCX form.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace simulator {

/// A picture of four overlaid planes: a dot's colour is the palette entry whose bits are the planes that are
/// set.
class Picture {
 public:
  enum Plane : std::uint8_t { kText, kTrace, kGrid, kBar };
  static constexpr std::size_t kPlanes = 4;
  using Palette = std::array<std::array<std::uint8_t, 3>, 16>;

  Picture(int width, int height, const Palette& palette);

  int Width() const { return width_; }
  int Height() const { return height_; }
  const Palette& Colours() const { return palette_; }
  /// Bytes of one line of one plane, an even number; the leftmost dot is the top bit of the first byte.
  std::size_t LineBytes() const { return line_bytes_; }
  const std::uint8_t* PlaneLine(int y, std::size_t plane) const { return &bits_[Index(y, plane)]; }

  /// All drawing outside the picture is cut off.
  void Dot(int x, int y, Plane plane);
  void Line(int x0, int y0, int x1, int y1, Plane plane);
  void Fill(int x, int y, int width, int height, Plane plane);
  void Frame(int x, int y, int width, int height, Plane plane);
  /// Writes text with its upper left corner at x, y; each glyph takes 6 by 8 dots times `scale`.
  void Text(int x, int y, std::string_view text, int scale, Plane plane = kText);

 private:
  std::size_t Index(int y, std::size_t plane) const {
    return (static_cast<std::size_t>(y) * kPlanes + plane) * line_bytes_;
  }

  int width_;
  int height_;
  std::size_t line_bytes_;
  Palette palette_;
  std::vector<std::uint8_t> bits_;
};

/// PCX version 5: one bit a dot in four planes, run-length coded line by line and plane by plane.
std::string EncodePcx(const Picture& picture);

}  // namespace simulator
