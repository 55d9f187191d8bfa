#pragma once

#include <QDateTime>
#include <QDialog>
#include <QList>

#include "session/session.h"

class QPushButton;
class QTreeWidget;

namespace tandeko {

struct DatabaseCopy {
  QString path;
  QDateTime made;
  qint64 size = 0;  // bytes
};

// The copies of the database that its copy folder holds, newest first.
QList<DatabaseCopy> copiesOf(Session& session, const QString& path);

// Lets the user pick one of them, or any other file; empty when he cancels.
QString chooseCopy(Session& session, const QString& path);

// The list of copies to choose from.
class dlgBazaKopie : public QDialog {
  Q_OBJECT

 public:
  dlgBazaKopie(const QString& title, const QList<DatabaseCopy>& copies, QWidget* parent);
  // Empty when another file is wanted.
  QString chosen() const { return chosen_; }

 private:
  void accept() override;
  void chooseOther();

  QTreeWidget* lstKopie_;
  QString chosen_;
};

}  // namespace tandeko
