#pragma once

#include <QDialog>
#include <memory>

#include "session/session.h"

namespace Ui {
class dlgBazaHaslo;
}

namespace tandeko {

// Asks for a password.
class dlgBazaHaslo : public QDialog {
  Q_OBJECT

 public:
  enum class Mode {
    Open,     // the password of a database that is being opened; not empty, may be kept
    NewUser,  // a user's new password, typed twice; empty for none
  };

  dlgBazaHaslo(Session& session, Mode mode, const QString& caption, QWidget* parent);
  ~dlgBazaHaslo() override;

  QString password() const;
  // "Zapisz": the password is to be kept with the list entry.
  bool keep() const;

 private:
  void confirm();

  Session& session_;
  Mode mode_;
  std::unique_ptr<Ui::dlgBazaHaslo> ui_;
};

}  // namespace tandeko
