#pragma once

#include <QString>
#include <optional>

#include "jet/dao/dao.h"

namespace tandeko {

// The row of swrew in which the user works. A key below 1: no register is chosen.
struct CurrentRegister {
  int key = 0;
  QString name;
  QString kind;                    // "L" a plain list, "S" items may form sets
  bool showNumber = false;         // WysNumewi
  bool showCatalogNumber = false;  // WysNumkat
  bool showSerialNumber = false;   // WysNumser
  bool showQuantity = false;       // WysIlosc
  bool showPrice = false;          // WysCena
  bool numberAutomatic = false;
  bool numberEditable = false;

  bool isList() const { return kind == u"L"; }
};

// The register with this key; nullopt when there is none.
std::optional<CurrentRegister> loadRegister(jet::Database& database, int key);

}  // namespace tandeko
