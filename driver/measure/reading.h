// The shape of a measurement that is one number.
#pragma once

#include <string_view>

#include "driver/core/member_texts.h"
#include "driver/core/mode_set.h"

namespace qkel4x {

/// A query, and the measurement modes in which the instrument has an answer to it.
struct Reading {
  MemberTexts texts;
  std::string_view query;
  ModeSet modes = {};               ///< empty: every mode
  bool gate_in_simulation = false;  ///< whether a wrong mode is refused even while the host simulates
};

}  // namespace qkel4x
