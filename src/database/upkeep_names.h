#pragma once

#include "database/same_file.h"
#include "database/schedule.h"
#include "session/session.h"

namespace tandeko {

// The name of a database in messages and in the names of its copies: its file's without the extension.
QString baseName(const QString& path);
// Every ".mdb" and ".MDB" taken out of the file's name, and one put at its end.
QString withOneExtension(const QString& path);
QString joinedPath(const QString& folder, const QString& file);

// The program's working folder.
QString workFolder(Session& session);
// Where the database's copies go; empty when no folder is set anywhere.
QString copyFolder(Session& session, const QString& path);

QString copyFileName(const QString& name);
QString previousCopyFileName(const QString& name);
QString datedCopyFileName(const QString& name, const QDate& date);

// The registry's key of a listed database; empty for one that is not on the handy list.
QString scheduleKey(Session& session, const QString& path);
Schedule readSchedule(Session& session, const QString& path, Upkeep kind);
// Notes that the run was done today. A database that is not listed has no schedule to keep.
void noteRun(Session& session, const QString& path, Upkeep kind);

}  // namespace tandeko
