#pragma once

#include <QString>

#include "session/names.h"
#include "session/session.h"

namespace tandeko {

struct BaseCheckResult {
  bool ok = false;
  QString password;           // that opened the file
  bool keepPassword = false;  // the user asked to keep it with the list entry
  QString user;               // to offer at the login
  bool readOnly = false;      // the database asks to be opened read-only
};

struct CheckOptions {
  bool askToUpdate = true;   // an older structure can be upgraded
  bool reportNames = false;  // the status bar names the file while it is checked
  bool quiet = true;         // nothing is said about a database that passes
};

// Opens a file and verifies that it is a database of this program in the required structure version, with
// `password` at first, asking for another when it is wrong. Tells the user why it fails; leaves nothing open.
// A database that asks to be opened read-only forces the session to read-only.
BaseCheckResult BaseCheck(Session& session, const QString& path, const QString& password,
                          const CheckOptions& options = {});

// The structure is too old when either part is below the required one, each compared on its own.
bool structureOutdated(int major, int minor, const ProgramVersion& required);

// The refusal of a file that another user holds exclusively.
void refuseExclusive(Session& session, const QString& path);

}  // namespace tandeko
