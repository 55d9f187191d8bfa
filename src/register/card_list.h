#pragma once

#include <QList>
#include <QString>
#include <optional>

#include "lists/kar_form.h"

// The items of one register or of all, with their holders: the statement, its conditions, its sums.
namespace tandeko {

// The list's query: items held by employees, by the warehouse, in the bin. Each "warwhere" stands for the
// conditions, each of which begins with " AND ".
extern const QString kCardQuery;
// The columns of the grid in their standard order.
QList<ListColumn> cardColumns();
// Sorted by the item's name.
extern const QString kCardSort;

struct QuickFilter {
  bool allRegisters = false;
  int registerKey = 0;
  std::optional<int> group;
  QString groupName;
  std::optional<int> holder;
  QString holderName;
  QString name;  // each of these matches from the start of the field
  QString number;
  QString serialNumber;
};

Conditions cardConditions(const QuickFilter& quick);
// The query with the quick condition and a named filter's in each of its three parts. Where a part has no
// employee, a condition on the holder's name compares the name that the part shows.
QString cardStatement(const QString& quickCondition, const QString& filterCondition);

// Columns of the query.
inline constexpr int kNameField = 12, kQuantityField = 13, kWorthField = 16;
// "#,##0.00" the Polish way.
QString sumText(double sum);

// Deletes the items with these keys and nothing else, all or none; `done` is called with the number so far.
void deleteItems(jet::Workspace& workspace, jet::Database& database, const QList<int>& keys,
                 const std::function<void(qsizetype)>& done);
// The registers to which these items belong.
QList<int> registersOf(jet::Database& database, const QList<int>& keys);

}  // namespace tandeko
