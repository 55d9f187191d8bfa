#pragma once

#include <QComboBox>

#include "database/catalogue.h"
#include "session/session.h"

namespace tandeko {

// Opens databases: from the handy list, from a chosen file, at a switch; each time with the login and the
// reading of what the session needs.
class DatabaseDesk : public QObject {
  Q_OBJECT

 public:
  DatabaseDesk(Session& session, QComboBox& cmbBaza, QComboBox& cmbEwiRejestr, QObject* parent = nullptr);

  // Reads the handy list; true when it chose a database.
  bool readList();
  // Opens the entry selected in the database combo.
  bool openSelected();
  // "Otwórz...".
  void chooseFile();
  // Opens a file named by path without asking to list it.
  bool openFile(const QString& path);
  bool changeUser();
  void reloadRegisters();
  // The session's database, which was at `oldPath`, may have another file, name or password now.
  void follow(const QString& oldPath);

 Q_SIGNALS:
  // A database is open and its user logged in.
  void opened();

 private:
  bool closeForms();
  bool open(const CatalogueEntry& entry);
  bool openChecked(const CatalogueEntry& entry, bool forced);
  bool logIn();
  void select(const CatalogueEntry& entry);
  void switchTo(int index);
  void showCurrent();
  void chooseRegister(int index);

  Session& session_;
  QComboBox& cmbBaza_;
  QComboBox& cmbEwiRejestr_;
  Catalogue catalogue_;
};

}  // namespace tandeko
