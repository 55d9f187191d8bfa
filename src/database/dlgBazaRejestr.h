#pragma once

#include <QDialog>
#include <memory>

#include "database/base_check.h"
#include "session/session.h"

namespace Ui {
class dlgBazaRejestr;
}
class QTreeWidgetItem;

namespace tandeko {

// The handy list of databases: which there are, adding, removing, and taking one in or out of the start.
class dlgBazaRejestr : public QDialog {
  Q_OBJECT

 public:
  dlgBazaRejestr(Session& session, QWidget* parent);
  ~dlgBazaRejestr() override;

 private:
  void fill(const QString& selected);
  void showChoice();
  void add();
  void removeChosen();
  void checkChosen();
  BaseCheckResult check(const QString& path, const QString& password, bool quiet);
  void toggleActive(bool active);
  QString chosen() const;

  Session& session_;
  std::unique_ptr<Ui::dlgBazaRejestr> ui_;
};

}  // namespace tandeko
