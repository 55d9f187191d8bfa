#pragma once

#include <QDialog>
#include <memory>

#include "session/session.h"

namespace Ui {
class dlgUserLista;
}

namespace tandeko {

// Chooses who logs in, among the active users who may use the program.
class dlgUserLista : public QDialog {
  Q_OBJECT

 public:
  dlgUserLista(Session& session, QWidget* parent);
  ~dlgUserLista() override;

  // Reads the users.
  void SetDatabase(jet::Database& database);
  // The user to select at first; the first of the list when he is not in it.
  void setProposedUser(const QString& indoso);

  // "Ok" or "Anuluj".
  QString Tag() const { return tag_; }
  QString chosenUser() const { return chosen_; }
  QString chosenName() const { return name_; }
  QString chosenLevel() const { return level_; }

  void reject() override;

 private:
  void askPassword();

  Session& session_;
  jet::Database* database_ = nullptr;
  QString tag_ = QStringLiteral("Anuluj");
  QString chosen_;
  QString name_;
  QString level_;
  std::unique_ptr<Ui::dlgUserLista> ui_;
};

// Fills a list with the id and the name of the users who may use the program.
struct ListedUser {
  QString indoso;
  QString name;  // surname, blank, first name
};
QList<ListedUser> usersOfProgram(jet::Database& database);

}  // namespace tandeko
