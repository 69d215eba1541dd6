// The date-time value of the public interface, and the calendar that it stands for.
#pragma once

namespace qkel4x {

/// Days since 30 December 1899 as a floating-point number; also used for durations.
struct DateTime {
  double days = 0.0;

  friend constexpr bool operator==(DateTime, DateTime) = default;
};

/// A date-time value taken apart, to the nearest second.
struct CalendarTime {
  int year = 0;
  int month = 0;   ///< 1 to 12
  int day = 0;     ///< 1 to 31
  int hour = 0;    ///< 0 to 23
  int minute = 0;  ///< 0 to 59
  int second = 0;  ///< 0 to 59
};

/// The calendar date and time of day. Fails with 5 outside the years 100 to 9999.
CalendarTime CalendarTimeOf(DateTime value);

/// A time of day as a part of a day. Fails with 5 where there is no such time.
DateTime TimeOfDay(int hour, int minute, int second);

/// A calendar date; years 0 to 29 are 2000 to 2029 and 30 to 99 are 1930 to 1999. Fails with 5 where there is
/// none.
DateTime CalendarDate(int year_number, int month_number, int day_number);

}  // namespace qkel4x
