#pragma once

#include <QString>
#include <QStringList>

// Cutting statements at words and signs that stand outside of quotes, brackets and parentheses, so that a
// text that a user typed is never taken for a part of the statement.
namespace tandeko {

// The place of `word` at or after `from`, case ignored; -1 when it stands nowhere. A word of letters
// counts only as a whole word.
qsizetype findOutside(const QString& text, const QString& word, qsizetype from = 0);
// The pieces between the occurrences of `word`, as they stand.
QStringList splitOutside(const QString& text, const QString& word);
// Replaces what stands outside of quotes only, parentheses or not; case ignored.
QString replaceUnquoted(const QString& text, const QString& what, const QString& by);

// What a user typed, for use inside of LIKE '...': quotes doubled; "*", "?" and "#" keep their meaning, "["
// too when it is closed.
QString likeText(const QString& typed);

// A column of a SELECT list: the expression, and the name after " As " or else the field's own.
struct QueryColumn {
  QString expression;
  QString name;
  bool operator==(const QueryColumn&) const = default;
};
// The columns between the first SELECT and its FROM.
QList<QueryColumn> queryColumns(const QString& select);

}  // namespace tandeko
