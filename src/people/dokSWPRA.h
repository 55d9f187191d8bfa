#pragma once

#include <memory>

#include "lists/record_form.h"

namespace Ui {
class dokSWPRA;
}

namespace tandeko {

// What the panel calls itself towards the employee form.
inline const QString kPanelCaller = QStringLiteral("karPANEL");

// The form of one employee.
class dokSWPRA : public RecordForm {
  Q_OBJECT

 public:
  // Employee 0: a new one. Brings the form of that employee to the front when it is open. Null when the
  // employee is gone.
  static dokSWPRA* open(Session& session, int employee, const QString& karParent);
  ~dokSWPRA() override;

  int recordKey() const override { return employee_; }
  void KarRefresh() override;

 protected:
  bool save() override;

 private:
  dokSWPRA(Session& session, int employee, const QString& karParent);

  void fillCombos();
  void showEmployee();
  void setRights();
  void showCaption();
  bool mayStore();
  void writeFields(jet::Recordset& row) const;
  void tellViews();

  int employee_;
  std::unique_ptr<Ui::dokSWPRA> ui_;
};

}  // namespace tandeko
