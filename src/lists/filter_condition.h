#pragma once

#include <QDate>
#include <QList>
#include <QString>
#include <optional>

#include "jet/format/value.h"

// The conditions of a named filter: how they are checked, stored, shown and joined into a statement.
namespace tandeko {

enum class FieldKind { Text, Number, Date, YesNo };
FieldKind fieldKind(jet::Type type);

struct FilterOperator {
  QString display;
  QString sql;
  // "pusta" and the comparisons with today need none.
  bool takesValue() const;
};
// The operators offered for a column of this kind.
QList<FilterOperator> filterOperators(FieldKind kind);

struct FilterCondition {
  QString logical = QStringLiteral("And");  // how it joins the one before: "And" or "Or"
  QString field;                            // the expression of the column in the list's query
  QString column;                           // its caption
  QString sqlOperator;
  QString value;  // as it stands in the statement; empty for operators without a value
  QString displayOperator;

  bool isEmpty() const { return field.isEmpty(); }
  bool operator==(const FilterCondition&) const = default;
};

// What the user entered beside column and operator; which member counts depends on the column.
struct FilterEntry {
  QString text;
  QString number;
  QDate date;
  bool yes = true;
};
// The value of a condition; nullopt when it is missing.
std::optional<QString> filterValue(FieldKind kind, const FilterOperator& op, const FilterEntry& entry);
// The entry that a value was made from.
FilterEntry filterEntry(FieldKind kind, const QString& value);

// A stored value as the user sees it: "Tak", a bare date, a text without its wildcards.
QString shownValue(const QString& value);
// The line of a condition, numbered from 1; "Nowy warunek..." for an empty one.
QString conditionLine(int number, const FilterCondition& condition);

// The texts that apply a filter to a list.
struct FilterTexts {
  QString condition;  // " And ( ... )" over rows, or empty
  QString sums;       // the same over columns that are sums
  QString description;
  bool any() const { return !condition.isEmpty() || !sums.isEmpty(); }
};
FilterTexts filterTexts(const QList<FilterCondition>& conditions);

}  // namespace tandeko
