// The shape of a tuning frequency or rate: a range-checked number.
#pragma once

#include <string_view>

#include "driver/core/member_texts.h"

namespace qkel4x {

/// A number in hertz or symbols per second with its range, both ends included.
struct FrequencySetting {
  MemberTexts let;
  MemberTexts get;
  double lowest;
  double highest;
  std::string_view refused;  ///< description of error 380; a value and " Hz)" follow where it ends in "= "
  std::string_view write;    ///< followed directly by the number
  std::string_view query;
};

}  // namespace qkel4x
