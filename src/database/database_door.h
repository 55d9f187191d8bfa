#pragma once

#include "session/session.h"

namespace tandeko {

// The status bar's text while the object lives.
class StatusText {
 public:
  StatusText(Session& session, const QString& text) : session_(session) { session_.setStatusText(text); }
  ~StatusText() { session_.setStatusText({}); }
  StatusText(const StatusText&) = delete;
  StatusText& operator=(const StatusText&) = delete;

 private:
  Session& session_;
};

// Closes the session's database while work is done on the file `path`, and opens it again the way it was
// open. Does nothing for a file that the session does not have open.
class DatabaseDoor {
 public:
  DatabaseDoor(Session& session, const QString& path);

  // Closes all forms, after asking `question` when there are any; an empty one is not asked. False when
  // the user or a form refuses.
  bool closeForms(const QString& question = {});
  void close();
  // False when the database was open and cannot be opened now.
  bool reopen() { return reopen(path_); }
  bool reopen(const QString& path);
  // Also for another version of the data: the password, the structure and the user are checked anew.
  bool reopenChecked();
  void usePassword(const QString& password) { password_ = password; }

 private:
  bool connectTo(const QString& path, const QString& name);

  Session& session_;
  QString path_;
  QString password_;
  QString name_;
  bool wasOpen_ = false, exclusive_ = false, readOnly_ = false;
};

// What is said when it cannot be opened again.
void refuseReopening(Session& session, const QString& text);
void failReopening(Session& session, const QString& text);

}  // namespace tandeko
