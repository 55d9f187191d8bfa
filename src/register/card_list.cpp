#include "register/card_list.h"

#include <QLocale>
#include <QSet>

#include "lists/sql_text.h"
#include "platform/statements.h"
#include "platform/text.h"

namespace tandeko {

namespace {

const QString kMarker = QStringLiteral("warwhere");
// What the employees' part of the query selects as the holder, and what stands for it in the other parts.
const QString kHolderName = QStringLiteral("swpra.nazwisko & ' ' & swpra.imie");
const QString kHolderNames[] = {kHolderName, QStringLiteral("'[Magazyn]'"), QStringLiteral("'[Kosz]'")};

constexpr qsizetype kKeysAtOnce = 200;  // in one "In (...)"

void addText(Conditions& conditions, const QString& field, const QString& caption, const QString& text) {
  if (!text.isEmpty())
    conditions.add(QStringLiteral(" AND ewkar.") + field + QStringLiteral(" LIKE '") + likeText(text) +
                       QStringLiteral("*' "),
                   caption + QStringLiteral(" = ") + text);
}

}  // namespace

const QString kCardQuery = QStringLiteral(
    "SELECT ewkar.indewi, ewkar.Datazak, ewkar.Data, ewkar.Indgew, swgew.nazwa, ewkar.Indpra, swpra.nazwisko "
    "& ' ' & swpra.imie As [Nazpra], ewkar.Numewi, ewkar.Numkat, ewkar.Numser, ewkar.Indsew, swsew.nazwa, "
    "ewkar.Nazwa, ewkar.Ilosc, ewkar.Indjed, ewkar.Cenazak, ewkar.Ilosc * ewkar.Cenazak As [Wartosc], "
    "ewkar.Srodek, ewkar.Uwagi, ewkar.Indoso FROM ewkar, swpra, swgew, swsew WHERE ewkar.indpra = "
    "swpra.indpra And ewkar.indgew = swgew.Indgew And ewkar.indsew = swsew.indsew warwhere "
    "UNION SELECT ewkar.indewi, ewkar.Datazak, ewkar.Data, ewkar.Indgew, swgew.nazwa, ewkar.Indpra, "
    "'[Magazyn]', ewkar.Numewi, ewkar.Numkat, ewkar.Numser, ewkar.Indsew, swsew.nazwa, ewkar.Nazwa, "
    "ewkar.Ilosc, ewkar.Indjed,  ewkar.Cenazak, ewkar.Ilosc * ewkar.Cenazak, ewkar.Srodek, ewkar.Uwagi, "
    "ewkar.Indoso FROM ewkar, swgew, swsew WHERE ewkar.indpra = 0 And ewkar.indgew = swgew.Indgew And "
    "ewkar.indsew = swsew.indsew warwhere "
    "UNION SELECT ewkar.indewi, ewkar.Datazak, ewkar.Data, ewkar.Indgew, swgew.nazwa, ewkar.Indpra, "
    "'[Kosz]', ewkar.Numewi, ewkar.Numkat, ewkar.Numser, ewkar.Indsew, swsew.nazwa, ewkar.Nazwa, "
    "ewkar.Ilosc, ewkar.Indjed,  ewkar.Cenazak, ewkar.Ilosc * ewkar.Cenazak, ewkar.Srodek, ewkar.Uwagi, "
    "ewkar.Indoso FROM ewkar, swgew, swsew WHERE ewkar.indpra < 0 And ewkar.indgew = swgew.Indgew And "
    "ewkar.indsew = swsew.indsew warwhere ");

const QString kCardSort = QStringLiteral("13 ASC");

QList<ListColumn> cardColumns() {
  const struct {
    const char16_t* caption;
    int field;
    CellFormat format;
    int width;
  } columns[] = {
      {u"Data nabycia", 1, CellFormat::ShortDate, 11},
      {u"Data przyjęcia", 2, CellFormat::ShortDate, 11},
      {u"Nr grupy", 3, CellFormat::General, 8},
      {u"Grupa", 4, CellFormat::General, 18},
      {u"Nr użytkownika", 5, CellFormat::General, 8},
      {u"Użytkownik", 6, CellFormat::General, 24},
      {u"Nr ewidencyjny", 7, CellFormat::General, 16},
      {u"Nr katalogowy", 8, CellFormat::General, 14},
      {u"Nr seryjny", 9, CellFormat::General, 14},
      {u"Nr stanu", 10, CellFormat::General, 8},
      {u"Stan", 11, CellFormat::General, 14},
      {u"Nazwa przedmiotu", kNameField, CellFormat::General, 36},
      {u"Ilość", kQuantityField, CellFormat::GeneralNumber, 8},
      {u"Jm.", 14, CellFormat::General, 5},
      {u"Cena nabycia", 15, CellFormat::Money, 12},
      {u"Wartość nabycia", kWorthField, CellFormat::Money, 12},
      {u"Środek trwały", 17, CellFormat::YesNo, 6},
      {u"Uwagi", 18, CellFormat::General, 30},
      {u"Wprowadził", 19, CellFormat::General, 8},
  };
  QList<ListColumn> list;
  for (const auto& column : columns)
    list << ListColumn{QString::fromUtf16(column.caption), column.field, column.format, column.width, {}};
  return list;
}

Conditions cardConditions(const QuickFilter& quick) {
  Conditions conditions;
  if (quick.allRegisters)
    conditions.add({}, QStringLiteral("Wszystki rejestry; "));
  else
    conditions.add(QStringLiteral(" AND ewkar.indrew = ") + str(quick.registerKey), {});
  if (quick.group)
    conditions.add(QStringLiteral(" AND ewkar.indgew = ") + str(*quick.group),
                   QStringLiteral("Grupa = ") + quick.groupName);
  if (quick.holder)
    conditions.add(QStringLiteral(" AND ewkar.indpra = ") + str(*quick.holder),
                   QStringLiteral("Użytkownik = ") + quick.holderName);
  addText(conditions, QStringLiteral("nazwa"), QStringLiteral("Nazwa"), quick.name);
  addText(conditions, QStringLiteral("numewi"), QStringLiteral("Nr ewidencyjny"), quick.number);
  addText(conditions, QStringLiteral("numser"), QStringLiteral("Nr seryjny"), quick.serialNumber);
  return conditions;
}

QString cardStatement(const QString& quickCondition, const QString& filterCondition) {
  // The marker may stand in a text that the user looks for: cut first, then join.
  const QStringList pieces = kCardQuery.split(kMarker);
  QString statement = pieces.first();
  for (qsizetype part = 0; part + 1 < pieces.size(); ++part)
    statement +=
        quickCondition + replaceUnquoted(filterCondition, kHolderName, kHolderNames[part]) + pieces[part + 1];
  return statement;
}

QString sumText(double sum) {
  QLocale locale;
  locale.setNumberOptions(QLocale::OmitGroupSeparator);
  QString text = locale.toString(sum, 'f', 2);
  // The locale itself leaves numbers of four digits ungrouped.
  const qsizetype first = text.startsWith(locale.negativeSign()) ? 1 : 0;
  for (qsizetype at = text.size() - 6; at > first; at -= 3) text.insert(at, locale.groupSeparator());
  return text;
}

void deleteItems(jet::Workspace& workspace, jet::Database& database, const QList<int>& keys,
                 const std::function<void(qsizetype)>& done) {
  Transaction transaction(workspace);
  for (qsizetype i = 0; i < keys.size(); ++i) {
    execute(database, QStringLiteral("DELETE FROM ewkar WHERE indewi = ") + str(keys[i]));
    if (done) done(i + 1);
  }
  transaction.commit();
}

QList<int> registersOf(jet::Database& database, const QList<int>& keys) {
  QSet<int> registers;
  for (qsizetype begin = 0; begin < keys.size(); begin += kKeysAtOnce) {
    QStringList texts;
    for (const int key : keys.sliced(begin, std::min(kKeysAtOnce, keys.size() - begin))) texts << str(key);
    const auto rows =
        openRows(database, QStringLiteral("SELECT DISTINCT indrew FROM ewkar WHERE indewi In (") +
                               texts.join(u',') + u')');
    for (; !rows->eof(); rows->moveNext()) registers << toInt(rows->field(size_t{0}).value());
  }
  return registers.values();
}

}  // namespace tandeko
