#pragma once

#include <QList>
#include <QString>
#include <optional>

#include "lists/kar_form.h"
#include "people/employee_store.h"

// The employee list without its form: its columns and what narrows it.
namespace tandeko {

// The columns of the grid over kEmployeeQuery in their standard order.
QList<ListColumn> employeeColumns();
// Sorted by surname and first name.
extern const QString kEmployeeSort;
// The query's column with surname and first name.
inline constexpr int kEmployeeNameField = 4;

struct EmployeeFilter {
  std::optional<int> group;
  QString groupName;
  QString room;  // the beginning of the room's number
  QString name;  // the beginning of the surname, or the whole first name
  std::optional<int> department;
  QString departmentName;
};
Conditions employeeConditions(const EmployeeFilter& filter);

}  // namespace tandeko
