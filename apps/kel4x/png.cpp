// Writing of PNG images through libpng's simplified interface.
#include "png.h"

#include <png.h>

#include <stdexcept>
#include <string>

namespace kel4x {

std::vector<std::uint8_t> EncodePng(const Image& image) {
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  png.width = static_cast<png_uint_32>(image.width);
  png.height = static_cast<png_uint_32>(image.height);
  png.format = PNG_FORMAT_RGB;

  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(png);
  std::vector<std::uint8_t> file(size);
  if (png_image_write_to_memory(&png, file.data(), &size, 0, image.rgb.data(), 0, nullptr) == 0) {
    throw std::runtime_error(std::string("PNG image: ") + png.message);
  }
  file.resize(size);
  return file;
}

}  // namespace kel4x
