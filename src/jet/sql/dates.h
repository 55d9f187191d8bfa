#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "jet/format/value.h"

// Calendar arithmetic over Date values. Day numbers count from 1899-12-30; the time of day always runs
// forward, so the fraction of a negative Date is added to its day, not taken away.
namespace jet::sql {

inline constexpr int kFirstDay = -657434;  // 0100-01-01
inline constexpr int kLastDay = 2958465;   // 9999-12-31
inline constexpr int kSecondsOfDay = 86400;

// A date taken apart, rounded to seconds.
struct DateParts {
  int dayNumber = 0;
  int year = 1899, month = 12, day = 30;
  int hour = 0, minute = 0, second = 0;
  int weekday = 0;  // Sunday 0
  int yearDay = 1;  // 1..366
};
DateParts dateParts(Date d);  // error 5 outside of the years 100..9999

// The day number of a date whose month and day may lie outside of their range and carry over; nullopt when
// the result leaves the years 100..9999.
std::optional<int> dayNumberOf(int64_t year, int64_t month, int64_t day);
int daysOfMonth(int year, int month);
Date dateFrom(int dayNumber, int seconds);  // seconds 0..86399

// Days on a continuous time line and back; error 6 outside of the valid dates.
double timeLine(Date d);
Date fromTimeLine(double days);

int fullYear(int twoDigits);  // 0..29 -> 2000.., 30..99 -> 1930..

// DatePart and DateDiff's calendar: the week number for weeks that begin on `first` (1 Sunday), the first
// week being that of January 1 (1), with four days (2) or full (3).
int weekOfYear(const DateParts& p, int first, int firstWeek);

}  // namespace jet::sql
