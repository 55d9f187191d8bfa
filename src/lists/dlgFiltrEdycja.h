#pragma once

#include <QDialog>
#include <memory>

#include "lists/filter_store.h"
#include "lists/kar_form.h"

namespace Ui {
class dlgFiltrEdycja;
}

namespace tandeko {

// One filter's name and conditions. Without a name it is opened in mode "Nowy", else in "Popraw".
class dlgFiltrEdycja : public QDialog {
  Q_OBJECT

 public:
  dlgFiltrEdycja(Session& session, KarForm& caller, const QString& filter, QWidget* parent = nullptr);
  ~dlgFiltrEdycja() override;

  // As stored.
  QString filterName() const { return stored_; }

  void reject() override;

 private:
  // A column that can be chosen.
  struct Column {
    QString expression;
    QString caption;
    FieldKind kind;
  };

  void readColumns(const KarForm& caller);
  void columnChosen();
  void operatorChosen();
  void addCondition();
  void removeCondition();
  void selectionMoved(int row);
  void showCondition(const FilterCondition& condition);
  void showLines();
  // Checks what the editors hold and puts it into the condition of that line. False, with the reason told,
  // when something is missing.
  bool storeEntry(int line);
  std::optional<FilterCondition> entered();
  bool saveFilter();
  bool changed() const;
  const Column* chosenColumn() const;
  void refuse(const QString& text);

  Session& session_;
  FilterStore store_;
  std::unique_ptr<Ui::dlgFiltrEdycja> ui_;
  QList<Column> columns_;
  QString stored_;  // the name under which the filter is stored; empty for a new one
  QList<FilterCondition> conditions_;
  QList<FilterCondition> storedConditions_;
  int shown_ = -1;        // the line whose condition the editors hold
  bool touched_ = false;  // the editors differ from it
  bool loading_ = false;
};

}  // namespace tandeko
