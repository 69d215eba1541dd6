// Writing of PNG images.
#pragma once

#include <cstdint>
#include <vector>

#include "pcx.h"

namespace kel4x {

/// The image as a PNG file in memory. Throws a std::runtime_error when it cannot be made.
std::vector<std::uint8_t> EncodePng(const Image& image);

}  // namespace kel4x
