#pragma once

#include <QList>
#include <QString>

// The sort order of a list, as it stands after " ORDER BY ": "3 ASC, swpra.Imie DESC".
namespace tandeko {

struct SortKey {
  QString column;  // an expression or the number of a column
  bool descending = false;
  bool operator==(const SortKey&) const = default;
};

// A key without a direction is ascending. Commas inside of parentheses, brackets and quotes do not separate.
QList<SortKey> sortKeys(const QString& sortText);
QString sortText(const QList<SortKey>& keys);

// The order after a click on a column's header. A plain click reverses the leading key, another column
// becomes the only key. With `add` a new column goes to the end, one that is there is reversed.
QString sortClicked(const QString& sortText, const QString& column, bool add);

}  // namespace tandeko
