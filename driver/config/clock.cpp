// The instrument's own clock: time of day and calendar date.
#include <array>
#include <cmath>

#include "driver/clsKEL4x.h"
#include "driver/core/number_text.h"
#include "driver/core/raise.h"

namespace qkel4x {
namespace {

/// The first three fields of a comma-separated text as whole numbers, fractions cut toward minus infinity.
/// Fails with 9 where there are fewer, 13 where one is no number, 6 where one is out of the 16-bit range.
std::array<std::int16_t, 3> FirstThreeFields(std::string_view text) {
  std::array<std::int16_t, 3> fields{};
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const std::string_view field = PieceAt(text, ',', i);
    if (field.data() == nullptr) RaiseFault(host::kSubscriptOutOfRange);
    fields[i] = RoundToInt16(std::floor(NumberFromText(field)));
  }
  return fields;
}

}  // namespace

// SetupTime -------------------------------------------------------------------------------------------------
DateTime clsKEL4x::SetupTime() {
  static constexpr MemberTexts kGet = ReadTexts("SetupTime");
  return Armed(kGet, [this] {
    std::string reply;
    io_.ExchangeCommand("SYST:TIME?", reply);
    if (SimulationActive()) return DateTime{};
    const auto [hour, minute, second] = FirstThreeFields(status_.Decode(reply));
    return TimeOfDay(hour, minute, second);
  });
}

// IRREGULAR: "Time" in mixed case, unlike the query.
void clsKEL4x::SetupTime(DateTime time) {
  static constexpr MemberTexts kLet = WriteTexts("SetupTime");
  Armed(kLet, [&] {
    const CalendarTime parts = CalendarTimeOf(time);
    io_.ExchangeCommand(Join("SYST:Time ", DecimalText(parts.hour), ",", DecimalText(parts.minute), ",",
                             DecimalText(parts.second)));
  });
}

// SetupDate -------------------------------------------------------------------------------------------------
DateTime clsKEL4x::SetupDate() {
  static constexpr MemberTexts kGet = ReadTexts("SetupDate");
  return Armed(kGet, [this] {
    std::string reply;
    io_.ExchangeCommand("SYST:DATE?", reply);
    if (SimulationActive()) return DateTime{};
    const auto [year, month, day] = FirstThreeFields(status_.Decode(reply));
    return CalendarDate(year, month, day);
  });
}

// IRREGULAR: the year goes out as its last two digits.
void clsKEL4x::SetupDate(DateTime date) {
  static constexpr MemberTexts kLet = WriteTexts("SetupDate");
  Armed(kLet, [&] {
    const CalendarTime parts = CalendarTimeOf(date);
    const std::array<char, 2> year = {static_cast<char>('0' + parts.year / 10 % 10),
                                      static_cast<char>('0' + parts.year % 10)};
    io_.ExchangeCommand(Join("SYST:DATE ", std::string_view(year.data(), year.size()), ",",
                             DecimalText(parts.month), ",", DecimalText(parts.day)));
  });
}

}  // namespace qkel4x
