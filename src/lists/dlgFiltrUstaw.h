#pragma once

#include <QDialog>
#include <memory>

#include "lists/filter_store.h"
#include "lists/kar_form.h"

namespace Ui {
class dlgFiltrUstaw;
}

namespace tandeko {

// The named filters of a list: chosen, created, changed, deleted and applied here.
class dlgFiltrUstaw : public QDialog {
  Q_OBJECT

 public:
  dlgFiltrUstaw(Session& session, KarForm& caller, QWidget* parent = nullptr);
  ~dlgFiltrUstaw() override;

 private:
  void fill(const QString& selected);
  QString selectedFilter() const;
  void selectionChanged();
  void edit(bool isNew);
  void removeFilter();
  // Applies the selected filter to the list; one without conditions does nothing.
  void apply();

  Session& session_;
  KarForm& caller_;
  FilterStore store_;
  std::unique_ptr<Ui::dlgFiltrUstaw> ui_;
};

}  // namespace tandeko
