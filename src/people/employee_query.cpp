#include "people/employee_query.h"

#include "lists/sql_text.h"
#include "platform/statements.h"

namespace tandeko {

const QString kEmployeeSort = QStringLiteral("5 ASC");

QList<ListColumn> employeeColumns() {
  const struct {
    const char16_t* caption;
    CellFormat format;
    int width;
  } columns[] = {
      {u"Aktywny", CellFormat::YesNo, 8},
      {u"Grupa", CellFormat::General, 24},
      {u"Dział firmy", CellFormat::General, 24},
      {u"Nazwisko, imię", CellFormat::General, 28},
      {u"Nr pokoju", CellFormat::General, 10},
      {u"Telefon", CellFormat::General, 18},
      {u"Adres elektroniczny (E-Mail)", CellFormat::General, 36},
      {u"Wzrost", CellFormat::GeneralNumber, 8},
      {u"Nr kolnierza", CellFormat::GeneralNumber, 11},
      {u"Nr buta", CellFormat::GeneralNumber, 8},
      {u"Uwagi", CellFormat::General, 30},
  };
  QList<ListColumn> list;
  // The query begins with the key, which has no column.
  for (const auto& column : columns)
    list << ListColumn{QString::fromUtf16(column.caption),
                       static_cast<int>(list.size()) + 1,
                       column.format,
                       column.width,
                       {}};
  return list;
}

Conditions employeeConditions(const EmployeeFilter& filter) {
  Conditions conditions;
  if (filter.group)
    conditions.add(QStringLiteral(" AND swpra.indgpc = ") + str(*filter.group),
                   QStringLiteral("Grupa = ") + filter.groupName);
  if (!filter.room.isEmpty())
    conditions.add(QStringLiteral(" AND swpra.numpok LIKE '") + likeText(filter.room) + QStringLiteral("*' "),
                   QStringLiteral("Nr pokoju = ") + filter.room);
  // Short first names are the beginning of many others, so they count as a whole only.
  if (const QString name = likeText(filter.name); !name.isEmpty())
    conditions.add(QStringLiteral(" AND ( swpra.nazwisko LIKE '") + name +
                       QStringLiteral("*' OR swpra.imie LIKE '") + name + QStringLiteral("' ) "),
                   QStringLiteral("Nazwisko = ") + filter.name);
  if (filter.department)
    conditions.add(QStringLiteral(" AND swpra.indkom = ") + str(*filter.department),
                   QStringLiteral("Dział firmy = ") + filter.departmentName);
  return conditions;
}

}  // namespace tandeko
