#include "jet/format/text.h"
#include "jet/sql/case_table.h"
#include "jet/sql/format_parts.h"
#include "jet/sql/locale.h"
#include "jet/sql/numbers.h"

namespace jet::sql {

namespace {

bool startsWithFolded(std::u16string_view text, std::u16string_view start) {
  return text.size() >= start.size() && sameName(text.substr(0, start.size()), start);
}

struct HalfDay {
  std::u16string_view pattern, morning, afternoon;
};
constexpr HalfDay kHalfDays[] = {{u"AM/PM", u"AM", u"PM"},
                                 {u"am/pm", u"am", u"pm"},
                                 {u"A/P", u"A", u"P"},
                                 {u"a/p", u"a", u"p"},
                                 {u"AMPM", u"AM", u"PM"}};

// The half-day mark at the start of `rest`, by exact case first so that am/pm stays small.
const HalfDay* halfDayAt(std::u16string_view rest) {
  for (const HalfDay& h : kHalfDays)
    if (rest.starts_with(h.pattern)) return &h;
  for (const HalfDay& h : kHalfDays)
    if (startsWithFolded(rest, h.pattern)) return &h;
  return nullptr;
}

std::u16string padded(int value, size_t width) {
  std::u16string text = widen(std::to_string(value));
  if (text.size() < width) text.insert(0, width - text.size(), u'0');
  return text;
}

class DateFormatter {
 public:
  DateFormatter(const DateParts& parts, std::u16string_view pattern) : parts_(parts), pattern_(pattern) {
    scan();
  }

  std::u16string format() {
    for (size_t at = 0; at < pattern_.size();) {
      if (readLiteral(pattern_, at, out_)) continue;
      if (const HalfDay* half = halfDayAt(pattern_.substr(at))) {
        out_ += parts_.hour < 12 ? half->morning : half->afternoon;
        at += half->pattern.size();
        continue;
      }
      const char16_t c = lowerUnit(pattern_[at]);
      size_t count = 1;
      while (at + count < pattern_.size() && lowerUnit(pattern_[at + count]) == c) ++count;
      if (c == u'w') count = std::min<size_t>(count, 2);
      put(c, count, pattern_.substr(at, count));
      at += count;
    }
    return std::move(out_);
  }

 private:
  // Whether hours count to twelve, and whether a month follows a day's number.
  void scan() {
    std::u16string ignored;
    for (size_t at = 0; at < pattern_.size();) {
      if (readLiteral(pattern_, at, ignored)) continue;
      halfDay_ |= halfDayAt(pattern_.substr(at)) != nullptr;
      const char16_t c = lowerUnit(pattern_[at]);
      size_t count = 1;
      while (at + count < pattern_.size() && lowerUnit(pattern_[at + count]) == c) ++count;
      dayNumber_ |= c == u'd' && count <= 2;
      at += count;
    }
  }

  void put(char16_t c, size_t count, std::u16string_view raw) {
    const bool afterHour = afterHour_;
    if (c >= u'a' && c <= u'z') afterHour_ = c == u'h';
    switch (c) {
      case u'd':
        return day(count);
      case u'm':
        return afterHour && count <= 2 ? number(parts_.minute, count) : month(count);
      case u'y':
        return year(count);
      case u'h':
        return number(halfDay_ ? (parts_.hour + 11) % 12 + 1 : parts_.hour, count);
      case u'n':
        return number(parts_.minute, count);
      case u's':
        return number(parts_.second, count);
      case u'q':
        return number((parts_.month + 2) / 3, 1);
      case u'w':
        return number(count == 1 ? parts_.weekday + 1 : weekOfYear(parts_, 1, 1), 1);
      case u't':
        out_ += count == 5 ? formatDateParts(parts_, kLocale.longTime) : std::u16string(raw);
        return;
      case u'c': {
        out_ += generalDate(
            dateFrom(parts_.dayNumber, parts_.hour * 3600 + parts_.minute * 60 + parts_.second), {});
        return;
      }
      case u'/':
        out_.append(count, kLocale.dateSeparator);
        return;
      case u':':
        out_.append(count, kLocale.timeSeparator);
        return;
      default:
        out_ += raw;
    }
  }

  void number(int value, size_t count) { out_ += padded(value, std::min<size_t>(count, 2)); }

  void day(size_t count) {
    switch (count) {
      case 1:
      case 2:
        return number(parts_.day, count);
      case 3:
        out_ += kLocale.shortDays[parts_.weekday];
        return;
      case 4:
        out_ += kLocale.days[parts_.weekday];
        return;
      case 5:
        out_ += formatDateParts(parts_, kLocale.shortDate);
        return;
      default:
        out_ += formatDateParts(parts_, kLocale.longDate);
    }
  }

  void month(size_t count) {
    if (count <= 2) return number(parts_.month, count);
    const Locale::Names12& names = count == 3   ? kLocale.shortMonths
                                   : dayNumber_ ? kLocale.monthsOfDay
                                                : kLocale.months;
    out_ += names[parts_.month - 1];
  }

  void year(size_t count) {
    if (count == 1)
      out_ += padded(parts_.yearDay, 1);
    else
      out_ += count == 2 ? padded(parts_.year % 100, 2) : padded(parts_.year, 4);
  }

  const DateParts& parts_;
  std::u16string_view pattern_;
  bool halfDay_ = false, dayNumber_ = false, afterHour_ = false;
  std::u16string out_;
};

}  // namespace

std::u16string formatDateParts(const DateParts& p, std::u16string_view pattern) {
  return DateFormatter(p, pattern).format();
}

}  // namespace jet::sql
