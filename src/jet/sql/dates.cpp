#include "jet/sql/dates.h"

#include <chrono>
#include <cmath>
#include <cstdlib>

#include "jet/sql/numbers.h"

namespace jet::sql {

namespace {

constexpr int kUnixDay = 25569;  // 1970-01-01

int dayNumberOfCivil(int year, int month, int day) {
  namespace c = std::chrono;
  const c::sys_days days =
      c::year(year) / c::month(static_cast<unsigned>(month)) / c::day(static_cast<unsigned>(day));
  return static_cast<int>(days.time_since_epoch().count()) + kUnixDay;
}

}  // namespace

DateParts dateParts(Date d) {
  if (!(d.days > kFirstDay - 1 && d.days < kLastDay + 1)) expressionError(5);
  const double whole = std::trunc(d.days);
  DateParts p;
  p.dayNumber = static_cast<int>(whole);
  int seconds = static_cast<int>(std::lround(std::fabs(d.days - whole) * kSecondsOfDay));
  if (seconds == kSecondsOfDay) {
    seconds = 0;
    ++p.dayNumber;
  }
  if (p.dayNumber < kFirstDay || p.dayNumber > kLastDay) expressionError(5);
  namespace c = std::chrono;
  const c::year_month_day civil{c::sys_days(c::days(p.dayNumber - kUnixDay))};
  p.year = static_cast<int>(civil.year());
  p.month = static_cast<int>(static_cast<unsigned>(civil.month()));
  p.day = static_cast<int>(static_cast<unsigned>(civil.day()));
  p.hour = seconds / 3600;
  p.minute = seconds / 60 % 60;
  p.second = seconds % 60;
  p.weekday = ((p.dayNumber + 6) % 7 + 7) % 7;
  p.yearDay = p.dayNumber - dayNumberOfCivil(p.year, 1, 1) + 1;
  return p;
}

std::optional<int> dayNumberOf(int64_t year, int64_t month, int64_t day) {
  constexpr int64_t kFar = 10'000'000;
  if (std::llabs(year) > kFar || std::llabs(month) > kFar || std::llabs(day) > kFar) return std::nullopt;
  const int64_t months = year * 12 + month - 1;
  const int64_t y = months >= 0 ? months / 12 : -((11 - months) / 12);
  if (y < -30000 || y > 30000) return std::nullopt;
  const int64_t number =
      dayNumberOfCivil(static_cast<int>(y), static_cast<int>(months - y * 12) + 1, 1) + day - 1;
  if (number < kFirstDay || number > kLastDay) return std::nullopt;
  return static_cast<int>(number);
}

int daysOfMonth(int year, int month) {
  namespace c = std::chrono;
  const c::year_month_day_last last{c::year(year), c::month_day_last(c::month(static_cast<unsigned>(month)))};
  return static_cast<int>(static_cast<unsigned>(last.day()));
}

Date dateFrom(int dayNumber, int seconds) {
  const double time = static_cast<double>(seconds) / kSecondsOfDay;
  return {dayNumber < 0 ? dayNumber - time : dayNumber + time};
}

double timeLine(Date d) {
  if (d.days >= 0) return d.days;
  const double whole = std::trunc(d.days);
  return whole + (whole - d.days);
}

Date fromTimeLine(double days) {
  if (!(days >= kFirstDay && days < kLastDay + 1)) expressionError(6);
  if (days >= 0) return {days};
  const double whole = std::floor(days);
  return {whole - (days - whole)};
}

int fullYear(int twoDigits) { return twoDigits < 30 ? 2000 + twoDigits : 1900 + twoDigits; }

int weekOfYear(const DateParts& p, int first, int firstWeek) {
  // Position of a day in its week, 0..6.
  const auto position = [first](int dayNumber) { return ((dayNumber + 6 - (first - 1)) % 7 + 7) % 7; };
  const auto firstDayOfWeek1 = [&](int year) {
    const int january1 = dayNumberOfCivil(year, 1, 1);
    const int start = january1 - position(january1);
    const int daysInYear = 7 - (january1 - start);
    const bool counts = firstWeek == 1 || (firstWeek == 2 && daysInYear >= 4) || daysInYear == 7;
    return counts ? start : start + 7;
  };
  if (firstWeek != 1) {
    if (p.dayNumber < firstDayOfWeek1(p.year)) return (p.dayNumber - firstDayOfWeek1(p.year - 1)) / 7 + 1;
    if (firstWeek == 2 && p.dayNumber >= firstDayOfWeek1(p.year + 1)) return 1;
  }
  return (p.dayNumber - firstDayOfWeek1(p.year)) / 7 + 1;
}

}  // namespace jet::sql
