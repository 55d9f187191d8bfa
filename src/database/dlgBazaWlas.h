#pragma once

#include <QDialog>
#include <memory>

#include "database/schedule.h"
#include "session/session.h"

namespace Ui {
class dlgBazaWlas;
}
class QCheckBox;
class QLineEdit;

namespace tandeko {

// The properties of the open database: what it is and who has it open, its schedules of compacting and
// copies, its name and its password.
class dlgBazaWlas : public QDialog {
  Q_OBJECT

 public:
  dlgBazaWlas(Session& session, QWidget* parent);
  ~dlgBazaWlas() override;

 private:
  struct ScheduleFields {
    Upkeep kind;
    QCheckBox* on;
    QCheckBox* confirm;
    QLineEdit* days;
    QLineEdit* last;
  };
  QList<ScheduleFields> scheduleFields() const;

  void showAll();
  void showFacts();
  void showUsers();
  void showSchedules();
  void showScheduleState();
  // False when a field refuses.
  bool storeSchedules();
  void addToList();
  void chooseCopyFolder();
  void runNow(Upkeep kind);
  void rename();
  void changePassword();
  void accept() override;
  // Reads everything again after work on the file; closes when there is no database any more.
  void refreshAfterWork();

  Session& session_;
  std::unique_ptr<Ui::dlgBazaWlas> ui_;
};

}  // namespace tandeko
