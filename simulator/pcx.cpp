// Drawing of pictures and their PCX form.
#include "simulator/pcx.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "simulator/font.h"

namespace simulator {
namespace {

void PutWord(std::string& bytes, int value) {
  bytes.push_back(static_cast<char>(value & 0xFF));
  bytes.push_back(static_cast<char>(value >> 8 & 0xFF));
}

// Runs of up to 63 equal bytes; a lone byte with both top bits set needs a run of one.
void PutRuns(std::string& bytes, const std::uint8_t* line, std::size_t size) {
  constexpr std::size_t kLongestRun = 63;
  constexpr std::uint8_t kRunMark = 0xC0;
  for (std::size_t i = 0; i < size;) {
    const std::size_t longest = std::min(size - i, kLongestRun);
    const std::uint64_t eight_equal = line[i] * 0x0101010101010101ULL;
    std::size_t run = 1;
    // Most of a screen is empty: eight bytes at once.
    for (std::uint64_t eight = 0; run + sizeof eight <= longest; run += sizeof eight) {
      std::memcpy(&eight, line + i + run, sizeof eight);
      if (eight != eight_equal) break;
    }
    while (run < longest && line[i + run] == line[i]) ++run;
    if (run > 1 || line[i] >= kRunMark) bytes.push_back(static_cast<char>(kRunMark | run));
    bytes.push_back(static_cast<char>(line[i]));
    i += run;
  }
}

}  // namespace

Picture::Picture(int width, int height, const Palette& palette)
    : width_(width),
      height_(height),
      line_bytes_(static_cast<std::size_t>((width + 15) / 16 * 2)),
      palette_(palette),
      bits_(line_bytes_ * kPlanes * static_cast<std::size_t>(height)) {}

void Picture::Dot(int x, int y, Plane plane) {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return;
  bits_[Index(y, plane) + static_cast<std::size_t>(x / 8)] |= static_cast<std::uint8_t>(0x80 >> x % 8);
}

void Picture::Line(int x0, int y0, int x1, int y1, Plane plane) {
  const int dx = std::abs(x1 - x0);
  const int dy = -std::abs(y1 - y0);
  const int step_x = x0 < x1 ? 1 : -1;
  const int step_y = y0 < y1 ? 1 : -1;
  for (int error = dx + dy;;) {
    Dot(x0, y0, plane);
    if (x0 == x1 && y0 == y1) return;
    const int twice = 2 * error;
    if (twice >= dy) {
      error += dy;
      x0 += step_x;
    }
    if (twice <= dx) {
      error += dx;
      y0 += step_y;
    }
  }
}

void Picture::Fill(int x, int y, int width, int height, Plane plane) {
  const int left = std::max(x, 0);
  const int right = std::min(x + width, width_) - 1;
  if (left > right) return;
  const int bottom = std::min(y + height, height_);
  for (int row = std::max(y, 0); row < bottom; ++row) {
    std::uint8_t* const line = &bits_[Index(row, plane)];
    for (int byte = left / 8; byte <= right / 8; ++byte) {
      int dots = 0xFF;
      if (byte == left / 8) dots &= 0xFF >> left % 8;
      if (byte == right / 8) dots &= 0xFF << (7 - right % 8);
      line[byte] |= static_cast<std::uint8_t>(dots);
    }
  }
}

void Picture::Frame(int x, int y, int width, int height, Plane plane) {
  Fill(x, y, width, 1, plane);
  Fill(x, y + height - 1, width, 1, plane);
  Fill(x, y, 1, height, plane);
  Fill(x + width - 1, y, 1, height, plane);
}

void Picture::Text(int x, int y, std::string_view text, int scale, Plane plane) {
  for (const char c : text) {
    const bool known = c >= kFirstGlyph && static_cast<std::size_t>(c - kFirstGlyph) < std::size(kGlyphs);
    const Glyph& glyph = kGlyphs[known ? c - kFirstGlyph : '?' - kFirstGlyph];
    for (int row = 0; row < 7; ++row) {
      for (int column = 0; column < 5; ++column) {
        if ((glyph[static_cast<std::size_t>(row)] >> (4 - column) & 1) != 0) {
          Fill(x + column * scale, y + row * scale, scale, scale, plane);
        }
      }
    }
    x += 6 * scale;
  }
}

std::string EncodePcx(const Picture& picture) {
  std::string bytes;
  bytes.reserve(16'384);
  bytes.append({0x0A, 5, 1, 1});  // maker's mark, version 5, run-length coded, one bit a dot and plane
  for (const int limit :
       {0, 0, picture.Width() - 1, picture.Height() - 1, picture.Width(), picture.Height()}) {
    PutWord(bytes, limit);
  }
  for (const auto& colour : picture.Colours()) {
    for (const std::uint8_t part : colour) bytes.push_back(static_cast<char>(part));
  }
  bytes.push_back(0);
  bytes.push_back(static_cast<char>(Picture::kPlanes));
  PutWord(bytes, static_cast<int>(picture.LineBytes()));
  PutWord(bytes, 1);  // palette holds colours
  bytes.resize(128);

  for (int y = 0; y < picture.Height(); ++y) {
    for (std::size_t plane = 0; plane < Picture::kPlanes; ++plane) {
      PutRuns(bytes, picture.PlaneLine(y, plane), picture.LineBytes());
    }
  }
  return bytes;
}

}  // namespace simulator
