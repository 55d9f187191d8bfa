#pragma once

#include <QList>
#include <QString>

#include "session/session.h"

namespace tandeko {

// One database of the user's handy list, as the registry keeps it.
struct HandyEntry {
  QString subkey;  // the file's name, ".mdb" sometimes left out
  QString folder;
  bool active = false;
  bool replica = false;
  bool replicaOpen = false;
  QString replicaFolder;

  QString fileName() const;
  QString path() const;
  QString replicaPath() const;
};

QList<HandyEntry> handyList(Session& session);
QString handyKey(const QString& subkey);

// The entry of a file, if it is listed.
std::optional<HandyEntry> handyEntryOf(Session& session, const QString& path);

// Lists a file as active, its schedules at their defaults, or moves the entry of that name to it.
bool handyAdd(Session& session, const QString& path);
bool handyRemove(Session& session, const QString& subkey);
bool handySetActive(Session& session, const QString& subkey, bool active);

// The password kept with an entry; empty when there is none.
QString handyPassword(Session& session, const QString& subkey);
bool handyKeepPassword(Session& session, const QString& subkey, const QString& password);

}  // namespace tandeko
