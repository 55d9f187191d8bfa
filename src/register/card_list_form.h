#pragma once

#include <QComboBox>
#include <QTableWidget>

#include "register/card_list.h"

namespace tandeko {

// "Przedmioty": all items of the current register, or of all registers.
class karEWKAR : public KarForm {
  Q_OBJECT

 public:
  explicit karEWKAR(Session& session);

  bool supports(Command command) const override;
  void run(Command command) override;
  bool isOn(Command command) const override;

  QString columnsQuery() const override { return kCardQuery; }
  // Shows or hides the sums bar.
  void KarSumuj();

 protected:
  Conditions quickConditions() const override;
  QString buildStatement(const QString& quickCondition, const QString& filterCondition) const override;
  void clearQuickFilters() override;
  void reloadChoices() override;
  void rowsChanged() override;
  bool mayChange() const override;
  void newRecord() override;
  void editRecord() override;
  void deleteRecords() override;

 private:
  void buildBands();
  void buildSums();
  void showSums();
  void openItem(int item);
  bool mayDelete(const QList<int>& items);

  QLineEdit *txtNazwa_ = nullptr, *txtNumewi_ = nullptr, *txtNumser_ = nullptr;
  QComboBox *cmbGrupa_ = nullptr, *cmbPracownik_ = nullptr;
  QWidget* pboxSuma_ = nullptr;
  QTableWidget* gridSuma_ = nullptr;
  bool allRegisters_ = false;
};

}  // namespace tandeko
