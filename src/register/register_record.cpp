#include "register/register_record.h"

#include <algorithm>

#include "platform/statements.h"
#include "platform/text.h"

namespace tandeko {

namespace {

QString registerQuery(int key) { return QStringLiteral("SELECT * FROM swrew WHERE indrew = ") + str(key); }

bool hasPart(const RegisterData& data, const QString& value) {
  const auto& parts = data.numbering.parts;
  return std::find(parts.begin(), parts.end(), value) != parts.end();
}

jet::Value keyOrNull(int key) { return key > 0 ? jet::Value(int32_t{key}) : jet::Value(); }

void writeFields(jet::Recordset& row, const RegisterData& data) {
  const auto set = [&row](std::u16string_view field, const jet::Value& value) {
    row.field(field).setValue(value);
  };
  set(u"nazwa", fromText(data.name));
  set(u"Rodzaj", fromText(data.kind));
  set(u"WysNumewi", jet::Value(data.showNumber));
  set(u"WysNumser", jet::Value(data.showSerialNumber));
  set(u"WysNumkat", jet::Value(data.showCatalogNumber));
  set(u"WysIlosc", jet::Value(data.showQuantity));
  set(u"WysCena", jet::Value(data.showPrice));
  set(u"NumAuto", jet::Value(data.numberAutomatic));
  set(u"NumEdycja", jet::Value(data.numberEditable));
  set(u"NumSzablon", fromText(NumTemplateBuild(data.numbering)));
  set(u"NumMiesieczna", jet::Value(data.monthly));
  set(u"NumGrupa", jet::Value(data.perGroup));
  set(u"Startgew", keyOrNull(data.startGroup));
  set(u"Startsew", keyOrNull(data.startState));
  set(u"Startilosc", data.startQuantity ? jet::Value(*data.startQuantity) : jet::Value());
  set(u"Startjed", textOrNull(data.startUnit));
}

}  // namespace

std::optional<RegisterData> loadRegisterData(jet::Database& database, int key) {
  const auto row = openRows(database, registerQuery(key));
  if (row->eof()) return std::nullopt;
  RegisterData data;
  data.key = key;
  data.name = toText(row->value(u"nazwa"));
  data.kind = toText(row->value(u"Rodzaj"));
  data.showNumber = toBool(row->value(u"WysNumewi"));
  data.showSerialNumber = toBool(row->value(u"WysNumser"));
  data.showCatalogNumber = toBool(row->value(u"WysNumkat"));
  data.showQuantity = toBool(row->value(u"WysIlosc"));
  data.showPrice = toBool(row->value(u"WysCena"));
  data.numberAutomatic = toBool(row->value(u"NumAuto"));
  data.numberEditable = toBool(row->value(u"NumEdycja"));
  data.numbering = NumTemplateSplit(toText(row->value(u"NumSzablon")));
  data.monthly = toBool(row->value(u"NumMiesieczna"));
  data.perGroup = toBool(row->value(u"NumGrupa"));
  data.startGroup = toInt(row->value(u"Startgew"));
  data.startState = toInt(row->value(u"Startsew"));
  const jet::Value quantity = row->value(u"Startilosc");
  data.startQuantity = quantity.isNull() ? std::nullopt : std::optional(toDouble(quantity));
  data.startUnit = toText(row->value(u"Startjed"));
  return data;
}

bool templateHasNumber(const RegisterData& data) {
  return NumTemplateBuild(data.numbering).contains(QStringLiteral("Numer"));
}

int registerNameSize(jet::Database& database) {
  return openRows(database, registerQuery(0))->field(u"nazwa").size();
}

NumberingFault checkPeriod(const RegisterData& data) {
  if (!templateHasNumber(data)) return NumberingFault::NoNumber;
  if (data.monthly && !hasPart(data, QStringLiteral("/Miesiąc"))) return NumberingFault::MonthlyWithoutMonth;
  if (data.perGroup && !hasPart(data, QStringLiteral("/Grupa"))) return NumberingFault::PerGroupWithoutGroup;
  return NumberingFault::None;
}

bool templateHasYear(const RegisterData& data) {
  return hasPart(data, QStringLiteral("/Rok[2]")) || hasPart(data, QStringLiteral("/Rok[4]"));
}

QString sampleNumbers(const RegisterData& data, const QDate& today) {
  QStringList samples;
  for (const int number : {123, 124, 125})
    samples << NumFormat(number, NumTemplateBuild(data.numbering), today, 1, 2);
  return QStringLiteral("Przykładowe numery: ") + samples.join(QStringLiteral(", "));
}

bool registerHasSets(jet::Database& database, int key) {
  return !openRows(database, QStringLiteral("SELECT * FROM ewkar WHERE indrew = ") + str(key) +
                                 QStringLiteral(" And Parent > 0 "))
              ->eof();
}

bool registerHasItems(jet::Database& database, int key) {
  return !openRows(database, QStringLiteral("SELECT TOP 1 indewi FROM ewkar WHERE Indrew = ") + str(key))
              ->eof();
}

int registerNamed(jet::Database& database, const QString& name) {
  const auto row =
      openRows(database, QStringLiteral("SELECT * FROM swrew WHERE nazwa = '") + name + QStringLiteral("' "));
  return row->eof() ? 0 : toInt(row->value(u"Indrew"));
}

bool saveRegister(jet::Workspace& workspace, jet::Database& database, RegisterData& data, bool dropSets) {
  Transaction transaction(workspace);
  const auto row = openRows(database, registerQuery(data.key));
  if (data.key < 1)
    row->addNew();
  else if (row->eof())
    return false;
  else
    row->edit();
  writeFields(*row, data);
  row->update();
  row->setBookmark(row->lastModified());
  const int key = toInt(row->value(u"Indrew"));
  if (dropSets)
    execute(database, QStringLiteral("UPDATE ewkar SET Parent = Null WHERE indrew = ") + str(key));
  transaction.commit();
  data.key = key;
  return true;
}

void deleteRegister(jet::Workspace& workspace, jet::Database& database, int key) {
  Transaction transaction(workspace);
  execute(database, QStringLiteral("DELETE FROM ewkar WHERE Indrew= ") + str(key));
  execute(database, QStringLiteral("DELETE FROM swrew WHERE Indrew = ") + str(key));
  transaction.commit();
}

}  // namespace tandeko
