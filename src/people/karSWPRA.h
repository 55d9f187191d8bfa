#pragma once

#include "lists/kar_form.h"
#include "people/employee_store.h"

namespace tandeko {

// "Pracownicy": the employees who have a group and a department.
class karSWPRA : public KarForm {
  Q_OBJECT

 public:
  explicit karSWPRA(Session& session);

  QString columnsQuery() const override { return kEmployeeQuery; }

 protected:
  Conditions quickConditions() const override;
  QString buildStatement(const QString& quickCondition, const QString& filterCondition) const override;
  void clearQuickFilters() override;
  void reloadChoices() override;
  bool mayChange() const override;
  void newRecord() override;
  void editRecord() override;
  void deleteRecords() override;

 private:
  void buildBands();
  void openEmployee(int employee);

  QComboBox *cmbGrupa_ = nullptr, *cmbDzial_ = nullptr;
  QLineEdit *txtNazwisko_ = nullptr, *txtNumpok_ = nullptr;
};

}  // namespace tandeko
