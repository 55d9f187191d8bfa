#include "platform/text.h"

#include <QLocale>
#include <QRegularExpression>
#include <cmath>

namespace tandeko {

namespace {

const QDate kDayZero(1899, 12, 30);
constexpr double kMillisecondsADay = 86400000.0;

double decimalToDouble(const jet::Decimal& decimal) {
  double magnitude = 0;
  for (const uint32_t part : decimal.magnitude) magnitude = magnitude * 4294967296.0 + part;
  const double number = magnitude / std::pow(10.0, decimal.scale);
  return decimal.negative ? -number : number;
}

// The number of any numeric value; nothing for the others.
std::optional<double> numberOf(const jet::Value& value) {
  return std::visit(
      [](const auto& held) -> std::optional<double> {
        using T = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<T, bool>)
          return held ? -1.0 : 0.0;
        else if constexpr (std::is_arithmetic_v<T>)
          return static_cast<double>(held);
        else if constexpr (std::is_same_v<T, jet::Currency>)
          return static_cast<double>(held.scaled) / 10000.0;
        else if constexpr (std::is_same_v<T, jet::Date>)
          return held.days;
        else if constexpr (std::is_same_v<T, jet::Decimal>)
          return decimalToDouble(held);
        else if constexpr (std::is_same_v<T, jet::Text>)
          return leadingNumber(toQString(held));
        else
          return std::nullopt;
      },
      value.storage());
}

QString numberText(double number, char format, int precision) {
  QLocale locale;
  locale.setNumberOptions(QLocale::OmitGroupSeparator);
  return locale.toString(number, format, precision);
}

QString dateText(const jet::Date& date) {
  const QDateTime moment = toDateTime(date);
  const QLocale locale;
  if (!moment.isValid()) return {};
  if (moment.time() == QTime(0, 0)) return locale.toString(moment.date(), QLocale::ShortFormat);
  return locale.toString(moment, QLocale::ShortFormat);
}

}  // namespace

std::filesystem::path toPath(const QString& path) { return std::filesystem::path(toU16(path)); }

QString fromPath(const std::filesystem::path& path) { return toQString(path.u16string()); }

double leadingNumber(const QString& text) {
  static const QRegularExpression number(QStringLiteral(R"(^\s*([-+]?(\d+([.,]\d*)?|[.,]\d+)))"));
  const auto match = number.match(text);
  return match.hasMatch() ? match.captured(1).replace(u',', u'.').toDouble() : 0;
}

QString toText(const jet::Value& value) {
  if (const auto* text = value.getIf<jet::Text>()) return toQString(*text);
  if (const auto* flag = value.getIf<bool>()) return *flag ? QStringLiteral("Tak") : QStringLiteral("Nie");
  if (const auto* date = value.getIf<jet::Date>()) return dateText(*date);
  if (const auto* number = value.getIf<float>()) return numberText(static_cast<double>(*number), 'g', 7);
  const auto number = numberOf(value);
  return number ? numberText(*number, 'g', 15) : QString();
}

int toInt(const jet::Value& value, int fallback) {
  const auto number = numberOf(value);
  if (!number || !std::isfinite(*number) || std::abs(*number) > 2147483647.0) return fallback;
  return static_cast<int>(std::lrint(*number));
}

double toDouble(const jet::Value& value, double fallback) { return numberOf(value).value_or(fallback); }

bool toBool(const jet::Value& value) { return toDouble(value) != 0; }

QDateTime toDateTime(const jet::Value& value) {
  const auto* date = value.getIf<jet::Date>();
  if (!date || !std::isfinite(date->days) || std::abs(date->days) > 3000000) return {};
  const double whole = std::trunc(date->days);
  const double fraction = std::abs(date->days - whole);
  const qint64 milliseconds = std::llround(fraction * kMillisecondsADay);
  const QDate day = kDayZero.addDays(static_cast<qint64>(whole));
  return milliseconds >= 86400000 ? QDateTime(day.addDays(1), QTime(0, 0))
                                  : QDateTime(day, QTime::fromMSecsSinceStartOfDay(int(milliseconds)));
}

QDate toDate(const jet::Value& value) { return toDateTime(value).date(); }

jet::Value fromText(const QString& text) { return jet::Value(toU16(text)); }

jet::Value textOrNull(const QString& text) { return text.isEmpty() ? jet::Value() : fromText(text); }

jet::Value fromDate(const QDate& date) {
  if (!date.isValid()) return {};
  return jet::Value(jet::Date{static_cast<double>(kDayZero.daysTo(date))});
}

jet::Value fromDateTime(const QDateTime& moment) {
  if (!moment.isValid()) return {};
  const double day = static_cast<double>(kDayZero.daysTo(moment.date()));
  const double time = moment.time().msecsSinceStartOfDay() / kMillisecondsADay;
  return jet::Value(jet::Date{day < 0 ? day - time : day + time});
}

jet::Value fromCurrency(double amount) { return jet::Value(jet::Currency{std::llround(amount * 10000.0)}); }

}  // namespace tandeko
