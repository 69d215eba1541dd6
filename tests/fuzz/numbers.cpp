// Number texts: read like the C library reads them, and written so that they read back the same.
#include <cmath>
#include <cstring>
#include <string>

#include "driver/core/date_time.h"
#include "driver/core/number_text.h"
#include "host/automation_error.h"
#include "tests/fuzz/input.h"

namespace {

using fuzz::Require;

template <class Work>
void RefusesCleanly(const Work& work) {
  try {
    work();
  } catch (const host::AutomationError&) {
  }
}

void ReadsLikeTheCLibrary(std::string_view text) {
  // What strtod takes beyond a decimal number is no number here.
  if (text.find_first_of("xXiInN\t\v\f\r") != std::string_view::npos) return;
  if (text.find('\0') != std::string_view::npos || text.find('\n') != std::string_view::npos) return;
  const std::string terminated(text);
  const double expected = std::strtod(terminated.c_str(), nullptr);
  try {
    const double number = qkel4x::LeadingNumber(text);
    Require(number == expected || std::fabs(expected) < 1e-300, "a number reads as the C library reads it");
  } catch (const host::AutomationError& error) {
    Require(error.Number() == host::kOverflow && (std::isinf(expected) || std::fabs(expected) < 1e-300),
            "only a number that no double can hold is refused");
  }
}

void WritesWhatReadsBack(double number) {
  if (!std::isfinite(number)) return;
  const qkel4x::NumberText general = qkel4x::GeneralText(number);
  Require(qkel4x::LeadingNumber(general) == number || std::fabs(number) < 1e-300,
          "the general form reads back the same");
  Require(std::fabs(number) >= 1e15 || std::string_view(general).find('E') == std::string_view::npos,
          "no exponent below 1E+15");
  const std::string_view signs = general;
  const qkel4x::NumberText positioned = qkel4x::SignPositionText(number);
  Require(std::string_view(positioned).front() == (signs.front() == '-' ? '-' : ' '),
          "the sign's place is a sign or a blank");
  Require(qkel4x::LeadingNumber(positioned) == number || std::fabs(number) < 1e-300,
          "the sign-position form reads back the same");
  const double rounded = qkel4x::RoundToDecimals(number, 1);
  Require(std::fabs(rounded - number) <= 0.05 + std::fabs(number) * 1e-15,
          "rounding moves by half a step at most");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = fuzz::Text(data, size);
  ReadsLikeTheCLibrary(text);
  RefusesCleanly([&] { qkel4x::NumberFromText(text); });
  RefusesCleanly([&] { qkel4x::BooleanFromText(text); });
  RefusesCleanly([&] { qkel4x::RoundToInt16(qkel4x::LeadingNumber(text)); });
  RefusesCleanly([&] { qkel4x::RoundToInt32(qkel4x::LeadingNumber(text)); });
  RefusesCleanly([&] { WritesWhatReadsBack(qkel4x::LeadingNumber(text)); });
  if (size >= sizeof(double)) {
    double number = 0;
    std::memcpy(&number, data, sizeof number);
    WritesWhatReadsBack(number);
    RefusesCleanly([&] { qkel4x::CalendarTimeOf({number}); });
  }
  return 0;
}
