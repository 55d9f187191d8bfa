#include "register/numbering.h"

#include <algorithm>

#include "platform/statements.h"
#include "platform/text.h"
#include "register/number_template.h"

namespace tandeko {

namespace {

// The condition that narrows a register's items to the period; nullopt when the period cannot be told.
std::optional<QString> periodCondition(const NumberingSettings& settings, const QDate& purchased, int group) {
  if (settings.monthly) {
    if (!purchased.isValid()) return std::nullopt;
    return QStringLiteral(" And Miesiac = ") + QString::number(purchased.month()) +
           QStringLiteral(" And Rok = ") + QString::number(purchased.year());
  }
  if (settings.perGroup) {
    if (group < 1) return std::nullopt;
    return QStringLiteral(" And Indgew = ") + QString::number(group);
  }
  return QStringLiteral(" And Rok = ") + QString::number(purchased.isValid() ? purchased.year() : 0);
}

}  // namespace

std::optional<NumberingSettings> NumLoad(jet::Database& database, const QString& table,
                                         std::optional<int> id) {
  if (!id) return std::nullopt;
  const auto row =
      openRows(database, QStringLiteral("SELECT * FROM ") + table + QStringLiteral(" WHERE ind") +
                             table.right(3) + QStringLiteral(" = ") + QString::number(*id) + u' ');
  NumberingSettings settings;
  if (row->eof()) {
    settings.numberTemplate = QStringLiteral("Numer");
    return settings;
  }
  settings.numberTemplate = toText(row->value(u"NumSzablon"));
  settings.monthly = toBool(row->value(u"NumMiesieczna"));
  settings.perGroup = toBool(row->value(u"NumGrupa"));
  settings.editable = toBool(row->value(u"NumEdycja"));
  settings.automatic = toBool(row->value(u"NumAuto"));
  return settings;
}

std::optional<LastNumber> NumLast(jet::Database& database, int registerKey, const QDate& purchased,
                                  int group) {
  const auto settings = NumLoad(database, QStringLiteral("swrew"), registerKey);
  if (!settings) return std::nullopt;
  const auto condition = periodCondition(*settings, purchased, group);
  if (!condition) return std::nullopt;

  LastNumber last;
  if (settings->numberTemplate.isEmpty()) return last;
  const QString query = QStringLiteral(
                            "SELECT numewi AS [ost_numer], datazak As [ost_data], "
                            "iif(isnull(numewi),0,val(numewi)) FROM ewkar WHERE indrew = ") +
                        QString::number(registerKey) + *condition + QStringLiteral(" ORDER BY 3 DESC ");
  const auto rows = database.openRecordset(toU16(query), jet::RecordsetType::Snapshot);
  if (rows->eof() || rows->value(u"ost_numer").isNull()) return last;
  const NumParser parse(settings->numberTemplate, numSeparator(settings->numberTemplate));
  const jet::Field &numbers = rows->field(u"ost_numer"), &dates = rows->field(u"ost_data");
  // A hundred thousand rows may have to be looked at: nothing but the number is taken out of most of them.
  for (; !rows->eof(); rows->moveNext()) {
    const jet::Value value = numbers.value();
    const auto* text = value.getIf<jet::Text>();
    const int number = text ? parse(*text) : 0;
    if (number > last.number) last = {number, toQString(*text), toDate(dates.value())};
  }
  return last;
}

QString NumNext(jet::Database& database, int registerKey, const QDate& purchased, int group) {
  const QString unknown = QStringLiteral("?");
  if (!purchased.isValid()) return unknown;
  const auto settings = NumLoad(database, QStringLiteral("swrew"), registerKey);
  if (!settings || !settings->automatic) return unknown;
  const auto last = NumLast(database, registerKey, purchased, group);
  const int next = (last ? last->number : 0) + 1;
  if (next > kHighestNumber) throwNumberOverflow();
  return NumFormat(next, settings->numberTemplate, purchased, registerKey, std::max(group, 0));
}

}  // namespace tandeko
