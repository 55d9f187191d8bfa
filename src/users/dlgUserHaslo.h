#pragma once

#include <QDialog>
#include <memory>

#include "session/session.h"

namespace Ui {
class dlgUserHaslo;
}

namespace tandeko {

// Asks for the password of one user. Tag tells how it ended: "Ok", "Anuluj", or "Zmien" after the
// password was changed and the user has not logged in yet.
class dlgUserHaslo : public QDialog {
  Q_OBJECT

 public:
  dlgUserHaslo(Session& session, QWidget* parent);
  ~dlgUserHaslo() override;

  void SetDatabase(jet::Database& database) { database_ = &database; }
  // Loads the user.
  void setUser(const QString& indoso);

  QString Tag() const { return tag_; }
  QString userName() const;
  QString level() const { return level_; }
  QString typedPassword() const;

  void reject() override;

 private:
  void loadUser(const QString& indoso);
  void confirm();
  void changePassword();
  void refuse(const QString& text, const QString& title);

  Session& session_;
  jet::Database* database_ = nullptr;
  QString tag_ = QStringLiteral("Anuluj");
  QString level_;
  QString expected_;
  std::unique_ptr<Ui::dlgUserHaslo> ui_;
};

// The rule by which a typed password is accepted; `expected` loses its end mark at the first attempt, so
// later attempts follow the rule of values stored without the mark: any beginning of it is accepted.
bool passwordAccepted(QString& expected, const QString& typed);

// Writes a user's password, scrambled; an empty one as the empty text.
void storePassword(jet::Database& database, const QString& indoso, const QString& password);

}  // namespace tandeko
