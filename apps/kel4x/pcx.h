// Decoding of the PCX image that the instrument sends as its screen shot.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kel4x {

/// A picture, three bytes (red, green, blue) a pixel, rows from the top without padding.
struct Image {
  std::size_t width = 0;
  std::size_t height = 0;
  std::vector<std::uint8_t> rgb;
};

/// Decodes a PCX file: 1, 2, 4 or 8 bits a pixel in one plane, 1 bit in two to four planes, 8 bits in three
/// planes. The bytes may be anything; what is no such picture, is cut short or is larger than 4096 by 4096
/// pixels throws a std::runtime_error that says where.
Image DecodePcx(std::span<const std::uint8_t> file);

}  // namespace kel4x
