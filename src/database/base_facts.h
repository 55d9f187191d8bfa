#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <utility>

#include "session/session.h"

namespace tandeko {

// What the properties of the open database tell. Texts are as the user sees them.
struct DatabaseFacts {
  QString name;
  QString path;
  qint64 size = 0;  // bytes
  QString structureVersion;
  QString format;
  QDateTime created;
  QString sortOrder;
  QList<std::pair<QString, int64_t>> rows;  // what a table holds, and how many
};

DatabaseFacts databaseFacts(Session& session);

// The computers that have the database open, this one among them.
QStringList databaseUsers(const QString& path);

}  // namespace tandeko
