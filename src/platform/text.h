#pragma once

#include <QDateTime>
#include <QString>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "jet/format/value.h"

// The glue between the engine's types and Qt's.
namespace tandeko {

inline QString toQString(std::u16string_view text) {
  return QString(reinterpret_cast<const QChar*>(text.data()), static_cast<qsizetype>(text.size()));
}
inline std::u16string toU16(const QString& text) { return text.toStdU16String(); }

std::filesystem::path toPath(const QString& path);
QString fromPath(const std::filesystem::path& path);

// What the user sees of a value: Null is empty, numbers in decimal with the locale's separator and
// without grouping, Yes/No "Tak"/"Nie", a date in the short format (with the time when it has one),
// bytes and identifiers empty.
QString toText(const jet::Value& value);
// Whole and fractional numbers of every numeric type; texts by their leading number; Null and the
// rest give `fallback`.
int toInt(const jet::Value& value, int fallback = 0);
double toDouble(const jet::Value& value, double fallback = 0);
// True for any non-zero number and for Yes.
bool toBool(const jet::Value& value);
// Null, and what is no date, gives an invalid date.
QDateTime toDateTime(const jet::Value& value);
QDate toDate(const jet::Value& value);

// An empty text stays empty (not Null); use textOrNull for fields that refuse the empty text.
jet::Value fromText(const QString& text);
jet::Value textOrNull(const QString& text);
// An invalid date is Null.
jet::Value fromDate(const QDate& date);
jet::Value fromDateTime(const QDateTime& moment);
jet::Value fromCurrency(double amount);

// The number a text begins with, blanks ignored, decimal point or comma; 0 when there is none.
double leadingNumber(const QString& text);

}  // namespace tandeko
