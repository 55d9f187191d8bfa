#include "lists/sort_text.h"

#include <algorithm>

#include "lists/sql_text.h"

namespace tandeko {

namespace {

const QString kAscending = QStringLiteral(" ASC");
const QString kDescending = QStringLiteral(" DESC");

SortKey keyOf(QString part) {
  part = part.trimmed();
  for (const QString& direction : {kAscending, kDescending})
    if (part.endsWith(direction, Qt::CaseInsensitive))
      return {part.chopped(direction.size()).trimmed(), direction == kDescending};
  return {part, false};
}

}  // namespace

QList<SortKey> sortKeys(const QString& sortText) {
  QList<SortKey> keys;
  for (const QString& part : splitOutside(sortText, QStringLiteral(",")))
    if (!part.trimmed().isEmpty()) keys << keyOf(part);
  return keys;
}

QString sortText(const QList<SortKey>& keys) {
  QStringList parts;
  for (const SortKey& key : keys) parts << key.column + (key.descending ? kDescending : kAscending);
  return parts.join(QStringLiteral(", "));
}

QString sortClicked(const QString& text, const QString& column, bool add) {
  QList<SortKey> keys = sortKeys(text);
  const auto at = std::find_if(keys.begin(), keys.end(), [&column](const SortKey& key) {
    return key.column.compare(column, Qt::CaseInsensitive) == 0;
  });
  if (at != keys.end() && (add || at == keys.begin()))
    at->descending = !at->descending;
  else if (add)
    keys << SortKey{column};
  else
    keys = {SortKey{column}};
  return sortText(keys);
}

}  // namespace tandeko
