#include "lists/rst_check.h"

#include "platform/text.h"

namespace tandeko {

bool RstCheck(jet::Database& database, const jet::Recordset& record, const QString& table,
              MessageService& messages) {
  const jet::TableDefPtr definition = database.tableDef(toU16(table));
  for (size_t at = 0; at < record.fieldCount(); ++at) {
    const jet::Field& field = record.field(at);
    const int ordinal = definition->columnOrdinal(field.name());
    if (ordinal < 0) continue;
    const jet::ColumnDef& column = definition->columns[static_cast<size_t>(ordinal)];
    if (column.autoNumber) continue;
    const jet::Value value = field.value();
    const auto* text = value.getIf<jet::Text>();
    const bool emptyText = text && text->empty();
    const QString name = u'[' + toQString(column.name) + u']';
    if (column.required && (value.isNull() || emptyText)) {
      messages.inform(QStringLiteral("Pole ") + name +
                      QStringLiteral(" nie może być puste. Wprowadź dane i spróbuj ponownie."));
      return false;
    }
    if (emptyText && !column.allowZeroLength) {
      messages.inform(QStringLiteral("Wymagane jest wprowadzenie danych do pola ") + name +
                      QStringLiteral(". Wprowadź dane i spróbuj ponownie."));
      return false;
    }
  }
  return true;
}

}  // namespace tandeko
