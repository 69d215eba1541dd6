// Writing of PNG images over zlib alone, where there is no libpng: one unfiltered image, 8 bits a channel.
#include <zlib.h>

#include <stdexcept>
#include <string_view>

#include "png.h"

namespace kel4x {
namespace {

void AppendNumber(std::vector<std::uint8_t>& out, std::uint32_t number) {
  for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<std::uint8_t>(number >> shift));
}

void AppendChunk(std::vector<std::uint8_t>& out, std::string_view name,
                 const std::vector<std::uint8_t>& data) {
  AppendNumber(out, static_cast<std::uint32_t>(data.size()));
  const std::size_t checked = out.size();
  out.insert(out.end(), name.begin(), name.end());
  out.insert(out.end(), data.begin(), data.end());
  const uLong sum = crc32(0, out.data() + checked, static_cast<uInt>(out.size() - checked));
  AppendNumber(out, static_cast<std::uint32_t>(sum));
}

}  // namespace

std::vector<std::uint8_t> EncodePng(const Image& image) {
  const auto width = static_cast<std::size_t>(image.width);
  const auto height = static_cast<std::size_t>(image.height);
  std::vector<std::uint8_t> lines;
  lines.reserve(height * (1 + 3 * width));
  for (std::size_t y = 0; y < height; ++y) {
    lines.push_back(0);  // no filter
    const auto line = image.rgb.begin() + static_cast<std::ptrdiff_t>(y * 3 * width);
    lines.insert(lines.end(), line, line + static_cast<std::ptrdiff_t>(3 * width));
  }
  uLongf size = compressBound(static_cast<uLong>(lines.size()));
  std::vector<std::uint8_t> packed(size);
  if (compress2(packed.data(), &size, lines.data(), static_cast<uLong>(lines.size()), Z_BEST_COMPRESSION) !=
      Z_OK) {
    throw std::runtime_error("PNG image: out of memory");
  }
  packed.resize(size);

  std::vector<std::uint8_t> header;
  AppendNumber(header, static_cast<std::uint32_t>(width));
  AppendNumber(header, static_cast<std::uint32_t>(height));
  header.insert(header.end(), {8, 2, 0, 0, 0});  // bits, RGB, deflate, the one filter method, not interlaced

  std::vector<std::uint8_t> file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  AppendChunk(file, "IHDR", header);
  AppendChunk(file, "IDAT", packed);
  AppendChunk(file, "IEND", {});
  return file;
}

}  // namespace kel4x
