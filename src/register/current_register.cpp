#include "register/current_register.h"

#include "platform/statements.h"
#include "platform/text.h"

namespace tandeko {

std::optional<CurrentRegister> loadRegister(jet::Database& database, int key) {
  if (key < 1) return std::nullopt;
  const auto row =
      openRows(database, QStringLiteral("SELECT * FROM swrew WHERE Indrew = ") + QString::number(key));
  if (row->eof()) return std::nullopt;
  CurrentRegister current;
  current.key = key;
  current.name = toText(row->value(u"nazwa"));
  current.kind = toText(row->value(u"Rodzaj"));
  current.showNumber = toBool(row->value(u"WysNumewi"));
  current.showCatalogNumber = toBool(row->value(u"WysNumkat"));
  current.showSerialNumber = toBool(row->value(u"WysNumser"));
  current.showQuantity = toBool(row->value(u"WysIlosc"));
  current.showPrice = toBool(row->value(u"WysCena"));
  current.numberAutomatic = toBool(row->value(u"NumAuto"));
  current.numberEditable = toBool(row->value(u"NumEdycja"));
  return current;
}

}  // namespace tandeko
