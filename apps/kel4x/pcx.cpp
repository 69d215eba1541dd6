// Decoding of PCX. The bytes come from a wire and are not trusted: every access is checked against the end.
#include "pcx.h"

#include <array>
#include <stdexcept>
#include <string>

namespace kel4x {
namespace {

constexpr std::size_t kHeaderSize = 128;
constexpr std::size_t kLargestSide = 4096;
constexpr std::size_t kLongestRun = 63;

using Colour = std::array<std::uint8_t, 3>;

[[noreturn]] void Refuse(const std::string& reason) { throw std::runtime_error("PCX image: " + reason); }

std::size_t Word(std::span<const std::uint8_t> file, std::size_t at) {
  return static_cast<std::size_t>(file[at]) | static_cast<std::size_t>(file[at + 1]) << 8U;
}

struct Header {
  unsigned version;
  bool packed;
  unsigned bits;  // of one pixel in one plane
  std::size_t width;
  std::size_t height;
  unsigned planes;
  std::size_t line_bytes;  // of one plane, padding included
};

Header ReadHeader(std::span<const std::uint8_t> file) {
  if (file.size() < kHeaderSize) {
    Refuse(std::to_string(file.size()) + " bytes are less than a header of 128");
  }
  if (file[0] != 0x0A) Refuse("does not begin with the byte 10");
  if (file[2] > 1) Refuse("encoding " + std::to_string(file[2]) + " is unknown");
  const std::size_t left = Word(file, 4);
  const std::size_t top = Word(file, 6);
  const std::size_t right = Word(file, 8);
  const std::size_t bottom = Word(file, 10);
  if (right < left || bottom < top) Refuse("the right or lower edge lies before the left or upper one");

  Header header{.version = file[1],
                .packed = file[2] == 1,
                .bits = file[3],
                .width = right - left + 1,
                .height = bottom - top + 1,
                .planes = file[65],
                .line_bytes = Word(file, 66)};
  const bool one_plane =
      header.planes == 1 && (header.bits == 1 || header.bits == 2 || header.bits == 4 || header.bits == 8);
  const bool bit_planes = header.planes >= 2 && header.planes <= 4 && header.bits == 1;
  const bool true_colour = header.planes == 3 && header.bits == 8;
  if (!one_plane && !bit_planes && !true_colour) {
    Refuse(std::to_string(header.bits) + " bits in " + std::to_string(header.planes) +
           " planes are not supported");
  }
  if (header.width > kLargestSide || header.height > kLargestSide) {
    Refuse(std::to_string(header.width) + " by " + std::to_string(header.height) +
           " pixels are more than 4096 by 4096");
  }
  if (header.line_bytes < (header.width * header.bits + 7) / 8) {
    Refuse("a line of " + std::to_string(header.line_bytes) + " bytes is too short for " +
           std::to_string(header.width) + " pixels");
  }
  return header;
}

// The lines of all planes, one after another. What the file holds can fill this many bytes at most, so a few
// bytes never make a large allocation.
std::vector<std::uint8_t> Unpack(std::span<const std::uint8_t> data, const Header& header) {
  const std::size_t size = header.line_bytes * header.planes * header.height;
  const std::size_t most = header.packed ? (data.size() + 1) / 2 * kLongestRun + data.size() : data.size();
  if (size > most) {
    Refuse("cut short: " + std::to_string(data.size()) + " bytes of data cannot hold " +
           std::to_string(size));
  }
  if (!header.packed) return {data.begin(), data.begin() + static_cast<std::ptrdiff_t>(size)};

  std::vector<std::uint8_t> lines;
  lines.reserve(size);
  std::size_t at = 0;
  while (lines.size() < size) {
    if (at >= data.size()) {
      Refuse("cut short after " + std::to_string(lines.size()) + " of " + std::to_string(size) + " bytes");
    }
    const std::uint8_t byte = data[at++];
    if (byte < 0xC0) {
      lines.push_back(byte);
      continue;
    }
    if (at >= data.size()) Refuse("cut short within a run");
    const std::size_t run = byte & 0x3FU;
    // A run that goes beyond the picture is padding of the last line.
    lines.insert(lines.end(), std::min(run, size - lines.size()), data[at++]);
  }
  return lines;
}

// 256 colours: from the end of the file where a palette stands there, from the header for up to 16.
std::array<Colour, 256> Palette(std::span<const std::uint8_t> file, const Header& header) {
  std::array<Colour, 256> palette{};
  const unsigned depth = header.bits * header.planes;
  if (depth == 1) {
    palette[1] = {255, 255, 255};
    return palette;
  }
  constexpr std::size_t kTrailer = 1 + 3 * 256;
  if (depth == 8) {
    const bool has_trailer = file.size() >= kHeaderSize + kTrailer && file[file.size() - kTrailer] == 0x0C;
    for (std::size_t i = 0; i < 256; ++i) {
      for (std::size_t channel = 0; channel < 3; ++channel) {
        palette[i][channel] =
            has_trailer ? file[file.size() - kTrailer + 1 + 3 * i + channel] : static_cast<std::uint8_t>(i);
      }
    }
    return palette;
  }
  for (std::size_t i = 0; i < 16; ++i) {
    for (std::size_t channel = 0; channel < 3; ++channel) palette[i][channel] = file[16 + 3 * i + channel];
  }
  return palette;
}

}  // namespace

Image DecodePcx(std::span<const std::uint8_t> file) {
  const Header header = ReadHeader(file);
  const std::vector<std::uint8_t> lines = Unpack(file.subspan(kHeaderSize), header);
  const std::array<Colour, 256> palette = Palette(file, header);

  Image image{.width = header.width, .height = header.height, .rgb = {}};
  image.rgb.resize(3 * header.width * header.height);
  std::uint8_t* out = image.rgb.data();
  for (std::size_t y = 0; y < header.height; ++y) {
    const std::uint8_t* line = lines.data() + y * header.line_bytes * header.planes;
    for (std::size_t x = 0; x < header.width; ++x) {
      Colour colour{};
      if (header.bits == 8 && header.planes == 3) {
        for (std::size_t channel = 0; channel < 3; ++channel) {
          colour[channel] = line[channel * header.line_bytes + x];
        }
      } else {
        unsigned index = 0;
        const std::size_t bit = x * header.bits;
        const unsigned shift = static_cast<unsigned>(8 - header.bits - bit % 8);
        const unsigned mask = (1U << header.bits) - 1U;
        for (unsigned plane = 0; plane < header.planes; ++plane) {
          index |= (line[plane * header.line_bytes + bit / 8] >> shift & mask) << (plane * header.bits);
        }
        colour = palette[index];
      }
      for (const std::uint8_t channel : colour) *out++ = channel;
    }
  }
  return image;
}

}  // namespace kel4x
