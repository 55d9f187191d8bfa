#include "database/schedule.h"

#include <QLocale>
#include <cmath>

#include "platform/text.h"

namespace tandeko {

namespace {

constexpr int kCentury = 100;
// Two-digit years are read as those of 1900; no run was that long ago.
constexpr int kFirstYear = 1980;
constexpr double kLongestInterval = 100000;  // days
constexpr qint64 kSecondsADay = 86400;

const QString kOne = QStringLiteral("1");

// The user's own choice of a form counts where the system speaks the program's language.
QLocale dateLocale() {
  const QLocale system = QLocale::system();
  return system.language() == QLocale().language() ? system : QLocale();
}

std::optional<QDateTime> plausible(QDateTime moment) {
  if (!moment.isValid()) return std::nullopt;
  if (moment.date().year() < kFirstYear) moment = moment.addYears(kCentury);
  return moment;
}

std::optional<QDateTime> inLocale(const QLocale& locale, const QString& text) {
  for (const auto form : {QLocale::ShortFormat, QLocale::LongFormat, QLocale::NarrowFormat}) {
    if (const auto date = plausible(locale.toDate(text, form).startOfDay())) return date;
    if (const auto moment = plausible(locale.toDateTime(text, form))) return moment;
  }
  for (const char16_t* form : {u"d MMM yyyy", u"d MMMM yyyy"})
    if (const auto date = plausible(locale.toDate(text, QString::fromUtf16(form)).startOfDay())) return date;
  return std::nullopt;
}

}  // namespace

QString shortDate(const QDate& date) { return dateLocale().toString(date, QLocale::ShortFormat); }

std::optional<QDateTime> dateOfText(const QString& text) {
  const QString trimmed = text.trimmed();
  if (trimmed.isEmpty()) return std::nullopt;
  for (const QLocale& locale : {dateLocale(), QLocale(), QLocale::system()})
    if (const auto moment = inLocale(locale, trimmed)) return moment;
  // The forms that a system may be set to, with the day first where day and month could be mixed up.
  static const char16_t* const forms[] = {u"yyyy-M-d", u"yyyy.M.d", u"yyyy/M/d", u"d.M.yyyy", u"d-M-yyyy",
                                          u"d/M/yyyy", u"M/d/yyyy", u"d.M.yy",   u"d-M-yy",   u"d/M/yy",
                                          u"M/d/yy",   u"yy-M-d",   u"yy.M.d",   u"yyyyMMdd"};
  static const char16_t* const times[] = {u"", u" H:mm", u" H:mm:ss", u"'T'H:mm:ss"};
  for (const char16_t* form : forms)
    for (const char16_t* time : times) {
      const QString whole = QString::fromUtf16(form) + QString::fromUtf16(time);
      if (const auto moment = plausible(QDateTime::fromString(trimmed, whole))) return moment;
    }
  return inLocale(QLocale::c(), trimmed);
}

ScheduleDecision decideSchedule(const Schedule& schedule, const QDateTime& now, bool forced) {
  if (forced) return {true, true};
  if (schedule.on != kOne) return {};
  const auto last = dateOfText(schedule.last);
  const double days = qBound(0.0, leadingNumber(schedule.interval), kLongestInterval);
  // Days by the calendar, so that the change of the clock moves nothing.
  const auto whole = static_cast<qint64>(std::floor(days));
  const auto rest = static_cast<qint64>((days - std::floor(days)) * kSecondsADay);
  const bool due = !last || last->addDays(whole).addSecs(rest) < now;
  return {due, due && schedule.confirm == kOne};
}

}  // namespace tandeko
