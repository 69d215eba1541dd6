// The calendar of date-time values.
#include "driver/core/date_time.h"

#include <gtest/gtest.h>

#include <array>

#include "host/automation_error.h"

namespace qkel4x {
namespace {

void ExpectCalendar(double days, int year, int month, int day, int hour, int minute, int second) {
  const CalendarTime found = CalendarTimeOf({days});
  EXPECT_EQ(found.year, year) << days;
  EXPECT_EQ(found.month, month) << days;
  EXPECT_EQ(found.day, day) << days;
  EXPECT_EQ(found.hour, hour) << days;
  EXPECT_EQ(found.minute, minute) << days;
  EXPECT_EQ(found.second, second) << days;
}

TEST(CalendarTimeOf, CountsDaysFrom30December1899) {
  ExpectCalendar(0.0, 1899, 12, 30, 0, 0, 0);
  ExpectCalendar(1.0, 1899, 12, 31, 0, 0, 0);
  ExpectCalendar(2.0, 1900, 1, 1, 0, 0, 0);
  ExpectCalendar(39818.0, 2009, 1, 5, 0, 0, 0);
  ExpectCalendar(36585.5, 2000, 2, 29, 12, 0, 0);
  ExpectCalendar(39818.0 + 50589.0 / 86400.0, 2009, 1, 5, 14, 3, 9);
}

TEST(CalendarTimeOf, KnowsEverySecondOfADay) {
  for (int second = 0; second < 86400; ++second) {
    const CalendarTime found = CalendarTimeOf({39818.0 + second / 86400.0});
    ASSERT_EQ(found.hour * 3600 + found.minute * 60 + found.second, second);
    ASSERT_EQ(found.day, 5);
  }
}

TEST(TimeOfDay, IsAPartOfADay) {
  EXPECT_EQ(TimeOfDay(0, 0, 0).days, 0.0);
  EXPECT_EQ(TimeOfDay(12, 0, 0).days, 0.5);
  EXPECT_DOUBLE_EQ(TimeOfDay(23, 59, 59).days, 86399.0 / 86400.0);
  for (const auto& [hour, minute, second] :
       {std::array{24, 0, 0}, {-1, 0, 0}, {0, 60, 0}, {0, 0, 60}, {0, -1, 0}}) {
    EXPECT_THROW(TimeOfDay(hour, minute, second), host::AutomationError);
  }
}

TEST(CalendarDate, IsAWholeDay) {
  EXPECT_EQ(CalendarDate(1899, 12, 30).days, 0.0);
  EXPECT_EQ(CalendarDate(2009, 1, 5).days, 39818.0);
  EXPECT_EQ(CalendarDate(9, 1, 5).days, 39818.0);
  EXPECT_EQ(CalendarDate(29, 12, 31).days, CalendarDate(2029, 12, 31).days);
  EXPECT_EQ(CalendarDate(30, 1, 1).days, CalendarDate(1930, 1, 1).days);
  EXPECT_EQ(CalendarDate(2008, 2, 29).days, CalendarDate(2008, 3, 1).days - 1.0);
  for (const auto& [year, month, day] :
       {std::array{2009, 2, 29}, {1900, 2, 29}, {2009, 13, 1}, {2009, 0, 1}, {2009, 1, 0}, {2009, 4, 31}}) {
    EXPECT_THROW(CalendarDate(year, month, day), host::AutomationError);
  }
}

TEST(CalendarDate, IsTheReverseOfCalendarTimeOf) {
  for (double days = -30000.0; days < 60000.0; days += 1.0) {
    const CalendarTime found = CalendarTimeOf({days});
    if (found.year < 1900) continue;
    ASSERT_EQ(CalendarDate(found.year, found.month, found.day).days, days);
  }
}

}  // namespace
}  // namespace qkel4x
