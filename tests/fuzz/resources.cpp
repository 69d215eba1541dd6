// Resource strings.
#include "apps/kel4x/exit_code.h"
#include "apps/kel4x/resource.h"
#include "tests/fuzz/input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const kel4x::Resource resource = kel4x::ParseResource(fuzz::Text(data, size));
    fuzz::Require(
        resource.port != kel4x::Resource::Port::kTcp || (!resource.host.empty() && resource.tcp_port != 0),
        "a TCP resource has a host and a port");
    fuzz::Require(resource.gpib_address >= 0 && resource.gpib_address <= 30,
                  "a GPIB address is in its range");
  } catch (const kel4x::UsageError& error) {
    fuzz::Require(*error.what() != '\0', "a refused resource is explained");
  }
  return 0;
}
