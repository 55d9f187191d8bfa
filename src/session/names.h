#pragma once

#include <QString>

// What the program is called, its version, and where its values lie in the registry.
namespace tandeko {

inline const QString kProgramName = QStringLiteral("Tandeko");
inline const QString kProgramCode = QStringLiteral("EW");

inline const QString kSupportAddress = QStringLiteral("pomoc@kwarcel.example");
inline const QString kWebPage = QStringLiteral("https://www.kwarcel.example/tandeko");

struct ProgramVersion {
  int major = 0;
  int minor = 0;
  int revision = 0;

  QString text() const;  // "1.0.0"
};
ProgramVersion programVersion();

inline const QString kFamilyKey = QStringLiteral("SOFTWARE\\Kwarcel Software\\Lorvel");
inline const QString kProgramKey = QStringLiteral("SOFTWARE\\Kwarcel Software\\Lorvel\\Tandeko");
inline const QString kDatabasesKey = QStringLiteral("SOFTWARE\\Kwarcel Software\\Lorvel\\Bazy danych");
inline const QString kFiltersKey = QStringLiteral("SOFTWARE\\Kwarcel Software\\Lorvel\\Filtry");
inline const QString kReportsKey = QStringLiteral("SOFTWARE\\Kwarcel Software\\Lorvel\\Raporty");
inline const QString kStructureToolKey = QStringLiteral("SOFTWARE\\Kwarcel Software\\Lorvel\\Fundamo bazy");

}  // namespace tandeko
