#pragma once

#include <QString>
#include <optional>

#include "jet/dao/dao.h"
#include "register/number_template.h"

// A register as its parameters dialog and the wizard edit it.
namespace tandeko {

struct RegisterData {
  int key = 0;  // 0: not stored yet
  QString name;
  QString kind = QStringLiteral("S");  // "L" a plain list, "S" items may form sets
  bool showNumber = true, showCatalogNumber = true, showSerialNumber = true, showQuantity = true,
       showPrice = true;
  bool numberAutomatic = true, numberEditable = true;
  NumTemplateParts numbering{
      {QStringLiteral("/Rejestr"), QStringLiteral("/Numer"), QStringLiteral("/Rok[4]")},
      QStringLiteral("/"),
      {}};
  bool monthly = false, perGroup = false;  // both off: every year
  int startGroup = 0, startState = 0;      // 0: none is proposed
  std::optional<double> startQuantity = 1;
  QString startUnit;
};

std::optional<RegisterData> loadRegisterData(jet::Database& database, int key);

enum class NumberingFault { None, NoNumber, MonthlyWithoutMonth, PerGroupWithoutGroup };
// A template of which part shows the running number, and what the restarts need besides.
bool templateHasNumber(const RegisterData& data);
NumberingFault checkPeriod(const RegisterData& data);
bool templateHasYear(const RegisterData& data);
// "Przykładowe numery: ..." of three numbers.
QString sampleNumbers(const RegisterData& data, const QDate& today);

// The longest name, in characters.
int registerNameSize(jet::Database& database);
// Whether items of the register are components of others.
bool registerHasSets(jet::Database& database, int key);
bool registerHasItems(jet::Database& database, int key);
// The key of the register of that name, 0 for none.
int registerNamed(jet::Database& database, const QString& name);

// Stores the register, a new one under a new key. `dropSets` makes all its items top-level ones. False: a
// stored register is gone, nothing is written.
bool saveRegister(jet::Workspace& workspace, jet::Database& database, RegisterData& data, bool dropSets);
// Deletes the register with its items.
void deleteRegister(jet::Workspace& workspace, jet::Database& database, int key);

}  // namespace tandeko
