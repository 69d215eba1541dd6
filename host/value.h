// The value that travels between the driver and a host's late-bound objects: settings and their indices.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

namespace host {

/// Nothing, a boolean, a whole number, a floating-point number or a text.
using Value = std::variant<std::monostate, bool, std::int16_t, std::int32_t, double, std::string>;

}  // namespace host
