// A set of measurement modes, for the gates of the members that need one of them.
#pragma once

#include <cstdint>

#include "driver/enumerations.h"

namespace qkel4x {

/// Measurement modes as bits. Empty means that the member has no gate. kelUndefined is in no set.
struct ModeSet {
  std::uint32_t bits = 0;

  constexpr bool Empty() const { return bits == 0; }
  constexpr bool Has(KelMeasureModes mode) const {
    return mode >= 0 && mode < 32 && ((bits >> mode) & 1U) != 0;
  }
};

/// The set of just these modes.
template <class... Modes>
constexpr ModeSet AnyOf(Modes... modes) {
  return {((1U << static_cast<std::uint32_t>(modes)) | ...)};
}

}  // namespace qkel4x
