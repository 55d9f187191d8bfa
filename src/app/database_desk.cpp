#include "app/database_desk.h"

#include <QApplication>
#include <QSignalBlocker>

#include "app/child_windows.h"
#include "database/base_check.h"
#include "database/base_list.h"
#include "database/upkeep.h"
#include "errors/error_reporter.h"
#include "platform/text.h"
#include "users/login.h"

namespace tandeko {

namespace {

constexpr int kInUse = 3045;
constexpr int kHeldExclusively = 3356;

}  // namespace

DatabaseDesk::DatabaseDesk(Session& session, QComboBox& cmbBaza, QComboBox& cmbEwiRejestr, QObject* parent)
    : QObject(parent), session_(session), cmbBaza_(cmbBaza), cmbEwiRejestr_(cmbEwiRejestr) {
  connect(&cmbBaza_, &QComboBox::activated, this, &DatabaseDesk::switchTo);
  connect(&cmbEwiRejestr_, &QComboBox::activated, this, &DatabaseDesk::chooseRegister);
}

bool DatabaseDesk::readList() {
  const QSignalBlocker quiet(&cmbBaza_);
  return BaseListRead(session_, catalogue_, cmbBaza_, [this](const CatalogueEntry& entry) {
    BaseDefrag({session_}, entry.path, entry.password, false);
    BaseCopy({session_}, entry.path, entry.password, false);
  });
}

bool DatabaseDesk::openSelected() {
  const int index = cmbBaza_.currentIndex();
  return index >= 0 && index < catalogue_.size() && open(catalogue_[index]);
}

void DatabaseDesk::chooseFile() {
  const bool forced = session_.readOnlyForced();
  openChecked(chooseDatabase(session_), forced);
}

bool DatabaseDesk::openFile(const QString& path) {
  const bool forced = session_.readOnlyForced();
  showCurrent();
  return openChecked(checkedEntry(session_, path), forced);
}

// `forced`: whether the database that stays open when this one does not was forced to read-only.
bool DatabaseDesk::openChecked(const CatalogueEntry& entry, bool forced) {
  if (entry.path.isEmpty() || !closeForms()) {
    session_.setReadOnlyForced(forced);
    return false;
  }
  select(entry);
  return open(entry);
}

// Makes the entry the selected one, adding it when it is new in this session.
void DatabaseDesk::select(const CatalogueEntry& entry) {
  const QSignalBlocker quiet(&cmbBaza_);
  int index = 0;
  while (index < catalogue_.size() && catalogue_[index].path.compare(entry.path, Qt::CaseInsensitive) != 0)
    ++index;
  if (index == catalogue_.size()) {
    catalogue_ << entry;
    cmbBaza_.addItem(entry.name);
  } else {
    catalogue_[index] = entry;
  }
  cmbBaza_.setCurrentIndex(index);
}

void DatabaseDesk::switchTo(int index) {
  if (catalogue_[index].path == session_.databasePath() && session_.databaseOpen()) return;
  if (closeForms())
    openSelected();
  else
    showCurrent();
}

bool DatabaseDesk::closeForms() {
  if (!session_.frame()) return true;
  QList<ChildForm*> forms;
  for (ChildForm* form : session_.frame()->forms())
    if (belongsToDatabase(*form)) forms << form;
  return session_.frame()->closeForms(forms);
}

bool DatabaseDesk::open(const CatalogueEntry& entry) {
  session_.closeDatabase();
  session_.setCurrentRegister(0);
  session_.setReadOnlyForced(entry.readOnly);
  QApplication::setOverrideCursor(Qt::WaitCursor);
  const bool connected = session_.BaseConnect(entry.path, entry.password, entry.exclusive, entry.readOnly);
  QApplication::restoreOverrideCursor();
  if (connected) {
    session_.setDatabaseName(entry.name);
    if (logIn()) {
      reloadRegisters();
      if (session_.frame()) session_.frame()->updateCommands();
      Q_EMIT opened();
      return true;
    }
    session_.closeDatabase();
  } else {
    const int number = session_.connectFailure().number;
    if (number == kInUse || number == kHeldExclusively)
      refuseExclusive(session_, entry.path);
    else
      reportFailure(session_, session_.connectFailure());
  }
  showCurrent();
  return false;
}

// The default user is offered; without one, whoever worked before in this session.
bool DatabaseDesk::logIn() {
  QString user = session_.settings().stored(QStringLiteral("Uzytkownik"));
  if (user.isEmpty() && !session_.user().name.isEmpty()) user = session_.CurrentUserId();
  return BaseLogin(session_, user, false) && BaseSetUser(session_, user);
}

bool DatabaseDesk::changeUser() {
  QString user;
  if (!BaseLogin(session_, user, true) || !BaseSetUser(session_, user)) return false;
  Q_EMIT opened();
  return true;
}

// The database combo goes back to what is really open.
void DatabaseDesk::showCurrent() {
  const QSignalBlocker quiet(&cmbBaza_);
  int index = -1;
  if (session_.databaseOpen())
    for (int i = 0; i < catalogue_.size(); ++i)
      if (catalogue_[i].path == session_.databasePath()) index = i;
  cmbBaza_.setCurrentIndex(index);
  if (!session_.databaseOpen()) cmbEwiRejestr_.clear();
  if (session_.frame()) session_.frame()->updateCommands();
}

void DatabaseDesk::follow(const QString& oldPath) {
  for (int i = 0; session_.databaseOpen() && i < catalogue_.size(); ++i) {
    CatalogueEntry& entry = catalogue_[i];
    if (entry.path != oldPath) continue;
    entry.path = session_.databasePath();
    entry.name = session_.databaseName();
    entry.password = session_.databasePassword();
    cmbBaza_.setItemText(i, entry.name);
  }
  showCurrent();
}

void DatabaseDesk::reloadRegisters() {
  guarded(session_, "EwiRejestr", [this] {
    const QSignalBlocker quiet(&cmbEwiRejestr_);
    cmbEwiRejestr_.clear();
    if (!session_.databaseOpen()) return;
    const auto rows = session_.database().openRecordset(u"SELECT Indrew, Nazwa FROM swrew ORDER BY Nazwa",
                                                        jet::RecordsetType::Snapshot);
    for (; !rows->eof(); rows->moveNext())
      cmbEwiRejestr_.addItem(toText(rows->value(u"Nazwa")), toInt(rows->value(u"Indrew")));
    const int current = session_.currentRegister();
    const int wanted =
        current > 0 ? current : session_.settings().SettingGet(QStringLiteral("Rejestr")).toInt();
    const int index = cmbEwiRejestr_.findData(wanted);
    cmbEwiRejestr_.setCurrentIndex(index >= 0 ? index : cmbEwiRejestr_.count() > 0 ? 0 : -1);
    session_.setCurrentRegister(cmbEwiRejestr_.currentData().toInt());
  });
}

void DatabaseDesk::chooseRegister(int index) {
  session_.setCurrentRegister(cmbEwiRejestr_.itemData(index).toInt());
  if (session_.frame()) session_.frame()->updateCommands();
}

}  // namespace tandeko
