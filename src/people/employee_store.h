#pragma once

#include <QString>

#include "jet/dao/dao.h"

// Employees, the holders of items, as rows.
namespace tandeko {

// Employees with the names of their group and department; one whose group or department is missing is
// not listed. Conditions and the order are appended.
inline const QString kEmployeeQuery = QStringLiteral(
    "SELECT swpra.indpra, swpra.Aktywny, swgpc.nazwa, swkom.Nazwa, swpra.Nazwisko & ' ' & swpra.Imie As "
    "[NazwiskoImie], swpra.Numpok, swpra.Telefon, swpra.email, swpra.wzrost, swpra.kolnierz, swpra.obuwie, "
    "swpra.Uwagi FROM swpra, swgpc, swkom WHERE swpra.indgpc = swgpc.indgpc And swpra.indkom = swkom.Indkom");

// The question before an employee is deleted.
QString employeeDeleteQuestion(const QString& name);
// Deletes an employee; the items of employees who no longer exist go to the warehouse, sets staying together.
// Returns the number of items that did.
int64_t deleteEmployee(jet::Workspace& workspace, jet::Database& database, int employee);
// What the status bar says then.
QString employeeDeletedNote(const QString& name, int64_t returned);

}  // namespace tandeko
