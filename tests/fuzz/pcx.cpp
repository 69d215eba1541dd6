// Screen shots as PCX.
#include "apps/kel4x/pcx.h"

#include <stdexcept>

#include "tests/fuzz/input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const kel4x::Image image = kel4x::DecodePcx({data, size});
    fuzz::Require(image.rgb.size() == image.width * image.height * 3, "a picture has all of its pixels");
    fuzz::Require(image.width <= 4096 && image.height <= 4096, "a picture has its greatest size");
  } catch (const std::runtime_error&) {
  }
  return 0;
}
