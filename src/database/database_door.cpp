#include "database/database_door.h"

#include "database/base_check.h"
#include "database/upkeep_names.h"
#include "users/login.h"

namespace tandeko {

DatabaseDoor::DatabaseDoor(Session& session, const QString& path)
    : session_(session),
      path_(path),
      wasOpen_(session.databaseOpen() && sameFile(path, session.databasePath())) {
  if (!wasOpen_) return;
  path_ = session.databasePath();
  password_ = session.databasePassword();
  name_ = session.databaseName();
  exclusive_ = session.databaseExclusive();
  readOnly_ = session.database().readOnly();
}

bool DatabaseDoor::closeForms(const QString& question) {
  const Frame* frame = session_.frame();
  if (!frame || frame->forms().isEmpty()) return true;
  if (!question.isEmpty() && !session_.messages().ask(question, QStringLiteral("Komunikat"))) return false;
  return session_.FormCloseAll();
}

void DatabaseDoor::close() {
  if (wasOpen_) session_.closeDatabase();
}

bool DatabaseDoor::connectTo(const QString& path, const QString& name) {
  const bool open = session_.BaseConnect(path, password_, exclusive_, readOnly_);
  if (open && !name.isEmpty()) session_.setDatabaseName(name);
  if (session_.frame()) {
    session_.frame()->reloadRegisters();
    session_.frame()->updateCommands();
  }
  return open;
}

bool DatabaseDoor::reopen(const QString& path) {
  return !wasOpen_ || connectTo(path, path == path_ ? name_ : QString());
}

bool DatabaseDoor::reopenChecked() {
  if (!wasOpen_) return true;
  session_.setReadOnlyForced(false);
  const BaseCheckResult check = BaseCheck(session_, path_, password_);
  if (!check.ok) return false;
  password_ = check.password;
  readOnly_ = check.readOnly;
  if (!connectTo(path_, name_)) return false;
  QString user = session_.CurrentUserId();
  if (BaseLogin(session_, user, false) && BaseSetUser(session_, user)) return true;
  session_.closeDatabase();
  return false;
}

namespace {

const QString kReopenTitle = QStringLiteral("Błąd otwarcia bazy");

}  // namespace

void refuseReopening(Session& session, const QString& text) {
  session.messages().show({text, kReopenTitle, Icon::None, Buttons::Ok, Answer::Ok});
}

void failReopening(Session& session, const QString& text) { session.messages().fail(text, kReopenTitle); }

}  // namespace tandeko
