#include <algorithm>
#include <cmath>

#include "jet/sql/case_table.h"
#include "jet/sql/dates.h"
#include "jet/sql/function_support.h"
#include "jet/sql/locale.h"
#include "jet/sql/numbers.h"

namespace jet::sql {

namespace {

enum class Unit { Year, Quarter, Month, YearDay, Day, Weekday, Week, Hour, Minute, Second };

Unit unitArgument(const Value& v, const EvalContext& c) {
  static constexpr std::pair<std::u16string_view, Unit> kUnits[] = {
      {u"yyyy", Unit::Year}, {u"q", Unit::Quarter}, {u"m", Unit::Month}, {u"y", Unit::YearDay},
      {u"d", Unit::Day},     {u"w", Unit::Weekday}, {u"ww", Unit::Week}, {u"h", Unit::Hour},
      {u"n", Unit::Minute},  {u"s", Unit::Second}};
  const std::u16string name = lowerText(textArgument(v, c));
  for (const auto& [text, unit] : kUnits)
    if (text == name) return unit;
  expressionError(5);
}

// The first day of the week, 1 Sunday to 7; 0 stands for the locale's.
int firstWeekday(Arguments a, size_t index) {
  const int first = index < a.size() ? integerArgument(a[index], 0, 7) : 1;
  return first == 0 ? kLocale.firstWeekday : first;
}

int firstWeek(Arguments a, size_t index) {
  const int rule = index < a.size() ? integerArgument(a[index], 0, 3) : 1;
  return std::max(rule, 1);
}

int weekdayOf(const DateParts& p, int first) { return (p.weekday - (first - 1) + 7) % 7 + 1; }

int secondsOf(const DateParts& p) { return p.hour * 3600 + p.minute * 60 + p.second; }

int64_t floorDivide(int64_t a, int64_t b) { return a / b - (a % b < 0); }

int partOf(Unit unit, const DateParts& p, int first, int week) {
  switch (unit) {
    case Unit::Year:
      return p.year;
    case Unit::Quarter:
      return (p.month + 2) / 3;
    case Unit::Month:
      return p.month;
    case Unit::YearDay:
      return p.yearDay;
    case Unit::Day:
      return p.day;
    case Unit::Weekday:
      return weekdayOf(p, first);
    case Unit::Week:
      return weekOfYear(p, first, week);
    case Unit::Hour:
      return p.hour;
    case Unit::Minute:
      return p.minute;
    case Unit::Second:
      return p.second;
  }
  return 0;
}

template <Unit unit>
Value part(Arguments a, EvalContext&) {
  if (anyNull(a)) return {};
  return static_cast<int16_t>(partOf(unit, dateParts(dateArgument(a[0])), 1, 1));
}

Value weekday(Arguments a, EvalContext&) {
  if (anyNull(a)) return {};
  return static_cast<int16_t>(weekdayOf(dateParts(dateArgument(a[0])), firstWeekday(a, 1)));
}

Value datePart(Arguments a, EvalContext& c) {
  if (anyNull(a)) return {};
  const Unit unit = unitArgument(a[0], c);
  const int first = firstWeekday(a, 2), week = firstWeek(a, 3);
  return static_cast<int16_t>(partOf(unit, dateParts(dateArgument(a[1])), first, week));
}

Value today(Arguments, EvalContext& c) { return dateFrom(dateParts(c.now).dayNumber, 0); }
Value timeOfDay(Arguments, EvalContext& c) { return dateFrom(0, secondsOf(dateParts(c.now))); }
Value now(Arguments, EvalContext& c) { return c.now; }

Value dateSerial(Arguments a, EvalContext&) {
  const int64_t year = integerArgument(a[0]), month = integerArgument(a[1]), day = integerArgument(a[2]);
  const bool isShort = year >= 0 && year < 100;
  const auto number = dayNumberOf(isShort ? fullYear(static_cast<int>(year)) : year, month, day);
  if (!number) expressionError(5);
  return dateFrom(*number, 0);
}

// A date from whole seconds, which may lie outside of the day.
Date dateFromSeconds(int dayNumber, int64_t seconds) {
  const int64_t days = dayNumber + floorDivide(seconds, kSecondsOfDay);
  if (days < kFirstDay || days > kLastDay) expressionError(5);
  return dateFrom(static_cast<int>(days),
                  static_cast<int>(seconds - floorDivide(seconds, kSecondsOfDay) * kSecondsOfDay));
}

// A count that cannot overflow when it is turned into seconds.
int64_t countArgument(const Value& v) {
  const int64_t n = integerArgument(v);
  if (n < INT32_MIN || n > INT32_MAX) expressionError(6);
  return n;
}

Value timeSerial(Arguments a, EvalContext&) {
  return dateFromSeconds(0, countArgument(a[0]) * 3600 + countArgument(a[1]) * 60 + countArgument(a[2]));
}

// DateValue and TimeValue take text or a date, no numbers.
DateParts datedText(const Value& v) {
  if (isNumberType(v.type())) expressionError(13);
  if (const Text* text = v.getIf<Text>(); text && !parseDate(*text)) expressionError(13);
  return dateParts(dateArgument(v));
}

Value dateValue(Arguments a, EvalContext&) { return dateFrom(datedText(a[0]).dayNumber, 0); }
Value timeValue(Arguments a, EvalContext&) { return dateFrom(0, secondsOf(datedText(a[0]))); }

Value dateAdd(Arguments a, EvalContext& c) {
  if (anyNull(a)) return {};
  const Unit unit = unitArgument(a[0], c);
  const int64_t n = countArgument(a[1]);
  const DateParts p = dateParts(dateArgument(a[2]));
  const auto addMonths = [&](int64_t months) {
    const int64_t month = int64_t{p.year} * 12 + p.month - 1 + months;
    const int64_t year = floorDivide(month, 12);
    if (year < 100 || year > 9999) expressionError(5);
    const int inYear = static_cast<int>(month - year * 12) + 1;
    const int day = std::min(p.day, daysOfMonth(static_cast<int>(year), inYear));
    return dateFrom(*dayNumberOf(year, inYear, day), secondsOf(p));
  };
  const auto addSeconds = [&](int64_t seconds) {
    return dateFromSeconds(p.dayNumber, secondsOf(p) + seconds);
  };
  switch (unit) {
    case Unit::Year:
      return addMonths(n * 12);
    case Unit::Quarter:
      return addMonths(n * 3);
    case Unit::Month:
      return addMonths(n);
    case Unit::Week:
      return addSeconds(n * 7 * kSecondsOfDay);
    case Unit::Hour:
      return addSeconds(n * 3600);
    case Unit::Minute:
      return addSeconds(n * 60);
    case Unit::Second:
      return addSeconds(n);
    default:
      return addSeconds(n * kSecondsOfDay);
  }
}

// Counts the boundaries between two moments, negative when the second is earlier.
Value dateDiff(Arguments a, EvalContext& c) {
  if (anyNull(a)) return {};
  const Unit unit = unitArgument(a[0], c);
  const DateParts from = dateParts(dateArgument(a[1])), to = dateParts(dateArgument(a[2]));
  const int first = firstWeekday(a, 3);
  const int64_t days = int64_t{to.dayNumber} - from.dayNumber;
  const auto months = [](const DateParts& p) { return p.year * 12 + p.month - 1; };
  const auto seconds = [](const DateParts& p) { return int64_t{p.dayNumber} * kSecondsOfDay + secondsOf(p); };
  const auto boundaries = [&](int64_t length) {
    return floorDivide(seconds(to), length) - floorDivide(seconds(from), length);
  };
  int64_t result = 0;
  switch (unit) {
    case Unit::Year:
      result = to.year - from.year;
      break;
    case Unit::Quarter:
      result = months(to) / 3 - months(from) / 3;
      break;
    case Unit::Month:
      result = months(to) - months(from);
      break;
    case Unit::YearDay:
    case Unit::Day:
      result = days;
      break;
    case Unit::Weekday:
      result = days / 7;
      break;
    case Unit::Week:
      result = (days - weekdayOf(to, first) + weekdayOf(from, first)) / 7;
      break;
    case Unit::Hour:
      result = boundaries(3600);
      break;
    case Unit::Minute:
      result = boundaries(60);
      break;
    case Unit::Second:
      result = boundaries(1);
      break;
  }
  if (result < INT32_MIN || result > INT32_MAX) expressionError(6);
  return static_cast<int32_t>(result);
}

}  // namespace

std::span<const Function> dateFunctions() {
  static const Function kFunctions[] = {
      {u"date", 0, 0, Type::Date, true, today},
      {u"time", 0, 0, Type::Date, true, timeOfDay},
      {u"now", 0, 0, Type::Date, true, now},
      {u"year", 1, 1, Type::Integer, true, part<Unit::Year>},
      {u"month", 1, 1, Type::Integer, true, part<Unit::Month>},
      {u"day", 1, 1, Type::Integer, true, part<Unit::Day>},
      {u"hour", 1, 1, Type::Integer, true, part<Unit::Hour>},
      {u"minute", 1, 1, Type::Integer, true, part<Unit::Minute>},
      {u"second", 1, 1, Type::Integer, true, part<Unit::Second>},
      {u"weekday", 1, 2, Type::Integer, true, weekday},
      {u"dateserial", 3, 3, Type::Date, true, dateSerial},
      {u"timeserial", 3, 3, Type::Date, true, timeSerial},
      {u"datevalue", 1, 1, Type::Date, true, dateValue},
      {u"timevalue", 1, 1, Type::Date, true, timeValue},
      {u"dateadd", 3, 3, Type::Date, true, dateAdd},
      {u"datediff", 3, 5, Type::Long, true, dateDiff},
      {u"datepart", 2, 4, Type::Integer, true, datePart},
  };
  return kFunctions;
}

}  // namespace jet::sql
