#include "people/karSWPRA.h"

#include "errors/error_reporter.h"
#include "lists/form_fields.h"
#include "people/dokSWPRA.h"
#include "people/employee_query.h"
#include "platform/resources.h"
#include "platform/text.h"

namespace tandeko {

karSWPRA::karSWPRA(Session& session)
    : KarForm(session, QStringLiteral("karSWPRA"), employeeColumns(), kEmployeeSort) {
  setWindowTitle(QStringLiteral("Pracownicy"));
  setWindowIcon(icon("people"));
  grid().setObjectName(QStringLiteral("gridSWPRA"));
  grid().setAccessibleName(QStringLiteral("Pracownicy"));
  DataSource().setObjectName(QStringLiteral("dataSWPRA"));
  buildBands();
  open();
  connect(&this->session(), &Session::databaseChanged, this, [this] { KarRefresh(); });
}

void karSWPRA::buildBands() {
  makeBands(QStringLiteral("collSWPRA"));
  const QString all = QStringLiteral("(wszystkie)");
  cmbGrupa_ = addComboBand({u"pboxGrupa", u"labGrupa", u"&Grupa", u"cmbGrupa", 36}, all);
  cmbDzial_ = addComboBand({u"pboxDzial", u"labDzial", u"Dział firmy", u"cmbDzial", 42}, all);
  txtNazwisko_ = addTextBand({u"pboxNazwisko", u"labNazwisko", u"Nazwisko, imię", u"txtNazwisko", 38});
  txtNumpok_ = addTextBand({u"pboxNumpok", u"labNumpok", u"Nr pokoju", u"txtNumpok", 24});
  addButtonBand();
}

Conditions karSWPRA::quickConditions() const {
  EmployeeFilter filter;
  filter.group = chosenKey(*cmbGrupa_);
  filter.groupName = cmbGrupa_->itemText(cmbGrupa_->currentIndex());
  filter.room = txtNumpok_->text();
  filter.name = txtNazwisko_->text();
  filter.department = chosenKey(*cmbDzial_);
  filter.departmentName = cmbDzial_->itemText(cmbDzial_->currentIndex());
  return employeeConditions(filter);
}

QString karSWPRA::buildStatement(const QString& quickCondition, const QString& filterCondition) const {
  return kEmployeeQuery + quickCondition + filterCondition;
}

void karSWPRA::clearQuickFilters() {
  for (QLineEdit* field : {txtNazwisko_, txtNumpok_}) field->clear();
  for (QComboBox* combo : {cmbGrupa_, cmbDzial_}) setComboKey(*combo, {});
}

void karSWPRA::reloadChoices() {
  if (!session().databaseOpen()) return;
  fillCombo(*cmbGrupa_, session().database(),
            QStringLiteral("SELECT Indgpc, Nazwa FROM swgpc ORDER BY Nazwa"), true);
  fillCombo(*cmbDzial_, session().database(),
            QStringLiteral("SELECT Indkom, Nazwa FROM swkom ORDER BY Nazwa"), true);
}

bool karSWPRA::mayChange() const { return KarForm::mayChange() && !session().UserReadOnly({}, 0); }

void karSWPRA::newRecord() { openEmployee(0); }

void karSWPRA::editRecord() { openEmployee(currentKey()); }

void karSWPRA::openEmployee(int employee) {
  dokSWPRA* form = dokSWPRA::open(session(), employee, formName());
  if (!form) {
    if (employee > 0) KarRefresh();  // deleted by another copy in the meantime
    return;
  }
  connect(form, &RecordForm::saved, this, &karSWPRA::goToKey, Qt::UniqueConnection);
}

void karSWPRA::deleteRecords() {
  const int employee = currentKey();
  const QString name = toText(DataSource().fieldValue(grid().currentRow(), kEmployeeNameField));
  if (employee < 1 || !session().messages().ask(employeeDeleteQuestion(name), QStringLiteral("Komunikat")))
    return;
  guarded(session(), "cmdUsun_Click", [&] {
    const int64_t returned = deleteEmployee(session().workspace(), session().database(), employee);
    session().setStatusText(employeeDeletedNote(name, returned));
    for (const char16_t* view : {u"karEWKAR", u"karEWPAN"}) session().KarRefresh(QString::fromUtf16(view));
  });
  KarRefresh();
}

}  // namespace tandeko
