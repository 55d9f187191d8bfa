#include "lists/filter_condition.h"

#include <QLocale>

#include "lists/form_fields.h"
#include "lists/sql_text.h"
#include "platform/statements.h"

namespace tandeko {

namespace {

constexpr unsigned kForText = 1, kForNumber = 2, kForDate = 4, kForYesNo = 8;
constexpr unsigned kForOrdered = kForText | kForNumber | kForDate;

const struct {
  const char16_t* display;
  const char16_t* sql;
  unsigned kinds;
  bool takesValue;
} kOperators[] = {
    {u"=", u"=", kForOrdered | kForYesNo, true},
    {u">", u">", kForOrdered, true},
    {u">=", u">=", kForOrdered, true},
    {u"<", u"<", kForOrdered, true},
    {u"<=", u"<=", kForOrdered, true},
    {u"<>", u"<>", kForOrdered | kForYesNo, true},
    {u"pusta", u"Is Null", kForOrdered, false},
    {u"niepusta", u"Is Not Null", kForOrdered, false},
    {u"podobna do", u"LIKE", kForText, true},
    {u"niepodobna do", u"NOT LIKE", kForText, true},
    {u"> dzisiaj", u"> Date()", kForDate, false},
    {u"= dzisiaj", u"= Date()", kForDate, false},
    {u"< dzisiaj", u"< Date()", kForDate, false},
};

const QString kDateBegin = QStringLiteral("DateValue(");
const QString kPatternBegin = QStringLiteral("'*");
const QString kPatternEnd = QStringLiteral("*'");

unsigned maskOf(FieldKind kind) {
  switch (kind) {
    case FieldKind::Text:
      return kForText;
    case FieldKind::Number:
      return kForNumber;
    case FieldKind::Date:
      return kForDate;
    case FieldKind::YesNo:
      return kForYesNo;
  }
  return kForText;
}

// One group of conditions as the text that is appended to a list's own condition.
QString grouped(const QList<FilterCondition>& conditions) {
  QString text;
  for (qsizetype i = 0; i < conditions.size(); ++i) {
    const FilterCondition& condition = conditions[i];
    text += i == 0 ? QStringLiteral(" And ( ") : u' ' + condition.logical + u' ';
    text += condition.field + u' ' + condition.sqlOperator + u' ' + condition.value;
    if (i + 1 == conditions.size()) text += QStringLiteral(" )");
  }
  return text;
}

}  // namespace

FieldKind fieldKind(jet::Type type) {
  switch (type) {
    case jet::Type::Boolean:
      return FieldKind::YesNo;
    case jet::Type::Date:
      return FieldKind::Date;
    case jet::Type::Text:
    case jet::Type::Memo:
      return FieldKind::Text;
    default:
      return FieldKind::Number;
  }
}

bool FilterOperator::takesValue() const {
  for (const auto& op : kOperators)
    if (sql == op.sql) return op.takesValue;
  return true;
}

QList<FilterOperator> filterOperators(FieldKind kind) {
  QList<FilterOperator> list;
  for (const auto& op : kOperators)
    if (op.kinds & maskOf(kind))
      list << FilterOperator{QString::fromUtf16(op.display), QString::fromUtf16(op.sql)};
  return list;
}

std::optional<QString> filterValue(FieldKind kind, const FilterOperator& op, const FilterEntry& entry) {
  if (!op.takesValue()) return QString();
  switch (kind) {
    case FieldKind::YesNo:
      return entry.yes ? QStringLiteral("True") : QStringLiteral("False");
    case FieldKind::Date:
      if (!entry.date.isValid()) return std::nullopt;
      return kDateBegin + u'\'' + entry.date.toString(QStringLiteral("dd.MM.yyyy")) + QStringLiteral("')");
    case FieldKind::Number: {
      QString number = entry.number.trimmed();
      if (number.isEmpty()) return std::nullopt;
      return number.replace(u',', u'.');
    }
    case FieldKind::Text:
      break;
  }
  if (op.sql.endsWith(u"LIKE")) return kPatternBegin + likeText(entry.text) + kPatternEnd;
  return u'\'' + quoted(entry.text) + u'\'';
}

QString shownValue(const QString& value) {
  if (value == u"True") return QStringLiteral("Tak");
  if (value == u"False") return QStringLiteral("Nie");
  QString shown = value;
  if (shown.startsWith(kDateBegin)) return shown.remove(0, kDateBegin.size()).remove(u')').remove(u'\'');
  if (shown.startsWith(kPatternBegin)) shown.remove(1, 1);
  if (shown.endsWith(kPatternEnd)) shown.remove(shown.size() - 2, 1);
  return shown;
}

FilterEntry filterEntry(FieldKind kind, const QString& value) {
  FilterEntry entry;
  switch (kind) {
    case FieldKind::YesNo:
      entry.yes = value != u"False";
      break;
    case FieldKind::Date:
      entry.date = dateFromText(shownValue(value));
      break;
    case FieldKind::Number:
      entry.number = QString(value).replace(u'.', u',');
      break;
    case FieldKind::Text:
      entry.text = shownValue(value);
      if (entry.text.size() >= 2 && entry.text.startsWith(u'\'') && entry.text.endsWith(u'\''))
        entry.text = entry.text.sliced(1, entry.text.size() - 2);
      entry.text.replace(QStringLiteral("''"), QStringLiteral("'"));
      if (value.startsWith(kPatternBegin)) entry.text.replace(QStringLiteral("[[]"), QStringLiteral("["));
      break;
  }
  return entry;
}

QString conditionLine(int number, const FilterCondition& condition) {
  const QString begin = QString::number(number) + QStringLiteral(". ");
  if (condition.isEmpty()) return begin + QStringLiteral("Nowy warunek...");
  return begin + (condition.logical == u"Or" ? QStringLiteral("lub ") : QStringLiteral("i ")) +
         QStringLiteral("Kolumna[") + condition.column + QStringLiteral("] ") + condition.displayOperator +
         u' ' + shownValue(condition.value);
}

FilterTexts filterTexts(const QList<FilterCondition>& conditions) {
  QList<FilterCondition> rows;
  QList<FilterCondition> sums;
  FilterTexts texts;
  for (const FilterCondition& condition : conditions)
    (condition.field.contains(u"sum(", Qt::CaseInsensitive) ? sums : rows) << condition;
  texts.condition = grouped(rows);
  texts.sums = grouped(sums);
  for (const FilterCondition& condition : rows + sums)
    texts.description +=
        condition.column + u' ' + condition.displayOperator + u' ' + condition.value + QStringLiteral("; ");
  texts.description.replace(QStringLiteral(" True"), QStringLiteral(" Tak"));
  texts.description.replace(QStringLiteral(" False"), QStringLiteral(" Nie"));
  return texts;
}

}  // namespace tandeko
