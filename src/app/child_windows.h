#pragma once

#include <QMdiArea>

#include "session/forms.h"

namespace tandeko {

// The area of the main window that holds the child forms.
class ChildWindows : public QMdiArea {
  Q_OBJECT

 public:
  explicit ChildWindows(QWidget* parent = nullptr);

  void showForm(ChildForm* form);
  bool activateForm(const QString& formName);
  ChildForm* findForm(const QString& formName) const;
  ChildForm* activeForm() const;
  QList<ChildForm*> forms() const;

  // Closes the forms in turn; gives the first that refuses, null when all are closed.
  ChildForm* closeInTurn(const QList<ChildForm*>& forms);

  void arrangeCascaded();
  void arrangeRows();     // one above the other
  void arrangeColumns();  // side by side
  void arrangeIcons();    // the minimised ones, along the lower edge

 private:
  QList<QMdiSubWindow*> openWindows() const;
  void place(QMdiSubWindow& window);
  void arrange(int columns, int rows);
};

// Forms that must not stay open when another database is opened.
bool belongsToDatabase(const ChildForm& form);

}  // namespace tandeko
