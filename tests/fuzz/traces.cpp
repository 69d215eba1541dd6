// Recordings of the traffic, and the base64 in them.
#include "apps/kel4x/exit_code.h"
#include "apps/kel4x/trace_file.h"
#include "tests/fuzz/input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = fuzz::Text(data, size);
  try {
    kel4x::ParseTrace(text, "input");
  } catch (const kel4x::UsageError& error) {
    fuzz::Require(*error.what() != '\0', "a file that is no recording is explained");
  }
  const auto back = workbench::DecodeBase64(workbench::EncodeBase64(text));
  fuzz::Require(back && *back == text, "base64 decodes to what was encoded");
  if (const auto bytes = workbench::DecodeBase64(text)) {
    fuzz::Require(bytes->size() <= text.size(), "base64 does not grow while it is decoded");
  }
  return 0;
}
