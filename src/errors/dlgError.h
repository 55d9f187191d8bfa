#pragma once

#include <QDialog>
#include <memory>

#include "session/session.h"

namespace Ui {
class dlgError;
}

namespace tandeko {

// Shows one failure. exec() gives Accepted when the user goes on, Rejected when the program is to end.
class dlgError : public QDialog {
  Q_OBJECT

 public:
  dlgError(Session& session, const Failure& failure, const QString& explanation, QWidget* parent);
  ~dlgError() override;

  // Esc and the window's own closing continue.
  void reject() override { accept(); }

 private:
  void stop();
  void send();

  Session& session_;
  Failure failure_;
  QString explanation_;
  std::unique_ptr<Ui::dlgError> ui_;
};

}  // namespace tandeko
