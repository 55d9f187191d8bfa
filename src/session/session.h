#pragma once

#include <QDate>
#include <QObject>
#include <QString>
#include <memory>
#include <optional>

#include "jet/dao/dao.h"
#include "platform/clock.h"
#include "platform/mail.h"
#include "platform/message_box.h"
#include "platform/registry.h"
#include "platform/shell.h"
#include "platform/window_search.h"
#include "session/failure.h"
#include "session/forms.h"
#include "session/names.h"
#include "session/settings.h"

namespace tandeko {

// The platform services that a session works with; they outlive it.
struct Platform {
  Registry& registry;
  MessageService& messages;
  Shell& shell;
  Mail& mail;
  Clock& clock;
  WindowSearch& windows;
};

// The user who is logged in; set by BaseSetUser.
struct UserState {
  QString id = QStringLiteral("AD");
  QString name;  // first name, blank, surname
  QString surname;
  QString firstName;
  QString phone;
  QString email;
  bool admin = true;
  int dept = 0;
  QString level = QStringLiteral("E+W");
};

// One working session: created in main, passed by reference to forms and procedures.
class Session : public QObject {
  Q_OBJECT

 public:
  explicit Session(const Platform& platform);
  ~Session() override;

  Registry& registry() { return platform_.registry; }
  MessageService& messages() { return platform_.messages; }
  Shell& shell() { return platform_.shell; }
  Mail& mail() { return platform_.mail; }
  Clock& clock() { return platform_.clock; }
  WindowSearch& windows() { return platform_.windows; }
  Settings& settings() { return settings_; }

  // The program's title: its name, followed by "(1)" in a second copy.
  QString title() const { return title_; }
  void setTitle(const QString& title) { title_ = title; }

  // The main window; null before it is loaded and in tests that need none.
  Frame* frame() const { return frame_; }
  void setFrame(Frame* frame) { frame_ = frame; }
  // Who shows failures; null until the error dialog or a test takes it.
  FailureView* failureView() const { return failureView_; }
  void setFailureView(FailureView* view) { failureView_ = view; }

  // Opens `path` as the current database, after closing the one before. Read-only whenever it is forced.
  // False on failure, which connectFailure() then tells.
  bool BaseConnect(const QString& path, const QString& password, bool exclusive = false,
                   bool readOnly = false);
  void closeDatabase();
  const Failure& connectFailure() const { return connectFailure_; }
  bool databaseOpen() const { return database_ != nullptr; }
  // Throws jet::Error 3420 without an open database.
  jet::Database& database() const;
  jet::Workspace& workspace() const;
  QString databasePath() const { return databasePath_; }
  QString databaseFolder() const;
  QString databaseFile() const;
  QString databasePassword() const { return databasePassword_; }
  bool databaseExclusive() const { return exclusive_; }
  bool readOnlyForced() const { return readOnlyForced_; }
  void setReadOnlyForced(bool forced) { readOnlyForced_ = forced; }
  // The database's name as the database combo shows it; "Replika ..." for a replica.
  QString databaseName() const { return databaseName_; }
  void setDatabaseName(const QString& name) { databaseName_ = name; }

  // A named parameter of the open database.
  QString parameterRead(const QString& name, const QString& fallback = {}) const;
  void parameterWrite(const QString& name, const QString& value);

  // User and rights.
  const UserState& user() const { return user_; }
  void setUser(const UserState& user);
  QString CurrentUserId() const { return user_.id; }
  QString CurrentUserName() const { return user_.name; }
  QString CurrentUserSurname() const { return user_.surname; }
  QString CurrentUserFirstName() const { return user_.firstName; }
  QString CurrentUserPhone() const { return user_.phone; }
  QString CurrentUserEmail() const { return user_.email; }
  bool CurrentUserAdmin() const { return user_.admin; }
  int CurrentUserDept() const { return user_.dept; }
  QString CurrentLevel() const { return user_.level; }
  QString LastLoginPassword() const { return lastLoginPassword_; }
  void setLastLoginPassword(const QString& password) { lastLoginPassword_ = password; }

  bool UserCanWrite() const { return user_.level.contains(u'W'); }
  // Whether a form for record `key` of `table` must open read-only. An empty table asks for the session
  // alone; key 0 of a named table always answers true.
  bool UserReadOnly(const QString& table, int key) const;

  // The register and the period the user works in.
  int currentRegister() const { return register_; }
  void setCurrentRegister(int indrew);
  int currentMonth() const { return month_; }
  int currentYear() const { return year_; }
  void setCurrentPeriod(int month, int year);

  // Shorthands that work without a frame too.
  void setStatusText(const QString& text);
  // KarRefresh of the open form of that name, if there is one.
  void KarRefresh(const QString& formName);
  bool FormCloseAll(ChildForm* except = nullptr);

 Q_SIGNALS:
  void databaseChanged();
  void userChanged();
  void registerChanged(int indrew);

 private:
  Platform platform_;
  Settings settings_;
  QString title_ = kProgramName;
  Frame* frame_ = nullptr;
  FailureView* failureView_ = nullptr;
  std::unique_ptr<jet::Workspace> workspace_;
  std::unique_ptr<jet::Database> database_;
  Failure connectFailure_;
  QString databasePath_;
  QString databasePassword_;
  QString databaseName_;
  bool exclusive_ = false;
  bool readOnlyForced_ = false;
  UserState user_;
  QString lastLoginPassword_;
  int register_ = 0;
  int month_ = 0;
  int year_ = 0;
};

}  // namespace tandeko
