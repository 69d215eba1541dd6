#include "driver/core/date_time.h"

#include <chrono>
#include <cmath>

#include "driver/core/raise.h"

namespace qkel4x {
namespace {

using std::chrono::day;
using std::chrono::days;
using std::chrono::month;
using std::chrono::sys_days;
using std::chrono::year;
using std::chrono::year_month_day;

constexpr sys_days kDayZero = sys_days(year(1899) / 12 / 30);
constexpr sys_days kFirstDay = sys_days(year(100) / 1 / 1);
constexpr sys_days kLastDay = sys_days(year(9999) / 12 / 31);
constexpr std::int64_t kSecondsPerDay = 86400;

}  // namespace

CalendarTime CalendarTimeOf(DateTime value) {
  // Before day zero the fraction still counts forward within the day: -1.25 is six o'clock the day before it.
  double whole_days = std::trunc(value.days);
  if (!(std::abs(whole_days) < 4e6)) RaiseFault(host::kInvalidProcedureCall);
  std::int64_t seconds =
      std::llround(std::abs(value.days - whole_days) * static_cast<double>(kSecondsPerDay));
  if (seconds == kSecondsPerDay) {
    seconds = 0;
    whole_days += 1;
  }
  const sys_days date = kDayZero + days(static_cast<int>(whole_days));
  if (date < kFirstDay || date > kLastDay) RaiseFault(host::kInvalidProcedureCall);
  const year_month_day calendar(date);
  return {.year = static_cast<int>(calendar.year()),
          .month = static_cast<int>(static_cast<unsigned>(calendar.month())),
          .day = static_cast<int>(static_cast<unsigned>(calendar.day())),
          .hour = static_cast<int>(seconds / 3600),
          .minute = static_cast<int>(seconds / 60 % 60),
          .second = static_cast<int>(seconds % 60)};
}

DateTime TimeOfDay(int hour, int minute, int second) {
  if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59) {
    RaiseFault(host::kInvalidProcedureCall);
  }
  return {static_cast<double>(hour * 3600 + minute * 60 + second) / static_cast<double>(kSecondsPerDay)};
}

DateTime CalendarDate(int year_number, int month_number, int day_number) {
  if (year_number >= 0 && year_number <= 29) {
    year_number += 2000;
  } else if (year_number >= 30 && year_number <= 99) {
    year_number += 1900;
  }
  if (year_number < 100 || year_number > 9999 || month_number < 1 || day_number < 1 || month_number > 12 ||
      day_number > 31) {
    RaiseFault(host::kInvalidProcedureCall);
  }
  const year_month_day date(year(year_number), month(static_cast<unsigned>(month_number)),
                            day(static_cast<unsigned>(day_number)));
  if (!date.ok()) RaiseFault(host::kInvalidProcedureCall);
  return {static_cast<double>((sys_days(date) - kDayZero).count())};
}

}  // namespace qkel4x
