#include "people/employee_store.h"

#include "platform/statements.h"

namespace tandeko {

QString employeeDeleteQuestion(const QString& name) {
  return QStringLiteral("Pracownik: ") + name +
         QStringLiteral(" zostanie usunięty ze słownika. Usunąć pracownika?");
}

int64_t deleteEmployee(jet::Workspace& workspace, jet::Database& database, int employee) {
  Transaction transaction(workspace);
  execute(database, QStringLiteral("DELETE FROM swpra WHERE indpra = ") + str(employee));
  const int64_t returned = execute(
      database,
      QStringLiteral(
          "UPDATE ewkar SET indpra = 0 WHERE indpra > 0 And indpra NOT in (SELECT indpra FROM swpra)"));
  transaction.commit();
  return returned;
}

QString employeeDeletedNote(const QString& name, int64_t returned) {
  const QString items = QStringLiteral(", przedmioty przeniesione do magazynu: ") + QString::number(returned);
  return QStringLiteral("Usunięto pracownika: ") + name + (returned > 0 ? items : QString());
}

}  // namespace tandeko
